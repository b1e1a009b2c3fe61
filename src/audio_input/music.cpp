// The music: a RIFF WAVE file streamed through a buffer of two halves. Each time the play
// position passes the middle or the last byte, the half just played is refilled.
//
// The file is read whole when the music is asked for, on the game's thread; the refills
// and the restart at the end run on the sound thread and copy from memory only.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "audio_input/frmMain.h"
#include "audio_input/wave.h"
#include "core/log.h"
#include "platform/audio.h"

namespace frmMain {

namespace {

// The stream's state, written by the procedures below and by the refill, which runs on the
// sound system's thread; read it only with the stream locked or while no music plays.
wave::WaveFormat StreamFormat;
i32 StreamEvents[2] = {0, 0};  // event 0: middle of the buffer; event 1: its last byte
i32 BufferBytes = 0;           // 2 x samples per second
i32 HalfBytes = 0;
i32 DataBytes = 0;
i32 WholeChunksEnd = 0;  // DataBytes rounded down to whole buffers
std::vector<std::uint8_t> Chunk;
i32 EndCount = 0;  // refills that found the end of the data
std::string StreamFile;

bool g_sound = false;  // the sound system started for the default device

// The music as the stream plays it: the file from its first sample byte to its end (24-bit
// samples already made 16-bit), where the refill reads on, and the header's length, so the
// read position counts the header as a file position does.
std::vector<std::uint8_t> g_music;
std::int64_t g_header_bytes = 0;
size_t g_read = 0;
bool g_loaded = false;

// Rates whose buffer of 2 x samples per second the stream can hold.
constexpr u32 kMinRate = 1000, kMaxRate = 384000;
// Music held in memory; the generated loop is 2.5 MB, ten minutes of CD stereo 106 MB.
constexpr off_t kMaxFileBytes = 256 << 20;

bool Refuse(const std::string& file, const std::string& why) {
  modMain::Write_Log("Music not played: " + file + ": " + why);
  return false;
}

// False with why empty when there is no file at all: no music was given, none is played.
bool Read_File(const std::string& file, std::vector<std::uint8_t>& bytes, std::string& why) {
  const int fd = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) {
    if (errno != ENOENT) why = std::string("the file cannot be opened (") + std::strerror(errno) + ")";
    return false;
  }
  struct stat st {};
  bool ok = ::fstat(fd, &st) == 0 && S_ISREG(st.st_mode);
  if (!ok) why = "it is not a plain file";
  if (ok && st.st_size > kMaxFileBytes) {
    why = "it is larger than " + std::to_string(kMaxFileBytes >> 20) + " MB";
    ok = false;
  }
  if (ok) bytes.resize(static_cast<size_t>(st.st_size));
  for (size_t done = 0; ok && done < bytes.size();) {
    const ssize_t n = ::read(fd, bytes.data() + done, bytes.size() - done);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) {
      why = n < 0 ? std::string("it cannot be read (") + std::strerror(errno) + ")" : "it shrank while being read";
      ok = false;
    } else {
      done += static_cast<size_t>(n);
    }
  }
  ::close(fd);
  return ok;
}

// Reads and checks the music file, converting 24-bit samples to 16; one log line when a
// file is there but cannot be played. The stream's own state is untouched.
bool Load_Music(const std::string& file, std::vector<std::uint8_t>& music, wave::WaveFormat& format, i32& data_bytes,
                std::int64_t& header_bytes) {
  std::vector<std::uint8_t> bytes;
  std::string why;
  if (!Read_File(file, bytes, why)) return why.empty() ? false : Refuse(file, why);
  const wave::WaveHeader h = wave::Read_Wave_Header(bytes.data(), bytes.size());
  if (h.result == wave::HeaderResult::NotWave) return Refuse(file, "it is not a RIFF WAVE file");
  if (h.result == wave::HeaderResult::Damaged) return Refuse(file, h.problem);
  const wave::WaveFormat& f = h.format;
  if (f.FormatTag != 1) return Refuse(file, "format " + std::to_string(f.FormatTag) + " is not uncompressed PCM");
  if (f.BitsPerSample != 8 && f.BitsPerSample != 16 && f.BitsPerSample != 24 && f.BitsPerSample != 32)
    return Refuse(file, std::to_string(f.BitsPerSample) + "-bit samples cannot be played");
  if (f.Channels < 1 || f.Channels > 8) return Refuse(file, std::to_string(f.Channels) + " channels cannot be played");
  if (f.SamplesPerSec < kMinRate || f.SamplesPerSec > kMaxRate)
    return Refuse(file, "a rate of " + std::to_string(f.SamplesPerSec) + " samples a second cannot be played");
  if (h.DataBytes < f.BitsPerSample / 8) return Refuse(file, "it holds no samples");

  format = f;
  header_bytes = h.DataOffset;
  if (f.BitsPerSample != 24) {
    music.assign(bytes.begin() + h.DataOffset, bytes.end());
    data_bytes = h.DataBytes;
    return true;
  }
  // 24-bit: each sample keeps its two high bytes; what follows the data is dropped.
  const size_t samples = static_cast<size_t>(h.DataBytes) / 3;
  music.resize(samples * 2);
  const std::uint8_t* in = bytes.data() + h.DataOffset;
  for (size_t i = 0; i < samples; ++i) {
    music[2 * i] = in[3 * i + 1];
    music[2 * i + 1] = in[3 * i + 2];
  }
  data_bytes = static_cast<i32>(samples * 2);
  format.BitsPerSample = 16;
  format.BlockAlign = static_cast<wave::u16>(f.Channels * 2);
  format.AvgBytesPerSec = f.SamplesPerSec * format.BlockAlign;
  return true;
}

