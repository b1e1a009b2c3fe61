#pragma once
// Shared set-up for the racer tests: private-state access, hand-made road blocks and a
// small Players list.
#include <gtest/gtest.h>

#include <memory>
#include <utility>
#include <vector>

#include "core/modMain.h"
#include "track/modTracks.h"
#include "vehicle/clsHumanPlayer.h"
#include "vehicle/racer_box.h"

struct RacerTestAccess {
  static float& HalfWidth(clsHumanPlayer& r) { return r.HalfWidth; }
  static float& HalfLength(clsHumanPlayer& r) { return r.HalfLength; }
  static float& InvMass(clsHumanPlayer& r) { return r.InvMass; }
  static float& InvInertia(clsHumanPlayer& r) { return r.InvInertia; }
  static float& ThrustForce(clsHumanPlayer& r) { return r.ThrustForce; }
  static float& LinearDrag(clsHumanPlayer& r) { return r.LinearDrag; }
  static float& AngularDrag(clsHumanPlayer& r) { return r.AngularDrag; }
  static float& WallGrip(clsHumanPlayer& r) { return r.WallGrip; }
  static float& AngularVelocity(clsHumanPlayer& r) { return r.AngularVelocity; }
  static float& Torque(clsHumanPlayer& r) { return r.Torque; }
  static Vector3& Force(clsHumanPlayer& r) { return r.Force; }
  static Vector3* Corners(clsHumanPlayer& r) { return r.ShipCorners; }
  static Vector3* PrevCorners(clsHumanPlayer& r) { return r.PrevShipCorners; }
  static LitVertex* Shadow(clsHumanPlayer& r) { return r.ShadowVertices; }
  static LitVertex* Flame(clsHumanPlayer& r) { return r.ThrustVertices; }
  static i16& GridSlot(clsHumanPlayer& r) { return r.GridSlot; }
  static void Set_Blocks(clsHumanPlayer& r, i16 b) {
    for (i16& x : r.BlockOfCorner) x = b;
  }
  static i16 BlockOf(clsHumanPlayer& r, int j) { return r.BlockOfCorner[j]; }
  static void Steer(clsHumanPlayer& r) { r.Computer_Steering(); }
  static void Ship(clsHumanPlayer& r, float half_width, float half_length, float inv_mass, float inv_inertia) {
    r.HalfWidth = half_width;
    r.HalfLength = half_length;
    r.InvMass = inv_mass;
    r.InvInertia = inv_inertia;
  }
};
using RA = RacerTestAccess;

namespace vehicle_test {

// A road block x in [x0, x1], z in [z0, z1], racing toward +z (the +x side is the right),
// flat at height y.
inline modTracks::TrackBlockRecord Block(float x0, float x1, float z0, float z1, float y = 0) {
  modTracks::TrackBlockRecord b;
  b.Corner[0] = {x1, y, z0};
  b.Corner[1] = {x0, y, z0};
  b.Corner[2] = {x1, y, z1};
  b.Corner[3] = {x0, y, z1};
  b.EdgeNormal[0] = {1, 0, 0};
  b.EdgeNormal[1] = {-1, 0, 0};
  b.EdgeNormal[2] = {0, 0, 1};
  b.EdgeNormal[3] = {0, 0, -1};
  return b;
}

inline void Set_Track(const std::vector<modTracks::TrackBlockRecord>& blocks) {
  modTracks::TrackBlock.Resize(0, static_cast<int>(blocks.size()) - 1);
  for (size_t i = 0; i < blocks.size(); ++i) modTracks::TrackBlock(static_cast<int>(i)) = blocks[i];
}

// Creates n racers (RacerKind 2, no ship loaded) as Players 0..n-1 with a RacerBox each.
inline void Make_Players(int n, float half_width = 1, float half_length = 2) {
  modMain::Players.clear();
  for (int i = 0; i < n; ++i) {
    auto r = std::make_unique<clsHumanPlayer>();
    r->RacerKind = 2;
    r->HalfHeight = 0.5f;
    RA::Ship(*r, half_width, half_length, 1, 1);
    RA::GridSlot(*r) = static_cast<i16>(i);
    modMain::Players.push_back(std::move(r));
  }
  modMain::NumOpponents = static_cast<i16>(n - 1);
  modGameLoop::RacerBox.Resize(0, n - 1);
}

inline clsHumanPlayer& P(int i) { return *modMain::Players[static_cast<size_t>(i)]; }

// Puts racer i at (x, z) with heading, no movement since the last frame.
inline void Place(int i, float x, float z, float heading = 0) {
  clsHumanPlayer& r = P(i);
  r.PositionX = x;
  r.PositionZ = z;
  r.cOrientation = heading;
  r.Calculate_Vertices(static_cast<i16>(i));
  r.Calculate_Vertices(static_cast<i16>(i));
}

// Moves racer i to (x, z) as one frame's movement and runs the wall and block step.
inline void Move(int i, float x, float z) {
  clsHumanPlayer& r = P(i);
  r.PositionX = x;
  r.PositionZ = z;
  r.Calculate_Vertices(static_cast<i16>(i));
  r.Check_Wall_Collisions();
}

}  // namespace vehicle_test
