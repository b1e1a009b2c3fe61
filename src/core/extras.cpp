#include "core/extras.h"

#include <cctype>
#include <charconv>
#include <fstream>
#include <map>

#include "core/files.h"
#include "core/log.h"
#include "platform/platform.h"

namespace extras {
namespace {
std::map<std::string, int, std::less<>> g_values;

bool Parse_Line(std::string_view line, std::string& name, int& value) {
  const size_t eq = line.find('=');
  if (eq == 0 || eq == std::string_view::npos || eq > 64) return false;
  for (const char c : line.substr(0, eq))
    if (!(std::isalnum(static_cast<unsigned char>(c)) || c == '_')) return false;
  const std::string_view number = line.substr(eq + 1);
  const auto [end, ec] = std::from_chars(number.data(), number.data() + number.size(), value);
  if (ec != std::errc{} || end != number.data() + number.size()) return false;
  name.assign(line.substr(0, eq));
  return true;
}
}  // namespace

std::string Path() { return platform::Player_Path("\\Quorval.cfg"); }

void Reset() { g_values.clear(); }

void Load() {
  g_values.clear();
  std::ifstream in(Path(), std::ios::binary);
  std::string line, name;
  int value = 0;
  // A settings file of a few lines: anything longer is not ours and is read no further.
  for (int number = 1; number <= 256 && std::getline(in, line); ++number) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.empty()) continue;
    if (Parse_Line(line, name, value))
      g_values[name] = value;
    else
      modMain::Write_Log("Quorval.cfg: line " + std::to_string(number) + " ignored");
  }
}

int Get(std::string_view name, int fallback, int lo, int hi) {
  const auto it = g_values.find(name);
  if (it == g_values.end() || it->second < lo || it->second > hi) return fallback;
  return it->second;
}

void Set(std::string_view name, int value) {
  const auto it = g_values.find(name);
  if (it != g_values.end() && it->second == value) return;
  g_values[std::string(name)] = value;
  std::string bytes;
  for (const auto& [key, v] : g_values) bytes += key + "=" + std::to_string(v) + "\n";
  modMain::Replace_File(Path(), bytes);
}

}  // namespace extras
