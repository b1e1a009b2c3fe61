// The three bitmap fonts: glyphs rasterised from DejaVu into fixed cells, three rows
// ("A".."Z", "a".."{", "&"..">"), black where nothing is drawn (the game keys black out).
#include <ft2build.h>
#include FT_FREETYPE_H

#include <algorithm>
#include <cstdio>
#include <string>

#include "art.h"

namespace assetgen {
namespace {

struct FontFace {
  const char* file_name;  // written into Gfx/
  const char* face;       // DejaVu file
  int cell_w, cell_h;
  uint32_t top, bottom;  // glyph colour at the top and bottom of the cell (vertical gradient)
};

// Two large faces (plain and highlighted) and one small one, in the game's cool palette.
const FontFace kFonts[] = {
    {"Font0.bmp", "DejaVuSansMono-Bold.ttf", 20, 30, 0xFFFFFFFFu, 0xFF9CC8F0u},
    {"Font1.bmp", "DejaVuSansMono-BoldOblique.ttf", 20, 30, 0xFFFFE070u, 0xFFF07818u},
    {"Font2.bmp", "DejaVuSansMono-Bold.ttf", 12, 15, 0xFFF0F4F8u, 0xFFB8C8D8u},
};

struct Row {
  int first, last;
};
const Row kRows[3] = {{65, 90}, {97, 123}, {38, 62}};

uint32_t Scale(uint32_t c, int coverage) {
  uint32_t out = 0xFF000000u;
  for (int shift = 0; shift < 24; shift += 8) out |= (((c >> shift) & 0xFF) * uint32_t(coverage) / 255) << shift;
  return out;
}

// The largest pixel size at which every glyph fits its cell on one shared baseline.
bool Fit_Size(FT_Face face, int cell_w, int cell_h, int& size, int& baseline) {
  for (size = cell_h; size > 4; --size) {
    if (FT_Set_Pixel_Sizes(face, 0, FT_UInt(size)) != 0) return false;
    int ascent = 0, descent = 0, widest = 0;
    for (const Row& row : kRows) {
      for (int c = row.first; c <= row.last; ++c) {
        if (FT_Load_Char(face, FT_ULong(c), FT_LOAD_RENDER) != 0) return false;
        const FT_GlyphSlot g = face->glyph;
        ascent = std::max(ascent, g->bitmap_top);
        descent = std::max(descent, int(g->bitmap.rows) - g->bitmap_top);
        widest = std::max(widest, int(g->bitmap.width));
      }
    }
    // One clear pixel on each side keeps neighbouring cells from touching.
    if (widest <= cell_w - 2 && ascent + descent <= cell_h - 1) {
      baseline = ascent + (cell_h - ascent - descent) / 2;
      return true;
    }
  }
  return false;
}

bool Make_Font(FT_Library lib, const std::string& game_dir, const FontFace& font) {
  FT_Face face = nullptr;
  const std::string path = std::string(QUORVAL_FONT_DIR) + "/" + font.face;
  if (FT_New_Face(lib, path.c_str(), 0, &face) != 0) {
    std::fprintf(stderr, "assetgen: cannot open %s\n", path.c_str());
    return false;
  }
  int size = 0, baseline = 0;
  bool ok = Fit_Size(face, font.cell_w, font.cell_h, size, baseline);
  Picture pic(font.cell_w * 27, font.cell_h * 3, 0xFF000000u);
  for (int r = 0; ok && r < 3; ++r) {
    for (int c = kRows[r].first; c <= kRows[r].last; ++c) {
      if (FT_Load_Char(face, FT_ULong(c), FT_LOAD_RENDER) != 0) {
        ok = false;
        break;
      }
      const FT_GlyphSlot g = face->glyph;
      const int cell_x = (c - kRows[r].first) * font.cell_w, cell_y = r * font.cell_h;
      const int gx = cell_x + (font.cell_w - int(g->bitmap.width)) / 2;
      const int gy = cell_y + baseline - g->bitmap_top;
      for (int y = 0; y < int(g->bitmap.rows); ++y) {
        for (int x = 0; x < int(g->bitmap.width); ++x) {
          const int coverage = g->bitmap.buffer[y * g->bitmap.pitch + x];
          // Faint edge pixels would show as a dark fringe once black is keyed out.
          if (coverage < 48) continue;
          const double t = double(gy + y - cell_y) / (font.cell_h - 1);
          pic.at(gx + x, gy + y) = Scale(art::Mix(font.top, font.bottom, t), std::min(255, coverage + 32));
        }
      }
    }
  }
  FT_Done_Face(face);
  return ok && Write_BMP(game_dir + "/Gfx/" + font.file_name, pic);
}

bool Generate_Fonts(const std::string& game_dir) {
  FT_Library lib = nullptr;
  if (FT_Init_FreeType(&lib) != 0) return false;
  bool ok = true;
  for (const FontFace& font : kFonts) ok = Make_Font(lib, game_dir, font) && ok;
  FT_Done_FreeType(lib);
  return ok;
}

const bool registered = Register("fonts", Generate_Fonts);
}  // namespace
}  // namespace assetgen
