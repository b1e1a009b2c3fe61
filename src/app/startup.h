#pragma once
// The top of the game: the program's start, the initialisation order, the game-state loop
// and the shutdown order. Nothing below this layer includes it.

namespace modMain {

// Program entry: seeds the random source, creates the log, reads the settings, then shows
// the setup dialog or starts the game. Returns the process exit code.
int Main();
// Initialisation, the state loop, then shutdown; returns once everything is released.
void Init_Game();
// Runs the current GameState's screen until Running is cleared.
void Main_Loop();
// Releases the long-lived objects in reverse order of creation, a log line per step.
void Kill_Everything();

}  // namespace modMain
