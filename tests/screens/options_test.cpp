#include <set>

#include "core/extras.h"
#include "screens/modDInput.h"
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
  // A click, after which the pointer leaves so the rows are not under the fountain.
  static Step Click_At(std::string what, float x, float y, std::function<bool()> until = nullptr) {
    return {std::move(what), std::move(until), [x, y] { Move(x, y), Press(), Release(), Move(620, 20); }};
  }
  static Step Click(int area, std::function<bool()> until = nullptr) {
    static const char* const kNames[] = {"easier", "harder",   "tick",     "store",    "defaults",
                                         "Up row", "Down row", "Left row", "Right row"};
    return Click_At(std::string("click ") + kNames[area], kArea[area][0], kArea[area][1], std::move(until));
  }
  static std::function<bool()> Capturing(int slot) {
    return [slot] { return Capture_Slot() == slot; };
  }
  static std::function<bool()> Showing(int x, int y, const std::string& text) {
    return [=] { return Shows_Text(x, y, 2, text); };
  }
  void Run(std::vector<Step> script) {
    Play(std::move(script), [] {
      modMain::GameState = modMain::kStateOptions;
      modOptions::Init_Options_Screen();
    });
  }
  static std::vector<std::string> Saved_Lines() { return testenv::Read_Lines_CRLF(modMain::Settings_Path()); }
  uint32_t Sheet_Pixel(int x, int y) const {
    const auto pic =
        platform::Load_BMP(dir_.path() + "/Gfx/OptionScr_buttons.bmp", 115, 97, platform::PixelFormat::X8R8G8B8);
    return pic ? pic->Pixel(x, y) & 0xFFFFFF : 0xFFFFFFFF;
  }
};
}  // namespace

TEST_F(Options, AnUnnamedKeyShowsAsItsDefaultAClickedRowTakesWAndLeavingStoresBoth) {
  testenv::Write_File(modMain::Settings_Path(),
                      "1\r\n640\r\n480\r\n16\r\n<none>\r\n<none>\r\n2\r\nAce\r\n0\r\n38\r\n40\r\n37\r\n27\r\n");
  modMain::Read_Settings();
  ASSERT_EQ(modMain::KeyRight, 27);
  int clicked_at = 0;
  Run({{"Right Arrow in the Right row", Showing(295, 351, "Right Arrow"),
        [] { EXPECT_TRUE(Shows_Text(171, 254, 2, "Keyboard")); }},
       Click(kRowUp, Showing(295, 279, "Up Arrow")),
       {"capture of the Up row", Capturing(1)},
       {"----- in the Up row", Showing(295, 279, "-----"), [] { Key(87); }},
       {"W ends the capture", Capturing(0), [] { EXPECT_EQ(modMain::KeyUp, 87); }},
       {"W in the Up row", Showing(295, 279, "W"), [] { EXPECT_FALSE(Shows_Text(295, 279, 2, "-----")); }},
       {"click store", nullptr, [&] { Click(kStore).act(), clicked_at = frames; }}});
  // Seen the frame after the click, acted on at once: the save pumps once between write and read.
  EXPECT_EQ(frames, clicked_at + 2) << "the store button leaves on the frame it is clicked";
  EXPECT_EQ(modMain::GameState, modMain::kStateMainMenu);
  EXPECT_EQ(Saved_Lines(), (std::vector<std::string>{"1", "640", "480", "16", "<none>", "<none>", "2", "Ace", "0", "87",
                                                     "40", "37", "39"}))
      << "W stored for Up, the unnamed key as Right Arrow";
  EXPECT_EQ(std::pair(modMain::KeyUp, modMain::KeyRight), (std::pair<i16, i16>(87, 39))) << "read back after the write";
}

