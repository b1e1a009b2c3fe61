// Four computer racers and an autopiloted player race three laps on the generated track, many seeds.
#include <algorithm>
#include <cmath>
#include <cstdio>

#include "race/modGameLoop.h"
#include "support/test_env.h"
#include "vehicle/racer_fixture.h"
#include "vehicle/ships_dat.h"

using namespace vehicle_test;

namespace {

constexpr int kRacers = 5, kSeeds = 10;
constexpr i32 kFrame = 16, kRaceLimit = 6 * 60 * 1000;  // three laps in six minutes, or something is wrong
// Walls are tested against the block a corner starts the frame on: a curve's outside may cost a few frames off.
constexpr int kMaxFramesOff = 3;

// Point in the block's quad (corners in the order 0, 2, 3, 1 round it), in x-z.
bool Over_Block(int index, float x, float z) {
  const Vector3* c = modTracks::TrackBlock(index).Corner;
  const Vector3 ring[4] = {c[0], c[2], c[3], c[1]};
  bool inside = false;
  for (int i = 0, j = 3; i < 4; j = i++) {
    const Vector3 &p = ring[i], &q = ring[j];
    if ((p.z > z) != (q.z > z) && x < (q.x - p.x) * (z - p.z) / (q.z - p.z) + p.x) inside = !inside;
  }
  return inside;
}

bool Over_Own_Or_Neighbour(const clsHumanPlayer& r) {
  const int n = modTracks::TrackBlock.Count(), b = r.cCurrentTrackBlock();
  const float x = r.PositionX, z = r.PositionZ;
  return Over_Block(b, x, z) || Over_Block((b + 1) % n, x, z) || Over_Block((b + n - 1) % n, x, z);
}

TEST(Simulation, FourComputerRacersAndThePlayerFinishThreeLapsOnTheGeneratedTrack) {
  testenv::ScratchAppDir dir;
  for (const char* folder : {"Tracks", "Objects", "Textures", "Data"}) dir.Copy_From_Game(folder);
  std::string error;
  ASSERT_TRUE(modTracks::Load_Track(&error)) << error;
  modTracks::Build_Track_Blocks();
  shipsdat::Catalogue cat;
  ASSERT_TRUE(shipsdat::Load(shipsdat::Path(), cat, error)) << error;
  int most_frames_off[3] = {};  // by RacerKind
  for (int seed = 1; seed <= kSeeds; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    modMain::Randomize(static_cast<u32>(seed));
    Make_Players(kRacers);
    P(0).RacerKind = 1;
    P(0).cCurrentlySelectedShip = static_cast<i16>(seed % cat.Count);
    for (int i = 0; i < kRacers; ++i) {
      ASSERT_TRUE(P(i).Reset_Car_Attributes(static_cast<i16>(i)));
      EXPECT_TRUE(Over_Own_Or_Neighbour(P(i))) << "grid slot " << i << " off the road";
    }

    modMain::FrameTime = kFrame, modMain::GameClock = 0;
    bool first_go = true;
    int off[kRacers] = {};
    for (i32 elapsed = kFrame, finished = 0; finished < kRacers; elapsed += kFrame) {
      ASSERT_LE(elapsed, modGameLoop::kCountdownMs + kRaceLimit) << "only " << finished << " racers finished";
      modMain::GameClock += kFrame;
      Autopilot(P(0));
      modGameLoop::Update_Racers(elapsed, first_go);
      finished = 0;
      for (int i = 0; i < kRacers; ++i) {
        const clsHumanPlayer& r = P(i);
        ASSERT_FALSE(std::isnan(r.PositionX) || std::isnan(r.PositionY) || std::isnan(r.PositionZ)) << "racer " << i;
        off[i] = Over_Own_Or_Neighbour(r) ? 0 : off[i] + 1;
        most_frames_off[r.RacerKind] = std::max(most_frames_off[r.RacerKind], off[i]);
        ASSERT_LE(off[i], kMaxFramesOff) << "racer " << i << " at " << r.PositionX << ", " << r.PositionZ
                                         << " off block " << r.cCurrentTrackBlock() << ", frame " << elapsed / kFrame;
        finished += r.cFinishedRace;
      }
    }
    for (int i = 0; i < kRacers; ++i)
      for (int lap = 1; lap <= 3; ++lap) EXPECT_GT(P(i).cLapTime(lap), 0) << "racer " << i << " lap " << lap;
  }
  std::printf("frames off the blocks in a row, at most: player %d, computer %d\n", most_frames_off[1],
              most_frames_off[2]);
  modMain::Players.clear();
}

}  // namespace
