#pragma once
// Internal to the platform layer: shared SDL handles between its files.
#include <SDL.h>

namespace platform::detail {
SDL_Window* Window();
// True when SDL runs without a real display (offscreen or dummy driver, or none at all).
bool Headless();
}  // namespace platform::detail
