// The music stream: buffer sizes and notifications, refusals, and what the sound device
// really receives (SDL's disk driver writes it to a file) over whole loops.
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <thread>

#include "app/startup.h"
#include "audio_input/frmMain.h"
#include "core/modMain.h"
#include "platform/audio.h"
#include "platform/platform.h"
#include "platform/testing.h"
#include "support/test_env.h"
#include "wave_builder.h"

namespace {

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

struct Played {
  bool playing;
  int32_t buffer_bytes, data_bytes, whole_chunks_end;
  std::vector<platform::StreamNotification> notes;
  std::vector<uint8_t> chunk;
};

Played Play(const std::string& bytes) {
  const std::string path = Put_Music(bytes);
  frmMain::Init_Streaming_Music();
  frmMain::Play_Streaming_Music(path);
  platform::StreamLock lock;
  return {platform::Stream_Playing(), frmMain::BufferBytes, frmMain::DataBytes, frmMain::WholeChunksEnd,
          platform::Stream_Notification_List(), frmMain::Chunk};
}

bool Same(const std::vector<platform::StreamNotification>& a, const std::vector<platform::StreamNotification>& b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i)
    if (a[i].offset != b[i].offset || a[i].event != b[i].event) return false;
  return true;
}

// Plays the music on SDL's disk driver, as fast as it will go, until `wanted` bytes of it
// have been written after the leading silence of the paused device; returns those bytes.
std::string Capture(const std::string& music, size_t wanted) {
  const std::string out = platform::Game_Path("device.raw");
  setenv("SDL_AUDIODRIVER", "disk", 1);
  setenv("SDL_DISKAUDIOFILE", out.c_str(), 1);
  setenv("SDL_DISKAUDIODELAY", "0", 1);
  frmMain::Init_Streaming_Music();
  frmMain::Play_Streaming_Music(Put_Music(music));
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  std::error_code ec;
  while (std::filesystem::file_size(out, ec) < wanted + (1u << 20) && std::chrono::steady_clock::now() < deadline)
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  frmMain::Kill_DSound();
  const std::string all = testenv::Read_File(out);
  const size_t start = all.find_first_not_of('\0');
  if (start == std::string::npos) return "";
  return all.substr(start, wanted);
}

// Each case starts on the silent dummy driver, whatever the one before it chose.
class MusicStream : public testing::Test {
 protected:
  void SetUp() override { setenv("SDL_AUDIODRIVER", "dummy", 1); }
  testenv::ScratchAppDir dir;
};

}  // namespace

TEST_F(MusicStream, BufferHoldsTwiceTheRateWithNotificationsAtItsMiddleAndLastByte) {
  struct Case {
    uint16_t channels, bits;
    uint32_t rate;
    int32_t buffer;
  };
  for (const Case c : {Case{1, 16, 22050, 44100}, Case{2, 16, 44100, 88200}, Case{1, 8, 11025, 22050}}) {
    wavetest::WaveLayout layout;
    layout.channels = c.channels;
    layout.bits = c.bits;
    layout.rate = c.rate;
    layout.data = Pattern(size_t(c.buffer) * 3 + 100);
    const Played p = Play(wavetest::Make_Wave(layout));
    EXPECT_TRUE(p.playing) << c.rate;
    EXPECT_EQ(p.buffer_bytes, c.buffer);
    EXPECT_EQ(p.whole_chunks_end, c.buffer * 3);
    EXPECT_EQ(p.chunk.size(), size_t(c.buffer));
    EXPECT_TRUE(Same(p.notes, {{c.buffer / 2, frmMain::StreamEvents[0]}, {c.buffer - 1, frmMain::StreamEvents[1]}}))
        << c.rate << ": " << (p.notes.empty() ? -1 : p.notes[0].offset);
    frmMain::Kill_DSound();
    EXPECT_FALSE(platform::Stream_Playing());
  }
  EXPECT_EQ(frmMain::StreamEvents[0], 0);
}

TEST_F(MusicStream, ChunksBeforeDataAndLongFormatsAreSkippedAndShortMusicHasNoRefills) {
  wavetest::WaveLayout layout;
  layout.format_extra = std::string("\x02\x00\xAA\xBB", 4);
  layout.before_data = wavetest::Chunk("LIST", "INFOISFT" + std::string(10, 'q'));
  layout.data = Pattern(1000);
  const Played p = Play(wavetest::Make_Wave(layout));
  EXPECT_TRUE(p.playing);
  EXPECT_EQ(p.data_bytes, 1000);
  EXPECT_TRUE(p.notes.empty());
  EXPECT_EQ(std::string(p.chunk.begin(), p.chunk.end()), layout.data);
  frmMain::Kill_DSound();
}

