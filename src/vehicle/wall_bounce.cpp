// The wall bounce, shared by the side walls and the refused reverse up a steep step: kept
// apart so the collision and progress steps both call down into it and never each other.
#include <cmath>

#include "core/modMain.h"
#include "mathmesh/modMATH.h"
#include "vehicle/clsHumanPlayer.h"

void clsHumanPlayer::Wall_Bounce(const Vector3& hit, const Vector3& n, Vector3& corner) {
  if (RacerKind == 1) {
    // The player's grip varies per hit: 0.750 .. 0.850 in steps of 0.001.
    WallGrip = std::floor(modMain::Rnd() * 101.0f + 750.0f) / 1000.0f;
  }

  // Put the crossing corner back exactly on the edge, the whole footprint with it.
  const float dx = corner.x - hit.x, dz = corner.z - hit.z;
  PositionX -= dx;
  PositionZ -= dz;
  for (Vector3& p : ShipCorners) {
    p.x -= dx;
    p.z -= dz;
  }

  const Vector3 vc{VelocityX, 0, VelocityZ};
  VelocityX -= n.x;  // a fixed kick back onto the road
  VelocityZ -= n.z;
  Force.x = 0;
  Force.z = 0;

  const Vector3 r{-(corner.z - PositionZ), 0, corner.x - PositionX};
  const float rn = modMATH::Vector_Dot(r, n);
  const float denom = InvInertia * rn * rn + InvMass;
  // A ship with neither a usable mass nor inertia takes the kick but no impulse.
  const float j = denom > 0 ? -(Restitution + 1) * modMATH::Vector_Dot(vc, n) / denom : 0.0f;
  VelocityX = (VelocityX + j * InvMass * n.x) * WallGrip;
  VelocityZ = (VelocityZ + j * InvMass * n.z) * WallGrip;
}
