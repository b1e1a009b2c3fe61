// The RIFF WAVE header walk: chunk skipping, long format chunks, and refusal of files that
// are cut short or whose sizes point past their end, without reading past them.
#include <gtest/gtest.h>

#include <algorithm>
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
    EXPECT_GE(offset, 0);
    EXPECT_LE(std::uint64_t(offset) + n, bytes_.size()) << "read past the end at " << offset << "+" << n;
    if (offset < 0 || std::uint64_t(offset) + n > bytes_.size()) return false;
    std::memcpy(out, bytes_.data() + offset, n);
    return true;
  }

 private:
  const std::string& bytes_;
};

wave::WaveHeader Walk(const std::string& bytes) {
  StrictSource source(bytes);
  return wave::Read_Wave_Header(source);
}

}  // namespace

TEST(WaveHeader, ReadsTheFormatAndFindsDataPastOtherChunks) {
  wavetest::WaveLayout layout;
  layout.channels = 2;
  layout.rate = 44100;
  layout.before_data = wavetest::Chunk("LIST", std::string(26, 'x')) + wavetest::Chunk("fact", "1234");
  layout.data = std::string(1000, '\x55');
  const std::string file = wavetest::Make_Wave(layout);
  const wave::WaveHeader h = Walk(file);
  ASSERT_EQ(h.result, wave::HeaderResult::Ok) << h.problem;
  EXPECT_EQ(h.format.FormatTag, 1);
  EXPECT_EQ(h.format.Channels, 2);
  EXPECT_EQ(h.format.SamplesPerSec, 44100u);
  EXPECT_EQ(h.format.AvgBytesPerSec, 44100u * 4);
  EXPECT_EQ(h.format.BlockAlign, 4);
  EXPECT_EQ(h.format.BitsPerSample, 16);
  EXPECT_EQ(h.DataBytes, 1000);
  EXPECT_EQ(h.DataOffset, std::int64_t(file.size()) - 1000);
}

TEST(WaveHeader, FormatChunkLongerThanSixteenBytesIsSkipped) {
  wavetest::WaveLayout layout;
  layout.format_extra = std::string("\x02\x00", 2);  // 18-byte chunk: cbSize only
  layout.data = "abcd";
  const std::string file = wavetest::Make_Wave(layout);
  ASSERT_EQ(file.substr(16, 4), std::string("\x12\x00\x00\x00", 4));
  const wave::WaveHeader h = Walk(file);
  ASSERT_EQ(h.result, wave::HeaderResult::Ok) << h.problem;
  EXPECT_EQ(h.DataOffset, 20 + 18 + 8);
  EXPECT_EQ(file.substr(size_t(h.DataOffset), 4), "abcd");
}

TEST(WaveHeader, OtherFilesAreNotWaveAndNonPcmIsReportedAsItStands) {
  EXPECT_EQ(Walk("").result, wave::HeaderResult::NotWave);
  EXPECT_EQ(Walk(std::string("RIFX\0\0\0\0WAVE", 12)).result, wave::HeaderResult::NotWave);
  EXPECT_EQ(Walk(std::string("RIFF\0\0\0\0AVI fmt ", 16)).result, wave::HeaderResult::NotWave);
  wavetest::WaveLayout layout;
  layout.tag = 3;  // IEEE float
  layout.bits = 32;
  layout.data = std::string(64, '\1');
  const wave::WaveHeader h = Walk(wavetest::Make_Wave(layout));
  ASSERT_EQ(h.result, wave::HeaderResult::Ok);
  EXPECT_EQ(h.format.FormatTag, 3);
}

TEST(WaveHeader, EveryTruncationIsRefusedWithoutReadingPastTheEnd) {
  wavetest::WaveLayout layout;
  layout.format_extra = std::string(6, '\0');
  layout.before_data = wavetest::Chunk("LIST", std::string(30, 'i'));
  layout.data = std::string(40, '\x7f');
  const std::string whole = wavetest::Make_Wave(layout);
  ASSERT_EQ(Walk(whole).result, wave::HeaderResult::Ok);
  for (size_t n = 0; n < whole.size(); ++n) {
    const std::string cut = whole.substr(0, n);
    const wave::WaveHeader h = Walk(cut);
    EXPECT_NE(h.result, wave::HeaderResult::Ok) << "accepted a file cut to " << n << " bytes";
    EXPECT_EQ(h.format.FormatTag, 0);
    EXPECT_EQ(h.result, n < 12 ? wave::HeaderResult::NotWave : wave::HeaderResult::Damaged) << n;
  }
}

TEST(WaveHeader, SizesThatLieAreRefused) {
  struct Case {
    const char* what;
    size_t offset;  // where the lying 32-bit size goes
    std::uint32_t size;
  };
  wavetest::WaveLayout layout;
  layout.before_data = wavetest::Chunk("LIST", std::string(8, 'i'));
  layout.data = std::string(40, '\x7f');
  const std::string good = wavetest::Make_Wave(layout);
  const size_t list_size_at = 20 + 16 + 4, data_size_at = list_size_at + 4 + 8 + 4;
  ASSERT_EQ(good.substr(data_size_at - 4, 4), "data");
  for (const Case& c : {Case{"format chunk shorter than 16", 16, 15}, Case{"format chunk past the end", 16, 0xFFFFFFF0u},
                        Case{"list chunk past the end", list_size_at, 1000}, Case{"list chunk of 4 GB", list_size_at, 0xFFFFFFFFu},
                        Case{"data longer than the file", data_size_at, 41}, Case{"data of 2 GB", data_size_at, 0x80000000u}}) {
    std::string bad = good;
    for (int i = 0; i < 4; ++i) bad[c.offset + size_t(i)] = char((c.size >> (8 * i)) & 0xFF);
    const wave::WaveHeader h = Walk(bad);
    EXPECT_EQ(h.result, wave::HeaderResult::Damaged) << c.what;
    EXPECT_EQ(h.format.FormatTag, 0) << c.what;
    EXPECT_STRNE(h.problem, "") << c.what;
  }
}
