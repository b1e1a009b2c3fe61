#pragma once
// The platform's sound: the output devices, and one looping PCM stream buffer with
// position notifications. Nothing here exposes SDL.
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace platform {

struct SoundDeviceInfo {
  std::string identifier;   // as stored in the settings
  std::string description;  // for the setup dialog
};
// The output devices the sound system lists, in its order (empty without sound).
std::vector<SoundDeviceInfo> Sound_Device_List();

// Starts the sound system for the default output device. False without one.
bool Open_Sound();
// Releases the stream and the device; waits for a running notification to finish.
// Call from the game's thread, never from a notification.
void Close_Sound();

struct PcmFormat {
  uint16_t channels = 0;
  uint32_t samples_per_sec = 0;
  uint16_t bits_per_sample = 0;  // 8 (unsigned), 16 or 32 (signed little-endian)
};

// Raised on the sound system's own thread, with the stream locked, when the byte at a
// notification's offset has been handed to the device. The handler may write, stop,
// release and recreate the stream; it must not call Close_Sound.
using StreamHandler = void (*)(int32_t event);

struct StreamNotification {
  int32_t offset;  // 0 .. size - 1
  int32_t event;   // passed to the handler
};
// Creates the stream buffer of `size` bytes (silent) for the format with its notifications
// (possibly none; each raises `notify`), replacing any earlier one. False without sound, for
// a format the device cannot take, for another format than the open device's when called
// from a notification, or when a notification's offset is outside the buffer.
bool Create_Stream(const PcmFormat& pcm, int32_t size, std::span<const StreamNotification> notes, StreamHandler notify);
// Copies bytes into the buffer at offset; false when they do not fit or no stream.
bool Write_Stream(int32_t offset, const uint8_t* bytes, int32_t count);
// Plays the buffer round and round from its start, until it is released.
bool Play_Stream();
void Release_Stream();
// Scales what the stream plays from now on: 1 plays its bytes unchanged, 0 is silence.
// Kept across streams; safe from any thread.
void Set_Stream_Volume(float gain);

// Holds the stream's lock (the one notifications run under) for the scope, so game-thread
// code can change the music's state without a notification running meanwhile. Recursive.
class StreamLock {
 public:
  StreamLock();
  ~StreamLock();
  StreamLock(const StreamLock&) = delete;
  StreamLock& operator=(const StreamLock&) = delete;

 private:
  bool held_;
};

}  // namespace platform
