#include "vehicle/racer_box.h"

namespace modGameLoop {

IndexedArray<RacerBoxRecord> RacerBox;

}  // namespace modGameLoop
