#pragma once
// Little-endian numbers in the game's binary files: written onto a string, read through a
// cursor that never reads past its data.
#include <cstddef>
#include <cstdint>
#include <string>

namespace bytes {

inline void Put(std::string& out, uint32_t v, int count) {
  for (int i = 0; i < count; ++i) out.push_back(static_cast<char>((v >> (8 * i)) & 0xFF));
}

struct Reader {
  const uint8_t* data;
  size_t size;
  size_t at = 0;
  // The next count bytes (1..4) as a number; false, nothing taken, when fewer remain.
  bool Take(int count, uint32_t& v) {
    if (size - at < static_cast<size_t>(count)) return false;
    v = 0;
    for (int i = 0; i < count; ++i) v |= static_cast<uint32_t>(data[at + static_cast<size_t>(i)]) << (8 * i);
    at += static_cast<size_t>(count);
    return true;
  }
};

}  // namespace bytes
