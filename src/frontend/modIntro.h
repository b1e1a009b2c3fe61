#pragma once
// The Brindlex Quorval screen, entered by the game-state loop.

namespace modIntro {
// Runs the screen until it has chosen the next game state (or the game ends).
void Intro();
}
