#include "vehicle/ships_dat.h"

#include <cmath>
#include <fstream>

#include "core/numbers.h"
#include "platform/platform.h"

namespace shipsdat {
namespace {

constexpr int kLinesPerShip = 7;

std::vector<std::string_view> Split_Lines(std::string_view text) {
  std::vector<std::string_view> lines;
  size_t start = 0;
  while (start < text.size()) {
    size_t end = text.find('\n', start);
    const bool last = end == std::string_view::npos;
    if (last) end = text.size();
    std::string_view line = text.substr(start, end - start);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    lines.push_back(line);
    start = end + 1;
  }
  return lines;
}

std::string Describe(int ship, const std::string& name) { return "ship " + std::to_string(ship) + " (" + name + ")"; }

}  // namespace

std::string Path() { return platform::Game_Path("\\Data\\Ships.Dat"); }

bool Parse(std::string_view text, Catalogue& out, std::string& error) {
  out = Catalogue{};
  const std::vector<std::string_view> lines = Split_Lines(text);
  if (lines.empty()) {
    error = "Data\\Ships.Dat is empty";
    return false;
  }
  i16 count = 0;
  const std::string_view head = lines[0].substr(0, 3);
  if (!numbers::Convert_Round(numbers::Leading_Number(head), count) || count < 1) {
    error = "Data\\Ships.Dat line 1: the ship count '" + std::string(head) + "' is not a number of 1 or more";
    return false;
  }
  const size_t needed = 1 + static_cast<size_t>(count) * kLinesPerShip;
  if (lines.size() < needed) {
    error = "Data\\Ships.Dat promises " + std::to_string(count) + " ships (" + std::to_string(needed) +
            " lines) but has only " + std::to_string(lines.size()) + " lines";
    return false;
  }
  Catalogue cat;
  cat.Count = count;
  cat.Ships.reserve(static_cast<size_t>(count));
  for (int k = 0; k < count; ++k) {
    const size_t first = 1 + static_cast<size_t>(k) * kLinesPerShip;  // 0-based line of the name
    ShipRecord s;
    s.DisplayName = std::string(lines[first]);
    s.BaseName = std::string(lines[first + 1]);
    double* fields[] = {&s.Mass, &s.Inertia, &s.Thrust, &s.LinearDrag, &s.AngularDrag};
    static const char* const kNames[] = {"mass", "moment of inertia", "thrust", "linear drag", "angular drag"};
    for (int f = 0; f < 5; ++f) {
      const size_t line_index = first + 2 + static_cast<size_t>(f);
      const double v = numbers::Leading_Number(lines[line_index]);
      // The racer keeps these as floats, and 1 / mass and 1 / inertia: all must fit.
      const bool must_be_positive = f < 2;
      const bool fits = std::isfinite(static_cast<float>(v)) &&
                        (!must_be_positive || (v > 0 && std::isfinite(static_cast<float>(1.0 / v))));
      if (!fits) {
        error = "Data\\Ships.Dat line " + std::to_string(line_index + 1) + ": " + Describe(k, s.DisplayName) +
                " has a " + kNames[f] + " of '" + std::string(lines[line_index]) + "'" +
                (must_be_positive ? ", which must be a number above 0" : ", which is not a usable number");
        return false;
      }
      *fields[f] = v;
    }
    cat.Ships.push_back(std::move(s));
  }
  out = std::move(cat);
  error.clear();
  return true;
}

bool Load(const std::string& path, Catalogue& out, std::string& error) {
  out = Catalogue{};
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    error = "Data\\Ships.Dat is missing (" + path + ")";
    return false;
  }
  file.seekg(0, std::ios::end);
  const std::streamoff size = file.tellg();
  if (size < 0 || static_cast<unsigned long long>(size) > kMaxFileBytes) {
    error = "Data\\Ships.Dat is unreadable or larger than " + std::to_string(kMaxFileBytes) + " bytes";
    return false;
  }
  file.seekg(0, std::ios::beg);
  std::string text(static_cast<size_t>(size), '\0');
  if (!file.read(text.data(), size)) {
    error = "Data\\Ships.Dat could not be read";
    return false;
  }
  return Parse(text, out, error);
}

void Resolve_Request(i16 count, float u, float v, i16& ship, i16& skin) {
  if (ship == kRandomShip) {
    ship = static_cast<i16>(std::floor(static_cast<double>(count) * u));
    skin = static_cast<i16>(std::floor(static_cast<double>(v) * 3 + 1));
  }
  if (count <= ship) ship = 0;
  if (ship < 0) ship = static_cast<i16>(count - 1);
  if (skin >= 4) skin = 1;
  if (skin < 1) skin = 3;
}

}  // namespace shipsdat
