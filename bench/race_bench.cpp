// One whole race frame against four computer racers on the generated track: every racer's
// physics step, the 3D scene, the HUD, ended by a one-pixel read-back so the time includes
// the drawing itself.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <string>

#include "alloc_count.h"
#include "core/extras.h"
#include "core/files.h"
#include "core/modMain.h"
#include "core/settings.h"
#include "gfx/mod3Denhance.h"
#include "gfx/modText.h"
#include "platform/platform.h"
#include "platform/testing.h"
#include "race/modGameLoop.h"
#include "track/modTracks.h"
#include "vehicle/create_racers.h"
#include "vehicle/ghost.h"
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
  modGameLoop::Record_Ghost_Frame();
  modGameLoop::Render_Race_Frame();
  mod3Denhance::D3DDevice->EndScene();
  modGameLoop::Draw_HUD();
  uint32_t pixel = 0;
  platform::Read_Backbuffer(Rect{0, 0, 1, 1}, &pixel);
  benchmark::DoNotOptimize(pixel);
}

// A ghost lapping the track one block every 60 ms, written for the generated track.
bool Write_Ghost() {
  modMain::NumOpponents = 0;
  modMain::Create_Racers(0);
  if (!modGameLoop::Set_Up_Race()) return false;
  ghost::Recording r;
  ghost::File_Checksum(platform::Game_Path(modTracks::kTrackFile), r.track_size, r.track_checksum);
  r.ship_name = modMain::Players[0]->ShipBaseName;
  for (int b = 0; b < modTracks::TrackBlock.Count(); ++b) {
    const Vector3* c = modTracks::TrackBlock(b).Corner;
    r.samples.push_back({60 * b, (c[0].x + c[3].x) / 2, c[0].y + 2, (c[0].z + c[3].z) / 2, 0, 0});
  }
  r.race_time = r.samples.back().time;
  modGameLoop::Destroy_Race();
  modMain::Players.clear();
  return modMain::Replace_File(ghost::Path(), ghost::Encode(r));
}

// The game's data seen through a scratch folder, so the ghost and its switch stay out of
// the build's game folder.
bool Scratch_Player_Folder() {
  static const bool ready = [] {
    namespace fs = std::filesystem;
    const fs::path dir = fs::temp_directory_path() / "quorval_bench";
    std::error_code ec;
    fs::remove_all(dir, ec);
    fs::create_directories(dir / "Data", ec);
    for (const char* folder : {"Gfx", "Textures", "Objects", "Tracks", "Sm"})
      fs::create_directory_symlink(fs::path(QUORVAL_GAME_DIR) / folder, dir / folder, ec);
    fs::copy_file(fs::path(QUORVAL_GAME_DIR) / "Data" / "Ships.Dat", dir / "Data" / "Ships.Dat", ec);
    platform::Set_App_Dir(dir.string());
    extras::Load();
    return !ec;
  }();
  return ready;
}

void BM_RaceFrameFiveRacers(benchmark::State& state) {
  if (!Display()) return state.SkipWithError("no display");
  const bool with_ghost = state.range(0) != 0;
  if (with_ghost) {
    if (!Scratch_Player_Folder()) return state.SkipWithError("no scratch folder");
    ghost::Set_Enabled(false);
    if (!Write_Ghost()) return state.SkipWithError("no ghost");
  }
  ghost::Set_Enabled(with_ghost);
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
  if (with_ghost && ghost::Racing() == nullptr) return state.SkipWithError("the ghost is not racing");
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
BENCHMARK(BM_RaceFrameFiveRacers)->ArgName("ghost")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

}  // namespace