TEST_F(Options, EscapeCancelsTheLowestHeldCodeDecidesAndUnnamedCodesLeaveTheRowWaiting) {
  Run({Click(kRowDown),
       {"capture of the Down row", Capturing(2), [] { Key(27); }},  // Escape: cancels, the old key stays
       {"Escape ends the capture", Capturing(0), [] { EXPECT_EQ(modMain::KeyDown, 40); }},
       Click(kRowLeft),
       {"capture of the Left row", Capturing(3),
        [] { Key_Down(68), Key_Down(65), Key_Up(65), Key_Up(68); }},  // D and A in one frame: A has the lower code
       {"D and A end the capture", Capturing(0), [] { EXPECT_EQ(modMain::KeyLeft, 65); }},
       Click(kRowRight),
       {"capture of the Right row", Capturing(4), [] { Key_Down(186); }},  // no name (124 and up): still waiting
       Click(kHarder),                                                     // ignored while a key is awaited
       {"a frame after the click", nullptr,
        [] {
          EXPECT_EQ(Capture_Slot(), 4);
          EXPECT_EQ(modMain::KeyRight, 39);
          EXPECT_EQ(modMain::Difficulty, 1);
          EXPECT_TRUE(Shows_Text(295, 351, 2, "-----")) << "the Right row still waits";
          Move(300, 200);
        }},
       {"screenshot", nullptr, [] { Screenshot("options_capture"); }},
       {"close", nullptr, [] { Key_Down(27), platform::Post_Event({platform::EventKind::Quit}); }}});
  EXPECT_EQ(modMain::KeyRight, 39);
  EXPECT_TRUE(Saved_Lines().empty()) << "closing the window stores nothing";
}

TEST_F(Options, DifficultyStaysInRangeTheTickTogglesThenDefaultsAreStored) {
  modMain::Difficulty = 3, modMain::SkipSetup = 5;
  modMain::KeyUp = 87, modMain::KeyDown = 83, modMain::KeyLeft = 65, modMain::KeyRight = 68;
  modMain::PlayerName = "Vex";
  // The level word and the tick come from the button sheet.
  Run({Click(kHarder),
       Click(kEasier),
       {"difficulty 2", [] { return modMain::Difficulty == 2; },
        [&] {
          EXPECT_EQ(At(372, 136), Sheet_Pixel(30, 33)) << "hard";
          EXPECT_EQ(At(387, 134), Sheet_Pixel(45, 31)) << "hard";
          EXPECT_NE(At(454, 165), Sheet_Pixel(47, 93)) << "no tick";
        }},
       Click(kEasier),
       Click(kEasier),
       Click(kEasier),
       {"difficulty 0", [] { return modMain::Difficulty == 0; },
        [&] { EXPECT_EQ(At(372, 136), Sheet_Pixel(30, 61)) << "easy"; }},
       Click(kTick),  // any value but 0 becomes 0
       {"the tick cleared", [] { return modMain::SkipSetup == 0; },
        [&] {
          EXPECT_EQ(At(455, 165), Sheet_Pixel(47, 93)) << "tick";
          Move(230, 420);
        }},
       {"the pointer on defaults", nullptr,
        [&] {
          EXPECT_EQ(At(174, 418), Sheet_Pixel(3, 71)) << "the defaults button lights under the pointer";
          EXPECT_NE(At(424, 418), Sheet_Pixel(3, 85)) << "the store button does not";
          Screenshot("options_defaults_lit");
        }},
       Click(kDefaults),
       Click(kStore)});
  EXPECT_EQ(Saved_Lines(), (std::vector<std::string>{"0", "640", "480", "16", "<none>", "<none>", "1", "Vex", "0", "38",
                                                     "40", "37", "39"}));
}

