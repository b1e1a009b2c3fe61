#pragma once
// The racers of the run: 0 the player, 1..NumOpponents the computer. Ship selection creates
// them on every visit; its back button and leaving the hi-score table release them.
#include <memory>
#include <vector>

#include "vehicle/clsHumanPlayer.h"

namespace modMain {
// Empty outside a race's life.
extern std::vector<std::unique_ptr<clsHumanPlayer>> Players;
}  // namespace modMain