// Copies the next Chunk from the music; whatever it no longer holds is silence.
void Read_Chunk() {
  const size_t got = std::min(Chunk.size(), g_music.size() - std::min(g_read, g_music.size()));
  if (got > 0) std::memcpy(Chunk.data(), g_music.data() + g_read, got);
  std::fill(Chunk.begin() + static_cast<long>(got), Chunk.end(), std::uint8_t{0});
  g_read += got;
}

// Creates the stream for the loaded music and primes it from the first sample. Runs on the
// game's thread or, for the restart, on the sound thread: it never touches the disk.
bool Prime() {
  platform::Release_Stream();
  g_read = 0;
  BufferBytes = static_cast<i32>(StreamFormat.SamplesPerSec) * 2;
  HalfBytes = BufferBytes / 2;
  WholeChunksEnd = (DataBytes / BufferBytes) * BufferBytes;
  const platform::PcmFormat format{StreamFormat.Channels, StreamFormat.SamplesPerSec, StreamFormat.BitsPerSample};
  // Music shorter than the buffer plays once from it and needs no refills.
  const platform::StreamNotification notes[2] = {{BufferBytes / 2, StreamEvents[0]},
                                                 {BufferBytes - 1, StreamEvents[1]}};
  const size_t count = DataBytes >= BufferBytes ? 2 : 0;
  if (!platform::Create_Stream(format, BufferBytes, {notes, count}, DirectXEvent_DXCallback)) return false;
  Chunk.assign(static_cast<size_t>(std::min(BufferBytes, DataBytes)), 0);
  Read_Chunk();
  platform::Write_Stream(0, Chunk.data(), static_cast<i32>(Chunk.size()));
  return true;
}

void Start() {
  EndCount = 0;
  platform::Play_Stream();
}

}  // namespace

void Init_Streaming_Music() {
  StreamEvents[0] = 1;
  StreamEvents[1] = 2;
  g_sound = platform::Open_Sound();
}

void Play_Streaming_Music(const std::string& file) {
  if (!g_sound) return;
  // Read before the lock: the refill keeps playing the old music meanwhile.
  std::vector<std::uint8_t> music;
  wave::WaveFormat format;
  i32 data_bytes = 0;
  std::int64_t header_bytes = 0;
  const bool loaded = Load_Music(file, music, format, data_bytes, header_bytes);
  // The refill may be running on the sound thread; the stream's lock keeps it out.
  platform::StreamLock lock;
  StreamFile = file;
  g_loaded = false;
  g_music.clear();
  platform::Release_Stream();
  if (!loaded) {
    StreamFormat = {};
    return;
  }
  g_music = std::move(music);
  g_header_bytes = header_bytes;
  StreamFormat = format;
  DataBytes = data_bytes;
  g_loaded = true;
  if (!Prime()) {
    modMain::Write_Log("Music not played: " + file + ": the sound device cannot play " +
                       std::to_string(format.Channels) + " channels of " + std::to_string(format.BitsPerSample) +
                       "-bit samples at " + std::to_string(format.SamplesPerSec) + " a second");
    g_loaded = false;
    return;
  }
  Start();
}

void DirectXEvent_DXCallback(i32 event) {
  if (Chunk.size() != static_cast<size_t>(BufferBytes)) return;  // no refills for short music
  if (event == StreamEvents[0]) {
    const std::int64_t at = g_loaded ? g_header_bytes + static_cast<std::int64_t>(g_read) : 0;
    Read_Chunk();
    // The position counts the header too, so the chunk holding the last sample already
    // counts as the end; after the last sample comes silence.
    if (at > WholeChunksEnd) {
      ++EndCount;
      std::fill(Chunk.begin() + (DataBytes - WholeChunksEnd), Chunk.end(), std::uint8_t{0});
    }
    platform::Write_Stream(0, Chunk.data(), HalfBytes);
  } else if (event == StreamEvents[1]) {
    platform::Write_Stream(HalfBytes, Chunk.data() + HalfBytes, HalfBytes);
    if (EndCount == 2) {
      // The music starts again from its first sample, from memory.
      platform::Release_Stream();
      if (g_loaded && Prime()) Start();
    }
  }
}

void Kill_DSound() {
  {
    platform::StreamLock lock;
    platform::Release_Stream();
    g_loaded = false;
    g_music.clear();
    g_music.shrink_to_fit();
    StreamEvents[0] = StreamEvents[1] = 0;
  }
  platform::Close_Sound();
  g_sound = false;
}

StreamShape Stream_Shape() {
  return {BufferBytes, WholeChunksEnd, {StreamEvents[0], StreamEvents[1]}};
}

}  // namespace frmMain
