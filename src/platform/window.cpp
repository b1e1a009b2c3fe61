#include <SDL.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "platform/platform.h"
#include "platform/sdl_internal.h"
#include "platform/testing.h"

namespace platform {
namespace {
SDL_Window* g_window = nullptr;
int g_bb_width = 0, g_bb_height = 0;
bool g_windowed = false;
// The size the window was last given for its back buffer; a size the player has dragged
// it to is left alone when the back buffer changes.
int g_auto_w = 0, g_auto_h = 0;

SDL_Rect Desktop() {
  SDL_Rect r{0, 0, 640, 480};
  const int index = g_window != nullptr ? std::max(0, SDL_GetWindowDisplayIndex(g_window)) : 0;
  SDL_DisplayMode mode{};
  if (SDL_GetDesktopDisplayMode(index, &mode) == 0 && mode.w > 0 && mode.h > 0) {
    SDL_GetDisplayBounds(index, &r);
    r.w = mode.w, r.h = mode.h;
  }
  return r;
}

// A window that leaves room for the desktop's panels and borders: the back buffer at the
// largest whole multiple that fits (pixels stay square and sharp), or scaled down to fit.
void Windowed_Size(int& w, int& h) {
  const SDL_Rect desk = Desktop();
  const int bw = g_bb_width > 0 ? g_bb_width : 640, bh = g_bb_height > 0 ? g_bb_height : 480;
  const int room_w = desk.w * 9 / 10, room_h = desk.h * 9 / 10;
  const int k = std::min(room_w / bw, room_h / bh);
  if (k >= 1) {
    w = bw * k, h = bh * k;
    return;
  }
  const double scale = std::min(double(room_w) / bw, double(room_h) / bh);
  w = std::max(1, int(bw * scale)), h = std::max(1, int(bh * scale));
}

void Apply_Window_Mode() {
  if (g_window == nullptr) return;
  const SDL_Rect desk = Desktop();
  if (g_windowed) {
    int w = 0, h = 0;
    Windowed_Size(w, h);
    SDL_SetWindowFullscreen(g_window, 0);
    SDL_SetWindowBordered(g_window, SDL_TRUE);
    SDL_SetWindowResizable(g_window, SDL_TRUE);
    SDL_SetWindowSize(g_window, w, h);
    SDL_SetWindowPosition(g_window, desk.x + (desk.w - w) / 2, desk.y + (desk.h - h) / 2);
    g_auto_w = w, g_auto_h = h;
  } else {
    // Placed over the desktop first: without a window manager the request alone does not.
    SDL_SetWindowResizable(g_window, SDL_FALSE);
    SDL_SetWindowBordered(g_window, SDL_FALSE);
    SDL_SetWindowPosition(g_window, desk.x, desk.y);
    SDL_SetWindowSize(g_window, desk.w, desk.h);
    SDL_SetWindowFullscreen(g_window, SDL_WINDOW_FULLSCREEN_DESKTOP);
  }
  // SDL lets go of the pointer by itself while another window has the focus.
  SDL_SetWindowGrab(g_window, g_windowed ? SDL_FALSE : SDL_TRUE);
}
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
  // Mesa's drivers then do their work on each draw (vertex set-up, clipping, binning) on a
  // thread of their own, so the game thread's share of a frame halves; read-backs wait for
  // it. Read when the GL library starts, so set before the first window. A player's own
  // setting wins, and other drivers ignore the name.
  setenv("mesa_glthread", "true", 0);
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
  if (g_window == nullptr) return false;
  detail::Start_Gamepads();
  if (g_windowed)
    Apply_Window_Mode();
  else
    SDL_SetWindowGrab(g_window, SDL_TRUE);
  return true;
}

void Set_Windowed(bool windowed) {
  g_windowed = windowed;
  Apply_Window_Mode();
}

bool Windowed() { return g_windowed; }

bool Desktop_Size(int& width, int& height) {
  if (!SDL_WasInit(SDL_INIT_VIDEO) && SDL_InitSubSystem(SDL_INIT_VIDEO | SDL_INIT_EVENTS) != 0) return false;
  const int index = g_window != nullptr ? std::max(0, SDL_GetWindowDisplayIndex(g_window)) : 0;
  SDL_DisplayMode mode{};
  if (SDL_GetDesktopDisplayMode(index, &mode) != 0 || mode.w <= 0 || mode.h <= 0) return false;
  width = mode.w, height = mode.h;
  return true;
}

void Close_Window() {
  detail::Stop_Gamepads();
  if (g_window != nullptr) SDL_DestroyWindow(g_window);
  g_window = nullptr;
}

namespace detail {
namespace {
Letterbox g_letterbox;
int g_seen_dw = -1, g_seen_dh = -1, g_seen_bw = -1, g_seen_bh = -1;
}  // namespace

void Set_Backbuffer_Size(int width, int height) {
  g_bb_width = width;
  g_bb_height = height;
  if (g_window == nullptr || !g_windowed || width <= 0 || height <= 0) return;
  int ww = 0, wh = 0;
  SDL_GetWindowSize(g_window, &ww, &wh);
  if (ww == g_auto_w && wh == g_auto_h) Apply_Window_Mode();
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
