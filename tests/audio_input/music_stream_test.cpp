// The RIFF WAVE header walk; the music stream's buffers, notifications, refusals and what SDL plays.
#include <chrono>
#include <cstring>
#include <thread>

#include "app/game_script.h"
#include "audio_input/frmMain.h"
#include "audio_input/wave.h"

namespace {

std::string Chunk(const char* id, const std::string& body) {
  std::string s(id, 4);
  testenv::Put(s, {std::uint32_t(body.size())});
  return s + body;
}

struct WaveLayout {
  std::uint16_t tag = 1, channels = 1, bits = 16;
  std::uint32_t rate = 22050;
  std::string format_extra{};  // bytes after the 16 of the format chunk
  std::string before_data{};   // whole chunks between the format chunk and "data"
  std::string data{};
  std::string after_data{};  // whole chunks after "data"
};

std::string Make_Wave(const WaveLayout& w) {
  std::string format;
  const std::uint16_t block = std::uint16_t(w.channels * w.bits / 8);
  testenv::Put(format, {w.tag, w.channels}, 2);
  testenv::Put(format, {w.rate, w.rate * block});
  testenv::Put(format, {block, w.bits}, 2);
  return Chunk("RIFF",
               "WAVE" + Chunk("fmt ", format + w.format_extra) + w.before_data + Chunk("data", w.data) + w.after_data);
}

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

// Sample bytes that are never 0, so silence in the output is the stream's own.
std::string Pattern(size_t n) {
  std::string s(n, '\0');
  for (size_t i = 0; i < n; ++i) s[i] = char(1 + (i * 7 + i / 251) % 250);
  return s;
}

std::string Put_Music(const std::string& bytes) {
  const std::string path = platform::Game_Path("\\Sm\\ASounds.raw");
  testenv::Write_File(path, bytes);
  return path;
}

bool Play(const std::string& bytes) {
  frmMain::Init_Streaming_Music();
  frmMain::Play_Streaming_Music(Put_Music(bytes));
  return platform::Stream_Playing();
}

// Sends the sound to SDL's disk driver, which waits delay ms between refills; returns its file.
std::string Disk_Driver(const char* delay) {
  const std::string out = platform::Game_Path("device.raw");
  setenv("SDL_AUDIODRIVER", "disk", 1);
  setenv("SDL_DISKAUDIOFILE", out.c_str(), 1);
  setenv("SDL_DISKAUDIODELAY", delay, 1);
  return out;
}

// Plays the music on the disk driver; returns the `wanted` bytes after the paused device's silence.
std::string Capture(const std::string& music, size_t wanted) {
  const std::string out = Disk_Driver("0");
  std::filesystem::remove(out);
  Play(music);
  // Refills and the restart copy from memory: the file is gone as soon as the music plays.
  std::filesystem::remove(platform::Game_Path("\\Sm\\ASounds.raw"));
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  std::error_code ec;
  while (std::filesystem::file_size(out, ec) < wanted + (1u << 20) && std::chrono::steady_clock::now() < deadline)
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  frmMain::Kill_DSound();
  const std::string all = testenv::Read_File(out);
  const size_t start = all.find_first_not_of('\0');
  return start == std::string::npos ? "" : all.substr(start, wanted);
}

// Each case starts on the silent dummy driver, whatever the one before it chose.
class MusicStream : public testing::Test {
 protected:
  void SetUp() override { setenv("SDL_AUDIODRIVER", "dummy", 1); }
  testenv::ScratchAppDir dir;
};

}  // namespace

