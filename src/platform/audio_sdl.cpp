// The sound stream over one SDL audio device: SDL's callback copies the looping buffer
// out and raises the notifications it passes, on SDL's audio thread.
#include <SDL.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstring>
#include <mutex>
#include <thread>

#include "platform/audio.h"
#include "platform/testing.h"

namespace platform {
namespace {

constexpr int kMaxNotifications = 8;
constexpr int32_t kMaxStreamBytes = 64 << 20;

struct Stream {
  bool exists = false;
  bool playing = false;
  int32_t position = 0;
  std::vector<uint8_t> bytes;
  StreamNotification notes[kMaxNotifications] = {};
  int note_count = 0;
  StreamHandler handler = nullptr;
};

std::recursive_mutex g_mutex;
std::atomic<bool> g_closing{false};
thread_local bool t_in_callback = false;
bool g_sound_open = false;
SDL_AudioDeviceID g_device = 0;
PcmFormat g_device_format;
uint8_t g_silence = 0;
bool g_unpaused = false;
Stream g_stream;
std::atomic<float> g_gain{1.0f};

bool Same(const PcmFormat& a, const PcmFormat& b) {
  return a.channels == b.channels && a.samples_per_sec == b.samples_per_sec && a.bits_per_sample == b.bits_per_sample;
}

SDL_AudioFormat Sdl_Format(uint16_t bits) {
  switch (bits) {
    case 8:
      return AUDIO_U8;
    case 16:
      return AUDIO_S16LSB;
    case 32:
      return AUDIO_S32LSB;
    default:
      return 0;
  }
}

// The callback must never wait on a lock the closing thread holds while SDL joins it.
bool Lock_From_Callback() {
  while (!g_mutex.try_lock()) {
    if (g_closing.load()) return false;
    std::this_thread::yield();
  }
  return true;
}

// Scales whole samples of the device's format about their silence; SDL hands the
// callback whole sample frames, so no sample is split.
void Apply_Gain(Uint8* out, int len, float gain) {
  if (gain >= 1.0f) return;  // full volume plays the bytes as they are
  if (gain <= 0.0f) {
    std::memset(out, g_silence, size_t(len));
    return;
  }
  const int64_t k = std::lround(gain * 65536.0f);
  switch (g_device_format.bits_per_sample) {
    case 8:
      for (int i = 0; i < len; ++i) out[i] = Uint8(128 + (((int64_t(out[i]) - 128) * k) >> 16));
      break;
    case 16:
      for (int i = 0; i + 1 < len; i += 2) {
        int16_t s;
        std::memcpy(&s, out + i, 2);
        s = int16_t((s * k) >> 16);
        std::memcpy(out + i, &s, 2);
      }
      break;
    case 32:
      for (int i = 0; i + 3 < len; i += 4) {
        int32_t s;
        std::memcpy(&s, out + i, 4);
        s = int32_t((s * k) >> 16);
        std::memcpy(out + i, &s, 4);
      }
      break;
    default:
      break;
  }
}

void SDLCALL Mix(void* /*user*/, Uint8* out, int len) {
  Uint8* const start = out;
  const int whole = len;
  if (!Lock_From_Callback()) {
    std::memset(out, g_silence, size_t(len));
    return;
  }
  t_in_callback = true;
  while (len > 0) {
    Stream& s = g_stream;
    const int32_t size = static_cast<int32_t>(s.bytes.size());
    if (!s.exists || !s.playing || size == 0) {
      std::memset(out, g_silence, size_t(len));
      break;
    }
    if (s.position >= size) s.position = 0;
    // Copy up to the next notification byte (inclusive) so each fires right after its byte.
    int32_t end = size;
    for (int i = 0; i < s.note_count; ++i)
      if (s.notes[i].offset >= s.position && s.notes[i].offset + 1 < end) end = s.notes[i].offset + 1;
    const int32_t n = std::min<int32_t>(len, end - s.position);
    std::memcpy(out, s.bytes.data() + s.position, size_t(n));
    out += n;
    len -= n;
    const int32_t from = s.position;
    s.position += n;
    int32_t fired[kMaxNotifications];
    int fired_count = 0;
    for (int i = 0; i < s.note_count; ++i)
      if (s.notes[i].offset >= from && s.notes[i].offset < s.position) fired[fired_count++] = s.notes[i].event;
    if (s.position >= size) s.position = 0;
    const StreamHandler handler = s.handler;
    // The handler may rewrite, stop or recreate the stream; the loop re-reads it after.
    for (int i = 0; i < fired_count && handler != nullptr; ++i) handler(fired[i]);
  }
  Apply_Gain(start, whole, g_gain.load());
  t_in_callback = false;
  g_mutex.unlock();
}

void Close_Device() {
  if (g_device == 0) return;
  g_closing.store(true);
  SDL_CloseAudioDevice(g_device);
  g_closing.store(false);
  g_device = 0;
  g_unpaused = false;
}

bool Open_Device(const PcmFormat& format) {
  SDL_AudioSpec want{};
  want.freq = static_cast<int>(format.samples_per_sec);
  want.format = Sdl_Format(format.bits_per_sample);
  want.channels = static_cast<Uint8>(format.channels);
  // About 25 ms a device buffer: SDL waits two of them when the device closes.
  Uint16 samples = 256;
  while (samples < 4096 && samples * 40u < format.samples_per_sec) samples = Uint16(samples * 2);
  want.samples = samples;
  want.callback = Mix;
  SDL_AudioSpec have{};
  // SDL converts to what the hardware takes, so the buffer keeps the file's own format.
  g_device = SDL_OpenAudioDevice(nullptr, 0, &want, &have, 0);
  if (g_device == 0) return false;
  g_device_format = format;
  g_silence = have.silence;
  g_unpaused = false;
  return true;
}

}  // namespace

std::vector<SoundDeviceInfo> Sound_Device_List() {
  std::vector<SoundDeviceInfo> list;
  const bool was_init = SDL_WasInit(SDL_INIT_AUDIO) != 0;
  if (!was_init && SDL_InitSubSystem(SDL_INIT_AUDIO) != 0) return list;
  const int count = SDL_GetNumAudioDevices(0);
  for (int i = 0; i < count; ++i) {
    const char* name = SDL_GetAudioDeviceName(i, 0);
    if (name != nullptr) list.push_back({name, name});
  }
  if (!was_init) SDL_QuitSubSystem(SDL_INIT_AUDIO);
  return list;
}

bool Open_Sound() {
  if (g_sound_open) return true;
  g_sound_open = SDL_InitSubSystem(SDL_INIT_AUDIO) == 0;
  return g_sound_open;
}

void Close_Sound() {
  if (!g_sound_open) return;
  Close_Device();
  {
    std::lock_guard<std::recursive_mutex> lock(g_mutex);
    g_stream = Stream{};
  }
  SDL_QuitSubSystem(SDL_INIT_AUDIO);
  g_sound_open = false;
}

bool Create_Stream(const PcmFormat& format, int32_t bytes, std::span<const StreamNotification> notes,
                   StreamHandler notify) {
  if (!g_sound_open || bytes < 1 || bytes > kMaxStreamBytes || notes.size() > size_t(kMaxNotifications)) return false;
  for (const StreamNotification& n : notes)
    if (n.offset < 0 || n.offset >= bytes) return false;
  if (Sdl_Format(format.bits_per_sample) == 0 || format.channels < 1 || format.channels > 8 ||
      format.samples_per_sec < 1000 || format.samples_per_sec > 384000)
    return false;
  std::lock_guard<std::recursive_mutex> lock(g_mutex);
  g_stream.exists = false;
  g_stream.playing = false;
  if (g_device != 0 && !Same(format, g_device_format)) {
    if (t_in_callback) return false;  // SDL cannot reopen its device from its own thread
    Close_Device();
  }
  if (g_device == 0 && !Open_Device(format)) return false;
  g_stream.bytes.assign(size_t(bytes), g_silence);
  g_stream.position = 0;
  std::copy(notes.begin(), notes.end(), g_stream.notes);
  g_stream.note_count = int(notes.size());
  g_stream.handler = notify;
  g_stream.exists = true;
  return true;
}

std::vector<StreamNotification> Stream_Notification_List() {
  std::lock_guard<std::recursive_mutex> lock(g_mutex);
  if (!g_stream.exists) return {};
  return {g_stream.notes, g_stream.notes + g_stream.note_count};
}

bool Write_Stream(int32_t offset, const uint8_t* bytes, int32_t count) {
  std::lock_guard<std::recursive_mutex> lock(g_mutex);
  const int64_t size = static_cast<int64_t>(g_stream.bytes.size());
  if (!g_stream.exists || offset < 0 || count < 0 || int64_t(offset) + count > size) return false;
  if (count > 0) std::memcpy(g_stream.bytes.data() + offset, bytes, size_t(count));
  return true;
}

bool Play_Stream() {
  std::lock_guard<std::recursive_mutex> lock(g_mutex);
  if (!g_stream.exists || g_device == 0) return false;
  g_stream.position = 0;
  g_stream.playing = true;
  // The device stays paused until there is something to play, so output starts with it.
  if (!g_unpaused) {
    SDL_PauseAudioDevice(g_device, 0);
    g_unpaused = true;
  }
  return true;
}

bool Stream_Playing() {
  std::lock_guard<std::recursive_mutex> lock(g_mutex);
  return g_stream.exists && g_stream.playing;
}

void Release_Stream() {
  std::lock_guard<std::recursive_mutex> lock(g_mutex);
  g_stream.exists = false;
  g_stream.playing = false;
  g_stream.note_count = 0;
  g_stream.handler = nullptr;
}

void Set_Stream_Volume(float gain) { g_gain.store(std::clamp(gain, 0.0f, 1.0f)); }

StreamLock::StreamLock() : held_(true) { g_mutex.lock(); }
StreamLock::~StreamLock() {
  if (held_) g_mutex.unlock();
}

}  // namespace platform
