// The music: a RIFF WAVE file streamed through a buffer of two halves. Each time the play
// position passes the middle or the last byte, the half just played is refilled.
#include <algorithm>
#include <cstdio>

#include "audio_input/frmMain.h"
#include "core/log.h"
#include "platform/audio.h"

namespace frmMain {

wave::WaveFormat StreamFormat;
i32 StreamEvents[2] = {0, 0};
i32 BufferBytes = 0;
i32 HalfBytes = 0;
i32 DataBytes = 0;
i32 WholeChunksEnd = 0;
std::vector<std::uint8_t> Chunk;
i32 EndCount = 0;
std::string StreamFile;

namespace {

bool g_sound = false;         // the sound system started for the default device
std::FILE* g_file = nullptr;  // the open music file
bool g_in_refill = false;     // the refill is running (on the sound thread)

// Rates whose buffer of 2 x samples per second the stream can hold.
constexpr u32 kMinRate = 1000, kMaxRate = 384000;

void Close_Music_File() {
  if (g_file != nullptr) std::fclose(g_file);
  g_file = nullptr;
}

wave::WaveFormat Read_Header() {
  Close_Music_File();
  g_file = std::fopen(StreamFile.c_str(), "rb");
  if (g_file == nullptr) return {};
  const wave::WaveHeader h = wave::Read_Wave_Header(g_file);
  // A damaged file is worth a line; one that is simply not PCM music plays silently.
  // The restart re-reads the same file on the sound thread, where nothing is logged.
  if (h.result == wave::HeaderResult::Damaged && !g_in_refill)
    modMain::Write_Log("Music not played: " + StreamFile + ": " + h.problem);
  if (h.result != wave::HeaderResult::Ok || fseeko(g_file, h.DataOffset, SEEK_SET) != 0) return {};
  DataBytes = h.DataBytes;
  return h.format;
}

// Reads the next Chunk from the file; whatever the file no longer holds is silence.
void Read_Chunk() {
  const size_t got = g_file != nullptr ? std::fread(Chunk.data(), 1, Chunk.size(), g_file) : 0;
  std::fill(Chunk.begin() + static_cast<long>(got), Chunk.end(), std::uint8_t{0});
}

bool Open_And_Prime() {
  Close_Music_File();
  platform::Release_Stream();
  StreamFormat = Read_Header();
  if (StreamFormat.FormatTag != 1 || StreamFormat.SamplesPerSec < kMinRate || StreamFormat.SamplesPerSec > kMaxRate) {
    Close_Music_File();
    return false;
  }
  BufferBytes = static_cast<i32>(StreamFormat.SamplesPerSec) * 2;
  HalfBytes = BufferBytes / 2;
  WholeChunksEnd = (DataBytes / BufferBytes) * BufferBytes;
  const platform::PcmFormat format{StreamFormat.Channels, StreamFormat.SamplesPerSec, StreamFormat.BitsPerSample};
  if (!platform::Create_Stream(format, BufferBytes)) {
    Close_Music_File();
    return false;
  }
  if (DataBytes >= BufferBytes) {
    const platform::StreamNotification notes[2] = {{BufferBytes / 2, StreamEvents[0]},
                                                   {BufferBytes - 1, StreamEvents[1]}};
    platform::Set_Stream_Notifications(notes, 2, DirectXEvent_DXCallback);
  }
  Chunk.assign(static_cast<size_t>(std::min(BufferBytes, DataBytes)), 0);
  Read_Chunk();
  platform::Write_Stream(0, Chunk.data(), static_cast<i32>(Chunk.size()));
  return true;
}

}  // namespace

void Init_Streaming_Music() {
  StreamEvents[0] = 1;
  StreamEvents[1] = 2;
  g_sound = platform::Open_Sound();
}

void Play_Streaming_Music(const std::string& file) {
  if (!g_sound) return;
  // The refill may be running on the sound thread; the stream's lock keeps it out.
  platform::StreamLock lock;
  StreamFile = file;
  if (Open_And_Prime()) {
    EndCount = 0;
    platform::Set_Stream_Position(0);
    platform::Play_Stream();
  }
}

void DirectXEvent_DXCallback(i32 event) {
  if (Chunk.size() != static_cast<size_t>(BufferBytes)) return;  // no refills for short music
  g_in_refill = true;
  if (event == StreamEvents[0]) {
    const std::int64_t at = g_file != nullptr ? ftello(g_file) : std::int64_t{0};
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
      platform::Stop_Stream();
      Play_Streaming_Music(StreamFile);
    }
  }
  g_in_refill = false;
}

void Kill_DSound() {
  {
    platform::StreamLock lock;
    platform::Release_Stream();
    Close_Music_File();
    StreamEvents[0] = StreamEvents[1] = 0;
  }
  platform::Close_Sound();
  g_sound = false;
}

}  // namespace frmMain
