#pragma once
// The three bitmap fonts and text drawing.
// (The graphics layer completes this header.)
#include <string>

#include "core/types.h"

namespace modText {

// Loads Gfx/Font0..2.bmp with black as the key; logs each font.
void Load_Fonts();
// Draws text at (x, y) into the back buffer; one cell per character, glyphs unscaled.
void Draw_Text(i16 x, i16 y, u8 font, const std::string& text);

}  // namespace modText
