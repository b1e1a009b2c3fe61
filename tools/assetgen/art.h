#pragma once
// The one drawing toolkit every picture is made with: the game's palette, hashed noise,
// gradients, panels, anti-aliased shapes, glows, the screen backdrop and DejaVu text
// rasterised with FreeType. Everything is deterministic: the same bytes every run.
#include <cstdint>
#include <string>
#include <vector>

#include "assetgen.h"

namespace art {

using assetgen::Picture;

// The front-end palette: dark blue steel with cyan and orange accents.
inline constexpr uint32_t kNight = 0xFF060B18u, kDeep = 0xFF0C1630u, kSteel = 0xFF2A3A52u, kSteelLight = 0xFF6E84A0u,
                          kCyan = 0xFF38D8F0u, kCyanDim = 0xFF1A7890u, kOrange = 0xFFF08A1Cu, kAmber = 0xFFFFC050u,
                          kIce = 0xFFE8F4FFu, kSlot = 0xFF101C34u;

// ---- Colour ----
uint32_t Mix(uint32_t a, uint32_t b, double t);
// Never pure black (the screens key black out of some pictures).
uint32_t Not_Black(uint32_t c);

// Unrounded colour (0..255 a channel) for pictures shaded pixel by pixel.
struct Rgb {
  double r, g, b;
};
Rgb Mix(Rgb a, Rgb b, double t);
Rgb Scale(Rgb a, double k);
uint32_t Pack(Rgb c, double alpha = 1.0);
Rgb Unpack(uint32_t c);
// Smoothstep from e0 to e1.
double Smooth(double e0, double e1, double x);

// ---- Noise ----
// Hashed noise in [0, 1) for a lattice point.
double Noise(int x, int y, uint32_t seed);
// Smooth value noise in [0, 1) between lattice points; the lattice repeats every wrap_x
// (wrap_y) points, 0 for never.
double Value_Noise(double fx, double fy, int wrap_x, int wrap_y, uint32_t seed);
// Octaves of value noise at (x, y) of a width x height area, in [0, 1): octave o has
// base_cells << o cells across, wrapping across the width, and as many square cells down
// as fit, wrapping down only when wrap_down (otherwise the noise runs on below).
double Fbm(double x, double y, double width, double height, int base_cells, int octaves, bool wrap_down, uint32_t seed);

// ---- Fills ----
// Blends colour over the pixel with coverage 0..1; outside the picture does nothing.
void Blend(Picture& p, int x, int y, uint32_t colour, double coverage);
void Fill(Picture& p, int left, int top, int right, int bottom, uint32_t colour);
// A one-pixel frame just inside the rectangle.
void Frame(Picture& p, int left, int top, int right, int bottom, uint32_t colour);
// Vertical gradient over rows [top, bottom) of the whole width.
void Vertical_Gradient(Picture& p, int top, int bottom, uint32_t from, uint32_t to);
// A steel panel: darkened fill, light top bevel, accent frame and corner ticks.
void Panel(Picture& p, int left, int top, int right, int bottom, uint32_t accent);
// Faint stars over rows [0, bottom): a `chance` of the pixels, opacity faintest plus up to spread.
void Stars(Picture& p, int bottom, uint32_t seed, double chance, double faintest, double spread);
// The backdrop of the ship selection and hi-score screens: night gradient with grain and a
// dim perspective floor grid.
void Backdrop(Picture& p, uint32_t seed);

// ---- Shapes ----
struct Point {
  double x, y;
};
// Filled polygon, 4 x 4 supersampled edges.
void Polygon(Picture& p, const std::vector<Point>& pts, uint32_t colour, double opacity = 1.0);
// A line of the given width (a thin quad).
void Line(Picture& p, Point a, Point b, double width, uint32_t colour, double opacity = 1.0);
// A soft round glow added to the picture (brightens toward colour).
void Glow(Picture& p, double cx, double cy, double radius, uint32_t colour, double strength);
// A side-on-three-quarter hover ship: wedge hull, canopy, fins, cyan engine glow.
// (cx, cy) the hull's centre, scale 1 is about 200 pixels long; tilt turns it clockwise
// (radians), nose up for a climb.
void Hover_Ship(Picture& p, double cx, double cy, double scale, uint32_t hull, uint32_t stripe, double tilt = 0);

// ---- Text ----
enum class Align { Left, Centre, Right };
struct TextStyle {
  const char* face = "DejaVuSans-Bold.ttf";
  int pixel_size = 16;
  uint32_t top = kIce, bottom = kIce;  // vertical gradient over the capitals
  Align align = Align::Left;
  int tracking = 0;  // extra pixels between letters
  int shadow = 0;    // offset of a dark drop shadow, 0 for none
};
// Text whose capitals start at row `top` (DejaVu capitals are about 0.73 x pixel_size
// tall), left-aligned, centred or right-aligned on x.
// False when the face cannot be opened.
bool Text(Picture& p, int x, int top, const std::string& text, const TextStyle& style);
// A screen's title: the text centred across the picture, capitals from row `top`, over a
// two-pixel rule from rows rule_top, reaching rule_half pixels either side of the centre.
bool Heading(Picture& p, int top, const std::string& text, TextStyle style, int rule_top, int rule_half,
             uint32_t rule_colour);

}  // namespace art
