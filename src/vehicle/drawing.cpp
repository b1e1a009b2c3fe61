// What the racer looks like: shadow and engine flame laid over the footprint corners,
// and the ship's mesh placed, turned and banked. The quads live in the racer and are
// rewritten in place every frame.
#include <algorithm>

#include "gfx/XFileClass.h"
#include "mathmesh/modMATH.h"
#include "vehicle/clsHumanPlayer.h"

namespace {
constexpr float kFlameFullSpeed = 5.0f;  // cVelocityMag at which the flame is opaque
constexpr float kFlameBelow = 0.5f, kFlameAbove = 1.3f;
constexpr float kBankPerTurnRate = 10.0f;
}  // namespace

void clsHumanPlayer::DrawShadow() {
  // Strip order 1, 0, 3, 2 of the corners; y was set by Get_Track_Height.
  static constexpr int kCorner[4] = {1, 0, 3, 2};
  for (int i = 0; i < 4; ++i) {
    ShadowVertices[i].x = ShipCorners[kCorner[i]].x;
    ShadowVertices[i].z = ShipCorners[kCorner[i]].z;
  }
  platform::Device3D* device = mod3Denhance::D3DDevice;
  if (device == nullptr) return;
  device->SetTexture(0, ShadowTexture);
  device->DrawPrimitive(platform::Primitive::TriangleStrip, ShadowVertices, 4);
}

void clsHumanPlayer::DrawThrust() {
  // Invisible at rest, opaque from speed 5 on (the colour packing saturates).
  const uint32_t colour = modMATH::Create_Color_RGBA(1, 1, 1, cVelocityMag / kFlameFullSpeed);
  const Vector3& left = ShipCorners[3];
  const Vector3& right = ShipCorners[2];
  const float low = PositionY - kFlameBelow, high = PositionY + kFlameAbove;
  const Vector3 at[4] = {
      {left.x, low, left.z}, {left.x, high, left.z}, {right.x, low, right.z}, {right.x, high, right.z}};
  for (int i = 0; i < 4; ++i) {
    ThrustVertices[i].x = at[i].x;
    ThrustVertices[i].y = at[i].y;
    ThrustVertices[i].z = at[i].z;
    ThrustVertices[i].color = colour;
  }
  platform::Device3D* device = mod3Denhance::D3DDevice;
  if (device == nullptr) return;
  device->DrawPrimitive(platform::Primitive::TriangleStrip, ThrustVertices, 4);
}

float clsHumanPlayer::Bank() const { return -AngularVelocity * kBankPerTurnRate; }

void clsHumanPlayer::DrawBody() {
  if (!ShipMesh) return;
  ShipMesh->SetPosition(PositionX, PositionY, PositionZ);
  // Lean into the turn.
  ShipMesh->SetRotation(0, cOrientation, Bank());
  if (mod3Denhance::D3DDevice != nullptr) ShipMesh->Render(mod3Denhance::D3DDevice);
}
