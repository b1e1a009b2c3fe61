#pragma once
// The Race screen, entered by the game-state loop.

namespace modGameLoop {
// Runs the screen until it has chosen the next game state (or the game ends).
void Init_Race();
}
