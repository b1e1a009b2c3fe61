// Mesh loading cost: parsing a generated ship and turning it into drawable parts.
#include <benchmark/benchmark.h>

#include <fstream>
#include <sstream>
#include <string>

#include "gfx/XFileClass.h"
#include "mathmesh/xfile_reader.h"

namespace {

std::string Ship_Text() {
  std::ifstream in(std::string(QUORVAL_GAME_DIR) + "/Objects/Bulwark.x", std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

void BM_Read_Ship(benchmark::State& state) {
  const std::string text = Ship_Text();
  if (text.empty()) return state.SkipWithError("no generated ship");
  for (auto _ : state) {
    xfile::Model model;
    benchmark::DoNotOptimize(xfile::Read(text, model));
    benchmark::DoNotOptimize(model.groups.data());
  }
  state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(text.size()));
}
BENCHMARK(BM_Read_Ship);

void BM_Load_Ship_With_Textures(benchmark::State& state) {
  const std::string path = std::string(QUORVAL_GAME_DIR) + "/Objects/Bulwark.x";
  for (auto _ : state) {
    XFileClass mesh;
    if (!mesh.Load_Quiet(path).empty()) return state.SkipWithError("ship did not load");
    benchmark::DoNotOptimize(mesh.Parts.data());
  }
}
BENCHMARK(BM_Load_Ship_With_Textures);

}  // namespace
