// A minimal PNG writer (stored deflate blocks) for looking at race frames.
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "race_fixture.h"

namespace race_test {
namespace {

uint32_t Crc(const uint8_t* data, size_t n, uint32_t crc = 0) {
  crc = ~crc;
  for (size_t i = 0; i < n; ++i) {
    crc ^= data[i];
    for (int k = 0; k < 8; ++k) crc = (crc >> 1) ^ (0xEDB88320u & (0u - (crc & 1u)));
  }
  return ~crc;
}

void Put32(std::vector<uint8_t>& out, uint32_t v) {
  for (int s = 24; s >= 0; s -= 8) out.push_back(static_cast<uint8_t>(v >> s));
}

void Chunk(std::vector<uint8_t>& out, const char* type, const std::vector<uint8_t>& data) {
  Put32(out, static_cast<uint32_t>(data.size()));
  std::vector<uint8_t> body(type, type + 4);
  body.insert(body.end(), data.begin(), data.end());
  out.insert(out.end(), body.begin(), body.end());
  Put32(out, Crc(body.data(), body.size()));
}

}  // namespace

std::string Save_Png(const std::string& name) {
  const int w = modMain::ScreenWidth, h = modMain::ScreenHeight;
  std::vector<uint32_t> px(size_t(w) * h);
  if (!platform::Read_Backbuffer(Rect{0, 0, w, h}, px.data())) return "";
  std::vector<uint8_t> raw;
  for (int y = 0; y < h; ++y) {
    raw.push_back(0);
    for (int x = 0; x < w; ++x) {
      const uint32_t p = px[size_t(y) * w + x];
      raw.insert(raw.end(), {uint8_t(p >> 16), uint8_t(p >> 8), uint8_t(p)});
    }
  }
  std::vector<uint8_t> z{0x78, 0x01};
  uint32_t a = 1, b = 0;
  for (uint8_t c : raw) a = (a + c) % 65521, b = (b + a) % 65521;
  for (size_t at = 0; at < raw.size();) {
    const size_t n = std::min<size_t>(65535, raw.size() - at);
    z.push_back(at + n == raw.size() ? 1 : 0);
    z.insert(z.end(), {uint8_t(n), uint8_t(n >> 8), uint8_t(~n), uint8_t(~n >> 8)});
    z.insert(z.end(), raw.begin() + long(at), raw.begin() + long(at + n));
    at += n;
  }
  Put32(z, b << 16 | a);
  std::vector<uint8_t> png{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
  std::vector<uint8_t> ihdr;
  Put32(ihdr, uint32_t(w));
  Put32(ihdr, uint32_t(h));
  ihdr.insert(ihdr.end(), {8, 2, 0, 0, 0});
  Chunk(png, "IHDR", ihdr);
  Chunk(png, "IDAT", z);
  Chunk(png, "IEND", {});
  const std::filesystem::path dir = std::filesystem::path(testenv::Game_Dir()).parent_path() / "race_shots";
  std::filesystem::create_directories(dir);
  const std::string path = (dir / (name + ".png")).string();
  std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(png.data()), long(png.size()));
  return path;
}

}  // namespace race_test
