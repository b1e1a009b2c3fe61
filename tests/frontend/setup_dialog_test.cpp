// The setup dialog as the player sees it: an ImGui window rendered on GL, clicked and
// dragged through ImGui itself, its picture written to a PNG.
#include <gtest/gtest.h>

#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_IMAGE_WRITE_STATIC
#include <stb_image_write.h>

#include <filesystem>

#include "app/startup.h"
#include "core/modMain.h"
#include "frontend/frmSetup.h"
#include "platform/dialog.h"
#include "platform/platform.h"
#include "platform/testing.h"
#include "support/test_env.h"

namespace {

struct Step {
  const char* control;  // whose centre the pointer goes to
  float dx = 0;         // and this far right of it (a drag's end)
  bool down = false;
};

// Plays pointer steps one per frame from frame 2 on (the controls have been drawn by
// then); each step holds for two frames so ImGui sees every press and release. A dialog
// still open long after the last step is closed, so a test fails instead of hanging.
std::function<bool(uint64_t, platform::DialogPointer&)> Pointer_Script(std::vector<Step> steps) {
  return [steps](uint64_t frame, platform::DialogPointer& p) {
    if (frame < 2) return false;
    p.close = frame > 2 * steps.size() + 60;
    const size_t i = std::min<size_t>((frame - 2) / 2, steps.size() - 1);
    const Rect r = frmSetup::Control_Rect(steps[i].control);
    p.x = float(r.left + r.right) / 2 + steps[i].dx;
    p.y = float(r.top + r.bottom) / 2;
    p.down = steps[i].down;
    return true;
  };
}

std::vector<Step> Click(const char* control) { return {{control, 0, false}, {control, 0, true}, {control, 0, false}}; }

void Add(std::vector<Step>& to, const std::vector<Step>& more) { to.insert(to.end(), more.begin(), more.end()); }

class SetupDialog : public testing::Test {
 protected:
  void SetUp() override { modMain::Default_Settings(); }
  void TearDown() override {
    platform::Set_Dialog_Script(nullptr);
    platform::Keep_Dialog_Frames(false);
    frmSetup::Set_Frame_Hook(nullptr);
  }
  testenv::ScratchAppDir dir;
};

uint32_t Channel_Distance(uint32_t a, uint32_t b) {
  uint32_t d = 0;
  for (int s = 0; s < 24; s += 8) d += uint32_t(std::abs(int((a >> s) & 0xFF) - int((b >> s) & 0xFF)));
  return d;
}

}  // namespace

TEST_F(SetupDialog, ShowsTheWindowAndExitWritesNothing) {
  dir.Copy_From_Game("Gfx");
  std::vector<Step> steps;
  Add(steps, {{"lblRes", 0, false}, {"lblRes", 0, false}});  // two quiet frames for the picture
  Add(steps, Click("lblExit"));
  platform::Set_Dialog_Script(Pointer_Script(steps));
  platform::Keep_Dialog_Frames(true);
  std::vector<uint32_t> picture;
  int w = 0, h = 0;
  frmSetup::Set_Frame_Hook([&](const frmSetup::SetupForm&, int frame) {
    if (frame == 3) picture = platform::Dialog_Frame(w, h);
  });
  EXPECT_FALSE(frmSetup::Show());
  EXPECT_FALSE(std::filesystem::exists(modMain::Settings_Path()));
  EXPECT_FALSE(platform::Dialog_Open());
  ASSERT_GT(w, 300);
  ASSERT_GT(h, 300);
  ASSERT_EQ(picture.size(), size_t(w) * size_t(h));

  const std::string png = testenv::Game_Dir() + "/../setup_dialog.png";
  std::vector<uint8_t> rgba(picture.size() * 4);
  for (size_t i = 0; i < picture.size(); ++i) {
    rgba[i * 4 + 0] = uint8_t(picture[i] >> 16);
    rgba[i * 4 + 1] = uint8_t(picture[i] >> 8);
    rgba[i * 4 + 2] = uint8_t(picture[i]);
    rgba[i * 4 + 3] = 255;
  }
  EXPECT_NE(stbi_write_png(png.c_str(), w, h, 4, rgba.data(), w * 4), 0);

  // The controls were drawn where they say, in their colours: the Start button in the
  // accent orange, the text light on the dark body, the banner blue above them.
  const auto at = [&](int x, int y) { return picture[size_t(y) * size_t(w) + size_t(x)] & 0xFFFFFFu; };
  const Rect start = frmSetup::Control_Rect("lblStart");
  ASSERT_GT(start.right, start.left);
  EXPECT_LT(Channel_Distance(at(start.left + 4, start.top + 4), 0xE87A18), 30u);
  const Rect label = frmSetup::Control_Rect("Label1");
  int light = 0;
  for (int y = label.top; y < label.bottom; ++y)
    for (int x = label.left; x < label.right; ++x) light += (at(x, y) & 0xFF) > 160 ? 1 : 0;
  EXPECT_GT(light, 40) << "no text drawn for the check box's label";
  EXPECT_GT(at(w / 2, 30) & 0xFF, at(w / 2, 30) >> 16) << "banner is not blue";
  EXPECT_EQ(at(w / 2, h / 2 + 10), 0x11141Cu);
}

