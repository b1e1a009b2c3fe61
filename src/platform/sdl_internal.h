#pragma once
// Internal to the platform layer: shared SDL handles and window geometry between its files.
#include <SDL.h>

#include <cstdint>
#include <string>

namespace platform::detail {
SDL_Window* Window();
// The folder holding the executable (no trailing slash), or the one a test set.
std::string App_Dir();
// Starts SDL's video (and events) if need be and asks for the GL 3.3 core, double-buffered
// context every window of the game uses. False when there is no video at all.
bool Prepare_GL_Window();
// True when SDL runs without a real display (offscreen or dummy driver, or none at all).
bool Headless();

// Where the back buffer lies in the window's drawable, in drawable pixels: scaled to fit,
// centred, aspect kept. Recomputed only when the drawable or the back buffer changes size.
struct Letterbox {
  int x0 = 0, y0 = 0, width = 0, height = 0;  // zero size: nothing to show
  float scale = 1.0f;                         // drawable pixels per back-buffer pixel
  float points_to_pixels = 1.0f;              // window coordinates to drawable pixels
};
const Letterbox& Current_Letterbox();
// The display tells the window the back buffer's size (0 x 0 when it goes).
void Set_Backbuffer_Size(int width, int height);
// Window coordinates to back-buffer pixels, clamped to the back buffer.
void Window_To_Backbuffer(float wx, float wy, float& bx, float& by);

// Windows virtual-key code of an SDL keycode (0 when the key has none).
int16_t Virtual_Key(int32_t sdl_keycode);
// The modifier bits of an SDL modifier state: 1 Shift, 2 Ctrl, 4 Alt.
int16_t Shift_Bits(uint16_t sdl_mod);

// The gamepad service: started with the game window, stopped when it closes. Pad_Event
// turns a controller event into queued pad events (false: not a controller event);
// Pad_Stick gives the left stick past its dead zone (false while inside it or no pad).
void Start_Gamepads();
void Stop_Gamepads();
bool Pad_Event(const SDL_Event& e);
bool Pad_Stick(float& x, float& y);
}  // namespace platform::detail
