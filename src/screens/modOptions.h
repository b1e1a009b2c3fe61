#pragma once
// The Options screen, entered by the game-state loop.

namespace modOptions {
// Runs the screen until it has chosen the next game state (or the game ends).
void Init_Options_Screen();
}
