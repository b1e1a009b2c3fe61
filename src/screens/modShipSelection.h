#pragma once
// The Ship Selection screen, entered by the game-state loop.

namespace modShipSelection {
// Runs the screen until it has chosen the next game state (or the game ends).
void Init_Ship_Selection();
}
