// The options screen's real loop: key capture, difficulty, tick, defaults, the gamepad and
// music volume rows, and the settings it stores.
#include <map>

#include "core/extras.h"
#include "platform/testing.h"
#include "screens/modOptions.h"
#include "support/screen_fixture.h"

using modOptions::Capture_Slot;

namespace {
// Centres of the clickable areas at 640 x 480: easier, harder, tick, store, defaults, the four key rows.
constexpr float kArea[9][2] = {{337, 136}, {437, 136}, {300, 162}, {440, 420}, {230, 420},
                               {300, 286}, {300, 310}, {300, 334}, {300, 358}};
enum { kEasier, kHarder, kTick, kStore, kDefaults, kRowUp, kRowDown, kRowLeft, kRowRight };

class Options : public ScreenTest {
 protected:
  // Frame -> step. A click lasts one frame, then the pointer leaves so the rows are not under the fountain.
  std::map<int, std::function<void()>> steps;
  void Click(int frame, int area) { Click_At(frame, kArea[area][0], kArea[area][1]); }
  void Click_At(int frame, float x, float y) {
    steps[frame] = [x, y] { Move(x, y), Press(); };
    steps[frame + 1] = [] { Release(), Move(620, 20); };
  }
  void Run() {
    on_frame = [this](int f) {
      if (auto it = steps.find(f); it != steps.end()) it->second();
    };
    modMain::GameState = modMain::kStateOptions;
    modOptions::Init_Options_Screen();
  }
  static std::vector<std::string> Saved_Lines() { return testenv::Read_Lines_CRLF(modMain::Settings_Path()); }
  uint32_t Sheet_Pixel(int x, int y) const {
    const auto pic =
        platform::Load_BMP(dir_.path() + "/Gfx/OptionScr_buttons.bmp", 115, 97, platform::PixelFormat::X8R8G8B8);
    return pic ? pic->Argb(x, y) & 0xFFFFFF : 0xFFFFFFFF;
  }
};
}  // namespace

TEST_F(Options, ClickingARowThenPressingWBindsItShowsItAndLeavingStoresIt) {
  bool arrow_shown = false, dashes_shown = false, w_shown = false;
  steps[2] = [&] { arrow_shown = Shows_Text(295, 279, 2, "Up Arrow"); };
  Click(3, kRowUp);
  steps[6] = [&] { dashes_shown = Capture_Slot() == 1 && Shows_Text(295, 279, 2, "-----"), Key_Down(87); };
  steps[7] = [] {
    Key_Up(87);
    EXPECT_TRUE(Capture_Slot() == 0 && modMain::KeyUp == 87);
  };
  steps[8] = [&] { w_shown = Shows_Text(295, 279, 2, "W") && !Shows_Text(295, 279, 2, "-----"); };
  Click(10, kStore);
  Run();
  EXPECT_TRUE(arrow_shown && dashes_shown && w_shown);
  // Seen on frame 11, acted on at once: the save pumps once between write and read.
  EXPECT_EQ(frames, 12) << "the store button leaves on the frame it is clicked";
  EXPECT_EQ(modMain::GameState, modMain::kStateMainMenu);
  EXPECT_EQ(Saved_Lines().at(9), "87");
  EXPECT_EQ(modMain::KeyUp, 87) << "read back after the write";
}

