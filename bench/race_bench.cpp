// One whole race frame against four computer racers on the generated track: every racer's
// physics step, the 3D scene, the HUD, ended by a one-pixel read-back so the time includes
// the drawing itself.
#include <benchmark/benchmark.h>

#include <string>

#include "alloc_count.h"
#include "core/modMain.h"
#include "core/settings.h"
#include "gfx/mod3Denhance.h"
#include "gfx/modText.h"
#include "platform/platform.h"
#include "platform/testing.h"
#include "race/modGameLoop.h"
#include "vehicle/create_racers.h"
#include "vehicle/players.h"

namespace {

constexpr i32 kFrameMs = 16;

bool Display() {
  static const bool ready = [] {
    platform::Set_App_Dir(QUORVAL_GAME_DIR);
    if (mod3Denhance::D3DDevice != nullptr) return true;  // another benchmark opened it
    modMain::Default_Settings();
    modMain::ScreenWidth = 640;
    modMain::ScreenHeight = 480;
    modMain::ScaleX = modMain::ScaleY = 1;
    if (!platform::Open_Window("bench")) return false;
    if (!mod3Denhance::Init_DDraw(modMain::ScreenWidth, modMain::ScreenHeight, modMain::ScreenBPP)) return false;
    std::string error;
    return modText::Load_Fonts(error);
  }();
  return ready;
}

void Race_Frame(i32 race_start, bool& first_go) {
  platform::Advance_Manual_Clock(kFrameMs);
  modMain::Update_Frame_Timer();
  modGameLoop::Update_Racers(platform::Tick_Count() - race_start, first_go);
  modMain::Players[0]->Get_Race_Position();
  modGameLoop::Render_Race_Frame();
  mod3Denhance::D3DDevice->EndScene();
  modGameLoop::Draw_HUD();
  uint32_t pixel = 0;
  platform::Read_Backbuffer(Rect{0, 0, 1, 1}, &pixel);
  benchmark::DoNotOptimize(pixel);
}

void BM_RaceFrameFiveRacers(benchmark::State& state) {
  if (!Display()) return state.SkipWithError("no display");
  platform::Use_Manual_Clock(true);
  modMain::Randomize(3);
  modMain::NumOpponents = 4;
  modMain::Create_Racers(modMain::NumOpponents);
  modMain::Players[0]->RacerKind = 2;  // the player's ship drives itself
  if (!modGameLoop::Set_Up_Race()) {
    platform::Use_Manual_Clock(false);
    return state.SkipWithError("the race could not be set up (see the log)");
  }
  const i32 race_start = platform::Tick_Count() - modGameLoop::kCountdownMs;
  bool first_go = true;
  for (int i = 0; i < 300; ++i) Race_Frame(race_start, first_go);  // racing, camera settled
  const uint64_t before = benchalloc::Count();
  int64_t frames = 0;
  for (auto _ : state) {
    Race_Frame(race_start, first_go);
    ++frames;
  }
  state.counters["allocs/frame"] = double(benchalloc::Count() - before) / double(frames > 0 ? frames : 1);
  modGameLoop::Destroy_Race();
  modMain::Players.clear();
  platform::Use_Manual_Clock(false);
}
BENCHMARK(BM_RaceFrameFiveRacers)->Unit(benchmark::kMillisecond);

}  // namespace
