#include "audio_input/wave.h"

#include <cstring>
#include <limits>

namespace wave {
namespace {

u32 Le32(const std::uint8_t* p) { return u32(p[0]) | u32(p[1]) << 8 | u32(p[2]) << 16 | u32(p[3]) << 24; }
u16 Le16(const std::uint8_t* p) { return static_cast<u16>(p[0] | p[1] << 8); }

class MemorySource final : public ByteSource {
 public:
  MemorySource(const std::uint8_t* bytes, std::size_t size) : bytes_(bytes), size_(size) {}
  std::int64_t Size() const override { return static_cast<std::int64_t>(size_); }
  bool Read(std::int64_t offset, void* out, std::size_t n) override {
    if (offset < 0 || std::uint64_t(offset) > size_ || n > size_ - std::size_t(offset)) return false;
    std::memcpy(out, bytes_ + offset, n);
    return true;
  }

 private:
  const std::uint8_t* bytes_;
  std::size_t size_;
};

WaveHeader Refuse(const char* why) {
  WaveHeader h;
  h.result = HeaderResult::Damaged;
  h.problem = why;
  return h;
}

}  // namespace

WaveHeader Read_Wave_Header(ByteSource& source) {
  const std::int64_t size = source.Size();
  std::uint8_t head[20];
  if (size < 12 || !source.Read(0, head, 12) || std::memcmp(head, "RIFF", 4) != 0 ||
      std::memcmp(head + 8, "WAVE", 4) != 0)
    return WaveHeader{};
  // The first chunk's identifier is not checked: in a valid file it is the format chunk.
  if (size < 20 || !source.Read(12, head + 12, 8)) return Refuse("the file ends inside its first chunk header");
  const u32 format_size = Le32(head + 16);
  if (format_size < 16) return Refuse("the format chunk is shorter than 16 bytes");
  if (format_size > size - 20) return Refuse("the format chunk runs past the end of the file");
  std::uint8_t f[16];
  if (!source.Read(20, f, sizeof f)) return Refuse("the format chunk cannot be read");
  WaveFormat format;
  format.FormatTag = Le16(f);
  format.Channels = Le16(f + 2);
  format.SamplesPerSec = Le32(f + 4);
  format.AvgBytesPerSec = Le32(f + 8);
  format.BlockAlign = Le16(f + 12);
  format.BitsPerSample = Le16(f + 14);
  // Other programs write 24-bit PCM as the extensible format: its sub-format says PCM.
  static constexpr std::uint8_t kPcmSubFormat[16] = {1, 0, 0, 0, 0, 0, 0x10, 0, 0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x71};
  std::uint8_t sub[16];
  if (format.FormatTag == kExtensible && format_size >= 40 && source.Read(44, sub, sizeof sub) &&
      std::memcmp(sub, kPcmSubFormat, sizeof sub) == 0)
    format.FormatTag = 1;

  // Chunks are skipped by their stated size until "data"; every step moves at least 8
  // bytes on and is checked against the end of the file before it is taken.
  std::int64_t pos = 20 + std::int64_t(format_size);
  for (;;) {
    std::uint8_t chunk[8];
    if (size - pos < 8 || !source.Read(pos, chunk, sizeof chunk))
      return Refuse("there is no \"data\" chunk before the end of the file");
    const u32 length = Le32(chunk + 4);
    pos += 8;
    if (length > size - pos) return Refuse("a chunk is longer than the rest of the file");
    if (std::memcmp(chunk, "data", 4) == 0) {
      if (length > u32(std::numeric_limits<i32>::max())) return Refuse("the \"data\" chunk is too long");
      WaveHeader h;
      h.result = HeaderResult::Ok;
      h.format = format;
      h.DataBytes = static_cast<i32>(length);
      h.DataOffset = pos;
      return h;
    }
    pos += length;
  }
}

WaveHeader Read_Wave_Header(const std::uint8_t* bytes, std::size_t size) {
  MemorySource source(bytes, bytes == nullptr ? 0 : size);
  return Read_Wave_Header(source);
}

}  // namespace wave
