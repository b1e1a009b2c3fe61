// The whole game on the manual clock. When the race changes on purpose, record the replays in tests/app/replays again:
//   build/tests/tests_app --gtest_also_run_disabled_tests --gtest_filter='*Record*'
#include <cstdio>
#include <map>

#include "../../tools/assetgen/track_params.h"
#include "core/extras.h"
#include "core/hiscore_file.h"
#include "game_script.h"

namespace {

TEST(WholeGame, IntroMenuShipsRaceHiScoresAndQuit) {
  testenv::ScratchAppDir dir;
  New_Player(dir);
  Tour tour;
  tour.menu_buttons = {1, 3};  // race four ships, then quit
  int16_t top_speed = 0;
  int32_t laps[3] = {}, race = 0;
  tour.finished = [&](const clsHumanPlayer& p) {
    top_speed = p.cTopSpeed, race = p.cRaceTime;
    for (int lap = 0; lap < 3; ++lap) laps[lap] = p.cLapTime(lap + 1);
  };
  Run_Tour(tour);

  EXPECT_EQ(tour.intro_pages, (std::vector<int16_t>{1, 2}));
  EXPECT_EQ(tour.states, (std::vector<uint8_t>{5, 0, 3, 1, 2, 0}));
  EXPECT_GT(top_speed, 100);
  // The table: the first race beats an empty one on all three records.
  EXPECT_EQ(testenv::Read_File(dir.path() + "/Data/Hiscores.Dat"),
            modHiScore::Encode_HiScores({top_speed, "ace", std::min({laps[0], laps[1], laps[2]}), "ace", race, "ace"}));
  EXPECT_EQ(testenv::Read_File(modMain::Settings_Path()),
            "1\r\n640\r\n480\r\n16\r\n<none>\r\n<none>\r\n1\r\nace\r\n0\r\n38\r\n40\r\n37\r\n39\r\n");
  EXPECT_FALSE(std::filesystem::exists(extras::Path())) << "nothing of the additions changed: no Quorval.cfg";

  std::vector<std::string> expected = kStartUpLines;
  for (const auto& part : {Race_Log_Lines(trackgen::kTexCount),
                           Lines("Initialising HiScores...|   Loading Surfaces...|   ...Surfaces Loaded||"
                                 "   Reading Scores...|   ...Done"),
                           kShutdownLines})
    expected.insert(expected.end(), part.begin(), part.end());
  EXPECT_EQ(testenv::Read_Lines_CRLF(modMain::Log_Path()), expected);
}

TEST(WholeGame, MissingFontPictureIsNamedAndTheGameEndsInOrder) {
  testenv::ScratchAppDir dir{"Gfx"};
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

const std::filesystem::path kReplays = std::filesystem::path(__FILE__).parent_path() / "replays";

// What a run leaves, by the replay file that keeps it.
using Outcome = std::map<std::string, std::string>;
const char* const kKept[] = {".places", ".log", ".hiscores", ".ghost"};

// Where every racer stands when the race hands over to the hi-score table.
std::string Places() {
  std::string out;
  char line[128];
  for (const auto& r : modMain::Players) {
    if (!r) continue;
    std::snprintf(line, sizeof line, "%.9g %.9g %.9g %.9g %d\n", double(r->PositionX), double(r->PositionY),
                  double(r->PositionZ), double(r->cOrientation), r->cRaceTime);
    out += line;
  }
  return out;
}

// A new player's first run with the ghost switched on; drive(pump) plays or just watches.
Outcome Play(const std::function<void(uint64_t)>& drive) {
  testenv::ScratchAppDir dir;
  New_Player(dir);
  testenv::Write_File(extras::Path(), "ghost=1\n");
  Outcome out;
  uint8_t last_state = 255;
  platform::Set_Manual_Clock(0);
  Run_Main([&](uint64_t pump) {
    ASSERT_LT(pump, 40000u) << "the run is stuck in state " << int(modMain::GameState);
    if (last_state == modMain::kStateRace && modMain::GameState != last_state) out[".places"] = Places();
    last_state = modMain::GameState;
    drive(pump);
  });
  out[".log"] = testenv::Read_File(modMain::Log_Path());
  out[".hiscores"] = testenv::Read_File(dir.path() + "/Data/Hiscores.Dat");
  out[".ghost"] = testenv::Read_File(dir.path() + "/Data/Ghost.Dat");
  extras::Reset();
  return out;
}

struct Recorded {
  const char* name;
  std::function<int32_t(uint64_t)> frame_ms;
};
const Recorded kRuns[] = {
    {"even16", [](uint64_t) { return 16; }},
    // A fixed sequence of frames between 7 and 40 ms, as a loaded machine gives them.
    {"uneven7to40", [](uint64_t pump) { return static_cast<int32_t>(7 + (pump * 2654435761u >> 7) % 34); }},
};

std::string Path(const char* name, const char* what) { return (kReplays / (std::string(name) + what)).string(); }

void Replay(const Recorded& run) {
  platform::Journal journal;
  std::string error;
  ASSERT_TRUE(platform::Parse_Journal(testenv::Read_File(Path(run.name, ".journal")), journal, error)) << error;
  platform::Replay_Journal(std::move(journal));
  Outcome out = Play([](uint64_t) {});
  platform::Replay_Journal({});
  for (const char* file : kKept) EXPECT_EQ(out[file], testenv::Read_File(Path(run.name, file))) << file;
}

// Two tests, so that the two runs may go side by side.
TEST(Replay, RaceAt16msFramesReplaysByteForByte) { Replay(kRuns[0]); }
TEST(Replay, RaceAtUneven7To40msFramesReplaysByteForByte) { Replay(kRuns[1]); }

// Records both runs of the tour: their journals and what the runs left go into tests/app/replays.
TEST(Replay, DISABLED_RecordBoth) {
  std::filesystem::create_directories(kReplays);
  for (const Recorded& run : kRuns) {
    Tour tour;
    tour.menu_buttons = {1, 3};  // race four ships, then quit
    platform::Start_Journal();
    Outcome out = Play([&](uint64_t pump) {
      platform::Advance_Manual_Clock(run.frame_ms(pump));
      tour.Pump(pump);
    });
    const std::string text = platform::Journal_Text(platform::Stop_Journal());
    ASSERT_FALSE(out[".ghost"].empty()) << "the record race keeps its ghost";
    platform::Journal back;
    std::string error;
    ASSERT_TRUE(platform::Parse_Journal(text, back, error)) << error;
    EXPECT_EQ(platform::Journal_Text(back), text);
    testenv::Write_File(Path(run.name, ".journal"), text);
    for (const char* file : kKept) testenv::Write_File(Path(run.name, file), out[file]);
  }
}

}  // namespace
