// The menu pointer: an 11 x 19 arrow on black (black is keyed out). The outline is a
// dark blue rather than black so that it survives the key.
#include "assetgen.h"

namespace assetgen {
namespace {

const char* const kArrow[19] = {
    "O..........", "OO.........", "OWO........", "OWWO.......", "OWWWO......", "OWWWWO.....", "OWWWWWO....",
    "OWWWWWWO...", "OWWWWWWWO..", "OWWWWWWWWO.", "OWWWWWWWWWO", "OWWWWWWOOOO", "OWWWOWWO...", "OWWOOWWO...",
    "OWO..OWWO..", "OO...OWWO..", "O.....OWWO.", "......OWWO.", ".......OO..",
};

bool Generate_Cursor(const std::string& game_dir) {
  Picture pic(11, 19, 0xFF000000u);
  for (int y = 0; y < 19; ++y)
    for (int x = 0; x < 11; ++x) {
      const char c = kArrow[y][x];
      if (c == 'O') pic.at(x, y) = 0xFF18203Au;
      if (c == 'W') pic.at(x, y) = 0xFFF4F8FFu;
    }
  return Write_BMP(game_dir + "/Gfx/Cursor.bmp", pic);
}

const bool registered = Register("cursor", Generate_Cursor);
}  // namespace
}  // namespace assetgen
