#pragma once
// The game's display as the benchmarks share it: one window, the back buffer at the size a
// benchmark asks for, and the fonts.

namespace benchdisplay {

// Opens the display at width x height with the settings the game has at that size, or
// reopens it there (the same teardown and set-up the game runs at its end and start) when
// it is open at another size. False when it cannot be opened.
bool Open(int width, int height);

}  // namespace benchdisplay
