#pragma once
// The main window: its key and mouse handlers, the input state the screens poll, and the
// music stream it owns. Handlers run only while a loop pumps messages (between frames).
#include <array>
#include <string>

#include "core/types.h"
#include "platform/platform.h"

namespace frmMain {

inline constexpr int kKeyStateCount = 124;  // codes 0..123 are recorded

extern Bool16 KeyState[kKeyStateCount];
extern Bool16 ShiftPressed;
extern i16 MouseX, MouseY;  // back-buffer pixels

// The one-shot presses: Enter, Escape and the left button (the pad's Start is Escape, its A
// Enter in a race and the left button elsewhere). A press is down from its key or button
// going down until it goes up or a screen takes it: a screen that acts on a press takes it,
// so one press triggers one action, and neither a later button nor the next screen sees it.
// A press that is only read stays down while held (a held click skips both intro pages).
enum class Press : u8 { Enter, Escape, LeftClick };
bool Pressed(Press p);
// Pressed(p), and the press is spent until its key or button goes down again.
bool Take(Press p);
// Set by Request_Pause; the race takes it as it takes Escape and clears it.
extern bool PauseRequested;

// Asks the race to pause exactly as Escape does (the window lost the focus, a pad went
// away): the race pauses at its next key check once the countdown is over; a finished
// player gets no pause menu, and a request outside a race is forgotten when one starts.
void Request_Pause();
// Alt+Enter and F11: full screen <-> window, remembered in Quorval.cfg ("window").
void Toggle_Window();

// Shows the window captioned "Brindlex Quorval" (full screen, or the window the player
// last chose) and connects its handlers to the pump. False when no window can be opened.
bool Show();
// Closes the window (the end of the program).
void Unload();

// The bound driving keys go to Players(0)'s controls first (in the order up, down, left,
// right); any other key may raise Escape, Enter or Shift. Codes 0..123 also set KeyState.
// Alt+Enter and F11 only switch the window (Toggle_Window) and reach nothing else.
void Form_KeyDown(i16 key_code, i16 shift);
void Form_KeyUp(i16 key_code, i16 shift);
void Form_MouseDown(i16 button, i16 shift, float x, float y);
void Form_MouseUp(i16 button, i16 shift, float x, float y);
// Stores the position rounded half to even.
void Form_MouseMove(i16 button, i16 shift, float x, float y);

// Clears every input flag (a fresh run or a test).
void Reset_Input();

// --- the gamepad -------------------------------------------------------------------
// Any pad: Start is Escape; A is Enter in a race and the left button elsewhere; the left
// stick moves the pointer of the menu screens. While ControlDevice is 1 the bound pad
// controls drive Players(0) first (a stick binding takes the D-pad's same direction too),
// and a bound control never doubles as Start or A.
// The last pad control pressed since the last call, -1 for none (the options' binding).
i16 Take_Pad_Press();
// The pad controls of thrust, brake, left and right.
inline constexpr std::array<i16, 4> kDefaultPadBinding = {platform::kPadRightTrigger, platform::kPadLeftTrigger,
                                                          platform::kPadLeftStickLeft, platform::kPadLeftStickRight};
extern std::array<i16, 4> PadBinding;
void Form_PadDown(i16 control);
void Form_PadUp(i16 control);
// The left stick (x, y in -1..1) moves the pointer over the last frame's time, outside races.
void Form_PadStick(float x, float y);
// A pad unplugged asks the race to pause (Request_Pause).
void Form_PadPlug(bool connected);

// --- the music volume ----------------------------------------------------------------
extern u8 MusicVolume;  // 0 off, 1..10; 10 plays the music as recorded
// Sets MusicVolume (at most 10) and applies it to the music at once.
void Set_Music_Volume(u8 steps);

// The pad bindings and the music volume remembered in Quorval.cfg (defaults when absent).
void Read_Pad_And_Volume();
// Remembers them; a value never changed from its default is not written.
void Store_Pad_And_Volume();

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
// The stream of the music playing: its buffer in bytes (2 x samples per second), where the
// music's whole buffers end, and the events of its notifications (middle, last byte). Read
// it with the stream locked (platform::StreamLock) or while no refill can run.
struct StreamShape {
  i32 buffer_bytes = 0;
  i32 whole_chunks_end = 0;
  i32 events[2] = {0, 0};
};
StreamShape Stream_Shape();

}  // namespace frmMain
