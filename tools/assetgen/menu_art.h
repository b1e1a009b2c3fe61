#pragma once
// Drawing helpers for the front-end pictures (intro, main menu, options): one palette,
// anti-aliased polygons, panels and DejaVu text rasterised with FreeType.
#include <cstdint>
#include <string>
#include <vector>

#include "assetgen.h"

namespace menuart {

using assetgen::Picture;

// The front-end palette: dark blue steel with cyan and orange accents.
inline constexpr uint32_t kNight = 0xFF060B18u, kDeep = 0xFF0C1630u, kSteel = 0xFF2A3A52u, kSteelLight = 0xFF6E84A0u,
                          kCyan = 0xFF38D8F0u, kCyanDim = 0xFF1A7890u, kOrange = 0xFFF08A1Cu, kAmber = 0xFFFFC050u,
                          kIce = 0xFFE8F4FFu, kSlot = 0xFF101C34u;

uint32_t Mix(uint32_t a, uint32_t b, double t);
// Blends colour over the pixel with coverage 0..1 (alpha of colour ignored).
void Blend(Picture& p, int x, int y, uint32_t colour, double coverage);
// Hashed noise in [0, 1): the same bytes every run.
double Noise(int x, int y, uint32_t seed);

// Vertical gradient over rows [top, bottom) of the whole width.
void Vertical_Gradient(Picture& p, int top, int bottom, uint32_t from, uint32_t to);
void Fill(Picture& p, int left, int top, int right, int bottom, uint32_t colour);
// A one-pixel frame just inside the rectangle.
void Frame(Picture& p, int left, int top, int right, int bottom, uint32_t colour);
// A steel panel: dark translucent-looking fill, bevelled light top edge, accent frame.
void Panel(Picture& p, int left, int top, int right, int bottom, uint32_t accent);

struct Point {
  double x, y;
};
// Filled polygon, 4 x 4 supersampled edges.
void Polygon(Picture& p, const std::vector<Point>& pts, uint32_t colour, double opacity = 1.0);
// A line of the given width (a thin quad).
void Line(Picture& p, Point a, Point b, double width, uint32_t colour, double opacity = 1.0);
// A soft round glow added to the picture (brightens toward colour).
void Glow(Picture& p, double cx, double cy, double radius, uint32_t colour, double strength);

enum class Align { Left, Centre, Right };
struct TextStyle {
  const char* face = "DejaVuSans-Bold.ttf";
  int pixel_size = 16;
  uint32_t top = kIce, bottom = kIce;  // vertical gradient over the text's height
  Align align = Align::Left;
  int tracking = 0;  // extra pixels between letters
  int shadow = 0;    // offset of a dark drop shadow, 0 for none
};
// Draws text with its top-left (or top-centre / top-right) at (x, top); the glyph box of
// capitals spans about pixel_size * 0.73 rows below top. False when the face is missing.
bool Text(Picture& p, int x, int top, const std::string& text, const TextStyle& style);
// Width in pixels of the text in the style.
int Text_Width(const std::string& text, const TextStyle& style);

// A side-on-three-quarter hover ship: wedge hull, canopy, fins, cyan engine glow.
// (cx, cy) the hull's centre, scale 1 is about 200 pixels long.
void Hover_Ship(Picture& p, double cx, double cy, double scale, uint32_t hull, uint32_t stripe);

}  // namespace menuart