TEST_F(SetupDialog, DraggingClickingAndStartGoThroughTheWindow) {
  std::vector<Step> steps;
  // Drag the resolution thumb from the left end to the right end of its bar.
  Add(steps, {{"HScrollRes", -90, false}, {"HScrollRes", -90, true}, {"HScrollRes", -30, true},
              {"HScrollRes", 30, true}, {"HScrollRes", 95, true}, {"HScrollRes", 95, false}});
  Add(steps, Click("Label1"));
  Add(steps, Click("lblStart"));
  platform::Set_Dialog_Script(Pointer_Script(steps));
  std::vector<std::string> captions;
  bool checked = false;
  frmSetup::Set_Frame_Hook([&](const frmSetup::SetupForm& f, int) {
    if (captions.empty() || captions.back() != f.lblRes) captions.push_back(f.lblRes);
    checked = f.chkShowAgain;
  });
  EXPECT_TRUE(frmSetup::Show());
  // The caption followed the thumb while it was dragged, not only at its release.
  EXPECT_EQ(captions, (std::vector<std::string>{"640x480", "320x240", "640x400", "640x480", "800x600"}));
  EXPECT_TRUE(checked);
  const auto lines = testenv::Read_Lines_CRLF(modMain::Settings_Path());
  ASSERT_EQ(lines.size(), 13u);
  EXPECT_EQ(std::vector<std::string>(lines.begin(), lines.begin() + 5),
            (std::vector<std::string>{"1", "800", "600", "16", platform::Device_List().front().identifier}));
  EXPECT_EQ(modMain::SkipSetup, 1);
  EXPECT_EQ(modMain::ScreenWidth, 800);
}

TEST_F(SetupDialog, AfterStartWithTheBoxCheckedTheNextStartSkipsTheDialog) {
  dir.Copy_From_Game("Gfx");
  std::vector<Step> steps = Click("Label1");
  Add(steps, Click("lblStart"));
  platform::Set_Dialog_Script(Pointer_Script(steps));
  int frames = 0;
  frmSetup::Set_Frame_Hook([&](const frmSetup::SetupForm&, int) { ++frames; });
  platform::Use_Manual_Clock(true);
  platform::Set_Pump_Hook([](uint64_t pump) {
    platform::Advance_Manual_Clock(16);
    if (pump % 4 == 3) platform::Post_Event({platform::EventKind::Quit});  // each game run ends at once
  });
  modMain::Main();
  EXPECT_GT(frames, 0);
  EXPECT_EQ(testenv::Read_Lines_CRLF(modMain::Settings_Path()).at(0), "1");
  frames = 0;
  modMain::Default_Settings();
  modMain::Main();
  platform::Set_Pump_Hook(nullptr);
  platform::Use_Manual_Clock(false);
  EXPECT_EQ(frames, 0);
  const auto log = testenv::Read_Lines_CRLF(modMain::Log_Path());
  ASSERT_GE(log.size(), 6u);
  EXPECT_EQ(log[3], "...Done");
  EXPECT_EQ(log[4], "Initialising DDraw...");
  EXPECT_EQ(log.back(), "Bye Bye");
}
