// Whole runs of the game in process with scripted input (the installed game's test runs
// a new player's first run through the setup dialog, and the real executable).
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "core/log.h"
#include "core/modMain.h"
#include "game_script.h"
#include "run_log.h"

namespace {

TEST(WholeRun, IntroThenMenuThenQuitLeavesTheCompleteLog) {
  testenv::ScratchAppDir dir;
  dir.Copy_From_Game("Gfx");
  testenv::Write_File(modMain::Settings_Path(), kDefaultIni);
  std::vector<uint8_t> states_seen;
  // One scripted step per pumped frame: 16 ms pass, and the script presses its keys.
  Run_Main([&](uint64_t pump) {
    platform::Advance_Manual_Clock(16);
    if (states_seen.empty() || states_seen.back() != modMain::GameState) states_seen.push_back(modMain::GameState);
    // Enter held over two frames skips both intro pictures.
    if (pump == 3) platform::Post_Event({EventKind::KeyDown, 13});
    if (pump == 5) platform::Post_Event({EventKind::KeyUp, 13});
    // The menu's buttons slide in for 1040 ms; then the quit button (fourth row) is clicked.
    if (pump == 8) platform::Post_Event({EventKind::MouseMove, 0, 0, 0, 320, 320});
    if (pump == 100) platform::Post_Event({EventKind::MouseDown, 0, 1, 0, 320, 320});
  });
  EXPECT_EQ(states_seen, (std::vector<uint8_t>{5, 0}));
  std::vector<std::string> expected = Lines("Program Started| |Reading Quorval.ini...|...Done");
  for (const auto& part : {Start_Up_Lines("<none>"), kShutdownLines})
    expected.insert(expected.end(), part.begin(), part.end());
  EXPECT_EQ(testenv::Read_Lines_CRLF(modMain::Log_Path()), expected);
  EXPECT_EQ(modMain::FrameTime, 16);
}

TEST(WholeRun, MissingFontPictureIsNamedAndTheGameEndsInOrder) {
  testenv::ScratchAppDir dir;
  dir.Copy_From_Game("Gfx");
  std::filesystem::remove(dir.path() + "/Gfx/Font1.bmp");
  testenv::Write_File(modMain::Settings_Path(), kDefaultIni);
  bool looped = false;
  Run_Main([&](uint64_t) {
    looped = true;
    platform::Post_Event({EventKind::Quit});
  });
  EXPECT_FALSE(looped);  // no screen ran without its text
  const auto lines = testenv::Read_Lines_CRLF(modMain::Log_Path());
  const auto fonts = std::find(lines.begin(), lines.end(), "Making Fonts...");
  ASSERT_NE(fonts, lines.end());
  std::vector<std::string> expected =
      Lines("Making Fonts...|Loading Font0.bmp...|...Done|Loading Font1.bmp...|Font file " + dir.path() +
            "/Gfx/Font1.bmp could not be loaded");
  expected.insert(expected.end(), kShutdownLines.begin(), kShutdownLines.end());
  EXPECT_EQ(std::vector<std::string>(fonts, lines.end()), expected);
}

}  // namespace
