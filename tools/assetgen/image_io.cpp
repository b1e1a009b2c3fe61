#include <zlib.h>

#include <cstdio>
#include <filesystem>

#include "assetgen.h"

namespace assetgen {
namespace {
void Put16(std::string& b, uint32_t v) {
  b.push_back(char(v & 0xFF));
  b.push_back(char((v >> 8) & 0xFF));
}
void Put32(std::string& b, uint32_t v) {
  Put16(b, v & 0xFFFF);
  Put16(b, v >> 16);
}
void Put32_BE(std::string& b, uint32_t v) {
  for (int shift = 24; shift >= 0; shift -= 8) b.push_back(char((v >> shift) & 0xFF));
}
// A PNG chunk: length, type, data, and the CRC of type and data.
void Chunk(std::string& b, const char* type, const std::string& data) {
  Put32_BE(b, uint32_t(data.size()));
  const size_t start = b.size();
  b += type;
  b += data;
  Put32_BE(b, uint32_t(crc32(0, reinterpret_cast<const Bytef*>(b.data() + start), uInt(b.size() - start))));
}
}  // namespace

bool Make_Parent_Dirs(const std::string& path) {
  std::error_code ec;
  std::filesystem::create_directories(std::filesystem::path(path).parent_path(), ec);
  return !ec;
}

bool Write_File(const std::string& path, const std::string& bytes) {
  if (!Make_Parent_Dirs(path)) return false;
  std::FILE* f = std::fopen(path.c_str(), "wb");
  if (f == nullptr) return false;
  const bool ok = std::fwrite(bytes.data(), 1, bytes.size(), f) == bytes.size();
  return std::fclose(f) == 0 && ok;
}

bool Write_BMP(const std::string& path, const Picture& p) {
  const uint32_t row = (uint32_t(p.width) * 3 + 3) & ~3u;
  const uint32_t data = row * uint32_t(p.height);
  std::string b;
  b += "BM";
  Put32(b, 54 + data);
  Put32(b, 0);
  Put32(b, 54);
  Put32(b, 40);
  Put32(b, uint32_t(p.width));
  Put32(b, uint32_t(p.height));  // bottom-up rows
  Put16(b, 1);
  Put16(b, 24);
  Put32(b, 0);
  Put32(b, data);
  Put32(b, 2835);
  Put32(b, 2835);
  Put32(b, 0);
  Put32(b, 0);
  for (int y = p.height - 1; y >= 0; --y) {
    const size_t start = b.size();
    for (int x = 0; x < p.width; ++x) {
      const uint32_t c = p.at(x, y);
      b.push_back(char(c & 0xFF));
      b.push_back(char((c >> 8) & 0xFF));
      b.push_back(char((c >> 16) & 0xFF));
    }
    while (b.size() - start < row) b.push_back(0);
  }
  return Write_File(path, b);
}

bool Write_DDS4444(const std::string& path, const Picture& p) {
  std::string b = "DDS ";
  Put32(b, 124);                             // header size
  Put32(b, 0x1 | 0x2 | 0x4 | 0x8 | 0x1000);  // caps, height, width, pitch, pixel format
  Put32(b, uint32_t(p.height));
  Put32(b, uint32_t(p.width));
  Put32(b, uint32_t(p.width) * 2);  // pitch
  Put32(b, 0);                      // depth
  Put32(b, 0);                      // mip-map count
  for (int i = 0; i < 11; ++i) Put32(b, 0);
  Put32(b, 32);          // pixel format size
  Put32(b, 0x40 | 0x1);  // RGB + alpha pixels
  Put32(b, 0);           // four-character code
  Put32(b, 16);
  Put32(b, 0x0F00);
  Put32(b, 0x00F0);
  Put32(b, 0x000F);
  Put32(b, 0xF000);
  Put32(b, 0x1000);  // caps: texture
  Put32(b, 0);
  Put32(b, 0);
  Put32(b, 0);
  Put32(b, 0);  // reserved
  for (uint32_t c : p.pixels) {
    auto q = [](uint32_t v) { return (v * 15 + 127) / 255; };
    const uint32_t v = (q(c >> 24 & 0xFF) << 12) | (q(c >> 16 & 0xFF) << 8) | (q(c >> 8 & 0xFF) << 4) | q(c & 0xFF);
    Put16(b, v);
  }
  return Write_File(path, b);
}

bool Write_PNG(const std::string& path, const Picture& p) {
  // Each row: its filter byte, then the pixels. "Up" (2) leaves only the change from the
  // row above, which the badge's smooth colours make mostly zeros.
  std::string raw;
  raw.reserve(size_t(p.height) * (1 + size_t(p.width) * 4));
  for (int y = 0; y < p.height; ++y) {
    raw.push_back(char(y == 0 ? 0 : 2));
    for (int x = 0; x < p.width; ++x) {
      const uint32_t c = p.at(x, y), above = y == 0 ? 0 : p.at(x, y - 1);
      for (int shift : {16, 8, 0, 24}) raw.push_back(char(((c >> shift) - (above >> shift)) & 0xFF));
    }
  }
  uLongf packed_size = compressBound(uLong(raw.size()));
  std::string packed(packed_size, '\0');
  if (compress2(reinterpret_cast<Bytef*>(packed.data()), &packed_size, reinterpret_cast<const Bytef*>(raw.data()),
                uLong(raw.size()), Z_BEST_COMPRESSION) != Z_OK)
    return false;
  packed.resize(packed_size);

  std::string header;
  Put32_BE(header, uint32_t(p.width));
  Put32_BE(header, uint32_t(p.height));
  header += {8, 6, 0, 0, 0};  // 8 bits a channel, RGBA, deflate, standard filters, not interlaced
  std::string b = "\x89PNG\r\n\x1a\n";
  Chunk(b, "IHDR", header);
  Chunk(b, "IDAT", packed);
  Chunk(b, "IEND", "");
  return Write_File(path, b);
}

}  // namespace assetgen
