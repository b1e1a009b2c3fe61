// Ships.Dat reader: any bytes either give a catalogue every racer can use or a reason.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "vehicle/ships_dat.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  shipsdat::Catalogue cat;
  std::string error;
  if (!shipsdat::Parse(text, cat, error)) {
    if (error.empty() || !cat.Ships.empty()) __builtin_trap();
    return 0;
  }
  if (cat.Count < 1 || cat.Ships.size() != static_cast<size_t>(cat.Count)) __builtin_trap();
  for (const shipsdat::ShipRecord& s : cat.Ships) {
    // The racer keeps 1 / mass and 1 / inertia as floats.
    if (!std::isfinite(static_cast<float>(1.0 / s.Mass)) || !(s.Mass > 0)) __builtin_trap();
    if (!std::isfinite(static_cast<float>(1.0 / s.Inertia)) || !(s.Inertia > 0)) __builtin_trap();
    for (double x : {s.Thrust, s.LinearDrag, s.AngularDrag})
      if (!std::isfinite(static_cast<float>(x))) __builtin_trap();
  }
  // Whatever a caller asks for, the ship and skin used are inside the catalogue.
  const float u = size > 0 ? static_cast<float>(data[0]) / 256.0f : 0.0f;
  const float v = size > 1 ? static_cast<float>(data[1]) / 256.0f : 0.0f;
  for (const int16_t request :
       {shipsdat::kRandomShip, int16_t{-32768}, int16_t{-1}, int16_t{0}, cat.Count, int16_t{32767}}) {
    int16_t ship = request, skin = static_cast<int16_t>(size);
    shipsdat::Resolve_Request(cat.Count, u, v, ship, skin);
    if (ship < 0 || ship >= cat.Count || skin < 1 || skin > 3) __builtin_trap();
  }
  return 0;
}
