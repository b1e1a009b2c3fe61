#pragma once
// RacerBox: the axis-aligned box round each racer's footprint, the broad phase of the
// racer-against-racer test. Owned by the race; ship selection sizes it with Players.
#include <cstddef>

#include "core/vbarray.h"

namespace modGameLoop {

// Smallest z, smallest x, largest z, largest x of the racer's four footprint corners.
struct RacerBoxRecord {
  float MinZ = 0, MinX = 0, MaxZ = 0, MaxX = 0;
};

// One record per index of modMain::Players (0 .. NumOpponents). Written by
// clsHumanPlayer::Calculate_Vertices, read by Check_Car_Collisions; an index outside it is
// neither written nor tested.
extern IndexedArray<RacerBoxRecord> RacerBox;

}  // namespace modGameLoop
