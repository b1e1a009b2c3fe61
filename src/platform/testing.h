#pragma once
// Controls for tests and benchmarks only: the game never calls these. They replace the
// clock, the application folder and the window system's input with scripted ones.
#include <cstdint>
#include <functional>
#include <string>

namespace platform {

// Points the application folder elsewhere (a scratch folder of a test).
void Set_App_Dir(const std::string& dir);

// A manual clock replaces the real one while enabled; the flip never sleeps on it.
void Use_Manual_Clock(bool enabled);
bool Manual_Clock();
void Advance_Manual_Clock(int32_t ms);
void Set_Manual_Clock(int32_t ms);

enum class EventKind : uint8_t { KeyDown, KeyUp, MouseDown, MouseUp, MouseMove, Quit };
struct InputEvent {
  EventKind kind = EventKind::KeyDown;
  int16_t key = 0;     // key events
  int16_t button = 0;  // mouse events: 1 left, 2 right, 4 middle
  int16_t shift = 0;   // 1 Shift, 2 Ctrl, 4 Alt, as held when the event happened
  float x = 0, y = 0;  // mouse events, back-buffer pixels
};
// Queues an event behind those already waiting (scripted or recorded input).
void Post_Event(const InputEvent& e);
// Called at the start of every Pump_Messages with the number of pumps since the hook was
// set (0 on the first); a script posts its events and advances the manual clock from here.
void Set_Pump_Hook(std::function<void(uint64_t pump)> hook);

}  // namespace platform
