// Any bytes given to the .dds reader: it must never read or write out of bounds, and
// whatever image it accepts must be within the sizes it promises.
#include <cstddef>
#include <cstdint>

#include "gfx/mod3Denhance.h"
#include "platform/testing.h"

namespace {
volatile uint32_t g_sink;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const mod3Denhance::Surface t = mod3Denhance::Decode_DDS(data, size);
  if (!t) return 0;
  if (t->Width() < 1 || t->Height() < 1 || t->Width() > 4096 || t->Height() > 4096) __builtin_trap();
  // Touch the first and last byte of every row: the whole image must be backed by memory.
  const uint8_t* bytes = platform::Image_Bytes(*t);
  const size_t pitch = size_t(t->Width()) * 2;  // 4-4-4-4: two bytes a pixel
  uint32_t sum = 0;
  for (int y = 0; y < t->Height(); ++y) sum += bytes[size_t(y) * pitch] + bytes[size_t(y + 1) * pitch - 1];
  g_sink = sum;
  return 0;
}
