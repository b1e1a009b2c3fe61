#pragma once
// The platform layer's application services: folders, window, pointer, message box,
// clock and the input event queue. Nothing here exposes SDL.
#include <cstdint>
#include <functional>
#include <string>

namespace platform {

// --- application ---------------------------------------------------------------
// Builds the path of the game's read-only data from a game path such as "\Data\Ships.Dat":
// below the application folder, or below an installed game's share/games/brindlex-quorval.
std::string Game_Path(const std::string& relative);
// Builds the path of a file the player's runs write (settings, log, hi-scores, our own
// settings) from a game path such as "\\Data\\Hiscores.Dat": below the application folder
// when the game runs from its own writable folder, else below the user's data folder
// (~/.local/share/brindlex-quorval, whose Data folder exists once this has been asked).
std::string Player_Path(const std::string& relative);

// Shows a modal message and returns when it is dismissed; with no display the text goes
// to standard error.
void Message_Box(const std::string& text);

// The pointer's display counter: visible while >= 0. Returns the new counter.
int Show_Cursor(bool show);

// --- window --------------------------------------------------------------------
// Opens the desktop-fullscreen game window. Safe to call again (no-op). False on failure.
bool Open_Window(const char* caption);
void Close_Window();
// Switches between the desktop-fullscreen window and an ordinary resizable window sized
// to fit well inside the desktop. The GL context, and everything made on it, stays. May be
// asked before the window opens: it then opens that way. While full screen and focused
// the pointer cannot leave the window.
void Set_Windowed(bool windowed);
// The desktop's size in pixels (the window's display, else the first); false without one.
bool Desktop_Size(int& width, int& height);

// --- clock ---------------------------------------------------------------------
// Millisecond tick count (wraps like a 32-bit counter).
int32_t Tick_Count();

// Seconds since local midnight: the game seeds its random source from it.
uint32_t Time_Of_Day();

// --- input events --------------------------------------------------------------
// Key codes are Windows virtual-key codes; positions are back-buffer pixels, inside the
// back buffer (the letterbox borders clamp to its edges). Shift: 1 Shift, 2 Ctrl, 4 Alt.
struct InputHandlers {
  std::function<void(int16_t key, int16_t shift)> key_down;
  std::function<void(int16_t key, int16_t shift)> key_up;
  std::function<void(int16_t button, int16_t shift, float x, float y)> mouse_down;
  std::function<void(int16_t button, int16_t shift, float x, float y)> mouse_up;
  std::function<void(int16_t button, int16_t shift, float x, float y)> mouse_move;
  std::function<void()> quit;        // the window was closed or the process told to stop
  std::function<void()> focus_lost;  // the window lost the keyboard focus or was minimised
  // The gamepad: a control (PadControl) pressed or let go; a pad plugged in (true) or the
  // one in use unplugged (false), after the release of every control it held.
  std::function<void(int16_t control)> pad_down;
  std::function<void(int16_t control)> pad_up;
  std::function<void(bool connected)> pad_plug;
  // Once a pump, after the queue, while the left stick is past its dead zone: where it
  // points, -1..1 each way (x right, y down), measured from the edge of the dead zone.
  std::function<void(float x, float y)> pad_stick;
};
void Set_Input_Handlers(const InputHandlers& handlers);

// Collects the window system's events into the queue and dispatches every queued event
// to the handlers, in order. Handlers run only here. While the window is minimised it
// waits for it to come back (or to be closed) instead of returning, so a minimised game
// neither draws nor spins; the pump that first sees the minimising returns as usual.
void Pump_Messages();

// --- gamepad -------------------------------------------------------------------
// One gamepad at a time: the first plugged in, through SDL's game-controller mappings, so
// every pad names its controls alike. Its controls as the pad events give them; a stick
// direction or a trigger counts as pressed past its dead zone. The codes never change
// (the game stores them).
enum PadControl : int16_t {
  kPadA = 0,
  kPadB = 1,
  kPadX = 2,
  kPadY = 3,
  kPadBack = 4,
  kPadGuide = 5,
  kPadStart = 6,
  kPadLeftStickPress = 7,
  kPadRightStickPress = 8,
  kPadLeftShoulder = 9,
  kPadRightShoulder = 10,
  kPadDpadUp = 11,
  kPadDpadDown = 12,
  kPadDpadLeft = 13,
  kPadDpadRight = 14,
  kPadLeftStickLeft = 15,
  kPadLeftStickRight = 16,
  kPadLeftStickUp = 17,
  kPadLeftStickDown = 18,
  kPadRightStickLeft = 19,
  kPadRightStickRight = 20,
  kPadRightStickUp = 21,
  kPadRightStickDown = 22,
  kPadLeftTrigger = 23,
  kPadRightTrigger = 24,
  kPadControlCount = 25
};
// The pad's product name as its mapping gives it ("Gamepad" when it gives none); empty
// while no pad is plugged in. Valid until the next pump.
const std::string& Pad_Name();

}  // namespace platform
