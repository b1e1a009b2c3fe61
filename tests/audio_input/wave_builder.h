#pragma once
// Builds RIFF WAVE files for the music tests.
#include <cstdint>
#include <string>

namespace wavetest {

inline void Put(std::string& s, std::uint32_t v, int bytes) {
  for (int i = 0; i < bytes; ++i) s += char((v >> (8 * i)) & 0xFF);
}

inline std::string Chunk(const char* id, const std::string& body) {
  std::string s(id, 4);
  Put(s, std::uint32_t(body.size()), 4);
  return s + body;
}

struct WaveLayout {
  std::uint16_t tag = 1, channels = 1, bits = 16;
  std::uint32_t rate = 22050;
  std::string format_extra;  // bytes after the 16 of the format chunk
  std::string before_data;   // whole chunks between the format chunk and "data"
  std::string data;
  std::string after_data;  // whole chunks after "data"
};

inline std::string Make_Wave(const WaveLayout& w) {
  std::string format;
  const std::uint16_t block = std::uint16_t(w.channels * w.bits / 8);
  Put(format, w.tag, 2);
  Put(format, w.channels, 2);
  Put(format, w.rate, 4);
  Put(format, w.rate * block, 4);
  Put(format, block, 2);
  Put(format, w.bits, 2);
  const std::string body =
      "WAVE" + Chunk("fmt ", format + w.format_extra) + w.before_data + Chunk("data", w.data) + w.after_data;
  std::string file = "RIFF";
  Put(file, std::uint32_t(body.size()), 4);
  return file + body;
}

}  // namespace wavetest
