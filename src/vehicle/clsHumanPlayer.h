#pragma once
// The racer. (The vehicle module completes this class; the control flags below are
// public fields written by the key handlers and by the computer steering.)
#include "core/types.h"

class clsHumanPlayer {
 public:
  Bool16 Thrust = kFalse;
  Bool16 Brake = kFalse;
  Bool16 SteerLeft = kFalse;
  Bool16 SteerRight = kFalse;
};
