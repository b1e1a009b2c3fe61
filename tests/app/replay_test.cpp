// Recorded runs as regression tests: two whole runs (a race against four computer ships at
// 16 ms frames, and the same at uneven 7-40 ms frames) were recorded from a script and are
// replayed from their journals. Each must leave, byte for byte, the log, Hiscores.Dat,
// Ghost.Dat and the racers' final places it left when recorded. A change to how the race
// plays fails here and is re-recorded on purpose:
//   build/tests/tests_app --gtest_also_run_disabled_tests --gtest_filter='*Record*'
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include "app/startup.h"
#include "core/extras.h"
#include "core/modMain.h"
#include "game_script.h"
#include "support/test_env.h"
#include "vehicle/ghost.h"
#include "vehicle/players.h"

namespace {

const std::filesystem::path kReplays = std::filesystem::path(__FILE__).parent_path() / "replays";

struct Outcome {
  std::string log, hiscores, ghost, places;
};

// Where every racer stands when the race hands over to the hi-score table.
std::string Places() {
  std::string out;
  char line[128];
  for (const auto& r : modMain::Players) {
    if (!r) continue;
    std::snprintf(line, sizeof line, "%.9g %.9g %.9g %.9g %d\n", static_cast<double>(r->PositionX),
                  static_cast<double>(r->PositionY), static_cast<double>(r->PositionZ),
                  static_cast<double>(r->cOrientation), r->cRaceTime);
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
    if (last_state == modMain::kStateRace && modMain::GameState != last_state) out.places = Places();
    last_state = modMain::GameState;
    drive(pump);
  });
  out.log = testenv::Read_File(modMain::Log_Path());
  out.hiscores = testenv::Read_File(dir.path() + "/Data/Hiscores.Dat");
  out.ghost = testenv::Read_File(dir.path() + "/Data/Ghost.Dat");
  extras::Reset();
  return out;
}

// Intro, race against four ships, three laps on the autopilot, "ace" on the table, quit.
// Frames last frame_ms(pump) milliseconds.
Outcome Record(const std::function<int32_t(uint64_t)>& frame_ms, platform::Journal& journal) {
  Tour tour;
  tour.menu_buttons = {1, 3};  // race four ships, then quit
  platform::Start_Journal();
  Outcome out = Play([&](uint64_t pump) {
    platform::Advance_Manual_Clock(frame_ms(pump));
    tour.Pump(pump);
  });
  journal = platform::Stop_Journal();
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
  const Outcome out = Play([](uint64_t) {});
  platform::Replay_Journal({});
  EXPECT_EQ(out.places, testenv::Read_File(Path(run.name, ".places")));
  EXPECT_EQ(out.log, testenv::Read_File(Path(run.name, ".log")));
  EXPECT_EQ(out.hiscores, testenv::Read_File(Path(run.name, ".hiscores")));
  EXPECT_TRUE(out.ghost == testenv::Read_File(Path(run.name, ".ghost"))) << "Ghost.Dat differs";
}

// Two tests, so that the two runs may go side by side.
TEST(Replay, RaceAt16msFramesReplaysByteForByte) { Replay(kRuns[0]); }
TEST(Replay, RaceAtUneven7To40msFramesReplaysByteForByte) { Replay(kRuns[1]); }

// Writes the journals and what their runs left into tests/app/replays.
TEST(Replay, DISABLED_RecordBoth) {
  std::filesystem::create_directories(kReplays);
  for (const Recorded& run : kRuns) {
    platform::Journal journal;
    const Outcome out = Record(run.frame_ms, journal);
    ASSERT_FALSE(out.ghost.empty()) << "the record race keeps its ghost";
    const std::string text = platform::Journal_Text(journal);
    platform::Journal back;
    std::string error;
    ASSERT_TRUE(platform::Parse_Journal(text, back, error)) << error;
    EXPECT_EQ(platform::Journal_Text(back), text);
    testenv::Write_File(Path(run.name, ".journal"), text);
    testenv::Write_File(Path(run.name, ".places"), out.places);
    testenv::Write_File(Path(run.name, ".log"), out.log);
    testenv::Write_File(Path(run.name, ".hiscores"), out.hiscores);
    testenv::Write_File(Path(run.name, ".ghost"), out.ghost);
  }
}

}  // namespace
