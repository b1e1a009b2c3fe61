// The whole game played by a script on the manual clock: both intro pages, the main menu,
// ship selection's start, a race against four computer ships with the player on an autopilot that
// presses the bound keys, the hi-score table and quit. The log, the
// settings file and the hi-score file it leaves are checked byte for byte. And a game that
// cannot start for a missing picture.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "core/extras.h"
#include "core/modMain.h"
#include "game_script.h"
#include "run_log.h"

namespace {

// Little-endian figures and length-prefixed names, as the hi-score file holds them.
template <class T>
void Append(std::string& out, T v, const std::string& name) {
  out.append(reinterpret_cast<const char*>(&v), sizeof v);
  const auto size = static_cast<int16_t>(name.size());
  out.append(reinterpret_cast<const char*>(&size), 2) += name;
}

TEST(WholeGame, IntroMenuShipsRaceHiScoresAndQuit) {
  testenv::ScratchAppDir dir;
  New_Player(dir);
  // The generated track's texture count decides the teardown's release lines.
  std::string error;
  ASSERT_TRUE(modTracks::Load_Track(&error)) << error;
  const int track_textures = modTracks::TrackTexture.Upper() + 1;
  modTracks::Clear_Track();

  Tour tour;
  tour.menu_buttons = {1, 3};  // race four ships, then quit
  int16_t top_speed = 0;
  int32_t laps[3] = {}, race = 0;
  tour.finished = [&](const clsHumanPlayer& p) {
    top_speed = p.cTopSpeed, race = p.cRaceTime;
    for (int lap = 0; lap < 3; ++lap) laps[lap] = p.cLapTime(lap + 1);
  };
  Run_Main([&](uint64_t pump) {
    platform::Advance_Manual_Clock(16);
    tour.Pump(pump);
  });

  EXPECT_EQ(tour.intro_pages, (std::vector<int16_t>{1, 2}));
  EXPECT_EQ(tour.states, (std::vector<uint8_t>{5, 0, 3, 1, 2, 0}));
  EXPECT_GT(top_speed, 100);
  EXPECT_EQ(race, laps[0] + laps[1] + laps[2]);
  // The table: the first race beats an empty one on all three records.
  std::string table;
  Append(table, top_speed, "ace");
  Append(table, std::min({laps[0], laps[1], laps[2]}), "ace");
  Append(table, race, "ace");
  EXPECT_EQ(testenv::Read_File(dir.path() + "/Data/Hiscores.Dat"), table);
  // The name kept with the settings.
  EXPECT_EQ(testenv::Read_File(modMain::Settings_Path()),
            "1\r\n640\r\n480\r\n16\r\n<none>\r\n<none>\r\n1\r\nace\r\n0\r\n38\r\n40\r\n37\r\n39\r\n");
  EXPECT_FALSE(std::filesystem::exists(extras::Path())) << "nothing of the additions changed: no Quorval.cfg";

  std::vector<std::string> expected = kStartUpLines;
  for (const auto& part : {Race_Log_Lines(track_textures),
                           Lines("Initialising HiScores...|   Loading Surfaces...|   ...Surfaces Loaded||"
                                 "   Reading Scores...|   ...Done"),
                           kShutdownLines})
    expected.insert(expected.end(), part.begin(), part.end());
  EXPECT_EQ(testenv::Read_Lines_CRLF(modMain::Log_Path()), expected);
}

TEST(WholeGame, MissingFontPictureIsNamedAndTheGameEndsInOrder) {
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
