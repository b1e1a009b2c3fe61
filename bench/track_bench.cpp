// Race set-up's track steps on the generated circuit: the whole load (file, parse,
// textures) with the block build, the parse alone, and the block build alone.
#include <benchmark/benchmark.h>

#include <fstream>
#include <sstream>

#include "platform/platform.h"
#include "platform/testing.h"
#include "track/modTracks.h"

namespace {

std::string Generated_Track_Bytes() {
  std::ifstream f(std::string(QUORVAL_GAME_DIR) + "/Tracks/test.MXT", std::ios::binary);
  std::ostringstream s;
  s << f.rdbuf();
  return s.str();
}

void BM_LoadTrackAndBuildBlocks(benchmark::State& state) {
  platform::Set_App_Dir(QUORVAL_GAME_DIR);
  for (auto _ : state) {
    std::string error;
    if (!modTracks::Load_Track(&error)) {
      state.SkipWithError(error.c_str());
      break;
    }
    modTracks::Build_Track_Blocks();
    benchmark::DoNotOptimize(modTracks::TrackBlock.Count());
  }
}
BENCHMARK(BM_LoadTrackAndBuildBlocks)->Unit(benchmark::kMillisecond);

void BM_ParseTrackAndBuildBlocks(benchmark::State& state) {
  const std::string bytes = Generated_Track_Bytes();
  for (auto _ : state) {
    if (!modTracks::Load_Track_From_Bytes(bytes, "test.MXT")) {
      state.SkipWithError("the generated track does not load");
      break;
    }
    modTracks::Build_Track_Blocks();
    benchmark::DoNotOptimize(modTracks::TrackBlock.Count());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(bytes.size()));
}
BENCHMARK(BM_ParseTrackAndBuildBlocks)->Unit(benchmark::kMicrosecond);

void BM_BuildTrackBlocks(benchmark::State& state) {
  if (!modTracks::Load_Track_From_Bytes(Generated_Track_Bytes(), "test.MXT")) {
    state.SkipWithError("the generated track does not load");
    return;
  }
  for (auto _ : state) {
    modTracks::Build_Track_Blocks();
    benchmark::DoNotOptimize(modTracks::TrackBlock.Count());
  }
}
BENCHMARK(BM_BuildTrackBlocks)->Unit(benchmark::kMicrosecond);

}  // namespace