TEST_F(MusicStream, FilesThatAreNotPcmMusicPlayNothingAndOnlyDamageIsLogged) {
  wavetest::WaveLayout not_pcm;
  not_pcm.tag = 3;
  not_pcm.bits = 32;
  not_pcm.data = Pattern(200000);
  wavetest::WaveLayout odd_rate;
  odd_rate.rate = 0;
  odd_rate.data = Pattern(200);
  std::string lying = wavetest::Make_Wave(odd_rate);
  lying[lying.size() - 201] = '\x7f';  // the data chunk's size, now far past the end
  for (const auto& [bytes, logged] : {std::pair{wavetest::Make_Wave(not_pcm), false}, std::pair{wavetest::Make_Wave(odd_rate), false},
                                      std::pair{std::string("not a wave file"), false}, std::pair{lying, true}}) {
    std::filesystem::remove(modMain::Log_Path());
    Played p{};
    EXPECT_NO_THROW(p = Play(bytes));
    EXPECT_FALSE(p.playing);
    const auto lines = testenv::Read_Lines_CRLF(modMain::Log_Path());
    EXPECT_EQ(lines.size(), logged ? 1u : 0u);
    if (logged && !lines.empty()) {
      EXPECT_EQ(lines[0].rfind("Music not played: ", 0), 0u) << lines[0];
    }
    frmMain::Kill_DSound();
  }
}

TEST_F(MusicStream, NoSoundDeviceMeansSilenceAndNothingElse) {
  setenv("SDL_AUDIODRIVER", "no-such-driver", 1);
  wavetest::WaveLayout layout;
  layout.data = Pattern(100000);
  const Played p = Play(wavetest::Make_Wave(layout));
  EXPECT_FALSE(p.playing);
  EXPECT_TRUE(p.notes.empty());
  EXPECT_FALSE(std::filesystem::exists(modMain::Log_Path()));
  frmMain::Kill_DSound();
}

TEST_F(MusicStream, DevicePlaysTheSamplesThenTheRefillsSilenceThenTheMusicAgain) {
  // 8000 Hz mono: 16000-byte buffers; the data ends 10002 bytes into its third buffer.
  wavetest::WaveLayout layout;
  layout.rate = 8000;
  layout.data = Pattern(2 * 16000 + 10002);
  layout.before_data = wavetest::Chunk("LIST", std::string(20, 'l'));
  // Bytes after the samples are read with the last chunk; the refill silences them.
  layout.after_data = wavetest::Chunk("LIST", std::string(30000, 'z'));
  const std::string one_pass = layout.data + std::string(16000 - 10002, '\0');
  const std::string played = Capture(wavetest::Make_Wave(layout), 2 * one_pass.size());
  ASSERT_EQ(played.size(), 2 * one_pass.size());
  const std::string expected = one_pass + one_pass;
  EXPECT_EQ(std::mismatch(played.begin(), played.end(), expected.begin()).first - played.begin(),
            std::ptrdiff_t(expected.size()))
      << "first byte that differs";
}

TEST_F(MusicStream, DataEndingOnABufferBoundaryGetsAWholeBufferOfSilence) {
  wavetest::WaveLayout layout;
  layout.rate = 8000;
  layout.data = Pattern(2 * 16000);
  layout.after_data = wavetest::Chunk("LIST", std::string(30000, 'z'));
  const std::string one_pass = layout.data + std::string(16000, '\0');
  const std::string played = Capture(wavetest::Make_Wave(layout), 2 * one_pass.size());
  EXPECT_TRUE(played == one_pass + one_pass);
}

TEST_F(MusicStream, MusicShorterThanOneBufferLoopsUnchanged) {
  wavetest::WaveLayout layout;
  layout.rate = 8000;
  layout.data = Pattern(6000);
  const std::string cycle = layout.data + std::string(16000 - 6000, '\0');
  const std::string played = Capture(wavetest::Make_Wave(layout), 3 * cycle.size());
  EXPECT_TRUE(played == cycle + cycle + cycle);
}