TEST_F(Options, EscapeCancelsTheLowestHeldCodeDecidesAndUnnamedCodesLeaveTheRowWaiting) {
  Click(3, kRowDown);
  steps[6] = [] { Key_Down(27); };  // Escape: cancels, the old key stays
  steps[7] = [] {
    Key_Up(27);
    EXPECT_TRUE(Capture_Slot() == 0 && modMain::KeyDown == 40);
  };
  Click(9, kRowLeft);
  steps[12] = [] { Key_Down(68), Key_Down(65); };  // D and A in one frame: A has the lower code
  steps[13] = [] {
    Key_Up(65), Key_Up(68);
    EXPECT_EQ(modMain::KeyLeft, 65);
  };
  Click(15, kRowRight);
  steps[18] = [] { Key_Down(186); };  // no name (124 and up): still waiting
  Click(20, kHarder);                 // ignored while a key is awaited
  bool still_dashes = false;
  steps[30] = [&] {
    EXPECT_TRUE(Capture_Slot() == 4 && modMain::KeyRight == 39 && modMain::Difficulty == 1);
    still_dashes = Shows_Text(295, 351, 2, "-----");
    Move(300, 200);
  };
  steps[40] = [] { Screenshot("options_capture"); };
  steps[41] = [] { Key_Down(27), platform::Post_Event({platform::EventKind::Quit}); };
  Run();
  EXPECT_TRUE(still_dashes);
  EXPECT_EQ(modMain::KeyRight, 39);
  EXPECT_TRUE(Saved_Lines().empty()) << "closing the window stores nothing";
}

TEST_F(Options, DifficultyStaysInRangeTheTickTogglesThenDefaultsAreStored) {
  modMain::Difficulty = 3, modMain::SkipSetup = 5;
  modMain::KeyUp = 87, modMain::KeyDown = 83, modMain::KeyLeft = 65, modMain::KeyRight = 68;
  modMain::PlayerName = "Vex";
  // The level word and the tick come from the button sheet.
  bool hard = false, easy = false, no_tick = false, tick = false, lit = false;
  Click(2, kHarder);
  Click(5, kEasier);
  steps[7] = [&] {
    hard = modMain::Difficulty == 2 && At(372, 136) == Sheet_Pixel(30, 33) && At(387, 134) == Sheet_Pixel(45, 31);
    no_tick = At(454, 165) != Sheet_Pixel(47, 93);
  };
  for (int f : {8, 10, 12}) Click(f, kEasier);
  steps[14] = [&] { easy = modMain::Difficulty == 0 && At(372, 136) == Sheet_Pixel(30, 61); };
  Click(15, kTick);  // any value but 0 becomes 0
  steps[17] = [&] { tick = modMain::SkipSetup == 0 && At(455, 165) == Sheet_Pixel(47, 93); };
  steps[18] = [] { Move(230, 420); };
  steps[19] = [&] {
    lit = At(174, 418) == Sheet_Pixel(3, 71) && At(424, 418) != Sheet_Pixel(3, 85);
    Screenshot("options_defaults_lit");
  };
  Click(20, kDefaults);
  Click(22, kStore);
  Run();
  EXPECT_TRUE(hard && easy && no_tick && tick);
  EXPECT_TRUE(lit) << "the defaults button lights under the pointer, the store button does not";
  EXPECT_EQ(Saved_Lines(), (std::vector<std::string>{"0", "640", "480", "16", "<none>", "<none>", "1", "Vex", "0", "38",
                                                     "40", "37", "39"}));
}

TEST_F(Options, AnUnnamedKeyFromTheFileShowsAsItsDefaultAndIsStoredSo) {
  testenv::Write_File(modMain::Settings_Path(),
                      "1\r\n640\r\n480\r\n16\r\n<none>\r\n<none>\r\n2\r\nAce\r\n0\r\n38\r\n40\r\n37\r\n27\r\n");
  modMain::Read_Settings();
  ASSERT_EQ(modMain::KeyRight, 27);
  bool shown = false;
  steps[2] = [&] {
    shown = modMain::KeyRight == 39 && Shows_Text(295, 351, 2, "Right Arrow") && Shows_Text(171, 254, 2, "Keyboard");
  };
  Click(3, kStore);
  Run();
  EXPECT_TRUE(shown);
  EXPECT_EQ(Saved_Lines()[12], "39");
  EXPECT_EQ(Saved_Lines()[6], "2");
}

