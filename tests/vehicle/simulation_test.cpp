// Five computer racers on the generated track and ships, run frame by frame in the race
// loop's order over many seeds: everyone finishes, nothing goes NaN, nobody leaves the road.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <vector>

#include "racer_fixture.h"
#include "support/test_env.h"
#include "vehicle/ships_dat.h"

using namespace vehicle_test;

namespace {

constexpr int kRacers = 5;
constexpr int kSeeds = 10;
constexpr i32 kFrame = 16;
constexpr i32 kCountdown = 3050;
constexpr i32 kRaceLimit = 6 * 60 * 1000;  // three laps in six minutes, or something is wrong

// Point in the block's quad (corners in the order 0, 2, 3, 1 round it), in x-z.
bool Over_Block(int index, float x, float z) {
  const auto& b = modTracks::TrackBlock(index);
  const Vector3* ring[4] = {&b.Corner[0], &b.Corner[2], &b.Corner[3], &b.Corner[1]};
  bool inside = false;
  for (int i = 0, j = 3; i < 4; j = i++) {
    const Vector3 &p = *ring[i], &q = *ring[j];
    if ((p.z > z) != (q.z > z) && x < (q.x - p.x) * (z - p.z) / (q.z - p.z) + p.x) inside = !inside;
  }
  return inside;
}

bool Over_Own_Or_Neighbour(const clsHumanPlayer& r) {
  const int n = modTracks::TrackBlock.Count();
  for (int d = -1; d <= 1; ++d) {
    if (Over_Block(((r.cCurrentTrackBlock() + d) % n + n) % n, r.PositionX, r.PositionZ)) return true;
  }
  return false;
}

// The catalogue entry whose numbers the racer carries (computer picks are not stored).
int Ship_Of(clsHumanPlayer& r, const shipsdat::Catalogue& cat) {
  for (size_t k = 0; k < cat.Ships.size(); ++k) {
    const auto& s = cat.Ships[k];
    if (RA::InvMass(r) == static_cast<float>(1.0 / s.Mass) && RA::ThrustForce(r) == static_cast<float>(s.Thrust) &&
        RA::LinearDrag(r) == static_cast<float>(s.LinearDrag))
      return static_cast<int>(k);
  }
  return -1;
}

TEST(Simulation, FiveComputerRacersFinishThreeLapsOnTheGeneratedTrack) {
  testenv::ScratchAppDir dir;
  for (const char* folder : {"Tracks", "Objects", "Textures", "Data"}) dir.Copy_From_Game(folder);
  std::string error;
  ASSERT_TRUE(modTracks::Load_Track(&error)) << error;
  modTracks::Build_Track_Blocks();
  shipsdat::Catalogue cat;
  ASSERT_TRUE(shipsdat::Load(shipsdat::Path(), cat, error)) << error;

  std::map<int, std::vector<i32>> laps_by_ship;
  long long frames_run = 0;
  for (int seed = 1; seed <= kSeeds; ++seed) {
    modMain::Randomize(static_cast<u32>(seed));
    Make_Players(kRacers);
    for (int i = 0; i < kRacers; ++i) ASSERT_TRUE(P(i).Reset_Car_Attributes(static_cast<i16>(i))) << "seed " << seed;
    for (int i = 0; i < kRacers; ++i) EXPECT_TRUE(Over_Own_Or_Neighbour(P(i))) << "grid slot " << i << " off the road";

    modMain::FrameTime = kFrame;
    modMain::GameClock = 0;
    bool first_go = true;
    int finished = 0;
    for (i32 elapsed = kFrame; finished < kRacers; elapsed += kFrame, ++frames_run) {
      ASSERT_LE(elapsed, kCountdown + kRaceLimit) << "seed " << seed << ": only " << finished << " racers finished";
      modMain::GameClock += kFrame;
      for (i16 i = 0; i < kRacers; ++i) {
        clsHumanPlayer& r = P(i);
        r.ComputeForces();
        r.Check_Wall_Collisions();
        r.Check_Car_Collisions(i);
        if (elapsed >= kCountdown) r.ApplyForces();
        if (first_go) modMain::GameClock = 0;  // held at 0 until the start signal
        if (elapsed >= kCountdown) first_go = false;
        r.Calculate_Vertices(i);
        r.Get_Track_Height();
      }
      finished = 0;
      for (int i = 0; i < kRacers; ++i) {
        const clsHumanPlayer& r = P(i);
        ASSERT_FALSE(std::isnan(r.PositionX) || std::isnan(r.PositionY) || std::isnan(r.PositionZ))
            << "seed " << seed << " racer " << i;
        ASSERT_TRUE(Over_Own_Or_Neighbour(r)) << "seed " << seed << " racer " << i << " at (" << r.PositionX << ", "
                                              << r.PositionZ << ") off block " << r.cCurrentTrackBlock()
                                              << " and its neighbours, frame " << elapsed / kFrame;
        finished += r.cFinishedRace;
      }
    }
    for (int i = 0; i < kRacers; ++i) {
      const int ship = Ship_Of(P(i), cat);
      ASSERT_GE(ship, 0);
      for (int lap = 1; lap <= 3; ++lap) laps_by_ship[ship].push_back(P(i).cLapTime(lap));
    }
  }

  std::printf("%d seeds, %lld frames of %d ms\n", kSeeds, frames_run, kFrame);
  for (auto& [ship, laps] : laps_by_ship) {
    std::sort(laps.begin(), laps.end());
    std::printf("ship %d (%s): %zu laps, min %d ms, median %d ms, max %d ms\n", ship,
                cat.Ships[static_cast<size_t>(ship)].DisplayName.c_str(), laps.size(), laps.front(),
                laps[laps.size() / 2], laps.back());
    EXPECT_GT(laps.front(), 0);
  }
  modMain::Players.clear();
}

}  // namespace
