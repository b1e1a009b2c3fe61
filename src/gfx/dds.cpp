// The game's .dds textures: one uncompressed 16-bit image, 4 bits each of alpha, red,
// green and blue. The header is read field by field and nothing in it is trusted
// against the bytes actually present.
#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <vector>

#include "gfx/mod3Denhance.h"

namespace mod3Denhance {
namespace {
constexpr size_t kHeaderEnd = 4 + 124;  // magic, then the surface description
constexpr uint32_t kPitchFlag = 0x8;
constexpr uint32_t kFourCCFlag = 0x4;
// Far above any texture the game uses, and a bound on what a lying header can make us allocate.
constexpr int kMaxSide = 4096;

uint32_t Read32(const uint8_t* p) {
  return uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16 | uint32_t(p[3]) << 24;
}

// A file pixel, 4 bits a channel, as 0xAARRGGBB: each nibble n widens to n * 17.
uint32_t Argb_Of_4444(uint32_t pixel) {
  uint32_t out = 0;
  for (int shift = 0; shift < 16; shift += 4) out |= ((pixel >> shift) & 0xFu) * 17u << (shift * 2);
  return out;
}

struct DdsHeader {
  uint32_t flags, height, width, pitch, depth, mip_maps;
  uint32_t pf_flags, four_cc, bit_count, red_mask, green_mask, blue_mask, alpha_mask;
  uint32_t caps[4];
};

DdsHeader Read_Header(const uint8_t* d) {
  DdsHeader h{};
  // Offsets within the file; the header's own size fields are read past.
  h.flags = Read32(d + 8);
  h.height = Read32(d + 12);
  h.width = Read32(d + 16);
  h.pitch = Read32(d + 20);
  h.depth = Read32(d + 24);
  h.mip_maps = Read32(d + 28);
  h.pf_flags = Read32(d + 80);
  h.four_cc = Read32(d + 84);
  h.bit_count = Read32(d + 88);
  h.red_mask = Read32(d + 92);
  h.green_mask = Read32(d + 96);
  h.blue_mask = Read32(d + 100);
  h.alpha_mask = Read32(d + 104);
  for (int i = 0; i < 4; ++i) h.caps[i] = Read32(d + 108 + 4 * i);
  return h;
}
}  // namespace

Surface Decode_DDS(const uint8_t* data, size_t size) {
  if (data == nullptr || size < 4 || std::memcmp(data, "DDS ", 4) != 0) return nullptr;
  if (size < kHeaderEnd) return nullptr;
  const DdsHeader h = Read_Header(data);
  // Only what the texture can hold without conversion: 16 bits per pixel, uncompressed.
  if (h.bit_count != 16 || (h.pf_flags & kFourCCFlag) != 0) return nullptr;
  if (h.width < 1 || h.height < 1 || h.width > kMaxSide || h.height > kMaxSide) return nullptr;
  Surface texture = platform::Image::Create(int(h.width), int(h.height), platform::PixelFormat::A4R4G4B4);
  if (!texture) return nullptr;

  const uint8_t* pixels = data + kHeaderEnd;
  const size_t available = size - kHeaderEnd;
  const size_t row_bytes = size_t(h.width) * 2;
  // Rows are unpadded in the game's files; a larger pitch is honoured only when the data
  // really is that long, so a lying pitch can never send the copy past the end.
  size_t stride = row_bytes;
  if ((h.flags & kPitchFlag) != 0 && h.pitch > row_bytes && size_t(h.pitch) * (h.height - 1) + row_bytes <= available)
    stride = h.pitch;
  // Pixels the file does not hold stay transparent black.
  for (size_t y = 0; y < h.height; ++y)
    for (size_t x = 0; x < h.width; ++x) {
      const size_t at = y * stride + x * 2;
      if (at >= available) break;
      const uint32_t high = at + 1 < available ? pixels[at + 1] : 0;  // a file cut mid-pixel
      texture->Set_Pixel(int(x), int(y), Argb_Of_4444(uint32_t(pixels[at]) | high << 8));
    }
  return texture;
}

Surface Load_DDS(const std::string& file) {
  std::string path = file;
  std::replace(path.begin(), path.end(), '\\', '/');
  std::ifstream in(path, std::ios::binary);
  if (!in) return nullptr;
  char magic[4] = {};
  if (!in.read(magic, 4) || std::memcmp(magic, "DDS ", 4) != 0) return nullptr;
  std::vector<uint8_t> bytes(magic, magic + 4);
  bytes.insert(bytes.end(), std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  return Decode_DDS(bytes.data(), bytes.size());
}

}  // namespace mod3Denhance
