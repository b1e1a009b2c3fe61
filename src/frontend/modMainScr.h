#pragma once
// The Main Menu screen, entered by the game-state loop.

namespace modMainScr {
// Runs the screen until it has chosen the next game state (or the game ends).
void Main_Menu();
}
