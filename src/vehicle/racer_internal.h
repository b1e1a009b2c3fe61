#pragma once
// Helpers shared by the racer's source files.
#include "core/modMain.h"
#include "track/modTracks.h"
#include "vehicle/clsHumanPlayer.h"
#include "vehicle/players.h"

namespace vehicle_detail {

// The road block with this index, or null when the index is outside TrackBlock: a step
// that needs a block it cannot have is skipped.
inline const modTracks::TrackBlockRecord* Block_At(int index) {
  if (!modTracks::TrackBlock.Contains(index)) return nullptr;
  return &modTracks::TrackBlock(index);
}

// The racer at index k of Players, or null when there is none.
inline clsHumanPlayer* Racer_At(int k) {
  if (k < 0 || static_cast<size_t>(k) >= modMain::Players.size()) return nullptr;
  return modMain::Players[static_cast<size_t>(k)].get();
}

}  // namespace vehicle_detail
