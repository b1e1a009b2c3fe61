// Any bytes given to the ghost reader: it must never read past them, a ghost it accepts
// must write back to exactly those bytes, and flying it at any race time must give a
// finite place between its samples.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "vehicle/ghost.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  ghost::Recording r;
  std::string error;
  if (!ghost::Decode(data, size, r, error)) {
    if (error.empty() || !r.samples.empty()) __builtin_trap();
    return 0;
  }
  const std::string bytes = ghost::Encode(r);
  if (bytes.size() != size || std::memcmp(bytes.data(), data, size) != 0) __builtin_trap();
  for (const i32 t : {INT32_MIN, -1, 0, r.race_time / 2, r.samples.back().time, INT32_MAX}) {
    const ghost::Sample s = ghost::Sample_At(r.samples, t);
    if (!std::isfinite(s.x) || !std::isfinite(s.z) || !std::isfinite(s.heading)) __builtin_trap();
  }
  return 0;
}
