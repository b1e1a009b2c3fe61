#pragma once
// The RIFF WAVE header of the music file: the format chunk and where the samples lie.
#include <cstddef>
#include <cstdint>

#include "core/types.h"

namespace wave {

using u16 = std::uint16_t;

// The music's format as the stream is created with it (extra size and extra stay 0).
// The extensible format tag; one whose sub-format is PCM reads as tag 1.
inline constexpr u16 kExtensible = 0xFFFE;

struct WaveFormat {
  u16 FormatTag = 0;  // 1: uncompressed PCM (also extensible PCM); 0: no usable header
  u16 Channels = 0;
  u32 SamplesPerSec = 0;
  u32 AvgBytesPerSec = 0;
  u16 BlockAlign = 0;
  u16 BitsPerSample = 0;
  u16 ExtraSize = 0;
  u32 Extra = 0;
};

enum class HeaderResult : u8 {
  Ok,       // format read and a "data" chunk found inside the file
  NotWave,  // not a RIFF WAVE file at all
  Damaged,  // RIFF WAVE, but cut short or with sizes that point past the file
};

struct WaveHeader {
  HeaderResult result = HeaderResult::NotWave;
  WaveFormat format;            // FormatTag 0 unless result is Ok
  i32 DataBytes = 0;            // size of the "data" chunk
  std::int64_t DataOffset = 0;  // file offset of the first sample byte
  const char* problem = "";     // why a Damaged header was refused
};

// Random-access bytes the header walk reads; it never asks beyond Size().
class ByteSource {
 public:
  virtual ~ByteSource() = default;
  virtual std::int64_t Size() const = 0;
  // Exactly n bytes at offset, or false.
  virtual bool Read(std::int64_t offset, void* out, std::size_t n) = 0;
};

// Walks "RIFF", "WAVE", the format chunk (its bytes past the 16 read skipped), then the
// chunks up to "data". A data chunk longer than the bytes left, or any size that leads
// past the end of the file, refuses the header.
WaveHeader Read_Wave_Header(ByteSource& source);
WaveHeader Read_Wave_Header(const std::uint8_t* bytes, std::size_t size);

}  // namespace wave
