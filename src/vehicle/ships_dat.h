#pragma once
// The ship catalogue "Data\Ships.Dat": a count line, then seven lines per ship (display
// name, base name of its files, mass, moment of inertia, thrust, linear drag, angular drag).
// The reader refuses a catalogue it cannot trust as a whole, so a racer never divides by a
// zero mass or reads a line the file does not have.
#include <string>
#include <string_view>
#include <vector>

#include "core/types.h"

namespace shipsdat {

struct ShipRecord {
  std::string DisplayName;
  std::string BaseName;
  double Mass = 0;
  double Inertia = 0;
  double Thrust = 0;
  double LinearDrag = 0;
  double AngularDrag = 0;
};

struct Catalogue {
  i16 Count = 0;  // N of the first line
  std::vector<ShipRecord> Ships;
};

// The ship request that asks for a random ship and skin.
inline constexpr i16 kRandomShip = -999;

// Larger files are refused before they are read: 999 ships fit many times over.
inline constexpr size_t kMaxFileBytes = 1 << 20;

// Parses the whole text. Lines end in CR LF (a bare LF is accepted too). N is the number in
// the first three characters, rounded half to even; every other number is the leading
// number of its line. False, with a one-line reason in error, when N is below 1, the file
// has fewer than 1 + 7 N lines, a ship's mass or inertia is not above 0 or its reciprocal
// does not fit a float, or another of its numbers does not fit a float; out is then empty.
bool Parse(std::string_view text, Catalogue& out, std::string& error);

// Reads and parses the file at path (a missing or oversized file is an error too).
bool Load(const std::string& path, Catalogue& out, std::string& error);

// The catalogue's path below the application folder.
std::string Path();

// The ship and skin a request resolves to: ship -999 picks a ship and a skin from the two
// random numbers u, v in [0, 1); then a ship >= count wraps to 0, a negative one to
// count - 1, a skin >= 4 to 1 and a skin < 1 to 3. count must be at least 1.
void Resolve_Request(i16 count, float u, float v, i16& ship, i16& skin);

}  // namespace shipsdat
