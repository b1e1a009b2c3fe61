#pragma once
// Racer test set-up: private-state access, hand-made road blocks, a small Players list.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "core/modMain.h"
#include "track/modTracks.h"
#include "vehicle/players.h"
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
  static std::unique_ptr<XFileClass>& Mesh(clsHumanPlayer& r) { return r.ShipMesh; }
  static mod3Denhance::Surface& ShadowTexture(clsHumanPlayer& r) { return r.ShadowTexture; }
  static i16& GridSlot(clsHumanPlayer& r) { return r.GridSlot; }
  static void Set_Blocks(clsHumanPlayer& r, i16 b) { std::ranges::fill(r.BlockOfCorner, b); }
  static i16 BlockOf(clsHumanPlayer& r, int j) { return r.BlockOfCorner[j]; }
  static void Steer(clsHumanPlayer& r) { r.Computer_Steering(); }
};
using RA = RacerTestAccess;

namespace vehicle_test {

inline clsHumanPlayer& P(int i) { return *modMain::Players[static_cast<size_t>(i)]; }

// The turn toward the middle of the front edge two blocks ahead; positive to the left.
inline float Turn_To_Road(const clsHumanPlayer& r) {
  const int n = modTracks::TrackBlock.Count();
  const Vector3* c = modTracks::TrackBlock((r.cCurrentTrackBlock() + 2) % n).Corner;
  const float dx = (c[2].x + c[3].x) / 2 - r.PositionX, dz = (c[2].z + c[3].z) / 2 - r.PositionZ;
  // The nose points along (-sin, cos); a left turn raises the heading.
  return std::remainder(std::atan2(-dx, dz) - r.cOrientation, 2 * 3.14159265f);
}

inline void Autopilot(clsHumanPlayer& r) {
  const float turn = Turn_To_Road(r);
  r.SteerLeft = turn > 0.02f ? kTrue : kFalse, r.SteerRight = turn < -0.02f ? kTrue : kFalse;
  r.Thrust = kTrue, r.Brake = kFalse;
}

// A road strip through the given (x, z) points; a track list (strips, blocks) set to the items given.
inline modTracks::TrackStrip Strip(std::vector<std::pair<float, float>> xz, i16 texture = 0) {
  modTracks::TrackStrip s;
  s.TextureIndex = texture;
  for (auto [x, z] : xz) s.Vertices.Items().push_back(LitVertex{x, 0, z});
  return s;
}
template <class T>
void Fill(IndexedArray<T>& list, std::vector<T> items) {
  list.Resize(0, static_cast<int>(items.size()) - 1);
  list.Items() = std::move(items);
}

// Inside a block: behind each of its four edges (normals point out; edge j runs through corner j % 3).
inline bool Inside(const modTracks::TrackBlockRecord& b, float x, float z) {
  for (int j = 0; j < 4; ++j) {
    const Vector3 &c = b.Corner[j % 3], &n = b.EdgeNormal[j];
    if ((x - c.x) * n.x + (z - c.z) * n.z >= 0) return false;
  }
  return true;
}

// A flat road block x0..x1 by z0..z1 at height y, racing toward +z (+x is the right).
inline modTracks::TrackBlockRecord Block(float x0, float x1, float z0, float z1, float y = 0) {
  return {{{x1, y, z0}, {x0, y, z0}, {x1, y, z1}, {x0, y, z1}}, {{1, 0, 0}, {-1, 0, 0}, {0, 0, 1}, {0, 0, -1}}};
}

// n computer racers with no ship (2 x 4, unit mass and inertia) and RacerBoxes; returns racer 0.
inline clsHumanPlayer& Make_Players(int n) {
  modMain::Players.clear();
  for (int i = 0; i < n; ++i) {
    auto r = std::make_unique<clsHumanPlayer>();
    r->RacerKind = 2;
    r->HalfHeight = 0.5f;
    RA::HalfWidth(*r) = 1, RA::HalfLength(*r) = 2, RA::InvMass(*r) = RA::InvInertia(*r) = 1;
    RA::GridSlot(*r) = static_cast<i16>(i);
    modMain::Players.push_back(std::move(r));
  }
  modMain::NumOpponents = static_cast<i16>(n - 1);
  modGameLoop::RacerBox.Resize(0, n - 1);
  return *modMain::Players[0];
}

// Puts racer i at (x, z) with heading, no movement since the last frame.
inline void Place(int i, float x, float z, float heading = 0) {
  P(i).PositionX = x, P(i).PositionZ = z, P(i).cOrientation = heading;
  for (int frame = 0; frame < 2; ++frame) P(i).Calculate_Vertices(static_cast<i16>(i));
}

// Moves racer i to (x, z) as one frame's movement and runs the wall and block step.
inline void Move(int i, float x, float z) {
  P(i).PositionX = x, P(i).PositionZ = z;
  P(i).Calculate_Vertices(static_cast<i16>(i));
  P(i).Check_Wall_Collisions();
}

}  // namespace vehicle_test
