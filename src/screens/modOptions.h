#pragma once
// The options screen: difficulty, whether the setup dialog shows at start, the four
// driving keys (rebound by clicking a row and pressing a key) and a defaults button.
// Its only way out stores the settings file and returns to the main menu. Added beside
// the design's areas: the control device (keyboard or gamepad; with the pad chosen the
// rows bind pad controls) and the music volume, both stored with the rest.
#include "core/types.h"
#include "platform/records.h"

namespace modOptions {

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

// The control awaiting a key: 0 none, 1..4 thrust, brake, left, right.
u8 Capture_Slot();
// Clickable area i: 0/1 difficulty down/up, 2 setup tick, 3 store and leave, 4 defaults,
// 5..8 rebind thrust, brake, left, right.
const Rect& Button_Rect(int area);

}  // namespace modOptions
