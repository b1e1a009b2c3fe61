#pragma once
// Drawing helpers for the ship selection and hi-score pictures: the game's palette (dark
// blue steel, cyan and orange accents), panels, anti-aliased shapes and DejaVu text.
#include <cstdint>
#include <string>
#include <vector>

#include "assetgen.h"

namespace metaart {

using assetgen::Picture;

inline constexpr uint32_t kNight = 0xFF060B18u, kDeep = 0xFF0C1630u, kSteel = 0xFF2A3A52u, kSteelLight = 0xFF6E84A0u,
                          kCyan = 0xFF38D8F0u, kCyanDim = 0xFF1A7890u, kOrange = 0xFFF08A1Cu, kAmber = 0xFFFFC050u,
                          kIce = 0xFFE8F4FFu, kSlot = 0xFF101C34u;

uint32_t Mix(uint32_t a, uint32_t b, double t);
// Blends colour over the pixel with coverage 0..1; outside the picture does nothing.
void Blend(Picture& p, int x, int y, uint32_t colour, double coverage);
void Fill(Picture& p, int left, int top, int right, int bottom, uint32_t colour);
// A one-pixel frame just inside the rectangle.
void Frame(Picture& p, int left, int top, int right, int bottom, uint32_t colour);
// The game's screen backdrop: night gradient, faint grid, a cyan horizon glow.
void Backdrop(Picture& p, uint32_t seed);
// A steel panel: darkened fill, light top bevel, accent corner ticks.
void Panel(Picture& p, int left, int top, int right, int bottom, uint32_t accent);
// Never pure black (the screens key black out of some pictures).
uint32_t Not_Black(uint32_t c);

struct Point {
  double x, y;
};
// Filled polygon, 4 x 4 supersampled.
void Polygon(Picture& p, const std::vector<Point>& pts, uint32_t colour, double opacity = 1.0);
// Brightens toward colour in a soft disc.
void Glow(Picture& p, double cx, double cy, double radius, uint32_t colour, double strength);

enum class Align { Left, Centre, Right };
struct TextStyle {
  const char* face = "DejaVuSans-Bold.ttf";
  int pixel_size = 14;
  uint32_t top = kIce, bottom = kIce;  // vertical gradient over the capitals
  Align align = Align::Left;
  int tracking = 0;
  bool shadow = false;
};
// Text whose capitals start at row `top` (they are about 0.73 x pixel_size tall).
// False when the face cannot be opened.
bool Text(Picture& p, int x, int top, const std::string& text, const TextStyle& style);

}  // namespace metaart
