// Ships.Dat reader: any bytes give a catalogue every racer can use.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "vehicle/ships_dat.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const shipsdat::Catalogue cat = shipsdat::Parse(text);
  if (cat.Count < -99 || cat.Count > 999) __builtin_trap();
  if (cat.Ships.size() != static_cast<size_t>(cat.Count > 0 ? cat.Count : 0)) __builtin_trap();
  for (const shipsdat::ShipRecord& s : cat.Ships) {
    // The racer keeps every figure as a float, and 1 / mass and 1 / inertia.
    for (double x : {s.Mass, s.Inertia, s.Thrust, s.LinearDrag, s.AngularDrag})
      if (!std::isfinite(static_cast<float>(x))) __builtin_trap();
    if (!std::isfinite(shipsdat::Reciprocal(s.Mass)) || !std::isfinite(shipsdat::Reciprocal(s.Inertia)))
      __builtin_trap();
  }
  // Whatever a caller asks for, the ship used is inside the catalogue (or the blank record
  // of an empty one) and the skin is 1..3.
  const float u = size > 0 ? static_cast<float>(data[0]) / 256.0f : 0.0f;
  const float v = size > 1 ? static_cast<float>(data[1]) / 256.0f : 0.0f;
  for (const int16_t request :
       {shipsdat::kRandomShip, int16_t{-32768}, int16_t{-1}, int16_t{0}, cat.Count, int16_t{32767}}) {
    int16_t ship = request, skin = static_cast<int16_t>(size);
    shipsdat::Resolve_Request(cat.Count, u, v, ship, skin);
    if (skin < 1 || skin > 3) __builtin_trap();
    if (cat.Count >= 1 && (ship < 0 || ship >= cat.Count)) __builtin_trap();
    volatile size_t sink = cat.Ship(ship).BaseName.size();
    (void)sink;
  }
  return 0;
}
