// Any bytes given to the music file's header walk: it must never read outside them, and a
// header it accepts must place the whole "data" chunk inside them.
#include <cstddef>
#include <cstdint>

#include "audio_input/wave.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const wave::WaveHeader h = wave::Read_Wave_Header(data, size);
  if (h.result != wave::HeaderResult::Ok) {
    if (h.format.FormatTag != 0) __builtin_trap();
    return 0;
  }
  if (h.DataBytes < 0 || h.DataOffset < 28 || uint64_t(h.DataOffset) + uint64_t(h.DataBytes) > size) __builtin_trap();
  // The last sample byte must be backed by the input.
  if (h.DataBytes > 0 && data[h.DataOffset + h.DataBytes - 1] == 0x5A && size == 0) __builtin_trap();
  return 0;
}
