#pragma once
// The platform's sound: the output devices, and one looping PCM stream buffer with
// position notifications. Nothing here exposes SDL.
#include <cstdint>
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

// Creates the stream buffer of `bytes` bytes (silent) for the format, replacing any
// earlier one. False without sound, for a format the device cannot take, or when a
// notification asks for another format than the one the device was opened with.
bool Create_Stream(const PcmFormat& format, int32_t bytes);
struct StreamNotification {
  int32_t offset;  // 0 .. bytes - 1
  int32_t event;   // passed to the handler
};
// Replaces the notifications; false when an offset is outside the buffer or no stream.
bool Set_Stream_Notifications(const StreamNotification* list, int count, StreamHandler handler);
// The notifications of the current stream (empty without one).
std::vector<StreamNotification> Stream_Notification_List();
// Copies bytes into the buffer at offset; false when they do not fit or no stream.
bool Write_Stream(int32_t offset, const uint8_t* bytes, int32_t count);
void Set_Stream_Position(int32_t offset);
// Plays the buffer round and round from its position; Stop leaves it where it is.
bool Play_Stream();
void Stop_Stream();
bool Stream_Playing();
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
