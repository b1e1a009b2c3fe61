// A minimal PNG writer (stored deflate blocks) for looking at race frames.
#include <filesystem>
#include <fstream>

#include "race_fixture.h"

namespace race_test {
namespace {

void Put32(std::string& out, uint32_t v) {
  for (int s = 24; s >= 0; s -= 8) out.push_back(char(v >> s));
}

void Chunk(std::string& out, const std::string& type_and_data) {
  Put32(out, uint32_t(type_and_data.size() - 4));
  uint32_t crc = ~0u;
  for (unsigned char c : type_and_data) {
    crc ^= c;
    for (int k = 0; k < 8; ++k) crc = (crc >> 1) ^ (0xEDB88320u & (0u - (crc & 1u)));
  }
  out += type_and_data;
  Put32(out, ~crc);
}

}  // namespace

std::string Save_Png(const std::string& name) {
  const int w = modMain::ScreenWidth, h = modMain::ScreenHeight;
  const std::vector<uint32_t> px = RaceTest::Read(0, 0, w, h);
  std::string raw;
  for (int y = 0; y < h; ++y) {
    raw.push_back(0);  // no row filter
    for (int x = 0; x < w; ++x) {
      const uint32_t p = px[size_t(y) * w + x];
      raw += {char(p >> 16), char(p >> 8), char(p)};
    }
  }
  std::string z = "IDAT\x78\x01";
  uint32_t a = 1, b = 0;
  for (unsigned char c : raw) a = (a + c) % 65521, b = (b + a) % 65521;
  for (size_t at = 0; at < raw.size(); at += 65535) {
    const size_t n = std::min<size_t>(65535, raw.size() - at);
    z += {char(at + n == raw.size()), char(n), char(n >> 8), char(~n), char(~n >> 8)};
    z.append(raw, at, n);
  }
  Put32(z, b << 16 | a);
  std::string png = "\x89PNG\r\n\x1a\n", ihdr = "IHDR";
  Put32(ihdr, uint32_t(w));
  Put32(ihdr, uint32_t(h));
  ihdr += std::string{8, 2, 0, 0, 0};
  Chunk(png, ihdr);
  Chunk(png, z);
  Chunk(png, "IEND");
  const auto dir = std::filesystem::path(testenv::Game_Dir()).parent_path() / "race_shots";
  std::filesystem::create_directories(dir);
  const std::string path = (dir / (name + ".png")).string();
  std::ofstream(path, std::ios::binary) << png;
  return path;
}

}  // namespace race_test
