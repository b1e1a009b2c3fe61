// Forces and integration: the controls and the motion make a force and a torque, and one
// explicit Euler step of FrameTime / 10 moves the racer.
#include <cmath>
#include <limits>

#include "core/modMain.h"
#include "core/numbers.h"
#include "mathmesh/modMATH.h"
#include "vehicle/clsHumanPlayer.h"

namespace {
constexpr float kSteerTorquePerSpeed = 0.02f;
constexpr float kBrakeDivisor = 5.0f;
constexpr double kDragHalfSpeed = 2.0;
constexpr float kTurnDampingOffset = 1.4f;
constexpr float kGravity = 0.03f;
constexpr float kMphPerSpeedSquared = 60.0f;
}  // namespace

void clsHumanPlayer::ComputeForces() {
  // Direction of travel before the steering or anything else changes.
  const double s = modMATH::Vector_Length_2D(VelocityX, VelocityZ);
  const float a = modMATH::Vector_Angle(VelocityX, VelocityZ);

  if (RacerKind == 2) Computer_Steering();

  Force = Vector3{};
  // Steering torque grows with speed, so a racer at rest cannot turn. Left wins a tie.
  if (Is_Set(SteerLeft)) {
    Torque = static_cast<float>(s * kSteerTorquePerSpeed);
  } else if (Is_Set(SteerRight)) {
    Torque = static_cast<float>(s * -kSteerTorquePerSpeed);
  } else {
    Torque = 0;
  }

  // After the finish the racer coasts: only drag and turn damping act.
  if (cFinishedRace == 0) {
    if (Is_Set(Thrust)) {
      Force.x = ThrustForce * std::sin(-cOrientation);
      Force.z = ThrustForce * std::cos(-cOrientation);
    } else if (Is_Set(Brake)) {
      Force.x = -VelocityX / kBrakeDivisor;
      Force.z = -VelocityZ / kBrakeDivisor;
    }
  }

  // Nearly linear at low speed, levelling off at LinearDrag: that balance sets top speed.
  const double d = s * LinearDrag / (s + kDragHalfSpeed);
  Force.x = static_cast<float>(Force.x - d * std::sin(a));
  Force.z = static_cast<float>(Force.z - d * std::cos(a));

  // Deliberately lopsided (right turns die out faster); the divisor vanishes only at one
  // exact turn rate, where the damping step is skipped rather than made infinite.
  const float divisor = AngularVelocity + kTurnDampingOffset;
  if (divisor != 0) Torque -= AngularDrag * AngularVelocity / divisor;
}

void clsHumanPlayer::ApplyForces() { ApplyForces(static_cast<float>(modMain::FrameTime)); }

void clsHumanPlayer::ApplyForces(float step_ms) {
  const float dt = step_ms / 10.0f;

  // Positions move with the old velocities.
  PositionX += dt * VelocityX;
  PositionZ += dt * VelocityZ;
  PositionY += dt * VelocityY;

  cOrientation += dt * AngularVelocity;
  if (cOrientation > static_cast<float>(modMATH::kPi)) {
    cOrientation = static_cast<float>(cOrientation - 2 * modMATH::kPi);
  } else if (cOrientation < static_cast<float>(-modMATH::kPi)) {
    cOrientation = static_cast<float>(cOrientation + 2 * modMATH::kPi);
  }

  VelocityX += dt * InvMass * Force.x;
  VelocityZ += dt * InvMass * Force.z;
  // The road contact in Get_Track_Height cancels this while the racer is on the ground.
  VelocityY -= dt * kGravity;

  cVelocityMag = VelocityX * VelocityX + VelocityZ * VelocityZ;
  const float shown = kMphPerSpeedSquared * cVelocityMag;
  if (shown > cTopSpeed) {
    // A speed beyond the 16-bit record is kept as the largest one it can hold.
    if (!numbers::Convert_Round(static_cast<double>(shown), cTopSpeed)) {
      cTopSpeed = std::numeric_limits<i16>::max();
    }
  }

  AngularVelocity += InvInertia * dt * Torque;
}
