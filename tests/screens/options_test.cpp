// The options screen's real loop: key capture, difficulty and tick, defaults, the text
// and overlays it draws, and the settings file it writes on leaving.
#include <gtest/gtest.h>

#include <map>

#include "support/screen_fixture.h"
#include "screens/modOptions.h"
#include "support/test_env.h"

using modOptions::CaptureSlot;

namespace {
// Centres of the clickable areas at 640 x 480, by index.
constexpr float kArea[9][2] = {{337, 136}, {437, 136}, {300, 162}, {440, 420}, {230, 420},
                               {300, 286}, {300, 310}, {300, 334}, {300, 358}};
constexpr int kRowY[4] = {279, 303, 327, 351};

class Options : public ScreenTest {
 protected:
  // Frame -> step of the script. A click on an area lasts one frame and the pointer then
  // moves out of the way, so the rows are not under the fountain.
  std::map<int, std::function<void()>> steps;
  void Click(int frame, int area) {
    steps[frame] = [area] {
      Move(kArea[area][0], kArea[area][1]);
      Press();
    };
    steps[frame + 1] = [] {
      Release();
      Move(620, 20);
    };
  }
  void At_Frame(int frame, std::function<void()> step) { steps[frame] = std::move(step); }
  void Run() {
    frames = 0;
    on_frame = [this](int f) {
      if (auto it = steps.find(f); it != steps.end()) it->second();
    };
    modMain::GameState = modMain::kStateOptions;
    modOptions::Init_Options_Screen();
  }
  std::vector<std::string> Saved_Lines() const { return testenv::Read_Lines_CRLF(modMain::Settings_Path()); }
  uint32_t Sheet_Pixel(int x, int y) const {
    const auto pic =
        platform::Load_BMP(dir_.path() + "/Gfx/OptionScr_buttons.bmp", 115, 97, platform::PixelFormat::X8R8G8B8);
    return pic ? pic->Argb(x, y) & 0xFFFFFF : 0xFFFFFFFF;
  }
};
}  // namespace

TEST_F(Options, ClickingARowThenPressingWBindsItShowsItAndLeavingStoresIt) {
  bool arrow_shown = false, dashes_shown = false, w_shown = false;
  At_Frame(2, [&] { arrow_shown = Shows_Text(295, 279, 2, "Up Arrow"); });
  Click(3, 5);
  At_Frame(6, [&] {
    EXPECT_EQ(CaptureSlot, 1);
    dashes_shown = Shows_Text(295, 279, 2, "-----");
    Key_Down(87);
  });
  At_Frame(7, [&] {
    EXPECT_EQ(CaptureSlot, 0);
    EXPECT_EQ(modMain::KeyUp, 87);
    Key_Up(87);
  });
  At_Frame(8, [&] { w_shown = Shows_Text(295, 279, 2, "W") && !Shows_Text(295, 279, 2, "-----"); });
  Click(10, 3);
  Run();
  EXPECT_TRUE(arrow_shown);
  EXPECT_TRUE(dashes_shown);
  EXPECT_TRUE(w_shown);
  // Seen on frame 11, acted on at once: the save pumps once between write and read.
  EXPECT_EQ(frames, 12) << "the store button leaves on the frame it is clicked";
  EXPECT_EQ(modMain::GameState, modMain::kStateMainMenu);
  const auto lines = Saved_Lines();
  ASSERT_EQ(lines.size(), 13u);
  EXPECT_EQ(lines[9], "87");
  EXPECT_EQ(modMain::KeyUp, 87) << "read back after the write";
}

TEST_F(Options, UnnamedKeysCancelAndTheLowestHeldCodeDecides) {
  Click(3, 6);
  At_Frame(6, [] { Key_Down(27); });  // Escape: cancels, the old key stays
  At_Frame(7, [] {
    EXPECT_EQ(CaptureSlot, 0);
    EXPECT_EQ(modMain::KeyDown, 40);
    Key_Up(27);
  });
  Click(9, 7);
  At_Frame(12, [] {
    Key_Down(68);  // D and A in the same frame: A has the lower code
    Key_Down(65);
  });
  At_Frame(13, [] {
    EXPECT_EQ(modMain::KeyLeft, 65);
    Key_Up(65);
    Key_Up(68);
  });
  At_Frame(15, [] { Key_Down(37); });  // Left Arrow held before the click
  Click(16, 5);
  At_Frame(18, [] {
    EXPECT_EQ(CaptureSlot, 0) << "taken on the frame after the click";
    EXPECT_EQ(modMain::KeyUp, 37);
    Key_Up(37);
  });
  Click(20, 8);
  At_Frame(23, [] { Key_Down(13); });  // Enter has a name and is bound
  At_Frame(24, [] {
    EXPECT_EQ(modMain::KeyRight, 13);
    Key_Up(13);
  });
  Click(26, 6);
  At_Frame(29, [] { Key_Down(16); });  // Shift cancels too
  At_Frame(30, [] {
    EXPECT_EQ(CaptureSlot, 0);
    EXPECT_EQ(modMain::KeyDown, 40);
    Key_Up(16);
    platform::Post_Event({platform::EventKind::Quit});
  });
  Run();
  EXPECT_EQ(frames, 30);
  EXPECT_TRUE(Saved_Lines().empty()) << "closing the window stores nothing";
}

