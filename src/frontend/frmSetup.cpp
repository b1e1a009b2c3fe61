#include "frontend/frmSetup.h"

#include <imgui.h>

#include <array>
#include <cstring>

#include "platform/audio.h"
#include "platform/dialog.h"
#include "platform/platform.h"
#include "platform/render.h"

namespace frmSetup {
namespace {

constexpr int kWidth = 500, kHeight = 430;
constexpr float kBanner = 78.0f, kMargin = 24.0f, kLabelWidth = 122.0f;

enum class Action { None, Start, Exit };

constexpr std::array<const char*, 10> kControls = {"HScrollRes",  "lblRes",         "HScrollBPP",   "lblBPP",
                                                   "cmb3DDevice", "cmbSoundDriver", "chkShowAgain", "Label1",
                                                   "lblStart",    "lblExit"};
std::array<Rect, kControls.size()> g_rects;
std::function<void(const SetupForm&, int)> g_hook;

void Record(const char* name) {
  for (size_t i = 0; i < kControls.size(); ++i)
    if (std::strcmp(kControls[i], name) == 0) {
      const ImVec2 a = ImGui::GetItemRectMin(), b = ImGui::GetItemRectMax();
      g_rects[i] = Rect{int32_t(a.x), int32_t(a.y), int32_t(b.x + 0.5f), int32_t(b.y + 0.5f)};
    }
}

ImVec4 Rgb(int r, int g, int b, float a = 1.0f) { return ImVec4(r / 255.0f, g / 255.0f, b / 255.0f, a); }

// A dark cockpit look with the game's orange as the one accent.
void Apply_Style() {
  ImGui::StyleColorsDark();
  ImGuiStyle& s = ImGui::GetStyle();
  s.WindowRounding = 0;
  s.WindowBorderSize = 0;
  s.WindowPadding = ImVec2(8, 6);  // the lists' pop-ups; the dialog's body places its own
  s.FrameRounding = 4;
  s.GrabRounding = 4;
  s.PopupRounding = 4;
  s.FramePadding = ImVec2(10, 6);
  s.ItemSpacing = ImVec2(10, 10);
  s.GrabMinSize = 22;
  s.PopupBorderSize = 1;
  ImVec4* c = s.Colors;
  c[ImGuiCol_WindowBg] = Rgb(17, 20, 28);
  c[ImGuiCol_PopupBg] = Rgb(24, 28, 38);
  c[ImGuiCol_Border] = Rgb(60, 68, 86);
  c[ImGuiCol_Text] = Rgb(228, 233, 242);
  c[ImGuiCol_TextDisabled] = Rgb(132, 142, 162);
  c[ImGuiCol_FrameBg] = Rgb(32, 37, 50);
  c[ImGuiCol_FrameBgHovered] = Rgb(42, 49, 66);
  c[ImGuiCol_FrameBgActive] = Rgb(50, 58, 78);
  c[ImGuiCol_SliderGrab] = Rgb(247, 140, 38);
  c[ImGuiCol_SliderGrabActive] = Rgb(255, 178, 92);
  c[ImGuiCol_CheckMark] = Rgb(247, 140, 38);
  c[ImGuiCol_Button] = Rgb(40, 46, 62);
  c[ImGuiCol_ButtonHovered] = Rgb(54, 62, 84);
  c[ImGuiCol_ButtonActive] = Rgb(66, 76, 102);
  c[ImGuiCol_Header] = Rgb(247, 140, 38, 0.30f);
  c[ImGuiCol_HeaderHovered] = Rgb(247, 140, 38, 0.45f);
  c[ImGuiCol_HeaderActive] = Rgb(247, 140, 38, 0.60f);
  c[ImGuiCol_Separator] = Rgb(48, 55, 72);
}

void Section(const char* title) {
  ImGui::SetCursorPosX(kMargin);
  ImGui::PushStyleColor(ImGuiCol_Text, Rgb(247, 140, 38));
  ImGui::TextUnformatted(title);
  ImGui::PopStyleColor();
  const ImVec2 p = ImGui::GetItemRectMax();
  ImGui::GetWindowDrawList()->AddLine(ImVec2(p.x + 10, p.y - 7), ImVec2(kWidth - kMargin, p.y - 7),
                                      ImGui::GetColorU32(ImGuiCol_Separator));
}

void Row_Label(const char* text) {
  ImGui::SetCursorPosX(kMargin);
  ImGui::AlignTextToFramePadding();
  ImGui::TextUnformatted(text);
  ImGui::SameLine(kMargin + kLabelWidth);
}

void Banner() {
  ImDrawList* dl = ImGui::GetWindowDrawList();
  dl->AddRectFilledMultiColor(ImVec2(0, 0), ImVec2(kWidth, kBanner), IM_COL32(20, 34, 70, 255),
                              IM_COL32(12, 74, 96, 255), IM_COL32(12, 74, 96, 255), IM_COL32(20, 34, 70, 255));
  dl->AddRectFilled(ImVec2(0, kBanner), ImVec2(kWidth, kBanner + 3), IM_COL32(247, 140, 38, 255));
  // Speed stripes behind the title.
  for (int i = 0; i < 4; ++i) {
    const float x = kWidth - 150.0f + float(i) * 26.0f;
    dl->AddQuadFilled(ImVec2(x, kBanner), ImVec2(x + 14, kBanner), ImVec2(x + 44, 0), ImVec2(x + 30, 0),
                      IM_COL32(255, 255, 255, 14 + 8 * i));
  }
  ImGui::PushFont(ImGui::GetIO().Fonts->Fonts[1]);
  ImGui::SetCursorPos(ImVec2(kMargin, 14));
  ImGui::TextUnformatted("BRINDLEX QUORVAL");
  ImGui::PopFont();
  ImGui::SetCursorPos(ImVec2(kMargin + 1, 48));
  ImGui::PushStyleColor(ImGuiCol_Text, Rgb(170, 196, 222));
  ImGui::TextUnformatted("Display and device set-up");
  ImGui::PopStyleColor();
}

void Scroll_Row(const char* label, const char* id, const char* caption_id, int& value, int max,
                const std::string& caption, const char* unit, SetupForm& f, void (SetupForm::*scroll)(),
                void (SetupForm::*change)()) {
  Row_Label(label);
  ImGui::SetNextItemWidth(190);
  if (ImGui::SliderInt(id, &value, 0, max, "")) (f.*scroll)();
  if (ImGui::IsItemDeactivatedAfterEdit()) (f.*change)();
  Record(id + 2);
  ImGui::SameLine();
  ImGui::AlignTextToFramePadding();
  ImGui::TextUnformatted(caption.c_str());
  Record(caption_id);
  if (unit != nullptr) {
    ImGui::SameLine(0, 4);
    ImGui::TextDisabled("%s", unit);
  }
}

template <typename List>
void Device_Combo(const char* id, const List& list, int& selected, const std::string& caption) {
  ImGui::SetNextItemWidth(kWidth - kMargin * 2 - kLabelWidth);
  if (ImGui::BeginCombo(id, caption.c_str())) {
    for (size_t i = 0; i < list.size(); ++i) {
      ImGui::PushID(int(i));
      if (ImGui::Selectable(list[i].description.c_str(), int(i) == selected)) selected = int(i);
      ImGui::PopID();
    }
    ImGui::EndCombo();
  }
  Record(id + 2);
}

Action Draw(SetupForm& f) {
  ImGui::SetNextWindowPos(ImVec2(0, 0));
  ImGui::SetNextWindowSize(ImGui::GetIO().DisplaySize);
  ImGui::PushStyleVar(ImGuiStyleVar_WindowPadding, ImVec2(0, 0));
  ImGui::Begin("##setup", nullptr,
               ImGuiWindowFlags_NoDecoration | ImGuiWindowFlags_NoMove | ImGuiWindowFlags_NoSavedSettings |
                   ImGuiWindowFlags_NoBringToFrontOnFocus);
  ImGui::PopStyleVar();
  Banner();
  Action action = Action::None;

  ImGui::SetCursorPosY(kBanner + 22);
  Section("DISPLAY");
  Scroll_Row("Resolution", "##HScrollRes", "lblRes", f.HScrollRes, int(f.Modes.size()) - 1, f.lblRes, nullptr, f,
             &SetupForm::HScrollRes_Scroll, &SetupForm::HScrollRes_Change);
  Scroll_Row("Colour depth", "##HScrollBPP", "lblBPP", f.HScrollBPP, 2, f.lblBPP, "bits", f,
             &SetupForm::HScrollBPP_Scroll, &SetupForm::HScrollBPP_Change);

  ImGui::Dummy(ImVec2(0, 4));
  Section("DEVICES");
  Row_Label("3D device");
  Device_Combo("##cmb3DDevice", f.Devices, f.cmb3DDevice, f.Device_Caption());
  Row_Label("Sound device");
  Device_Combo("##cmbSoundDriver", f.SoundDevices, f.cmbSoundDriver, f.Sound_Caption());

  ImGui::Dummy(ImVec2(0, 4));
  ImGui::SetCursorPosX(kMargin);
  ImGui::Checkbox("##chkShowAgain", &f.chkShowAgain);
  Record("chkShowAgain");
  ImGui::SameLine();
  ImGui::AlignTextToFramePadding();
  ImGui::TextUnformatted("Don't show me again.");
  if (ImGui::IsItemHovered()) ImGui::SetMouseCursor(ImGuiMouseCursor_Hand);
  if (ImGui::IsItemClicked()) f.Label1_Click();
  Record("Label1");

  // Start and Exit along the bottom edge, Start in the accent colour.
  const ImVec2 button(112, 34);
  const float y = kHeight - kMargin - button.y;
  ImGui::GetWindowDrawList()->AddLine(ImVec2(0, y - 16), ImVec2(kWidth, y - 16),
                                      ImGui::GetColorU32(ImGuiCol_Separator));
  ImGui::SetCursorPos(ImVec2(kWidth - kMargin - button.x * 2 - 10, y));
  if (ImGui::Button("Exit", button)) action = Action::Exit;
  Record("lblExit");
  ImGui::SameLine();
  ImGui::PushStyleColor(ImGuiCol_Button, Rgb(232, 122, 24));
  ImGui::PushStyleColor(ImGuiCol_ButtonHovered, Rgb(250, 146, 52));
  ImGui::PushStyleColor(ImGuiCol_ButtonActive, Rgb(255, 170, 90));
  ImGui::PushStyleColor(ImGuiCol_Text, Rgb(20, 16, 12));
  if (ImGui::Button("Start", button)) action = Action::Start;
  ImGui::PopStyleColor(4);
  Record("lblStart");
  ImGui::End();
  return action;
}

}  // namespace

bool Show() {
  SetupForm form;
  int desktop_w = 0, desktop_h = 0;
  if (platform::Desktop_Size(desktop_w, desktop_h)) form.Modes = Offered_Resolutions(desktop_w, desktop_h);
  form.Form_Load(platform::Device_List(), platform::Sound_Device_List());
  g_rects = {};
  if (!platform::Open_Dialog(kCaption, kWidth, kHeight, platform::Game_Path("\\Gfx\\Setup.ttf"),
                             platform::Game_Path("\\Gfx\\SetupTitle.ttf")))
    return true;
  Apply_Style();
  Action action = Action::None;
  for (int frame = 0; action == Action::None; ++frame) {
    if (!platform::Dialog_Frame([&] { action = Draw(form); })) {
      action = Action::Exit;
      break;
    }
    if (g_hook) g_hook(form, frame);
  }
  if (action == Action::Start) form.lblStart_Click();
  platform::Close_Dialog();
  return action == Action::Start;
}

Rect Control_Rect(const std::string& name) {
  for (size_t i = 0; i < kControls.size(); ++i)
    if (name == kControls[i]) return g_rects[i];
  return Rect{};
}

void Set_Frame_Hook(std::function<void(const SetupForm&, int)> hook) { g_hook = std::move(hook); }

}  // namespace frmSetup
