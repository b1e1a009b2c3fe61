#pragma once
// The main window: its key and mouse handlers, the input state the screens poll, and the
// music stream it owns. Handlers run only while a loop pumps messages (between frames).
#include <cstdint>
#include <string>
#include <vector>

#include "audio_input/wave.h"
#include "core/types.h"

namespace frmMain {

inline constexpr int kKeyStateCount = 124;  // codes 0..123 are recorded

extern Bool16 KeyState[kKeyStateCount];
extern Bool16 EnterPressed;   // readers clear it after acting on it
extern Bool16 EscapePressed;  // the race pause clears it
extern Bool16 ShiftPressed;
extern i16 MouseX, MouseY;    // back-buffer pixels
extern Bool16 MouseLeftDown;  // readers clear it when they act on a click

// Shows the window captioned "Brindlex Quorval" and connects its handlers to the pump.
// False when no window can be opened.
bool Show();
// Closes the window (the end of the program).
void Unload();

// The bound driving keys go to Players(0)'s controls first (in the order up, down, left,
// right); any other key may raise Escape, Enter or Shift. Codes 0..123 also set KeyState.
void Form_KeyDown(i16 key_code, i16 shift);
void Form_KeyUp(i16 key_code, i16 shift);
void Form_MouseDown(i16 button, i16 shift, float x, float y);
void Form_MouseUp(i16 button, i16 shift, float x, float y);
// Stores the position rounded half to even.
void Form_MouseMove(i16 button, i16 shift, float x, float y);

// Clears every input flag (a fresh run or a test).
void Reset_Input();

// The looping music stream. Its state below is written by these procedures and by the
// refill, which runs on the sound system's thread; read it only with the stream locked
// (platform::StreamLock) or while no music plays.
extern wave::WaveFormat StreamFormat;
extern i32 StreamEvents[2];  // event 0: middle of the buffer; event 1: its last byte
extern i32 BufferBytes;      // 2 x samples per second
extern i32 HalfBytes;
extern i32 DataBytes;
extern i32 WholeChunksEnd;  // DataBytes rounded down to whole buffers
extern std::vector<std::uint8_t> Chunk;
extern i32 EndCount;  // refills that found the end of the data
extern std::string StreamFile;

// Starts the sound system for the default device; without one the game stays silent.
void Init_Streaming_Music();
// Reads a RIFF WAVE PCM file (24-bit samples become 16-bit) and plays it in a loop; a
// file it cannot play plays nothing and leaves one "Music not played: " log line.
void Play_Streaming_Music(const std::string& file);
// The refill: event 0 reads the next chunk into the half just played, event 1 writes its
// second half and restarts the music once the end has been found twice.
void DirectXEvent_DXCallback(i32 event);
// Stops the music and releases the stream, waiting for a running refill to end.
void Kill_DSound();

}  // namespace frmMain
