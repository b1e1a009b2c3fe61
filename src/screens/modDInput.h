#pragma once
// Display names of the keys and pad controls the player can bind to the vehicle controls.
#include <string>

#include "core/types.h"

namespace modDInput {

// The name shown for a key code: "Enter", "Spacebar", the arrows, digits, letters and
// keypad digits; "<invalid>" for every other code. Only named keys can be bound.
std::string Get_Key_Name(i16 code);
// The name shown for a pad control (platform::PadControl), at most 13 characters so it
// fits its row; "<invalid>" for Start (it pauses) and any other code.
std::string Get_Pad_Control_Name(i16 code);

}  // namespace modDInput
