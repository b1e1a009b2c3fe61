#pragma once
// The ship catalogue "Data\Ships.Dat": a count line, then seven lines per ship (display
// name, base name of its files, mass, moment of inertia, thrust, linear drag, angular drag).
// It is read line by line as the game always has: a line the file does not have reads as
// empty, a number line without a number as 0. The racer keeps the race safe from the
// numbers a catalogue may hold (a mass of 0 is never divided by).
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
  i16 Count = 0;                  // N of the first line; may be 0 or negative
  std::vector<ShipRecord> Ships;  // ships 0..N-1, blank where the file ran out
  // The record of ship index; a blank one for an index outside the list.
  const ShipRecord& Ship(i16 index) const;
};

// The ship request that asks for a random ship and skin.
inline constexpr i16 kRandomShip = -999;

// Larger files are refused before they are read: 999 ships fit many times over.
inline constexpr size_t kMaxFileBytes = 1 << 20;

// Reads the whole text; it never fails. Lines end in CR LF (a bare LF is accepted too). N
// is the number in the first three characters, rounded half to even; every other number is
// the leading number of its line, and one that a float cannot hold reads as 0.
Catalogue Parse(std::string_view text);

// Reads and parses the file at path. A missing, unreadable or oversized file is the empty
// catalogue (N = 0) and false, with a one-line reason in error.
bool Load(const std::string& path, Catalogue& out, std::string& error);

// The catalogue's path below the application folder.
std::string Path();

// The ship and skin a request resolves to: ship -999 picks a ship and a skin from the two
// random numbers u, v in [0, 1); then a ship >= count wraps to 0, a negative one to
// count - 1, a skin >= 4 to 1 and a skin < 1 to 3. With a count below 1 the ship may stay
// outside the list (Ship() then gives the blank record).
void Resolve_Request(i16 count, float u, float v, i16& ship, i16& skin);

// 1 / value as the racer keeps it, or 0 where that is no usable float (a value of 0, or
// one so small its reciprocal overflows): a ship without a usable mass is not pushed.
float Reciprocal(double value);

}  // namespace shipsdat
