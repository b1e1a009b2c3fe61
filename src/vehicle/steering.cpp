// Computer steering: no path planning. Aim along the block's forward normal, turn the
// short way round, weave a little at random, throttle always open.
#include <cmath>

#include "core/modMain.h"
#include "mathmesh/modMATH.h"
#include "vehicle/racer_internal.h"

namespace {
constexpr int kWeavePercent = 10;  // k <= 10 of 0..99: eleven chances in a hundred

int Percent_Roll() { return static_cast<int>(std::floor(100.0f * modMain::Rnd())); }
}  // namespace

void clsHumanPlayer::Computer_Steering() {
  bool turn_left = false;
  if (const auto* block = vehicle_detail::Block_At(BlockOfCorner[0])) {
    const Vector3& n2 = block->EdgeNormal[2];
    float tau = modMATH::Vector_Angle(-n2.x, n2.z);
    const float pi = static_cast<float>(modMATH::kPi);
    if (tau > pi) tau = static_cast<float>(tau - 2 * modMATH::kPi);
    const float theta = cOrientation;
    // Exactly on target the racer turns right; the weaving hides that.
    if (tau > theta) {
      turn_left = !(tau - theta > pi);
    } else {
      turn_left = theta - tau > pi;
    }
  }

  if (Percent_Roll() <= kWeavePercent) {
    turn_left = false;
  } else if (Percent_Roll() <= kWeavePercent) {
    turn_left = true;
  }

  SteerLeft = To_Bool16(turn_left);
  SteerRight = To_Bool16(!turn_left);
  Thrust = kTrue;
}
