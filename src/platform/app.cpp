#include <SDL.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include "platform/platform.h"
#include "platform/sdl_internal.h"
#include "platform/testing.h"

namespace platform {
namespace {
std::string g_app_dir;
int g_cursor_counter = 0;
std::function<void(const std::string&)> g_message_hook;
}  // namespace

std::string App_Dir() {
  if (g_app_dir.empty()) {
    std::error_code ec;
    auto exe = std::filesystem::read_symlink("/proc/self/exe", ec);
    g_app_dir = ec ? std::filesystem::current_path().string() : exe.parent_path().string();
  }
  return g_app_dir;
}

void Set_App_Dir(const std::string& dir) { g_app_dir = dir; }

std::string Game_Path(const std::string& relative) {
  std::string rel = relative;
  for (char& c : rel)
    if (c == '\\') c = '/';
  if (!rel.empty() && rel.front() != '/') rel.insert(rel.begin(), '/');
  return App_Dir() + rel;
}

std::string Player_Path(const std::string& relative) { return Game_Path(relative); }

void Set_Message_Box_Hook(std::function<void(const std::string& text)> hook) { g_message_hook = std::move(hook); }

void Message_Box(const std::string& text) {
  if (g_message_hook) return g_message_hook(text);
  if (detail::Headless() ||
      SDL_ShowSimpleMessageBox(SDL_MESSAGEBOX_INFORMATION, "Brindlex Quorval", text.c_str(), detail::Window()) != 0) {
    std::fprintf(stderr, "Brindlex Quorval: %s\n", text.c_str());
  }
}

int Show_Cursor(bool show) {
  g_cursor_counter += show ? 1 : -1;
  if (SDL_WasInit(SDL_INIT_VIDEO)) SDL_ShowCursor(g_cursor_counter >= 0 ? SDL_ENABLE : SDL_DISABLE);
  return g_cursor_counter;
}

}  // namespace platform
