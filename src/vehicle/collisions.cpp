// Collisions and hover height. The walls are the side edges of the road blocks; a racer
// is tested by the movement of its four footprint corners over the last frame.
#include "core/modMain.h"
#include "gfx/XFileClass.h"
#include "mathmesh/modMATH.h"
#include "vehicle/racer_box.h"
#include "vehicle/racer_internal.h"

using vehicle_detail::Block_At;
using vehicle_detail::Racer_At;

namespace {
constexpr float kCarTestDistanceSquared = 144.0f;  // 12 units
constexpr float kCarBounceShare = 0.75f;
constexpr float kHoverGap = 1.9f;
constexpr float kShadowLift = 1.5f;
constexpr float kLandingBounceSpeed = -0.5f;
constexpr float kLandingBounceKeep = 0.55f;
}  // namespace

void clsHumanPlayer::Side_Wall(int side, int j) {
  const auto* block = Block_At(BlockOfCorner[j]);
  if (block == nullptr) return;
  Vector3 hit;
  if (modMATH::Segment_Crosses_Plane(PrevShipCorners[j], ShipCorners[j], block->Corner[side], block->EdgeNormal[side],
                                     hit)) {
    Wall_Bounce(hit, block->EdgeNormal[side], ShipCorners[j]);
  }
}

void clsHumanPlayer::Check_Wall_Collisions() {
  for (int side = 0; side <= 1; ++side) {
    for (int j = 0; j < 4; ++j) Side_Wall(side, j);
  }
  Track_Corner_Blocks();
}

void clsHumanPlayer::Check_Car_Collisions(i16 self) {
  for (int k = 0; k <= modMain::NumOpponents; ++k) {
    if (k == self) continue;
    const clsHumanPlayer* other = Racer_At(k);
    if (other == nullptr || other == this || !modGameLoop::RacerBox.Contains(k)) continue;
    const float ox = PositionX - other->PositionX, oz = PositionZ - other->PositionZ;
    if (ox * ox + oz * oz >= kCarTestDistanceSquared) continue;
    const bool level = other->PositionY - other->HalfHeight < PositionY + HalfHeight &&
                       other->PositionY + other->HalfHeight > PositionY - HalfHeight;
    if (!level) continue;
    const modGameLoop::RacerBoxRecord& box = modGameLoop::RacerBox(k);
    // Each corner inside the other's box bounces once more: up to four times a frame.
    for (const Vector3& p : ShipCorners) {
      if (p.x > box.MinX && p.x < box.MaxX && p.z > box.MinZ && p.z < box.MaxZ) Car_Bounce(static_cast<i16>(k));
    }
  }
}

void clsHumanPlayer::Car_Bounce(i16 k) {
  clsHumanPlayer* other = Racer_At(k);
  if (other == nullptr || other == this) return;
  Vector3 n{other->PositionX - PositionX, 0, other->PositionZ - PositionZ};
  modMATH::Vector_Normalize(n);
  const Vector3 own_v{VelocityX, 0, VelocityZ};
  const Vector3 other_v{other->VelocityX, 0, other->VelocityZ};
  const float closing = modMATH::Vector_Dot(own_v, n) - modMATH::Vector_Dot(other_v, n);
  // Racers already moving apart pass through untouched.
  if (!(closing > 0)) return;
  const float delta = kCarBounceShare * closing;
  VelocityX -= delta * n.x;
  VelocityZ -= delta * n.z;
  other->VelocityX += delta * n.x;
  other->VelocityZ += delta * n.z;
}

void clsHumanPlayer::Get_Track_Height() {
  float sum = 0;
  int blocks = 0;
  for (int i = 0; i < 4; ++i) {
    const auto* block = Block_At(BlockOfCorner[i]);
    if (block == nullptr) continue;
    float d[4];
    float total = 0;
    for (int c = 0; c < 4; ++c) {
      const float dx = block->Corner[c].x - PositionX, dz = block->Corner[c].z - PositionZ;
      d[c] = dx * dx + dz * dz;
      total += d[c];
    }
    float h = 0;
    if (total > 0) {
      // Nearer corners weigh more; the four weights add up to one.
      for (int c = 0; c < 4; ++c) h += block->Corner[c].y * (1 - d[c] / total) / 3;
    } else {
      // A block shrunk to the racer's own point: its corners' mean.
      for (int c = 0; c < 4; ++c) h += block->Corner[c].y / 4;
    }
    sum += h;
    ++blocks;
  }
  if (blocks == 0) return;
  const float h = sum / static_cast<float>(blocks);

  float min_x = 0, min_y = 0, min_z = 0;
  if (ShipMesh) ShipMesh->GetMinExtent(min_x, min_y, min_z);
  const float target = h - min_y + kHoverGap;
  if (target > PositionY) {
    PositionY = target;
    VelocityY = VelocityY < kLandingBounceSpeed ? -VelocityY * kLandingBounceKeep : 0.0f;
  }
  for (LitVertex& v : ShadowVertices) v.y = h + kShadowLift;
}
