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

// The racer holds every figure as a float: one that does not fit reads as 0.
double Number(std::string_view line) {
  const double v = numbers::Leading_Number(line);
  return std::isfinite(static_cast<float>(v)) ? v : 0.0;
}

}  // namespace

const ShipRecord& Catalogue::Ship(i16 index) const {
  static const ShipRecord kBlank;
  return index >= 0 && static_cast<size_t>(index) < Ships.size() ? Ships[static_cast<size_t>(index)] : kBlank;
}

std::string Path() { return platform::Game_Path("\\Data\\Ships.Dat"); }

Catalogue Parse(std::string_view text) {
  const std::vector<std::string_view> lines = Split_Lines(text);
  const auto line = [&](size_t i) { return i < lines.size() ? lines[i] : std::string_view{}; };
  Catalogue cat;
  // Three characters hold at most "999" or "-99": always a 16-bit number.
  numbers::Convert_Round(numbers::Leading_Number(line(0).substr(0, 3)), cat.Count);
  if (cat.Count < 1) return cat;
  cat.Ships.resize(static_cast<size_t>(cat.Count));
  for (size_t k = 0; k < cat.Ships.size(); ++k) {
    const size_t first = 1 + k * kLinesPerShip;  // 0-based line of the name
    ShipRecord& s = cat.Ships[k];
    s.DisplayName = std::string(line(first));
    s.BaseName = std::string(line(first + 1));
    s.Mass = Number(line(first + 2));
    s.Inertia = Number(line(first + 3));
    s.Thrust = Number(line(first + 4));
    s.LinearDrag = Number(line(first + 5));
    s.AngularDrag = Number(line(first + 6));
  }
  return cat;
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
  out = Parse(text);
  error.clear();
  return true;
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

float Reciprocal(double value) {
  if (value == 0) return 0;
  const float r = static_cast<float>(1.0 / value);
  return std::isfinite(r) ? r : 0.0f;
}

}  // namespace shipsdat
