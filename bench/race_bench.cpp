// Whole race frames against four computer racers on the generated track: every racer's
// physics step, the 3D scene, the HUD, ended by a one-pixel read-back so the time includes
// the drawing itself.
//
// BM_RaceFrameAtSize runs at the game's screen sizes and puts each beside the rasteriser's
// floor at that size: one full-screen blended quad of a 256 x 256 texture, ended by the same
// read-back, drawn after every race frame. The race samples 256-texel tiles too, so this is
// the floor its targets are judged against. A second floor, one texel a pixel, is reported
// beside it: it costs more per pixel, so its ratio reads lower. Counters, all per frame unless
// named otherwise:
//   median_ms, p99_ms   race frame, wall clock
//   floor_ms            the floor's median, wall clock
//   x_floor             median_ms / floor_ms
//   floor_px_ms, x_floor_px  the same for the texel-a-pixel floor
//   cpu_ms              the game thread's own CPU time (the driver's threads excluded)
//   all_cpu_ms          the CPU time of every thread: game, driver and rasteriser
//   allocs              heap allocations
//   tris                triangles handed to GL
//   setup_ms            Set_Up_Race, once
#include <benchmark/benchmark.h>

#include <time.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <string>
#include <vector>

#include "alloc_count.h"
#include "bench_display.h"
#include "core/extras.h"
#include "core/files.h"
#include "core/modMain.h"
#include "core/settings.h"
#include "gfx/mod3Denhance.h"
#include "mathmesh/modMATH.h"
#include "platform/platform.h"
#include "platform/testing.h"
#include "race/modGameLoop.h"
#include "track/modTracks.h"
#include "vehicle/create_racers.h"
#include "vehicle/ghost.h"
#include "vehicle/players.h"

