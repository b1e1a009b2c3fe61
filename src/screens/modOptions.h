#pragma once
// The options screen: difficulty, whether the setup dialog shows at start, the four
// driving keys (rebound by clicking a row and pressing a key) and a defaults button.
// Its only way out stores the settings file and returns to the main menu. Added beside
// the design's areas: the control device (keyboard or gamepad; with the pad chosen the
// rows bind pad controls) and the music volume, both stored with the rest.
#include <array>

#include "core/types.h"
#include "gfx/mod3Denhance.h"

namespace modOptions {

extern Bool16 OptionsRunning;
// 0: no key awaited; 1..4: the next key goes to KeyUp, KeyDown, KeyLeft, KeyRight.
extern u8 CaptureSlot;
// Clickable areas: 0/1 difficulty down/up, 2 setup tick, 3 store and leave, 4 defaults,
// 5..8 rebind up, down, left, right.
extern std::array<Rect, 9> OptionButtons;
// The added areas: 0 control device (keyboard <-> gamepad), 1/2 music volume down/up,
// 3 the ghost switch.
extern std::array<Rect, 4> AddedButtons;

// Runs the screen until it is left through its store button (GameState 0) or the
// window is closed (nothing stored then).
void Init_Options_Screen();
void Options_Screen_Loop();
void Draw_Options_Screen();
// One frame of key capture: the lowest held code decides; a named key is bound to the
// awaited control, an unnamed one cancels. With the gamepad chosen, the last pad control
// pressed since the row was clicked is bound instead (Start cancels, as an unnamed key).
void Capture_Key();
void Exit_Options_Screen();

}  // namespace modOptions