TEST_F(Options, APunctuationKeyLeavesTheRowWaitingAndClicksWaitToo) {
  bool still_dashes = false;
  Click(3, 8);
  At_Frame(6, [] { Key_Down(186); });
  Click(8, 1);  // ignored while a key is awaited
  At_Frame(20, [&] {
    EXPECT_EQ(CaptureSlot, 4);
    EXPECT_EQ(modMain::KeyRight, 39);
    EXPECT_EQ(modMain::Difficulty, 1);
    still_dashes = Shows_Text(295, 351, 2, "-----");
    Move(300, 200);
  });
  At_Frame(40, [] { Screenshot("options_capture"); });
  At_Frame(41, [] { Key_Down(27); });
  Click(43, 3);
  Run();
  EXPECT_TRUE(still_dashes);
  EXPECT_EQ(modMain::KeyRight, 39);
  EXPECT_EQ(modMain::Difficulty, 1);
}

TEST_F(Options, DifficultyStaysInRangeTheTickTogglesAndTheOverlaysFollow) {
  modMain::Difficulty = 3;
  modMain::SkipSetup = 5;
  bool word_hard = false, word_easy = false, no_tick = false, tick = false;
  Click(2, 1);
  At_Frame(4, [] { EXPECT_EQ(modMain::Difficulty, 3); });
  Click(5, 0);
  At_Frame(7, [&] {
    EXPECT_EQ(modMain::Difficulty, 2);
    word_hard = At(342 + 30, 129 + 7) == Sheet_Pixel(30, 26 + 7) && At(342 + 45, 129 + 5) == Sheet_Pixel(45, 26 + 5);
    no_tick = At(447 + 7, 155 + 10) != Sheet_Pixel(47, 93);
  });
  Click(8, 0);
  Click(10, 0);
  Click(12, 0);
  At_Frame(14, [&] {
    EXPECT_EQ(modMain::Difficulty, 0);
    word_easy = At(342 + 30, 129 + 7) == Sheet_Pixel(30, 54 + 7);
  });
  Click(15, 2);
  At_Frame(17, [&] {
    EXPECT_EQ(modMain::SkipSetup, 0) << "any value but 0 becomes 0";
    tick = At(448 + 7, 155 + 10) == Sheet_Pixel(47, 93);
  });
  Click(18, 2);
  At_Frame(20, [] { EXPECT_EQ(modMain::SkipSetup, 1); });
  Click(21, 3);
  Run();
  EXPECT_TRUE(word_hard);
  EXPECT_TRUE(word_easy);
  EXPECT_TRUE(no_tick);
  EXPECT_TRUE(tick);
  EXPECT_EQ(Saved_Lines()[6], "0");
}

TEST_F(Options, DefaultsThenLeaveWritesTheDefaultControlsDifficultyAndTick) {
  modMain::SkipSetup = 1;
  modMain::Difficulty = 3;
  modMain::KeyUp = 87, modMain::KeyDown = 83, modMain::KeyLeft = 65, modMain::KeyRight = 68;
  modMain::PlayerName = "Vex";
  bool lit = false;
  At_Frame(1, [] { Move(230, 420); });
  At_Frame(2, [&] {
    lit = At(171 + 3, 415 + 3) == Sheet_Pixel(3, 68 + 3) && At(421 + 3, 415 + 3) != Sheet_Pixel(3, 82 + 3);
    Screenshot("options_defaults_lit");
  });
  Click(3, 4);
  At_Frame(5, [] { EXPECT_EQ(modMain::KeyUp, 38); });
  Click(6, 3);
  Run();
  EXPECT_TRUE(lit) << "the defaults button lights under the pointer, the store button does not";
  EXPECT_EQ(Saved_Lines(), (std::vector<std::string>{"0", "640", "480", "16", "<none>", "<none>", "1", "Vex", "0",
                                                     "38", "40", "37", "39"}));
}

TEST_F(Options, AnUnnamedKeyFromTheFileShowsAsItsDefaultAndIsStoredSo) {
  testenv::Write_File(modMain::Settings_Path(),
                      "1\r\n640\r\n480\r\n16\r\n<none>\r\n<none>\r\n2\r\nAce\r\n0\r\n38\r\n40\r\n37\r\n27\r\n");
  modMain::Read_Settings();
  ASSERT_EQ(modMain::KeyRight, 27);
  bool shown = false;
  At_Frame(2, [&] {
    EXPECT_EQ(modMain::KeyRight, 39);
    shown = Shows_Text(295, kRowY[3], 2, "Right Arrow") && Shows_Text(171, 254, 2, "Keyboard");
  });
  Click(3, 3);
  Run();
  EXPECT_TRUE(shown);
  EXPECT_EQ(Saved_Lines()[12], "39");
  EXPECT_EQ(Saved_Lines()[6], "2");
}
