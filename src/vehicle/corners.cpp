// Footprint corners and the racer's box: the collision points of the wall and car tests.
#include <cmath>

#include "vehicle/clsHumanPlayer.h"
#include "vehicle/racer_box.h"

namespace {
constexpr float kBoxStart = 1.0e9f;
}  // namespace

void clsHumanPlayer::Footprint_Corners() {
  const float s = std::sin(cOrientation), c = std::cos(cOrientation);
  const float w = HalfWidth, l = HalfLength;
  // Forward (-s, c), right (c, s); corner 0 = centre + w right + l forward. y is the road's.
  ShipCorners[0].x = PositionX + w * c - l * s;
  ShipCorners[0].z = PositionZ + w * s + l * c;
  ShipCorners[1].x = PositionX - w * c - l * s;
  ShipCorners[1].z = PositionZ - w * s + l * c;
  ShipCorners[2].x = PositionX + w * c + l * s;
  ShipCorners[2].z = PositionZ + w * s - l * c;
  ShipCorners[3].x = PositionX - w * c + l * s;
  ShipCorners[3].z = PositionZ - w * s - l * c;
}

void clsHumanPlayer::Calculate_Vertices(i16 index) {
  // The swept wall test needs where the corners were before this frame's move.
  for (int i = 0; i < 4; ++i) PrevShipCorners[i] = ShipCorners[i];
  Footprint_Corners();

  if (!modGameLoop::RacerBox.Contains(index)) return;
  modGameLoop::RacerBoxRecord& box = modGameLoop::RacerBox(index);
  box.MinZ = kBoxStart;
  box.MinX = kBoxStart;
  box.MaxZ = -kBoxStart;
  box.MaxX = -kBoxStart;
  for (const Vector3& p : ShipCorners) {
    if (p.x < box.MinX) box.MinX = p.x;
    if (p.z < box.MinZ) box.MinZ = p.z;
    if (p.x > box.MaxX) box.MaxX = p.x;
    if (p.z > box.MaxZ) box.MaxZ = p.z;
  }
}