TEST_F(MusicStream, BuffersHoldTwiceTheRateNotifiedAtMiddleAndEndAFileThatCannotPlayLeavesOneLineSayingWhy) {
  for (const auto& [channels, rate, buffer] : {std::tuple{1, 22050u, 44100}, std::tuple{2, 44100u, 88200}}) {
    const WaveLayout layout{.channels = uint16_t(channels), .rate = rate, .data = Pattern(size_t(buffer) * 3 + 100)};
    ASSERT_TRUE(Play(Make_Wave(layout))) << rate;
    platform::StreamLock lock;
    const frmMain::StreamShape shape = frmMain::Stream_Shape();
    EXPECT_EQ(std::tuple(shape.buffer_bytes, shape.whole_chunks_end), std::tuple(buffer, buffer * 3));
    const auto notes = platform::Stream_Notification_List();
    ASSERT_EQ(notes.size(), 2u);
    EXPECT_EQ(std::tuple(notes[0].offset, notes[1].offset), std::tuple(buffer / 2, buffer - 1));
    EXPECT_EQ(notes[1].event, shape.events[1]);
    frmMain::Kill_DSound();
  }

  const auto wave = [](uint16_t tag, uint16_t channels, uint16_t bits, uint32_t rate, size_t bytes) {
    return Make_Wave({.tag = tag, .channels = channels, .bits = bits, .rate = rate, .data = Pattern(bytes)});
  };
  std::string lying = wave(1, 1, 16, 8000, 200);
  lying[lying.size() - 201] = '\x7f';  // the data chunk's size, now far past the end
  const std::pair<std::string, const char*> cases[] = {
      {"", nullptr},  // no file at all: no music was given, nothing to say
      {"not a wave file", "it is not a RIFF WAVE file"},
      {lying, "a chunk is longer than the rest of the file"},
      {wave(3, 1, 32, 8000, 20000), "format 3 is not uncompressed PCM"},
      {wave(1, 1, 12, 8000, 20000), "12-bit samples cannot be played"},
      {wave(1, 0, 16, 8000, 20000), "0 channels cannot be played"},
      {wave(1, 1, 16, 0, 200), "a rate of 0 samples a second cannot be played"},
      {wave(1, 2, 16, 8000, 0), "it holds no samples"},
  };
  for (const auto& [bytes, why] : cases) {
    SCOPED_TRACE(why ? why : "no file");
    std::filesystem::remove(modMain::Log_Path());
    const std::string path = Put_Music(bytes);
    if (bytes.empty()) std::filesystem::remove(path);
    frmMain::Init_Streaming_Music();
    EXPECT_NO_THROW(frmMain::Play_Streaming_Music(path));
    EXPECT_FALSE(platform::Stream_Playing());
    const auto want =
        why ? std::vector<std::string>{"Music not played: " + path + ": " + why} : std::vector<std::string>{};
    EXPECT_EQ(testenv::Read_Lines_CRLF(modMain::Log_Path()), want);
    frmMain::Kill_DSound();
  }
}

TEST_F(MusicStream, TheDevicePlaysTheSamplesThenSilenceThenTheMusicAgain24BitAsItsHigh16AndAtTheVolumeSet) {
  // 8000 Hz: 16000-byte buffers; the refill silences what follows the samples in the last one.
  for (const size_t samples : {size_t(2 * 16000 + 10002), size_t(2 * 16000), size_t(6000)}) {
    const WaveLayout layout{.rate = 8000,
                            .before_data = Chunk("LIST", std::string(20, 'l')),
                            .data = Pattern(samples),
                            .after_data = Chunk("LIST", std::string(30000, 'z'))};
    const std::string pass = layout.data + std::string(16000 - samples % 16000, '\0');
    const std::string played = Capture(Make_Wave(layout), 2 * pass.size());
    EXPECT_EQ(std::mismatch(played.begin(), played.end(), (pass + pass).begin()).first - played.begin(),
              std::ptrdiff_t(2 * pass.size()))
        << samples << ": first byte that differs";
  }

  // Other programs write 24-bit music, as plain or as extensible PCM: it plays as its high 16 bits.
  WaveLayout layout{.channels = 2, .bits = 24, .rate = 8000, .data = Pattern(3 * 2 * 4000)};  // half a second
  std::string want;
  for (size_t i = 0; i < layout.data.size(); i += 3) want += layout.data.substr(i + 1, 2);
  for (const bool extensible : {false, true}) {
    SCOPED_TRACE(extensible);
    if (extensible) {
      layout.tag = wave::kExtensible;
      std::string extra("\x16\x00\x18\x00\x03\x00\x00\x00", 8);  // size 22, 24 valid bits, front left and right
      extra += std::string("\x01\x00\x00\x00\x00\x00\x10\x00\x80\x00\x00\xAA\x00\x38\x9B\x71", 16);
      layout.format_extra = extra;
    }
    std::filesystem::remove(modMain::Log_Path());
    const std::string played = Capture(Make_Wave(layout), want.size());
    EXPECT_TRUE(played == want) << "first byte that differs: "
                                << std::mismatch(played.begin(), played.end(), want.begin()).first - played.begin();
    EXPECT_FALSE(std::filesystem::exists(modMain::Log_Path())) << testenv::Read_File(modMain::Log_Path());
  }

  // 16-bit samples, the first loud in both bytes so the device's leading silence ends there.
  WaveLayout sixteen{.rate = 8000};
  std::vector<int16_t> samples(16000);
  for (size_t i = 0; i < samples.size(); ++i) samples[i] = i == 0 ? 0x7F7F : int16_t(int(i * 977 % 60000) - 30000);
  sixteen.data.assign(reinterpret_cast<const char*>(samples.data()), samples.size() * 2);
  frmMain::Set_Music_Volume(5);  // a quarter of the amplitude
  const std::string played = Capture(Make_Wave(sixteen), 4000);
  frmMain::Set_Music_Volume(10);
  ASSERT_EQ(played.size(), 4000u);
  int off = 0;
  for (size_t i = 0; i < played.size() / 2; ++i) {
    int16_t s = 0;
    std::memcpy(&s, played.data() + 2 * i, 2);
    off += std::abs(s - samples[i] / 4.0) > 1.0;
  }
  EXPECT_EQ(off, 0) << "samples not played at a quarter of their amplitude";
}

