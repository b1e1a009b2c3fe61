#include <SDL.h>

#include <cstring>

#include "platform/platform.h"
#include "platform/sdl_internal.h"

namespace platform {
namespace {
SDL_Window* g_window = nullptr;
int g_bb_width = 0, g_bb_height = 0;
}  // namespace

namespace detail {
SDL_Window* Window() { return g_window; }

bool Headless() {
  const char* driver = SDL_WasInit(SDL_INIT_VIDEO) ? SDL_GetCurrentVideoDriver() : nullptr;
  if (driver == nullptr) driver = SDL_getenv("SDL_VIDEODRIVER");
  if (driver == nullptr) return SDL_getenv("DISPLAY") == nullptr && SDL_getenv("WAYLAND_DISPLAY") == nullptr;
  return std::strcmp(driver, "offscreen") == 0 || std::strcmp(driver, "dummy") == 0;
}
}  // namespace detail

bool Open_Window(const char* caption) {
  if (g_window != nullptr) return true;
  if (!SDL_WasInit(SDL_INIT_VIDEO) && SDL_InitSubSystem(SDL_INIT_VIDEO | SDL_INIT_EVENTS) != 0)
    return false;
  SDL_GL_SetAttribute(SDL_GL_CONTEXT_MAJOR_VERSION, 3);
  SDL_GL_SetAttribute(SDL_GL_CONTEXT_MINOR_VERSION, 3);
  SDL_GL_SetAttribute(SDL_GL_CONTEXT_PROFILE_MASK, SDL_GL_CONTEXT_PROFILE_CORE);
  SDL_GL_SetAttribute(SDL_GL_DOUBLEBUFFER, 1);
  g_window = SDL_CreateWindow(caption, SDL_WINDOWPOS_UNDEFINED, SDL_WINDOWPOS_UNDEFINED, 640, 480,
                              SDL_WINDOW_OPENGL | SDL_WINDOW_FULLSCREEN_DESKTOP);
  return g_window != nullptr;
}

void Close_Window() {
  if (g_window != nullptr) SDL_DestroyWindow(g_window);
  g_window = nullptr;
}

bool Window_Open() { return g_window != nullptr; }

void Set_Backbuffer_Size(int width, int height) {
  g_bb_width = width;
  g_bb_height = height;
}

void Window_To_Backbuffer(float wx, float wy, float& bx, float& by) {
  int ww = 0, wh = 0;
  if (g_window != nullptr) SDL_GetWindowSize(g_window, &ww, &wh);
  if (ww <= 0 || wh <= 0 || g_bb_width <= 0 || g_bb_height <= 0) {
    bx = wx;
    by = wy;
    return;
  }
  // The back buffer is shown scaled to fit, centred, aspect kept.
  const float scale = std::min(static_cast<float>(ww) / g_bb_width, static_cast<float>(wh) / g_bb_height);
  const float ox = (ww - g_bb_width * scale) / 2.0f;
  const float oy = (wh - g_bb_height * scale) / 2.0f;
  bx = (wx - ox) / scale;
  by = (wy - oy) / scale;
}

}  // namespace platform
