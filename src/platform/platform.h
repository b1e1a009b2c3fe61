#pragma once
// The platform layer's application services: folders, window, pointer, message box,
// clock and the input event queue. Nothing here exposes SDL.
#include <cstdint>
#include <functional>
#include <string>

namespace platform {

// --- application ---------------------------------------------------------------
// The folder holding the executable (no trailing slash). Tests may point it elsewhere.
std::string App_Dir();
void Set_App_Dir(const std::string& dir);
// Builds a path below the application folder from a game path such as "\Data\Ships.Dat".
std::string Game_Path(const std::string& relative);

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
// Maps window pixels to back-buffer pixels (aspect kept, borders excluded). The display
// sets the back-buffer size; until then the mapping is one to one.
void Window_To_Backbuffer(float wx, float wy, float& bx, float& by);
void Set_Backbuffer_Size(int width, int height);

// --- clock ---------------------------------------------------------------------
// Millisecond tick count (wraps like a 32-bit counter).
int32_t Tick_Count();
// A manual clock replaces the real one while enabled; tests advance it.
void Use_Manual_Clock(bool enabled);
void Advance_Manual_Clock(int32_t ms);
void Set_Manual_Clock(int32_t ms);

// --- input events --------------------------------------------------------------
// Key codes are Windows virtual-key codes; positions are back-buffer pixels.
struct InputHandlers {
  std::function<void(int16_t key, int16_t shift)> key_down;
  std::function<void(int16_t key, int16_t shift)> key_up;
  std::function<void(int16_t button, int16_t shift, float x, float y)> mouse_down;
  std::function<void(int16_t button, int16_t shift, float x, float y)> mouse_up;
  std::function<void(int16_t button, int16_t shift, float x, float y)> mouse_move;
  std::function<void()> quit;  // the window was closed or the process told to stop
};
void Set_Input_Handlers(const InputHandlers& handlers);

enum class EventKind : uint8_t { KeyDown, KeyUp, MouseDown, MouseUp, MouseMove, Quit };
struct InputEvent {
  EventKind kind = EventKind::KeyDown;
  int16_t key = 0;     // key events
  int16_t button = 0;  // mouse events: 1 left, 2 right, 4 middle
  float x = 0, y = 0;  // mouse events, back-buffer pixels
};
// Queues an event behind those already waiting (scripted or recorded input).
void Post_Event(const InputEvent& e);
// Called at the start of every Pump_Messages with the pump's running number; a test
// script posts its events and advances the manual clock from here.
void Set_Pump_Hook(std::function<void(uint64_t pump)> hook);
// Collects the window system's events into the queue and dispatches every queued event
// to the handlers, in order. Handlers run only here.
void Pump_Messages();

// Windows virtual-key code of an SDL keycode (0 when the key has none).
int16_t Virtual_Key(int32_t sdl_keycode);

}  // namespace platform
