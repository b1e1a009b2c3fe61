// Bitmap text: fixed cells cut from three glyph rows per font.
#include "gfx/modText.h"

#include "core/log.h"
#include "platform/platform.h"

namespace modText {

std::array<CellSize, 3> FontCell;
std::array<mod3Denhance::Surface, 3> Fonts;

bool Load_Fonts(std::string& missing) {
  FontCell = {CellSize{20, 30}, CellSize{20, 30}, CellSize{12, 15}};
  for (int i = 0; i < 3; ++i) {
    const std::string name = "Font" + std::to_string(i) + ".bmp";
    modMain::Write_Log("Loading " + name + "...");
    const std::string path = platform::Game_Path("\\Gfx\\" + name);
    if (!mod3Denhance::Create_Surface(Fonts[size_t(i)], 0, 0, path, mod3Denhance::kKeyBlack, kFalse)) {
      missing = path;
      modMain::Write_Log("Font file " + path + " could not be loaded");
      return false;
    }
    modMain::Write_Log("...Done");
  }
  return true;
}

void Release_Fonts() {
  for (auto& font : Fonts) font.reset();
}

void Draw_Text(i16 x, i16 y, u8 font, const std::string& text) {
  if (font > 2) return;
  const int w = FontCell[font].width, h = FontCell[font].height;
  for (size_t i = 0; i < text.size(); ++i) {
    const int c = static_cast<unsigned char>(text[i]);
    Rect r;
    if (c >= 65 && c <= 90) {
      r = Rect{(c - 65) * w, 0, 0, 0};
    } else if (c >= 97 && c <= 123) {
      r = Rect{(c - 97) * w, h, 0, 0};
    } else if (c >= 38 && c <= 62) {
      r = Rect{(c - 38) * w, 2 * h, 0, 0};
    } else {
      continue;  // no glyph, but the cell is still taken
    }
    r.right = r.left + w;
    r.bottom = r.top + h;
    i16 cx = i16(x + w * int(i)), cy = y;
    mod3Denhance::Blit_Clipped(mod3Denhance::BackBuffer, Fonts[font], r, cx, cy, 1);
  }
}

}  // namespace modText
