// The ghost: its file, its flight between samples, the recording of a real race on the
// generated track, split lines against it, and the race frame and HUD that show it.
#include "vehicle/ghost.h"

#include <climits>
#include <cstring>
#include <tuple>

#include "core/extras.h"
#include "core/log.h"
#include "race/race_fixture.h"
#include "vehicle/racer_fixture.h"

namespace {

using namespace vehicle_test;
constexpr i32 kFrame = 16;

bool Decode(const std::string& bytes, ghost::Recording& out, std::string& error) {
  return ghost::Decode(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size(), out, error);
}

TEST(Ghost, FileRoundTripsEveryDamagedFormIsRefusedAndItFliesBetweenItsSamples) {
  ghost::Recording r, back;
  r.track_size = 10, r.track_checksum = 0xABCD, r.ship = 1, r.skin = 2, r.ship_name = "Ship_1", r.race_time = 900;
  for (int i = 0; i < ghost::kSplits; ++i) r.splits[i] = 50 * (i + 1);
  r.samples = {{0, 0, 1, 0, 0, 0}, {100, 10, 3, -20, 2, 0.5f}};
  const std::string bytes = ghost::Encode(r);
  std::string error;
  ASSERT_TRUE(Decode(bytes, back, error)) << error;
  EXPECT_EQ(ghost::Encode(back), bytes);
  // Every cut of the file, and one byte too many, is refused.
  for (size_t n = 0; n <= bytes.size(); ++n)
    EXPECT_FALSE(Decode(n < bytes.size() ? bytes.substr(0, n) : bytes + '\0', back, error)) << n;
  const size_t samples = bytes.size() - 2 * 24;
  for (const auto& [what, at, value] : {std::tuple<const char*, size_t, uint8_t>{"version", 4, 2},
                                        {"skin", 16, 7},
                                        {"name", 19, '/'},
                                        {"count", samples - 4, 3},
                                        {"float", samples + 7, 0x7F},
                                        {"time order", samples + 24 + 3, 0xFF}}) {
    std::string bad = bytes;
    bad[at] = static_cast<char>(value);
    if (std::strcmp(what, "float") == 0) bad[at - 1] = static_cast<char>(0xC0);  // a NaN
    EXPECT_FALSE(Decode(bad, back, error)) << what;
  }
  const ghost::Sample mid = ghost::Sample_At(r.samples, 25);
  EXPECT_EQ((std::vector<float>{mid.x, mid.y, mid.z, mid.heading, mid.bank}),
            (std::vector<float>{2.5f, 1.5f, -5.0f, 0.5f, 0.125f}));
  EXPECT_FLOAT_EQ(ghost::Sample_At(r.samples, -40).x, 0.0f) << "held at the first sample";
  EXPECT_FLOAT_EQ(ghost::Sample_At(r.samples, 4000).x, 10.0f) << "held at the last sample";
  EXPECT_EQ(ghost::Sector_Start(1, 334), 83);
  EXPECT_EQ(ghost::Sector_Start(3, 334), 250);
  EXPECT_EQ(modGameLoop::Split_Text(-8346), "-00:08:35");
  EXPECT_EQ(modGameLoop::Split_Text(4500), "+00:04:50");
}

// One autopiloted player, alone, three laps; slow makes it lift off the throttle at times.
i32 Race(bool slow, const std::string& track, std::vector<ghost::Split>* splits) {
  clsHumanPlayer& p = Make_Players(1);
  p.RacerKind = 1;
  EXPECT_TRUE(p.Reset_Car_Attributes(0));
  uint32_t size = 0, sum = 0;
  EXPECT_TRUE(ghost::File_Checksum(track, size, sum));
  ghost::Begin_Race(p, p.ShipBaseName, size, sum, modTracks::TrackBlock.Count());
  modMain::FrameTime = kFrame, modMain::GameClock = 0;
  bool first_go = true;
  int last_line = -1;
  for (i32 elapsed = kFrame; p.cFinishedRace == 0 && elapsed < 400000; elapsed += kFrame) {
    modMain::GameClock += kFrame;
    Autopilot(p);
    if (slow && (elapsed / 1000) % 5 == 0) p.Thrust = kFalse;
    modGameLoop::Update_Racers(elapsed, first_go);
    if (!first_go) ghost::Record_Frame(p, modMain::GameClock);
    if (splits != nullptr && ghost::Last_Split().line != last_line) {
      last_line = ghost::Last_Split().line;
      splits->push_back(ghost::Last_Split());
    }
  }
  EXPECT_EQ(p.cFinishedRace, 1);
  ghost::End_Race();
  return p.cRaceTime;
}

using namespace race_test;

// Then, with the record's ghost, a race on screen: the ghost flies see-through with its own
// marker and the split shows in its colour.
TEST_F(RaceTest, ARecordRaceIsKeptASlowerOneLeavesItTheNextSplitsAgainstItAndSeesItFly) {
  std::string error;
  ASSERT_TRUE(modTracks::Load_Track(&error)) << error;
  modTracks::Build_Track_Blocks();
  const std::string track = platform::Game_Path(modTracks::kTrackFile);
  extras::Load();
  ghost::Begin_Race(clsHumanPlayer{}, "Ship_1", 1, 1, 4);
  EXPECT_EQ(ghost::Racing(), nullptr) << "switched off: nothing loaded";
  ghost::Set_Enabled(true);

  const i32 fast = Race(false, track, nullptr);
  ghost::Save_If_Best(fast + 1);
  const std::string kept = testenv::Read_File(ghost::Path());
  ASSERT_FALSE(kept.empty()) << "a record race writes Ghost.Dat";
  ghost::Recording saved;
  ASSERT_TRUE(Decode(kept, saved, error)) << error;
  EXPECT_EQ(saved.race_time, fast);
  EXPECT_EQ(saved.splits[11], fast) << "the last split line is the finish";
  EXPECT_GT(saved.samples.size(), static_cast<size_t>(fast / kFrame) - 2) << "one sample a frame";

  std::vector<ghost::Split> splits;
  const i32 slow = Race(true, track, &splits);
  ASSERT_GT(slow, fast);
  std::printf("ghost race %d ms, slower race %d ms\n", fast, slow);
  ghost::Save_If_Best(fast);
  EXPECT_EQ(testenv::Read_File(ghost::Path()), kept) << "a slower race leaves the ghost";
  ASSERT_EQ(splits.size(), static_cast<size_t>(ghost::kSplits)) << "four lines a lap, each once";
  for (size_t i = 0; i < splits.size(); ++i) {
    EXPECT_EQ(splits[i].line, static_cast<int>(i));
    EXPECT_TRUE(splits[i].has_ghost_diff) << "line " << i;
    EXPECT_EQ(splits[i].ghost_diff, splits[i].clock - saved.splits[i]) << "line " << i;
  }
  EXPECT_GT(splits.back().ghost_diff, 0) << "behind the ghost at the finish";

  // A ghost of another track is ignored with one line.
  const std::string bytes = testenv::Read_File(track);
  testenv::Write_File(track, bytes + "x");
  Race(false, track, nullptr);
  EXPECT_EQ(testenv::Read_Lines_CRLF(modMain::Log_Path()).back(), "Ghost.Dat ignored: recorded on another track");
  testenv::Write_File(track, bytes);
  modMain::Players.clear();

  bool shown = false;
  int frames_after = -1;
  Run_Race(0, [&](i32 t) {
    if (Reached(t, 40)) P(0).RacerKind = 2;  // the player's ship drives itself
    if (ghost::Last_Split().line == 0 && ++frames_after == 20) {
      shown = true;
      std::printf("ghost and split: %s\n", Save_Png("race_ghost_split").c_str());
      const ghost::Split& split = ghost::Last_Split();
      ASSERT_TRUE(split.has_ghost_diff);
      EXPECT_TRUE(Shows_Text(415, 40, 2, "Ghost"));
      // The digits are drawn in green when ahead of the ghost, in red when behind.
      int green = 0, red = 0;
      for (int y = 40; y < 55; ++y)
        for (int x = 415 + 12 * 9; x < 415 + 12 * 18; ++x) {
          const uint32_t p = At(x, y);
          green += (p >> 8 & 0xFF) > 150 && (p >> 16 & 0xFF) < 120;
          red += (p >> 16 & 0xFF) > 150 && (p >> 8 & 0xFF) < 120;
        }
      EXPECT_GT(split.ghost_diff <= 0 ? green : red, 20) << "diff " << split.ghost_diff;
      EXPECT_EQ(split.ghost_diff <= 0 ? red : green, 0);
      // A moment earlier the ghost flies just ahead of the player; at the end of its race it
      // is far away: the two scenes differ where it flies, and only there.
      const i32 now = modMain::GameClock;
      auto scene = [&](i32 clock, float camera) {
        modMain::GameClock = clock, modGameLoop::CameraDistance = camera;
        modGameLoop::Render_Race_Frame();
        return testenv::Read(0, 0, 640, 480);
      };
      const float camera = modGameLoop::CameraDistance;
      const auto ahead = scene(now - split.ghost_diff + 100, camera);
      modGameLoop::Draw_HUD();  // the picture: the ghost ahead, the split under the race time
      std::printf("ghost ahead: %s\n", Save_Png("race_ghost_ahead").c_str());
      const auto gone = scene(INT32_MAX / 2, camera);
      modMain::GameClock = now;
      int changed = 0;
      for (size_t i = 0; i < ahead.size(); ++i) changed += ahead[i] != gone[i];
      EXPECT_GT(changed, 200) << "the ghost is drawn";
      EXPECT_LT(changed, 640 * 480 / 10) << "and nothing else changed";
      platform::Post_Event({platform::EventKind::Quit});
    }
  });
  EXPECT_TRUE(shown) << "the first sector line was never crossed";
  modMain::Players.clear();
  extras::Reset();
}

}  // namespace
