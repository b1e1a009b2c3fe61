// Writes every data file of the game into the application directory given as argument,
// or with --icons the desktop icons into the folder given.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "assetgen.h"

namespace assetgen {
namespace {
std::vector<std::pair<std::string, GeneratorFn>>& Registry() {
  static std::vector<std::pair<std::string, GeneratorFn>> r;
  return r;
}
}  // namespace

bool Register(const char* name, GeneratorFn fn) {
  Registry().emplace_back(name, fn);
  return true;
}
}  // namespace assetgen

int main(int argc, char** argv) {
  if (argc == 3 && std::strcmp(argv[1], "--icons") == 0) {
    if (assetgen::Generate_Icons(argv[2])) return 0;
    std::fprintf(stderr, "assetgen: icons failed\n");
    return 1;
  }
  if (argc != 2) {
    std::fprintf(stderr, "usage: assetgen <game folder> | assetgen --icons <folder>\n");
    return 2;
  }
  auto gens = assetgen::Registry();
  std::sort(gens.begin(), gens.end());
  int failures = 0;
  for (const auto& [name, fn] : gens) {
    if (!fn(argv[1])) {
      std::fprintf(stderr, "assetgen: %s failed\n", name.c_str());
      ++failures;
    }
  }
  return failures == 0 ? 0 : 1;
}
