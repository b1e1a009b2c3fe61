// One physics frame of a five-racer race on the generated track, in the race loop's order.
#include <benchmark/benchmark.h>

#include <memory>
#include <string>

#include "core/modMain.h"
#include "platform/platform.h"
#include "platform/testing.h"
#include "track/modTracks.h"
#include "vehicle/clsHumanPlayer.h"
#include "vehicle/players.h"
#include "vehicle/racer_box.h"

namespace {

constexpr int kRacers = 5;

bool Start_Race() {
  modMain::Players.clear();
  for (int i = 0; i < kRacers; ++i) {
    auto r = std::make_unique<clsHumanPlayer>();
    r->RacerKind = 2;
    modMain::Players.push_back(std::move(r));
  }
  modMain::NumOpponents = kRacers - 1;
  modGameLoop::RacerBox.Resize(0, kRacers - 1);
  bool ok = true;
  for (i16 i = 0; i < kRacers; ++i) ok = modMain::Players[static_cast<size_t>(i)]->Reset_Car_Attributes(i) && ok;
  modMain::GameClock = 0;
  return ok;
}

void Physics_Frame() {
  for (i16 i = 0; i < kRacers; ++i) {
    clsHumanPlayer& r = *modMain::Players[static_cast<size_t>(i)];
    r.ComputeForces();
    r.Check_Wall_Collisions();
    r.Check_Car_Collisions(i);
    r.ApplyForces();
    r.Calculate_Vertices(i);
    r.Get_Track_Height();
  }
  modMain::Players[0]->Get_Race_Position();
}

void BM_PhysicsFrameFiveRacers(benchmark::State& state) {
  platform::Set_App_Dir(QUORVAL_GAME_DIR);
  std::string error;
  if (!modTracks::Load_Track(&error)) {
    state.SkipWithError(error.c_str());
    return;
  }
  modTracks::Build_Track_Blocks();
  if (!Start_Race()) {
    state.SkipWithError("the generated ships could not be loaded");
    return;
  }
  modMain::FrameTime = 16;
  for (int i = 0; i < 200; ++i) Physics_Frame();  // get everyone moving and mixed up
  for (auto _ : state) {
    modMain::GameClock += 16;
    Physics_Frame();
    if (modMain::Players[0]->cFinishedRace != 0) {
      // Finished racers coast to a stop; start a new race rather than time parked ships.
      state.PauseTiming();
      Start_Race();
      for (int i = 0; i < 200; ++i) Physics_Frame();
      state.ResumeTiming();
    }
  }
  benchmark::DoNotOptimize(modMain::Players[0]->PositionX);
  modMain::Players.clear();
}
BENCHMARK(BM_PhysicsFrameFiveRacers);

}  // namespace
