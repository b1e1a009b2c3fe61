#pragma once
// The Hi-Scores screen, entered by the game-state loop.

namespace modHiScore {
// Runs the screen until it has chosen the next game state (or the game ends).
void Init_HiScore_Screen();
}
