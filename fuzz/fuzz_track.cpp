// Any bytes as a track file: the reader must refuse or accept without reading past the
// data, and blocks built from whatever it accepts must stay in bounds.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "track/modTracks.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  std::string error;
  if (modTracks::Load_Track_From_Bytes(bytes, "fuzz.MXT", &error)) modTracks::Build_Track_Blocks();
  return 0;
}
