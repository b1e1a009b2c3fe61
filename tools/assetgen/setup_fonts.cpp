// The setup dialog's two type faces, Gfx/Setup.ttf (text) and Gfx/SetupTitle.ttf (heading),
// taken from DejaVu (free to redistribute) so the game itself reads no system font.
#include <cstdio>

#include "assetgen.h"

namespace assetgen {
namespace {

bool Read_All(const std::string& path, std::string& out) {
  std::FILE* f = std::fopen(path.c_str(), "rb");
  if (f == nullptr) return false;
  char buffer[1 << 16];
  size_t n = 0;
  while ((n = std::fread(buffer, 1, sizeof buffer, f)) > 0) out.append(buffer, n);
  std::fclose(f);
  return !out.empty();
}

bool Write_Setup_Fonts(const std::string& game_dir) {
  const std::string dir = QUORVAL_FONT_DIR;
  std::string text, title;
  return Read_All(dir + "/DejaVuSans.ttf", text) && Read_All(dir + "/DejaVuSans-Bold.ttf", title) &&
         Write_File(game_dir + "/Gfx/Setup.ttf", text) && Write_File(game_dir + "/Gfx/SetupTitle.ttf", title);
}

const bool registered = Register("setup fonts", Write_Setup_Fonts);
}  // namespace
}  // namespace assetgen
