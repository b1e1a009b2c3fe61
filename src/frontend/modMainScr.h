#pragma once
// The main menu: background, four buttons sliding in from alternate sides, the particle
// fountain and the game-drawn pointer. Laid out in 640 x 480 and scaled to the screen.
#include <array>

#include "core/types.h"
#include "gfx/mod3Denhance.h"

namespace modMainScr {

extern mod3Denhance::Surface MenuBackground, MenuCursor, MenuButtons;
extern std::array<Rect, 4> ButtonRects;  // screen rectangles of the buttons 0..3
// Slide-in offset in pixels; the buttons take clicks only once it is exactly 0.
extern float ButtonSlide;
extern Bool16 MenuRunning;

// Runs the menu until a button is clicked: 0 races alone, 1 against four ships (both go
// to ship selection), 2 opens the options, 3 ends the game. Also leaves when the window
// is closed.
void Main_Menu();

}  // namespace modMainScr