// Shutdown mid-refill: a fault shows as a crash, or under `make tsan` as music state the lock leaves unordered.
TEST_F(MusicStream, ShuttingDownWhileTheRefillRunsIsSafe) {
  const std::string device = Disk_Driver("1");  // lets shutdown win SDL's unfair lock between refills
  // 16000-byte buffers: a refill every 8000 bytes played.
  const std::string bytes = Make_Wave({.rate = 8000, .data = Pattern(40000)});
  for (int round = 0; round < 25; ++round) {
    Play(bytes);
    // Both first refills ran once a buffer has played; each round the shutdown comes later towards the next refill.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    std::error_code ec;
    while (std::filesystem::file_size(device, ec) < 16000 && std::chrono::steady_clock::now() < deadline)
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    ASSERT_GE(std::filesystem::file_size(device, ec), 16000u) << "no refill ran in round " << round;
    std::this_thread::sleep_for(std::chrono::microseconds(700 * round));
    frmMain::Kill_DSound();
    EXPECT_FALSE(platform::Stream_Playing());
  }
}

TEST_F(MusicStream, TheGamePlaysItsGeneratedMusicAndLogsTheSameWithoutSound) {
  for (const char* folder : {"Gfx", "Sm"}) dir.Copy_From_Game(folder);
  const auto run = [](bool& playing) {
    testenv::Write_File(modMain::Settings_Path(), kDefaultIni);
    uint64_t first = ~uint64_t{0};  // the pump count runs on from the run before
    Run_Main([&](uint64_t pump) {
      platform::Advance_Manual_Clock(16);
      first = std::min(first, pump);
      if (pump - first == 3) playing = platform::Stream_Playing() && frmMain::Stream_Shape().buffer_bytes == 44100;
      if (pump - first == 5) platform::Post_Event({platform::EventKind::Quit});
    });
    return testenv::Read_Lines_CRLF(modMain::Log_Path());
  };
  bool playing = false;
  const auto with_sound = run(playing);
  EXPECT_TRUE(playing) << "the generated 22050 Hz music plays in 44100-byte buffers";
  setenv("SDL_AUDIODRIVER", "no-such-driver", 1);
  EXPECT_EQ(run(playing), with_sound);
  EXPECT_FALSE(playing);
}

TEST(WaveHeader, ListBeforeDataAndAnEighteenByteFormatChunkAreSkippedCutsAndLyingSizesAreRefused) {
  // An 18-byte format chunk (cbSize only), then a LIST chunk.
  const std::string good = Make_Wave({.channels = 2,
                                      .format_extra = std::string("\x02\x00", 2),
                                      .before_data = Chunk("LIST", std::string(26, 'x')),
                                      .data = std::string(40, '\x7f')});
  const wave::WaveHeader h = Walk(good);
  ASSERT_EQ(h.result, wave::HeaderResult::Ok) << h.problem;
  EXPECT_EQ(std::tuple(h.format.Channels, h.format.BlockAlign, h.DataBytes, h.DataOffset),
            std::tuple(2, 4, 40, 20 + 18 + 8 + 34));
  EXPECT_EQ(Walk(std::string("RIFF\0\0\0\0AVI fmt ", 16)).result, wave::HeaderResult::NotWave);

  // Every cut of the file is refused without reading past its end.
  for (size_t n = 0; n < good.size(); ++n) {
    const wave::WaveHeader cut = Walk(good.substr(0, n));
    EXPECT_EQ(cut.result, n < 12 ? wave::HeaderResult::NotWave : wave::HeaderResult::Damaged) << n;
    EXPECT_EQ(cut.format.FormatTag, 0) << n;
  }

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