namespace {

constexpr i32 kFrameMs = 16;
constexpr int kSettleFrames = 300;  // racing, camera settled

using Clock = std::chrono::steady_clock;

double Ms_Since(Clock::time_point start) {
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

double Cpu_Ms(clockid_t clock) {
  timespec t{};
  clock_gettime(clock, &t);
  return double(t.tv_sec) * 1e3 + double(t.tv_nsec) / 1e6;
}

// One pixel read back: the frame's drawing has finished when it arrives.
uint32_t Read_Pixel(int x, int y) {
  uint32_t pixel = 0;
  platform::Read_Backbuffer(Rect{x, y, x + 1, y + 1}, &pixel);
  benchmark::DoNotOptimize(pixel);
  return pixel;
}

void Race_Frame(i32 race_start, bool& first_go) {
  platform::Advance_Manual_Clock(kFrameMs);
  modMain::Update_Frame_Timer();
  modGameLoop::Update_Racers(platform::Tick_Count() - race_start, first_go);
  modMain::Players[0]->Get_Race_Position();
  modGameLoop::Record_Ghost_Frame();
  modGameLoop::Render_Race_Frame();
  modGameLoop::Draw_HUD();
  Read_Pixel(0, 0);
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

// A race of five with the player's ship driving itself, run until the camera has settled.
struct Race {
  i32 start = 0;
  bool first_go = true;
  double setup_ms = 0;
};
// False, with the reason in `error`, when the race cannot be set up.
bool Start_Race(Race& race, const char*& error) {
  platform::Use_Manual_Clock(true);
  modMain::Randomize(3);
  modMain::NumOpponents = 4;
  modMain::Create_Racers(modMain::NumOpponents);
  modMain::Players[0]->RacerKind = 2;
  const Clock::time_point t0 = Clock::now();
  const bool ready = modGameLoop::Set_Up_Race();
  race.setup_ms = Ms_Since(t0);
  if (!ready) {
    platform::Use_Manual_Clock(false);
    error = "the race could not be set up (see the log)";
    return false;
  }
  race.start = platform::Tick_Count() - modGameLoop::kCountdownMs;
  for (int i = 0; i < kSettleFrames; ++i) Race_Frame(race.start, race.first_go);
  return true;
}

void End_Race() {
  modGameLoop::Destroy_Race();
  modMain::Players.clear();
  platform::Use_Manual_Clock(false);
}

void BM_RaceFrameFiveRacers(benchmark::State& state) {
  if (!benchdisplay::Open(640, 480)) return state.SkipWithError("no display");
  const bool with_ghost = state.range(0) != 0;
  if (with_ghost) {
    if (!Scratch_Player_Folder()) return state.SkipWithError("no scratch folder");
    ghost::Set_Enabled(false);
    if (!Write_Ghost()) return state.SkipWithError("no ghost");
  }
  ghost::Set_Enabled(with_ghost);
  Race race;
  const char* error = "";
  if (!Start_Race(race, error)) return state.SkipWithError(error);
  if (with_ghost && ghost::Racing() == nullptr) {
    End_Race();
    return state.SkipWithError("the ghost is not racing");
  }
  const uint64_t before = benchalloc::Count();
  int64_t frames = 0;
  for (auto _ : state) {
    Race_Frame(race.start, race.first_go);
    ++frames;
  }
  state.counters["allocs/frame"] = double(benchalloc::Count() - before) / double(frames > 0 ? frames : 1);
  End_Race();
}
// A fixed count: each run settles its race first, which costs more than the frames timed.
BENCHMARK(BM_RaceFrameFiveRacers)->ArgName("ghost")->Arg(0)->Arg(1)->Iterations(100)->Unit(benchmark::kMillisecond);

// Wall-clock times of one kind of frame, for their median and 99th percentile.
class Times {
 public:
  explicit Times(size_t frames) { ms_.reserve(frames); }
  void Add_Since(Clock::time_point start) { ms_.push_back(Ms_Since(start)); }
  size_t Count() const { return ms_.size(); }
  double Median() {
    std::sort(ms_.begin(), ms_.end());
    if (ms_.empty()) return 0;
    const size_t n = ms_.size();
    return n % 2 != 0 ? ms_[n / 2] : (ms_[n / 2 - 1] + ms_[n / 2]) / 2;
  }
  // The time below which `share` of them lie (nearest rank).
  double Percentile(double share) {
    std::sort(ms_.begin(), ms_.end());
    if (ms_.empty()) return 0;
    const size_t rank = size_t(std::ceil(share * double(ms_.size())));
    return ms_[std::clamp<size_t>(rank, 1, ms_.size()) - 1];
  }

 private:
  std::vector<double> ms_;
};

// The least a frame of this size can cost: the whole back buffer covered once by a blended,
// linearly filtered texture.
class Floor {
 public:
  // False, with the reason in `error`, when the quad does not reach the screen.
  bool Ready(int texture_width, int texture_height, const char*& error) {
    texture_ = mod3Denhance::Create_Texture("", texture_width, texture_height, 0);
    if (!texture_) {
      error = "no floor texture";
      return false;
    }
    // Half see-through orange.
    mod3Denhance::Fill_Rect(texture_, 0, 0, texture_width, texture_height, 0x80FF8000u);
    const float w = modMain::ScreenWidth, h = modMain::ScreenHeight;
    const u32 white = modMATH::Create_Color_RGBA(1, 1, 1, 1);
    quad_[0] = {0, h, 0, 1, white, 0, 0, 1};
    quad_[1] = {0, 0, 0, 1, white, 0, 0, 0};
    quad_[2] = {w, h, 0, 1, white, 0, 1, 1};
    quad_[3] = {w, 0, 0, 1, white, 0, 1, 0};
    mod3Denhance::Clear_Screen();
    // Over the dark blue, red comes only from the texture.
    if ((Draw() >> 16 & 0xFFu) < 0x40u) {
      error = "the floor quad did not reach the screen";
      return false;
    }
    return true;
  }

  // Leaves the render states as a race frame ends with them.
  uint32_t Draw() {
    platform::Device3D& d = *mod3Denhance::D3DDevice;
    d.SetRenderState(platform::rs::ZEnable, 0);
    d.SetRenderState(platform::rs::Lighting, 0);
    d.SetRenderState(platform::rs::CullMode, platform::cull::None);
    d.SetRenderState(platform::rs::AlphaBlendEnable, 1);
    d.SetTexture(0, texture_);
    d.DrawPrimitive(platform::Primitive::TriangleStrip, quad_, 4);
    const uint32_t pixel = Read_Pixel(modMain::ScreenWidth / 2, modMain::ScreenHeight / 2);
    d.SetTexture(0, nullptr);
    d.SetRenderState(platform::rs::AlphaBlendEnable, 0);
    d.SetRenderState(platform::rs::CullMode, platform::cull::CounterClockwise);
    d.SetRenderState(platform::rs::ZEnable, 1);
    return pixel;
  }

  // One floor frame, its wall-clock time added to `times`.
  void Timed_Draw(Times& times) {
    const Clock::time_point t0 = Clock::now();
    Draw();
    times.Add_Since(t0);
  }

 private:
  mod3Denhance::Surface texture_;
  ScreenVertex quad_[4] = {};
};

// Each race frame is followed by a floor frame, so a slower spell of the machine weighs on
// both sides of the ratio alike.
void BM_RaceFrameAtSize(benchmark::State& state, int width, int height) {
  if (!benchdisplay::Open(width, height)) return state.SkipWithError("no display");
  ghost::Set_Enabled(false);
  Race race;
  const char* error = "";
  if (!Start_Race(race, error)) return state.SkipWithError(error);
  Floor floor, floor_px;
  if (!floor.Ready(256, 256, error) || !floor_px.Ready(width, height, error)) {
    End_Race();
    return state.SkipWithError(error);
  }
  const size_t most = size_t(state.max_iterations);
  Times wall(most), floor_wall(most), floor_px_wall(most);
  double cpu_ms = 0, all_cpu_ms = 0;
  uint64_t allocations = 0, tris = 0;
  for (auto _ : state) {
    const uint64_t allocs0 = benchalloc::Count(), tris0 = platform::Triangles_Sent();
    const double cpu0 = Cpu_Ms(CLOCK_THREAD_CPUTIME_ID), all_cpu0 = Cpu_Ms(CLOCK_PROCESS_CPUTIME_ID);
    const Clock::time_point t0 = Clock::now();
    Race_Frame(race.start, race.first_go);
    wall.Add_Since(t0);
    cpu_ms += Cpu_Ms(CLOCK_THREAD_CPUTIME_ID) - cpu0;
    all_cpu_ms += Cpu_Ms(CLOCK_PROCESS_CPUTIME_ID) - all_cpu0;
    allocations += benchalloc::Count() - allocs0;
    tris += platform::Triangles_Sent() - tris0;
    floor.Timed_Draw(floor_wall);
    floor_px.Timed_Draw(floor_px_wall);
  }
  End_Race();
  if (wall.Count() == 0) return;
  const double frames = double(wall.Count());
  const double median = wall.Median(), floor_ms = floor_wall.Median(), floor_px_ms = floor_px_wall.Median();
  state.counters["median_ms"] = median;
  state.counters["p99_ms"] = wall.Percentile(0.99);
  state.counters["floor_ms"] = floor_ms;
  state.counters["x_floor"] = median / floor_ms;
  state.counters["floor_px_ms"] = floor_px_ms;
  state.counters["x_floor_px"] = median / floor_px_ms;
  state.counters["cpu_ms"] = cpu_ms / frames;
  state.counters["all_cpu_ms"] = all_cpu_ms / frames;
  state.counters["allocs"] = double(allocations) / frames;
  state.counters["tris"] = double(tris) / frames;
  state.counters["setup_ms"] = race.setup_ms;
}
BENCHMARK_CAPTURE(BM_RaceFrameAtSize, 640x480, 640, 480)->Iterations(300)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_RaceFrameAtSize, 800x600, 800, 600)->Iterations(300)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_RaceFrameAtSize, 1920x1080, 1920, 1080)->Iterations(200)->Unit(benchmark::kMillisecond);

}  // namespace
