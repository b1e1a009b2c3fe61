#include <SDL.h>

#include <algorithm>
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

namespace detail {
bool Prepare_GL_Window() {
  if (!SDL_WasInit(SDL_INIT_VIDEO) && SDL_InitSubSystem(SDL_INIT_VIDEO | SDL_INIT_EVENTS) != 0) return false;
  SDL_GL_SetAttribute(SDL_GL_CONTEXT_MAJOR_VERSION, 3);
  SDL_GL_SetAttribute(SDL_GL_CONTEXT_MINOR_VERSION, 3);
  SDL_GL_SetAttribute(SDL_GL_CONTEXT_PROFILE_MASK, SDL_GL_CONTEXT_PROFILE_CORE);
  SDL_GL_SetAttribute(SDL_GL_DOUBLEBUFFER, 1);
  return true;
}
}  // namespace detail

bool Open_Window(const char* caption) {
  if (g_window != nullptr) return true;
  if (!detail::Prepare_GL_Window()) return false;
  // Made at the desktop's size from the start: without a window manager (a bare X server)
  // the full-screen request alone leaves the window at its first size.
  SDL_DisplayMode desktop{};
  int w = 640, h = 480;
  if (SDL_GetDesktopDisplayMode(0, &desktop) == 0 && desktop.w > 0 && desktop.h > 0) w = desktop.w, h = desktop.h;
  g_window =
      SDL_CreateWindow(caption, 0, 0, w, h, SDL_WINDOW_OPENGL | SDL_WINDOW_FULLSCREEN_DESKTOP | SDL_WINDOW_BORDERLESS);
  if (g_window != nullptr) detail::Start_Gamepads();
  return g_window != nullptr;
}

void Close_Window() {
  detail::Stop_Gamepads();
  if (g_window != nullptr) SDL_DestroyWindow(g_window);
  g_window = nullptr;
}

bool Window_Open() { return g_window != nullptr; }

namespace detail {
namespace {
Letterbox g_letterbox;
int g_seen_dw = -1, g_seen_dh = -1, g_seen_bw = -1, g_seen_bh = -1;
}  // namespace

void Set_Backbuffer_Size(int width, int height) {
  g_bb_width = width;
  g_bb_height = height;
}

const Letterbox& Current_Letterbox() {
  int dw = 0, dh = 0, ww = 0, wh = 0;
  if (g_window != nullptr) {
    SDL_GL_GetDrawableSize(g_window, &dw, &dh);
    SDL_GetWindowSize(g_window, &ww, &wh);
  }
  if (dw == g_seen_dw && dh == g_seen_dh && g_bb_width == g_seen_bw && g_bb_height == g_seen_bh) return g_letterbox;
  g_seen_dw = dw, g_seen_dh = dh, g_seen_bw = g_bb_width, g_seen_bh = g_bb_height;
  g_letterbox = Letterbox{};
  if (dw > 0 && dh > 0 && g_bb_width > 0 && g_bb_height > 0) {
    const double scale = std::min(double(dw) / g_bb_width, double(dh) / g_bb_height);
    g_letterbox.width = int(g_bb_width * scale + 0.5);
    g_letterbox.height = int(g_bb_height * scale + 0.5);
    g_letterbox.x0 = (dw - g_letterbox.width) / 2;
    g_letterbox.y0 = (dh - g_letterbox.height) / 2;
    g_letterbox.scale = static_cast<float>(scale);
    g_letterbox.points_to_pixels = ww > 0 ? static_cast<float>(dw) / ww : 1.0f;
  }
  return g_letterbox;
}

void Window_To_Backbuffer(float wx, float wy, float& bx, float& by) {
  const Letterbox& lb = Current_Letterbox();
  if (lb.width <= 0 || lb.height <= 0) {
    bx = wx;
    by = wy;
    return;
  }
  bx = (wx * lb.points_to_pixels - lb.x0) / lb.scale;
  by = (wy * lb.points_to_pixels - lb.y0) / lb.scale;
  // The borders belong to no pixel: a pointer over them sits on the nearest edge.
  bx = std::clamp(bx, 0.0f, static_cast<float>(g_bb_width - 1));
  by = std::clamp(by, 0.0f, static_cast<float>(g_bb_height - 1));
}
}  // namespace detail

}  // namespace platform
