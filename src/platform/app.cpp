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
std::string g_data_dir;    // where the game's read-only data lies
std::string g_player_dir;  // where the player's files go
int g_cursor_counter = 0;
std::function<void(const std::string&)> g_message_hook;

// An installed game keeps its data in the games share folder beside its bin folder, apart
// from the user's data folder even when both lie under ~/.local.
constexpr const char* kInstalledData = "/../share/games/brindlex-quorval";

std::string Data_Dir() {
  if (g_data_dir.empty()) {
    std::error_code ec;
    const std::filesystem::path installed = detail::App_Dir() + kInstalledData;
    g_data_dir =
        std::filesystem::is_directory(installed, ec) ? installed.lexically_normal().string() : detail::App_Dir();
  }
  return g_data_dir;
}

// A game run from its own writable folder keeps the player's files beside it, as it always
// has; an installed game (read-only, or data in a share folder) uses the user's data folder.
std::string Player_Dir() {
  if (g_player_dir.empty()) {
    g_player_dir = detail::App_Dir();
    if (Data_Dir() != detail::App_Dir() || ::access(detail::App_Dir().c_str(), W_OK) != 0) {
      if (char* pref = SDL_GetPrefPath("", "brindlex-quorval")) {
        g_player_dir = pref;
        SDL_free(pref);
        if (g_player_dir.size() > 1 && g_player_dir.back() == '/') g_player_dir.pop_back();
        std::error_code ec;
        std::filesystem::create_directories(g_player_dir + "/Data", ec);
      } else {
        std::fprintf(stderr, "Brindlex Quorval: no folder for the player's files (%s); using %s\n", SDL_GetError(),
                     detail::App_Dir().c_str());
      }
    }
  }
  return g_player_dir;
}

// A game path such as "\\Data\\Ships.Dat" below a folder.
std::string Below(const std::string& dir, const std::string& relative) {
  std::string rel = relative;
  for (char& c : rel)
    if (c == '\\') c = '/';
  if (!rel.empty() && rel.front() != '/') rel.insert(rel.begin(), '/');
  return dir + rel;
}
}  // namespace

std::string detail::App_Dir() {
  if (g_app_dir.empty()) {
    std::error_code ec;
    auto exe = std::filesystem::read_symlink("/proc/self/exe", ec);
    g_app_dir = ec ? std::filesystem::current_path().string() : exe.parent_path().string();
  }
  return g_app_dir;
}

void Set_App_Dir(const std::string& dir) {
  g_app_dir = dir;
  g_data_dir.clear();
  g_player_dir.clear();
}

std::string Game_Path(const std::string& relative) { return Below(Data_Dir(), relative); }

std::string Player_Path(const std::string& relative) { return Below(Player_Dir(), relative); }

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
