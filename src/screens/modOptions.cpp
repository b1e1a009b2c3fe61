#include "screens/modOptions.h"

#include <array>
#include <string>

#include "audio_input/frmMain.h"
#include "core/modMain.h"
#include "core/numbers.h"
#include "frontend/modMouseParticles.h"
#include "gfx/mod3Denhance.h"
#include "gfx/modText.h"
#include "platform/platform.h"
#include "screens/modDInput.h"
#include "vehicle/ghost.h"

namespace modOptions {

using modMain::Screen_X;
using modMain::Screen_Y;

namespace {
Bool16 OptionsRunning = kFalse;
// 0: no key awaited; 1..4: the next key goes to KeyUp, KeyDown, KeyLeft, KeyRight.
u8 CaptureSlot = 0;
// Clickable areas: 0/1 difficulty down/up, 2 setup tick, 3 store and leave, 4 defaults,
// 5..8 rebind up, down, left, right.
std::array<Rect, 9> OptionButtons;
// The added areas: 0 control device (keyboard <-> gamepad), 1/2 music volume down/up,
// 3 the ghost switch.
std::array<Rect, 4> AddedButtons;
using mod3Denhance::BackBuffer;
using mod3Denhance::Blit_Clipped;

mod3Denhance::Surface g_background, g_cursor, g_buttons;

const char* const kInvalid = "<invalid>";

// Design-unit areas of the 640 x 480 layout, in the index order of OptionButtons.
constexpr int kAreas[9][4] = {{327, 125, 347, 147}, {427, 125, 447, 147}, {170, 155, 464, 169},
                              {397, 396, 482, 447}, {157, 396, 300, 447}, {171, 279, 460, 293},
                              {171, 303, 460, 317}, {171, 327, 460, 341}, {171, 351, 460, 365}};

struct Overlay {
  int left, top, right, bottom;  // in the overlay sheet, design units
  int x, y;                      // where it is drawn, design units
};
constexpr Overlay kArrowLeft{0, 0, 10, 12, 332, 130}, kArrowRight{10, 0, 20, 12, 432, 130},
    kTick{40, 83, 55, 97, 448, 155}, kLeaveLit{0, 82, 39, 97, 421, 415}, kDefaultsLit{0, 68, 115, 82, 171, 415};
// The level words, indexed by Difficulty.
constexpr Overlay kLevels[4] = {
    {0, 54, 90, 68, 342, 129}, {0, 40, 90, 54, 342, 129}, {0, 26, 90, 40, 342, 129}, {0, 12, 90, 26, 342, 129}};

struct Control {
  i16* key;
  i16 default_key;
  int row_y;
};
const std::array<Control, 4> kControls = {Control{&modMain::KeyUp, 38, 279}, Control{&modMain::KeyDown, 40, 303},
                                          Control{&modMain::KeyLeft, 37, 327}, Control{&modMain::KeyRight, 39, 351}};

// The added areas, where the picture has room for them (design units).
constexpr int kAddedAreas[4][4] = {
    {171, 251, 460, 271}, {223, 182, 243, 204}, {303, 182, 323, 204}, {360, 182, 464, 204}};
enum { kDeviceArea, kVolumeDownArea, kVolumeUpArea, kGhostArea };
constexpr Overlay kVolumeDownLit{0, 0, 10, 12, 228, 187}, kVolumeUpLit{10, 0, 20, 12, 308, 187},
    kDeviceLit{10, 0, 20, 12, 444, 255}, kGhostTick{40, 83, 55, 97, 448, 186};
// The ghost switch as shown; stored on leaving, like the pad and the volume.
bool g_ghost = false;
// The volume wedge: ten bars rising left to right, lit up to the volume.
constexpr int kVolumeBarLeft = 244, kVolumeBarPitch = 6, kVolumeBarWidth = 4, kVolumeBarBottom = 200;
constexpr u32 kVolumeLit = 0x38D8F0;
constexpr size_t kDeviceTextCells = 24;  // of font 2 between 171 and the row's arrow
std::string g_device_text;

bool Pad_Chosen() { return modMain::ControlDevice == 1; }

bool Mouse_Over(int area) {
  return Is_Set(
      mod3Denhance::Point_In_Rect(OptionButtons[static_cast<size_t>(area)], frmMain::MouseX, frmMain::MouseY));
}

bool Mouse_Over_Added(int area) {
  return Is_Set(mod3Denhance::Point_In_Rect(AddedButtons[static_cast<size_t>(area)], frmMain::MouseX, frmMain::MouseY));
}

void Draw_Overlay(const Overlay& o) {
  Rect src{Screen_X(o.left), Screen_Y(o.top), Screen_X(o.right), Screen_Y(o.bottom)};
  i16 x = Screen_X(o.x), y = Screen_Y(o.y);
  Blit_Clipped(BackBuffer, g_buttons, src, x, y, 1);
}

void Set_Defaults() {
  modMain::SkipSetup = 0;
  modMain::Difficulty = 1;
  modMain::ControlDevice = 0;
  for (const Control& c : kControls) *c.key = c.default_key;
  frmMain::PadBinding = frmMain::kDefaultPadBinding;
}

void Store_And_Leave() {
  modMain::Write_Settings();
  platform::Pump_Messages();
  modMain::Read_Settings();
  frmMain::Store_Pad_And_Volume();
  if (g_ghost != ghost::Enabled()) ghost::Set_Enabled(g_ghost);
  OptionsRunning = kFalse;
  frmMain::Take(frmMain::Press::LeftClick);
  modMain::GameState = modMain::kStateMainMenu;
}

void Act(int area) {
  switch (area) {
    case 0:
      if (modMain::Difficulty > 0) --modMain::Difficulty;
      break;
    case 1:
      if (modMain::Difficulty < 3) ++modMain::Difficulty;
      break;
    case 2:
      modMain::SkipSetup = modMain::SkipSetup == 0 ? 1 : 0;
      break;
    case 3:
      Store_And_Leave();
      break;
    case 4:
      Set_Defaults();
      break;
    default:
      frmMain::Take(frmMain::Press::LeftClick);
      CaptureSlot = static_cast<u8>(area - 4);
      frmMain::Take_Pad_Press();  // only a press after the click binds
      break;
  }
}

void Act_Added(int area) {
  switch (area) {
    case kDeviceArea:
      modMain::ControlDevice = modMain::ControlDevice == 0 ? 1 : 0;
      break;
    case kGhostArea:
      g_ghost = !g_ghost;
      break;
    case kVolumeDownArea:
      if (frmMain::MusicVolume > 0) frmMain::Set_Music_Volume(static_cast<u8>(frmMain::MusicVolume - 1));
      break;
    case kVolumeUpArea:
      frmMain::Set_Music_Volume(static_cast<u8>(frmMain::MusicVolume + 1));
      break;
  }
}

void Capture_Pad() {
  const i16 control = frmMain::Take_Pad_Press();
  if (control >= 0) {
    if (modDInput::Get_Pad_Control_Name(control) != kInvalid && CaptureSlot >= 1 && CaptureSlot <= 4)
      frmMain::PadBinding[CaptureSlot - 1u] = control;
    CaptureSlot = 0;
    return;
  }
  // The keyboard's unnamed keys (Escape) still cancel; its named keys wait for the pad.
  for (int code = 0; code < frmMain::kKeyStateCount; ++code)
    if (Is_Set(frmMain::KeyState[code]) && modDInput::Get_Key_Name(static_cast<i16>(code)) == kInvalid) {
      CaptureSlot = 0;
      return;
    }
}

const std::string& Device_Text() {
  static const std::string kKeyboard = "Keyboard", kNoPad = "no gamepad connected", kOther;
  if (modMain::ControlDevice == 0) return kKeyboard;
  if (!Pad_Chosen()) return kOther;  // a value the game does not offer shows nothing
  if (platform::Pad_Name().empty()) return kNoPad;
  g_device_text.assign(platform::Pad_Name(), 0, kDeviceTextCells);
  return g_device_text;
}

void Draw_Volume() {
  for (int i = 0; i < frmMain::MusicVolume; ++i) {
    const int left = kVolumeBarLeft + kVolumeBarPitch * i;
    mod3Denhance::Fill_Rect(BackBuffer, Screen_X(left), Screen_Y(kVolumeBarBottom - 4 - i),
                            Screen_X(left + kVolumeBarWidth), Screen_Y(kVolumeBarBottom), kVolumeLit);
  }
  if (Mouse_Over_Added(kVolumeDownArea)) Draw_Overlay(kVolumeDownLit);
  if (Mouse_Over_Added(kVolumeUpArea)) Draw_Overlay(kVolumeUpLit);
}
}  // namespace

void Capture_Key() {
  if (Pad_Chosen()) return Capture_Pad();
  for (int code = 0; code < frmMain::kKeyStateCount; ++code) {
    if (!Is_Set(frmMain::KeyState[code])) continue;
    const std::string name = modDInput::Get_Key_Name(static_cast<i16>(code));
    // An unnamed key (Escape, Shift...) cancels: the control keeps its old key.
    if (name == kInvalid) {
      CaptureSlot = 0;
      return;
    }
    if (CaptureSlot >= 1 && CaptureSlot <= 4) *kControls[CaptureSlot - 1u].key = static_cast<i16>(code);
    CaptureSlot = 0;
  }
}

void Draw_Options_Screen() {
  using modMain::Difficulty;
  mod3Denhance::Clear_Screen();
  Rect whole = mod3Denhance::ScreenRect;
  i16 x0 = 0, y0 = 0;
  Blit_Clipped(BackBuffer, g_background, whole, x0, y0, 0);
  if (Mouse_Over(0)) Draw_Overlay(kArrowLeft);
  if (Mouse_Over(1)) Draw_Overlay(kArrowRight);
  // Any level outside 0..3 shows as the normal one.
  Draw_Overlay(Difficulty <= 3 ? kLevels[Difficulty] : kLevels[1]);
  if (modMain::SkipSetup == 0) Draw_Overlay(kTick);
  if (Mouse_Over(3)) Draw_Overlay(kLeaveLit);
  if (Mouse_Over(4)) Draw_Overlay(kDefaultsLit);
  Draw_Volume();
  if (g_ghost) Draw_Overlay(kGhostTick);
  if (Mouse_Over_Added(kDeviceArea)) Draw_Overlay(kDeviceLit);
  modText::Draw_Text(Screen_X(171), Screen_Y(254), 2, Device_Text());
  for (size_t i = 0; i < kControls.size(); ++i) {
    const Control& c = kControls[i];
    std::string text;
    if (Pad_Chosen()) {
      i16& binding = frmMain::PadBinding[i];
      text = modDInput::Get_Pad_Control_Name(binding);
      // As for keys: a control with no name (from a hand-edited file) becomes the default.
      if (text == kInvalid) {
        binding = frmMain::kDefaultPadBinding[i];
        text = modDInput::Get_Pad_Control_Name(binding);
      }
    } else {
      text = modDInput::Get_Key_Name(*c.key);
      // A key with no name (from a hand-edited settings file) falls back to the default,
      // which is stored when the screen is left.
      if (text == kInvalid) {
        *c.key = c.default_key;
        text = modDInput::Get_Key_Name(c.default_key);
      }
    }
    if (CaptureSlot == i + 1) text = "-----";
    modText::Draw_Text(Screen_X(295), Screen_Y(c.row_y), 2, text);
  }
  modMain::Update_Frame_Timer();
  modMouseParticles::Draw_Particles_Scene();
  modMouseParticles::Draw_Pointer(g_cursor);
  mod3Denhance::Flip();
}

void Options_Screen_Loop() {
  while (Is_Set(OptionsRunning)) {
    if (CaptureSlot == 0) {
      for (int i = 0; i < 9; ++i) {
        if (Mouse_Over(i) && frmMain::Pressed(frmMain::Press::LeftClick)) {
          Act(i);
          frmMain::Take(frmMain::Press::LeftClick);  // one click acts once
        }
      }
      for (int i = 0; i < static_cast<int>(AddedButtons.size()); ++i) {
        if (Mouse_Over_Added(i) && frmMain::Pressed(frmMain::Press::LeftClick)) {
          Act_Added(i);
          frmMain::Take(frmMain::Press::LeftClick);
        }
      }
    } else {
      Capture_Key();  // clicks wait while a key is awaited
    }
    Draw_Options_Screen();
    platform::Pump_Messages();
    if (modMain::QuitRequested) OptionsRunning = kFalse;
  }
  Exit_Options_Screen();
}

void Init_Options_Screen() {
  using mod3Denhance::Create_Surface;
  using modMain::ScaleX, modMain::ScaleY;
  Create_Surface(g_cursor, 11, 19, platform::Game_Path("\\Gfx\\Cursor.bmp"), mod3Denhance::kKeyBlack, kFalse);
  Create_Surface(g_background, modMain::ScreenWidth, modMain::ScreenHeight,
                 platform::Game_Path("\\Gfx\\OptionScr_bg.bmp"), mod3Denhance::kKeyNone, kFalse);
  Create_Surface(g_buttons, 115.0 * ScaleX, 97.0 * ScaleY, platform::Game_Path("\\Gfx\\OptionScr_buttons.bmp"),
                 mod3Denhance::kKeyBlack, kFalse);
  for (size_t i = 0; i < OptionButtons.size(); ++i) {
    const int* a = kAreas[i];
    OptionButtons[i] = mod3Denhance::Make_Rect(Screen_X(a[0]), Screen_Y(a[1]), Screen_X(a[2]), Screen_Y(a[3]));
  }
  for (size_t i = 0; i < AddedButtons.size(); ++i) {
    const int* a = kAddedAreas[i];
    AddedButtons[i] = mod3Denhance::Make_Rect(Screen_X(a[0]), Screen_Y(a[1]), Screen_X(a[2]), Screen_Y(a[3]));
  }
  g_device_text.reserve(kDeviceTextCells);
  g_ghost = ghost::Enabled();
  CaptureSlot = 0;
  OptionsRunning = kTrue;
  modMain::Reset_Game_Clock();
  Options_Screen_Loop();
}

void Exit_Options_Screen() {
  g_background.reset();
  g_cursor.reset();
  g_buttons.reset();
}

u8 Capture_Slot() { return CaptureSlot; }
const Rect& Button_Rect(int area) { return OptionButtons.at(static_cast<size_t>(area)); }

}  // namespace modOptions