TEST_F(Options, ThePadsStickAndAChooseItItsControlsBindAndTheVolumeIsStoredBesideTheSettings) {
  using platform::Set_Virtual_Pad;
  ASSERT_TRUE(platform::Attach_Virtual_Pad("Test Pad"));
  const auto volume_left = [] { return Click_At("click the volume's left arrow", 233, 193); };
  // Looked at once the particles left on the way have died.
  const auto settled = [] {
    for (const auto& p : modMouseParticles::Particles)
      if (p.Life > 0 && p.X < 500 && p.Y > 130 && p.Y < 310) return false;
    return true;
  };
  Run({{"Keyboard in the device row", Showing(171, 254, "Keyboard")},
       volume_left(),
       volume_left(),
       volume_left(),
       // The stick carries the pointer from the top right corner onto the device row; A clicks there.
       {"stick", nullptr,
        [] { Set_Virtual_Pad(platform::kPadLeftStickLeft, 1), Set_Virtual_Pad(platform::kPadLeftStickDown, 1); }},
       {"the stick moves the pointer onto the device row", [] { return frmMain::MouseY >= 256; },
        [] {
          Set_Virtual_Pad(platform::kPadLeftStickLeft, 0), Set_Virtual_Pad(platform::kPadLeftStickDown, 0);
          Set_Virtual_Pad(platform::kPadA, 1);
        }},
       {"A chooses the pad", [] { return modMain::ControlDevice == 1; },
        [] { Set_Virtual_Pad(platform::kPadA, 0), Move(620, 20); }},
       Click_At("click the ghost switch, beside the volume", 400, 193),
       {"the fountain gone from the rows", settled,
        [] {
          Screenshot("options_pad");
          EXPECT_TRUE(Shows_Text(171, 254, 2, "Test Pad")) << "the pad's name";
          EXPECT_TRUE(Shows_Text(295, 279, 2, "Right Trigger")) << "the default thrust";
          // Bars 1 to 7 of the volume wedge lit, the eighth not.
          EXPECT_EQ(frmMain::MusicVolume, 7);
          EXPECT_EQ(At(244 + 6 * 6 + 1, 198), 0x38D8F0u);
          EXPECT_NE(At(244 + 6 * 7 + 1, 198), 0x38D8F0u);
          EXPECT_GT(At(458, 192) & 0xFF, 150u) << "the ghost switch ticked";
          EXPECT_EQ(At(458, 192), At(458, 161)) << "with the setup row's tick";
        }},
       Click(kRowUp),
       {"capture of the Up row", Capturing(1), [] { Set_Virtual_Pad(platform::kPadX, 1); }},
       {"X let go", nullptr, [] { Set_Virtual_Pad(platform::kPadX, 0); }},
       {"X ends the capture", Capturing(0),
        [] {
          EXPECT_EQ(frmMain::PadBinding[0], platform::kPadX);
          EXPECT_TRUE(Shows_Text(295, 279, 2, "X"));
        }},
       Click(kRowDown),
       {"capture of the Down row", Capturing(2), [] { Set_Virtual_Pad(platform::kPadStart, 1); }},
       {"Start let go", nullptr, [] { Set_Virtual_Pad(platform::kPadStart, 0); }},
       {"Start cancels the capture", Capturing(0),
        [] {
          EXPECT_EQ(frmMain::PadBinding[1], platform::kPadLeftTrigger);
          platform::Detach_Virtual_Pad();
        }},
       {"no pad in the device row", Showing(171, 254, "no gamepad connected"), [] { Screenshot("options_no_pad"); }},
       Click(kStore)});
  EXPECT_EQ(Saved_Lines(), (std::vector<std::string>{"0", "640", "480", "16", "<none>", "<none>", "1", "", "1", "38",
                                                     "40", "37", "39"}))
      << "ControlDevice 1, the keys kept";
  EXPECT_EQ(testenv::Read_File(extras::Path()), "ghost=1\npad_thrust=2\nvolume=7\n");
}

using modDInput::Get_Key_Name;

TEST(KeyNames, NamedCodesAndFiftyTwoUniqueNamesAllBelow124) {
  std::string shown;
  for (int code : {13, 32, 37, 39, 40, 48, 65, 86, 90, 96, 105})
    shown += std::to_string(code) + "=" + Get_Key_Name(static_cast<i16>(code)) + " ";
  EXPECT_EQ(shown,
            "13=Enter 32=Spacebar 37=Left Arrow 39=Right Arrow 40=Down Arrow 48=0 65=A 86=V 90=Z 96=Numpad 0 "
            "105=Numpad 9 ");
  // The 51 of the table plus V; every other code (Escape, Shift, punctuation, each range's
  // neighbours) reads "<invalid>".
  std::set<std::string> names;
  int named = 0;
  for (int code = -32768; code <= 32767; ++code) {
    const std::string n = Get_Key_Name(static_cast<i16>(code));
    if (n == "<invalid>") continue;
    ++named;
    EXPECT_TRUE(code >= 0 && code < 124) << code << " is named " << n;
    names.insert(n);
  }
  EXPECT_EQ(named, 52);
  EXPECT_EQ(names.size(), 52u);
}
