#pragma once
// Internal to the platform layer: the event pump's side of recorded runs.
#include <vector>

#include "platform/testing.h"

namespace platform::detail {
// A pump begins (after its hook): a recording notes the tick count the frame will read.
void Journal_Pump_Begins();
// An event reaches the game's handlers: a recording keeps it with its pump.
void Journal_Dispatched(const InputEvent& e);
// While a journal plays: sets the clock for this pump, fills events with exactly what the
// pump must dispatch and returns true.
bool Journal_Replay_Pump(std::vector<InputEvent>& events);
}  // namespace platform::detail