TEST_F(Options, ThePadsStickAndAChooseItItsControlsBindAndTheVolumeIsStoredBesideTheSettings) {
  using platform::Set_Virtual_Pad;
  ASSERT_TRUE(platform::Attach_Virtual_Pad("Test Pad"));
  bool keyboard = false, arrived = false, pad_named = false, trigger = false, x_bound = false, cancelled = false;
  bool no_pad = false;
  steps[2] = [&] { keyboard = Shows_Text(171, 254, 2, "Keyboard"); };
  for (int f : {3, 5, 7}) Click_At(f, 233, 193);  // the volume's left arrow
  // The stick carries the pointer from the top right corner onto the device row; A clicks there.
  steps[10] = [] { Set_Virtual_Pad(platform::kPadLeftStickLeft, 1), Set_Virtual_Pad(platform::kPadLeftStickDown, 1); };
  for (int f = 11; f < 60; ++f)
    steps[f] = [&] {
      if (arrived || frmMain::MouseY < 256) return;
      Set_Virtual_Pad(platform::kPadLeftStickLeft, 0), Set_Virtual_Pad(platform::kPadLeftStickDown, 0);
      Set_Virtual_Pad(platform::kPadA, 1);
      arrived = true;
    };
  steps[60] = [] { Set_Virtual_Pad(platform::kPadA, 0), Move(620, 20); };
  Click_At(61, 400, 193);  // the ghost switch, beside the volume
  // Looked at once the particles left on the way have died.
  steps[125] = [&] {
    Screenshot("options_pad");
    pad_named = modMain::ControlDevice == 1 && Shows_Text(171, 254, 2, "Test Pad");
    trigger = Shows_Text(295, 279, 2, "Right Trigger");
    // Bars 1 to 7 of the volume wedge lit, the eighth not.
    EXPECT_EQ(frmMain::MusicVolume, 7);
    EXPECT_EQ(At(244 + 6 * 6 + 1, 198), 0x38D8F0u);
    EXPECT_NE(At(244 + 6 * 7 + 1, 198), 0x38D8F0u);
    EXPECT_GT(At(458, 192) & 0xFF, 150u) << "the ghost switch ticked";
    EXPECT_EQ(At(458, 192), At(458, 161)) << "with the setup row's tick";
  };
  Click(126, kRowUp);
  steps[129] = [] { Set_Virtual_Pad(platform::kPadX, 1); };
  steps[130] = [] { Set_Virtual_Pad(platform::kPadX, 0); };
  steps[131] = [&] { x_bound = frmMain::PadBinding[0] == platform::kPadX && Shows_Text(295, 279, 2, "X"); };
  Click(132, kRowDown);
  steps[135] = [] { Set_Virtual_Pad(platform::kPadStart, 1); };  // Start cancels
  steps[136] = [&] {
    Set_Virtual_Pad(platform::kPadStart, 0);
    cancelled = Capture_Slot() == 0 && frmMain::PadBinding[1] == platform::kPadLeftTrigger;
  };
  steps[137] = [] { platform::Detach_Virtual_Pad(); };
  steps[139] = [&] {
    Screenshot("options_no_pad");
    no_pad = Shows_Text(171, 254, 2, "no gamepad connected");
  };
  Click(140, kStore);
  Run();
  EXPECT_TRUE(keyboard);
  EXPECT_TRUE(arrived) << "the stick moved the pointer";
  EXPECT_TRUE(pad_named) << "A clicked the device row: the pad's name";
  EXPECT_TRUE(trigger) << "the default thrust";
  EXPECT_TRUE(x_bound);
  EXPECT_TRUE(cancelled);
  EXPECT_TRUE(no_pad);
  EXPECT_EQ(Saved_Lines(), (std::vector<std::string>{"0", "640", "480", "16", "<none>", "<none>", "1", "", "1", "38",
                                                     "40", "37", "39"}))
      << "ControlDevice 1, the keys kept";
  EXPECT_EQ(testenv::Read_File(extras::Path()), "ghost=1\npad_thrust=2\nvolume=7\n");
}
