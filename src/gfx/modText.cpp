// Bitmap text: fixed cells cut from three glyph rows per font.
#include "gfx/modText.h"

#include <algorithm>
#include <array>

#include "core/log.h"
#include "platform/platform.h"

namespace modText {

namespace {
std::array<CellSize, 3> FontCell;  // set by Load_Fonts
// Font0..2.bmp with black as the key; kept for the whole run.
std::array<mod3Denhance::Surface, 3> Fonts;
const mod3Denhance::Surface kNoFont;
}  // namespace

CellSize Cell(u8 font) { return font < FontCell.size() ? FontCell[font] : CellSize{}; }
const mod3Denhance::Surface& Font(u8 font) { return font < Fonts.size() ? Fonts[font] : kNoFont; }

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

mod3Denhance::Surface Tinted_Font(u8 font, u32 rgb) {
  if (font > 2 || !Fonts[font]) return nullptr;
  const platform::Image& src = *Fonts[font];
  mod3Denhance::Surface copy = platform::Image::Create(src.Width(), src.Height(), src.Format());
  if (!copy) return nullptr;
  const std::optional<uint32_t> key = src.Color_Key();
  if (key) copy->Set_Color_Key(*key);
  const auto is_key = [&](uint32_t argb) { return key && (argb & 0xFFFFFFu) == (*key & 0xFFFFFFu); };
  for (int y = 0; y < src.Height(); ++y)
    for (int x = 0; x < src.Width(); ++x) {
      const uint32_t argb = src.Pixel(x, y);
      if (is_key(argb)) {
        copy->Set_Pixel(x, y, argb);
        continue;
      }
      // Brightness of the glyph pixel carries the anti-aliased edge into the new colour.
      const uint32_t level = std::max({(argb >> 16) & 0xFF, (argb >> 8) & 0xFF, argb & 0xFF});
      auto channel = [&](int shift) { return (((rgb >> shift) & 0xFF) * level / 255) << shift; };
      const uint32_t tinted = 0xFF000000u | channel(16) | channel(8) | channel(0);
      copy->Set_Pixel(x, y, tinted);
      // A tinted pixel that falls on the key as stored stays one shade off it, so it still shows.
      if (is_key(copy->Pixel(x, y))) copy->Set_Pixel(x, y, tinted | 0x010101u);
    }
  return copy;
}

void Draw_Text(i16 x, i16 y, u8 font, const std::string& text) {
  if (font > 2) return;
  Draw_Text_With(Fonts[font], x, y, font, text);
}

void Draw_Text_With(const mod3Denhance::Surface& glyphs, i16 x, i16 y, u8 font, const std::string& text) {
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
    mod3Denhance::Blit_Clipped(mod3Denhance::BackBuffer, glyphs, r, cx, cy, 1);
  }
}

}  // namespace modText
