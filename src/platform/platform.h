#pragma once
// The platform layer's application services: folders, window, pointer, message box,
// clock and the input event queue. Nothing here exposes SDL.
#include <cstdint>
#include <functional>
#include <string>

namespace platform {

// --- application ---------------------------------------------------------------
// The folder holding the executable (no trailing slash).
std::string App_Dir();
// Builds a path below the application folder from a game path such as "\Data\Ships.Dat".
std::string Game_Path(const std::string& relative);
// Builds the path of a file the player's runs write (settings, log, hi-scores, our own
// settings) from a game path such as "\\Data\\Hiscores.Dat".
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
bool Window_Open();
// Switches between the desktop-fullscreen window and an ordinary resizable window sized
// to fit well inside the desktop. The GL context, and everything made on it, stays. May be
// asked before the window opens: it then opens that way. While full screen and focused
// the pointer cannot leave the window.
void Set_Windowed(bool windowed);
bool Windowed();
// The desktop's size in pixels (the window's display, else the first); false without one.
bool Desktop_Size(int& width, int& height);

// --- clock ---------------------------------------------------------------------
// Millisecond tick count (wraps like a 32-bit counter).
int32_t Tick_Count();

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
};
void Set_Input_Handlers(const InputHandlers& handlers);

// Collects the window system's events into the queue and dispatches every queued event
// to the handlers, in order. Handlers run only here. While the window is minimised it
// waits for it to come back (or to be closed) instead of returning, so a minimised game
// neither draws nor spins; the pump that first sees the minimising returns as usual.
void Pump_Messages();

}  // namespace platform