TEST_F(MusicStream, ShuttingDownWhileTheRefillRunsIsSafe) {
  setenv("SDL_AUDIODRIVER", "disk", 1);
  setenv("SDL_DISKAUDIOFILE", platform::Game_Path("device.raw").c_str(), 1);
  // A short pause per device buffer lets shutdown get the device's lock (SDL's mutex is
  // not fair) while refills still follow each other closely.
  setenv("SDL_DISKAUDIODELAY", "1", 1);
  wavetest::WaveLayout layout;
  layout.rate = 8000;  // a refill every other device buffer, one every 2 ms or so
  layout.data = Pattern(40000);
  const std::string path = Put_Music(wavetest::Make_Wave(layout));
  for (int round = 0; round < 25; ++round) {
    frmMain::Init_Streaming_Music();
    frmMain::Play_Streaming_Music(path);
    std::this_thread::sleep_for(std::chrono::microseconds(200 * round));
    frmMain::Kill_DSound();
    EXPECT_FALSE(platform::Stream_Playing());
  }
}

TEST_F(MusicStream, GeneratedMusicIsALoopOfPcmMusic) {
  const std::string bytes = testenv::Read_File(testenv::Game_Dir() + "/Sm/ASounds.raw");
  const wave::WaveHeader h = wave::Read_Wave_Header(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
  ASSERT_EQ(h.result, wave::HeaderResult::Ok);
  EXPECT_EQ(h.format.FormatTag, 1);
  EXPECT_EQ(h.format.SamplesPerSec, 22050u);
  EXPECT_EQ(h.format.BitsPerSample, 16);
  ASSERT_TRUE(h.format.Channels == 1 || h.format.Channels == 2);
  const double seconds = double(h.DataBytes) / (22050.0 * 2 * h.format.Channels);
  EXPECT_GE(seconds, 40.0);
  EXPECT_LE(seconds, 90.0);
  // It must be music: loud enough, not clipped, and the last sample leads into the first.
  const auto* s = reinterpret_cast<const int16_t*>(bytes.data() + h.DataOffset);
  const size_t n = size_t(h.DataBytes) / 2;
  double power = 0;
  int16_t peak = 0;
  int64_t step = 0;
  for (size_t i = 0; i < n; ++i) {
    power += double(s[i]) * s[i];
    peak = std::max<int16_t>(peak, int16_t(std::abs(s[i])));
    if (i > 0) step += std::abs(s[i] - s[i - 1]);
  }
  EXPECT_GT(std::sqrt(power / double(n)), 2000.0);
  EXPECT_LT(peak, 32000);
  EXPECT_LT(std::abs(s[0] - s[n - 1]), 4 * step / int64_t(n) + 1);
  // The game picks it up and plays it.
  dir.Copy_From_Game("Sm");
  const Played p = Play(bytes);
  EXPECT_TRUE(p.playing);
  EXPECT_EQ(p.buffer_bytes, 44100);
  frmMain::Kill_DSound();
}

TEST_F(MusicStream, TheGamePlaysItsMusicBehindTheScreensAndLogsTheSameWithoutSound) {
  dir.Copy_From_Game("Gfx");
  dir.Copy_From_Game("Sm");
  const auto run = [](bool& playing_during_run) {
    testenv::Write_File(modMain::Settings_Path(), "1\r\n640\r\n480\r\n16\r\n<none>\r\n<none>\r\n1\r\n\r\n0\r\n38\r\n40\r\n37\r\n39\r\n");
    platform::Use_Manual_Clock(true);
    playing_during_run = false;
    uint64_t first = ~uint64_t{0};  // the pump count runs on from the run before
    platform::Set_Pump_Hook([&](uint64_t pump) {
      platform::Advance_Manual_Clock(16);
      first = std::min(first, pump);
      if (pump - first == 3) playing_during_run = platform::Stream_Playing();
      if (pump - first == 5) platform::Post_Event({platform::EventKind::Quit});
    });
    modMain::Main();
    platform::Set_Pump_Hook(nullptr);
    platform::Use_Manual_Clock(false);
    return testenv::Read_Lines_CRLF(modMain::Log_Path());
  };
  bool playing = false;
  const auto with_sound = run(playing);
  EXPECT_TRUE(playing);
  EXPECT_FALSE(platform::Stream_Playing());
  const auto at = std::find(with_sound.begin(), with_sound.end(), "Initialising Sound and Music...");
  ASSERT_NE(at, with_sound.end());
  EXPECT_EQ(*(at + 1), "...Sound and Music Ready");
  EXPECT_EQ(with_sound.back(), "Bye Bye");

  setenv("SDL_AUDIODRIVER", "no-such-driver", 1);
  const auto silent = run(playing);
  EXPECT_FALSE(playing);
  EXPECT_EQ(silent, with_sound);
}
