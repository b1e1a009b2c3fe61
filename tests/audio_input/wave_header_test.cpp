// The RIFF WAVE header walk: chunk skipping, long format chunks, and refusal of cut or lying files.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "audio_input/wave.h"
#include "wave_builder.h"

namespace {

// Hands out the bytes, failing the test on any request outside them.
class StrictSource final : public wave::ByteSource {
 public:
  explicit StrictSource(const std::string& bytes) : bytes_(bytes) {}
  std::int64_t Size() const override { return std::int64_t(bytes_.size()); }
  bool Read(std::int64_t offset, void* out, std::size_t n) override {
    const bool inside = offset >= 0 && std::uint64_t(offset) + n <= bytes_.size();
    EXPECT_TRUE(inside) << "read past the end at " << offset << "+" << n;
    if (inside) std::memcpy(out, bytes_.data() + offset, n);
    return inside;
  }

 private:
  const std::string& bytes_;
};

wave::WaveHeader Walk(const std::string& bytes) {
  StrictSource source(bytes);
  return wave::Read_Wave_Header(source);
}

}  // namespace

TEST(WaveHeader, ListBeforeDataAndAnEighteenByteFormatChunkAreSkippedCutsAndLyingSizesAreRefused) {
  wavetest::WaveLayout layout;
  layout.channels = 2;
  layout.format_extra = std::string("\x02\x00", 2);  // 18-byte chunk: cbSize only
  layout.before_data = wavetest::Chunk("LIST", std::string(26, 'x'));
  layout.data = std::string(40, '\x7f');
  const std::string good = wavetest::Make_Wave(layout);
  const wave::WaveHeader h = Walk(good);
  ASSERT_EQ(h.result, wave::HeaderResult::Ok) << h.problem;
  EXPECT_EQ(h.format.Channels, 2);
  EXPECT_EQ(h.format.BlockAlign, 4);
  EXPECT_EQ(h.DataBytes, 40);
  EXPECT_EQ(h.DataOffset, 20 + 18 + 8 + 34);
  EXPECT_EQ(Walk(std::string("RIFF\0\0\0\0AVI fmt ", 16)).result, wave::HeaderResult::NotWave);

  // Every cut of the file is refused without reading past its end.
  for (size_t n = 0; n < good.size(); ++n) {
    const wave::WaveHeader cut = Walk(good.substr(0, n));
    EXPECT_EQ(cut.result, n < 12 ? wave::HeaderResult::NotWave : wave::HeaderResult::Damaged) << n;
    EXPECT_EQ(cut.format.FormatTag, 0) << n;
  }

  // So is every chunk whose size lies.
  const size_t fmt_at = 16, list_at = 42, data_at = 76;  // offsets of the chunks' sizes
  ASSERT_EQ(good.substr(data_at - 4, 4), "data");
  const std::pair<size_t, std::uint32_t> lies[] = {{fmt_at, 15},    {fmt_at, 0xFFFFFFF0u},
                                                   {list_at, 1000}, {list_at, 0xFFFFFFFFu},
                                                   {data_at, 41},   {data_at, 0x80000000u}};
  for (const auto& [at, size] : lies) {
    std::string bad = good;
    for (int i = 0; i < 4; ++i) bad[at + size_t(i)] = char((size >> (8 * i)) & 0xFF);
    const wave::WaveHeader lying = Walk(bad);
    EXPECT_EQ(lying.result, wave::HeaderResult::Damaged) << at << ":" << size;
    EXPECT_EQ(lying.format.FormatTag, 0) << at;
    EXPECT_STRNE(lying.problem, "") << at;
  }
}
