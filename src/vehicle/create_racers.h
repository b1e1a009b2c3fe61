#pragma once
// Making the racers of the coming race, as ship selection does on every visit.
#include "core/types.h"

namespace modMain {

// Releases any racers held, then creates Players(0..num_opponents) (0 the player, RacerKind 1;
// the rest computer-driven, RacerKind 2) and sizes RacerBox to the same indices. The
// player starts on the first ship with skin 1. A negative count makes the player only.
void Create_Racers(i16 num_opponents);

}  // namespace modMain
