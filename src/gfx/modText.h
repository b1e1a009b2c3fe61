#pragma once
// The three bitmap fonts and text drawing.
#include <string>

#include "core/types.h"
#include "gfx/mod3Denhance.h"

namespace modText {

struct CellSize {
  u8 width = 0, height = 0;
};
// Font 0..2's cell size and glyph sheet (Font0..2.bmp, black key) once Load_Fonts has run:
// cells of 20 x 30, 20 x 30, 12 x 15. Other fonts have neither.
CellSize Cell(u8 font);
const mod3Denhance::Surface& Font(u8 font);

// Loads Gfx/Font0..2.bmp (own size, black key), logging each font. False, with the path
// of the first font that could not be read in missing, when one is absent or unreadable.
bool Load_Fonts(std::string& missing);
// Releases the three font surfaces (shutdown).
void Release_Fonts();
// Draws text at (x, y) into the back buffer: one cell per character, glyphs unscaled;
// characters without a glyph leave their cell empty. Fonts outside 0..2 draw nothing.
void Draw_Text(i16 x, i16 y, u8 font, const std::string& text);
// A copy of a loaded font's glyphs in another colour (0xRRGGBB, scaled by each glyph
// pixel's brightness), keyed as the font is; empty when the font is not loaded.
mod3Denhance::Surface Tinted_Font(u8 font, u32 rgb);
// Draw_Text with the glyphs taken from glyphs (a Tinted_Font of font) instead of the font.
void Draw_Text_With(const mod3Denhance::Surface& glyphs, i16 x, i16 y, u8 font, const std::string& text);

}  // namespace modText
