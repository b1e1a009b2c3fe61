#pragma once
// The main menu: background, four buttons sliding in from alternate sides, the particle
// fountain and the game-drawn pointer. Laid out in 640 x 480 and scaled to the screen.
#include "core/types.h"
#include "platform/records.h"

namespace modMainScr {

// Runs the menu until a button is clicked: 0 races alone, 1 against four ships (both go
// to ship selection), 2 opens the options, 3 ends the game. Also leaves when the window
// is closed.
void Main_Menu();

// What the menu shows: the buttons' slide-in offset in pixels (they take clicks only once it
// is exactly 0), button i's screen rectangle, whether the menu runs, whether it still holds
// any of its pictures.
float Button_Slide();
const Rect& Button_Rect(int i);
bool Running();
bool Surfaces_Held();

}  // namespace modMainScr
