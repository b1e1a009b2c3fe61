// Any bytes as "Quorval.cfg": the reader must never read out of bounds, and whatever it
// kept must survive a write of another value and a second read unchanged.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <string>

#include "core/extras.h"
#include "platform/platform.h"
#include "platform/testing.h"
#include "fuzz_folder.h"

namespace {
// Names a fuzzed file may well hold.
const char* const kNames[] = {"a", "A_1", "window", "volume", "x"};
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Use_Fuzz_Folder("extras");
  if (std::FILE* f = std::fopen(extras::Path().c_str(), "wb")) {
    std::fwrite(data, 1, size, f);
    std::fclose(f);
  }
  extras::Load();
  int before[std::size(kNames)];
  for (size_t i = 0; i < std::size(kNames); ++i) before[i] = extras::Get(kNames[i], -7, INT32_MIN, INT32_MAX);
  const int stamp = static_cast<int>(size);
  extras::Set("fuzz_stamp", stamp);
  extras::Load();
  for (size_t i = 0; i < std::size(kNames); ++i)
    if (extras::Get(kNames[i], -7, INT32_MIN, INT32_MAX) != before[i]) __builtin_trap();
  if (extras::Get("fuzz_stamp", -1, INT32_MIN, INT32_MAX) != stamp) __builtin_trap();
  return 0;
}
