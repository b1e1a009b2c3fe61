#pragma once
// The main window: its key and mouse handlers, the input state the screens poll, and the
// music stream it owns. Handlers run only while a loop pumps messages (between frames).
#include <string>

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

// The looping music stream.
void Init_Streaming_Music();
void Play_Streaming_Music(const std::string& file);
void Kill_DSound();

}  // namespace frmMain
