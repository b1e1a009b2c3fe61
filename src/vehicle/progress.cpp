// Race progress: each footprint corner carries the index of its block, moved on when the
// corner crosses the block's front or back edge; corner 0 passing the start/finish line
// counts the laps. Position in the race is ranked from laps, blocks and distance.
#include "core/modMain.h"
#include "mathmesh/modMATH.h"
#include "vehicle/racer_internal.h"

using vehicle_detail::Block_At;
using vehicle_detail::Racer_At;

namespace {
constexpr int kLaps = 3;
constexpr float kStepGuardRise = 8.0f;

i16 Laps(const clsHumanPlayer& r) { return static_cast<i16>(r.cCheatMinusLaps + r.cOnLap); }
}  // namespace

void clsHumanPlayer::Track_Corner_Blocks() {
  const int last_block = modTracks::TrackBlock.Upper();
  for (int j = 0; j < 4; ++j) {
    Vector3 hit;
    // Forward first, so a corner that has just entered a block is tested against that
    // block's back edge, which its forward move cannot cross: nothing counts twice.
    if (const auto* block = Block_At(BlockOfCorner[j]);
        block != nullptr && modMATH::Segment_Crosses_Plane(PrevShipCorners[j], ShipCorners[j], block->Corner[2],
                                                           block->EdgeNormal[2], hit)) {
      ++BlockOfCorner[j];
      if (BlockOfCorner[j] > last_block) {
        BlockOfCorner[j] = 0;
        if (j == 0) {
          if (cCheatMinusLaps != 0) {
            ++cCheatMinusLaps;  // a reverse crossing made good; no lap
          } else {
            if (cOnLap >= 1 && cOnLap <= kLaps) {
              i32 earlier = 0;
              for (int lap = 1; lap < cOnLap; ++lap) earlier += cLapTime(lap);
              cLapTime(cOnLap) = modMain::GameClock - earlier;
            }
            ++cOnLap;
            // Laps after the finish are counted but never change the times.
            if (cOnLap > kLaps && cFinishedRace == 0) {
              cFinishedRace = 1;
              cRaceTime = modMain::GameClock;
            }
          }
        }
      }
      cWRONGWAY = kFalse;
    }

    if (const auto* block = Block_At(BlockOfCorner[j]);
        block != nullptr && modMATH::Segment_Crosses_Plane(PrevShipCorners[j], ShipCorners[j], block->Corner[0],
                                                           block->EdgeNormal[3], hit)) {
      --BlockOfCorner[j];
      if (BlockOfCorner[j] < 0) {
        BlockOfCorner[j] = static_cast<i16>(last_block);
        if (j == 0) --cCheatMinusLaps;
      }
      // Reversing up a steep step is refused: the racer is thrown forward again.
      if (const auto* entered = Block_At(BlockOfCorner[j]);
          entered != nullptr && entered->Corner[0].y - entered->Corner[2].y > kStepGuardRise) {
        Wall_Bounce(hit, entered->EdgeNormal[3], ShipCorners[j]);
      }
      cWRONGWAY = kTrue;
    }
  }
}

void clsHumanPlayer::Get_Race_Position() {
  cRace_Position = 1;
  if (modMain::NumOpponents == 0) return;
  for (int k = 0; k <= modMain::NumOpponents; ++k) {
    if (k == GridSlot) continue;
    const clsHumanPlayer* other = Racer_At(k);
    if (other == nullptr || other == this) continue;
    const i16 mine = Laps(*this), theirs = Laps(*other);
    if (mine == theirs) {
      const i16 block_index = BlockOfCorner[0];
      if (block_index == other->cCurrentTrackBlock()) {
        const auto* block = Block_At(block_index);
        if (block == nullptr) continue;
        // Nearer to the block's front-edge midpoint is further ahead.
        const float mx = (block->Corner[2].x + block->Corner[3].x) / 2;
        const float mz = (block->Corner[2].z + block->Corner[3].z) / 2;
        const float ax = PositionX - mx, az = PositionZ - mz;
        const float bx = other->PositionX - mx, bz = other->PositionZ - mz;
        if (ax * ax + az * az > bx * bx + bz * bz) ++cRace_Position;
      } else if (block_index < other->cCurrentTrackBlock()) {
        ++cRace_Position;
      }
    } else if (mine < theirs) {
      ++cRace_Position;
    }
  }
}
