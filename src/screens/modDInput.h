#pragma once
// Display names of the key codes the player can bind to the vehicle controls.
#include <string>

#include "core/types.h"

namespace modDInput {

// The name shown for a key code: "Enter", "Spacebar", the arrows, digits, letters and
// keypad digits; "<invalid>" for every other code. Only named keys can be bound.
std::string Get_Key_Name(i16 code);

}  // namespace modDInput
