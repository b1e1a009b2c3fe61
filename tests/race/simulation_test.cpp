// Four computer racers and an autopiloted player race three laps on the generated track, many seeds.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include "race/modGameLoop.h"
#include "support/test_env.h"
#include "vehicle/racer_fixture.h"
#include "vehicle/ships_dat.h"

using namespace vehicle_test;

namespace {

constexpr int kRacers = 5, kSeeds = 10;
constexpr i32 kRaceLimit = 6 * 60 * 1000;  // three laps in six minutes, or something is wrong
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

struct Simulation : ::testing::Test {
  testenv::ScratchAppDir dir;
  shipsdat::Catalogue cat;
  void SetUp() override {
    for (const char* folder : {"Tracks", "Objects", "Textures", "Data"}) dir.Copy_From_Game(folder);
    std::string error;
    ASSERT_TRUE(modTracks::Load_Track(&error)) << error;
    modTracks::Build_Track_Blocks();
    ASSERT_TRUE(shipsdat::Load(shipsdat::Path(), cat, error)) << error;
  }
  void TearDown() override { modMain::Players.clear(); }
  // Four computer racers and the player (autopiloted, or kind 2: driving itself) on the
  // grid, as seed makes them.
  void Grid(int seed, u8 player_kind = 1) {
    modMain::Randomize(static_cast<u32>(seed));
    Make_Players(kRacers);
    P(0).RacerKind = player_kind;
    P(0).cCurrentlySelectedShip = static_cast<i16>(seed % cat.Count);
    // Every grid slot holds its racer's whole footprint on its block, clear of the others
    // by a margin round the ships' (about 2.5 by 5 half-extents).
    for (int i = 0; i < kRacers; ++i) {
      ASSERT_TRUE(P(i).Reset_Car_Attributes(static_cast<i16>(i)));
      for (int k = 0; k < 4; ++k) {
        const Vector3& c = RA::Corners(P(i))[k];
        EXPECT_TRUE(Over_Block(P(i).cCurrentTrackBlock(), c.x, c.z)) << "grid slot " << i << " corner " << k;
      }
      for (int j = 0; j < i; ++j)
        EXPECT_TRUE(std::fabs(P(i).PositionX - P(j).PositionX) >= 5 || std::fabs(P(i).PositionZ - P(j).PositionZ) >= 10)
            << "grid slots " << j << " and " << i;
    }
    modMain::GameClock = 0;
  }
  // Races seeds 1..seeds at frames of frame_ms; returns the most frames in a row a racer of
  // each kind spent off its block or the blocks either side.
  std::array<int, 3> Race(i32 frame_ms, int seeds, u8 player_kind) {
    std::array<int, 3> most_frames_off{};  // by RacerKind
    for (int seed = 1; seed <= seeds; ++seed) {
      SCOPED_TRACE("seed " + std::to_string(seed));
      Grid(seed, player_kind);
      if (HasFatalFailure()) return most_frames_off;
      modMain::FrameTime = frame_ms;
      bool first_go = true;
      int off[kRacers] = {};
      for (i32 elapsed = frame_ms, finished = 0; finished < kRacers; elapsed += frame_ms) {
        if (elapsed > modGameLoop::kCountdownMs + kRaceLimit) {
          ADD_FAILURE() << "only " << finished << " racers finished";
          return most_frames_off;
        }
        modMain::GameClock += frame_ms;
        if (P(0).RacerKind == 1) Autopilot(P(0));
        modGameLoop::Update_Racers(elapsed, first_go);
        finished = 0;
        for (int i = 0; i < kRacers; ++i) {
          const clsHumanPlayer& r = P(i);
          if (std::isnan(r.PositionX + r.PositionY + r.PositionZ)) {
            ADD_FAILURE() << "racer " << i << " at NaN, frame " << elapsed / frame_ms;
            return most_frames_off;
          }
          off[i] = Over_Own_Or_Neighbour(r) ? 0 : off[i] + 1;
          most_frames_off[r.RacerKind] = std::max(most_frames_off[r.RacerKind], off[i]);
          finished += r.cFinishedRace;
        }
      }
      for (int i = 0; i < kRacers; ++i)
        for (int lap = 1; lap <= 3; ++lap) EXPECT_GT(P(i).cLapTime(lap), 0) << "racer " << i << " lap " << lap;
    }
    return most_frames_off;
  }
};

TEST_F(Simulation, FourComputerRacersAndThePlayerFinishThreeLapsOnTheGeneratedTrack) {
  const auto off = Race(16, kSeeds, 1);
  EXPECT_LE(off[1], kMaxFramesOff) << "player";
  EXPECT_LE(off[2], kMaxFramesOff) << "computer";
  std::printf("16 ms frames: frames off the blocks in a row, at most: player %d, computer %d\n", off[1], off[2]);
}

// A slow machine's 50 ms frames run as three steps: racers keep to the road as at 60 Hz.
// Every racer steers itself here: the test's autopilot decides once a frame, and a driver
// deciding only 20 times a second drifts wide whatever the physics does.
TEST_F(Simulation, FiftyMillisecondFramesStayOnTheBlocksAsSixtyHertzDoes) {
  const auto off = Race(50, kSeeds, 2);
  EXPECT_LE(off[2], kMaxFramesOff);
  std::printf("50 ms frames: frames off the blocks in a row, at most: %d\n", off[2]);
}

}  // namespace
