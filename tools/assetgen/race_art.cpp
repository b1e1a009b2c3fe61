// The race screen's pictures: start lights, mini-map markers, the HUD panels, the engine
// flame and the sky. One look with the rest of the game: deep navy panels with steel-blue
// bevels and amber accents, a dusk sky over blue hills. Noise is hashed, so every run
// writes the same bytes.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>

#include "art.h"

namespace assetgen {
namespace {

using namespace art;

// Panels never use pure black: black is their colour key.
uint32_t Pack_Opaque(Rgb c) { return Pack({std::max(c.r, 2.0), std::max(c.g, 2.0), std::max(c.b, 2.0)}); }

// Octaves of noise over u in [0, 1) (wrapping) and v; about 0..1.
double Fbm(double u, double v, int base_cells, int octaves, uint32_t seed) {
  return art::Fbm(u, v, 1, 1, base_cells, octaves, false, seed);
}

constexpr Rgb kHudNavy{12, 22, 44};
constexpr Rgb kHudNavyLight{28, 48, 86};
constexpr Rgb kHudSteel{96, 150, 210};
constexpr Rgb kHudAmber{240, 168, 40};

// Distance from (x, y) to a rounded rectangle (negative inside).
double Rounded_Box(double x, double y, double x0, double y0, double x1, double y1, double radius) {
  const double cx = (x0 + x1) / 2, cy = (y0 + y1) / 2;
  const double hx = (x1 - x0) / 2 - radius, hy = (y1 - y0) / 2 - radius;
  const double qx = std::fabs(x - cx) - hx, qy = std::fabs(y - cy) - hy;
  const double ox = std::max(qx, 0.0), oy = std::max(qy, 0.0);
  return std::sqrt(ox * ox + oy * oy) + std::min(std::max(qx, qy), 0.0) - radius;
}

// A HUD panel into the box: navy glass darkening downward, a steel bevel, an amber rule
// along the bottom. Outside the box stays black (keyed out); edges are hard so no dark
// fringe survives the key.
void Panel(Picture& p, int x0, int y0, int x1, int y1, double radius) {
  for (int y = y0; y < y1; ++y)
    for (int x = x0; x < x1; ++x) {
      const double d = Rounded_Box(x + 0.5, y + 0.5, x0, y0, x1, y1, radius);
      if (d > 0) continue;
      const double v = (y + 0.5 - y0) / (y1 - y0);
      Rgb c = Mix(kHudNavyLight, kHudNavy, Smooth(0.0, 0.7, v));
      // A faint sheen across the upper third.
      c = Mix(c, kHudSteel, 0.10 * (1 - Smooth(0.0, 0.35, v)));
      // Fine scan lines read as a display.
      if (y % 3 == 0) c = Scale(c, 0.9);
      if (d > -1.5)
        c = kHudSteel;
      else if (d > -3.0)
        c = Scale(kHudSteel, 0.45);
      if (y >= y1 - 4 && y < y1 - 2 && d < -3.0) c = kHudAmber;
      p.at(x, y) = Pack_Opaque(c);
    }
}

// Four frames of a light gantry, 53 wide each: one, two, three red lamps, then all green.
Picture Lights() {
  constexpr uint32_t kMagenta = 0xFFFF00FFu;
  Picture p(212, 113, kMagenta);
  for (int frame = 0; frame < 4; ++frame) {
    const int fx = frame * 53;
    for (int y = 0; y < 113; ++y)
      for (int x = 0; x < 53; ++x) {
        const double px = x + 0.5, py = y + 0.5;
        const double housing = Rounded_Box(px, py, 4, 2, 49, 111, 9);
        if (housing > 0) continue;
        Rgb c = Mix(Rgb{58, 62, 72}, Rgb{24, 26, 32}, py / 113);
        if (housing > -2) c = Rgb{120, 128, 144};
        for (int lamp = 0; lamp < 3; ++lamp) {
          const double cy = 20 + lamp * 36.5, r = std::hypot(px - 26.5, py - cy);
          if (r > 16) continue;
          const bool lit = frame == 3 || lamp <= frame;
          const Rgb hue = frame == 3 ? Rgb{40, 235, 90} : Rgb{245, 40, 32};
          const Rgb off = frame == 3 ? Rgb{16, 50, 24} : Rgb{60, 14, 14};
          if (r > 14) {
            c = Rgb{16, 16, 20};  // the lamp's hood
          } else if (lit) {
            // Hot centre, saturated rim, a small highlight up and left.
            c = Mix(Rgb{255, 250, 230}, hue, Smooth(0, 11, r));
            const double glint = std::hypot(px - 21.5, py - cy + 5);
            c = Mix(c, Rgb{255, 255, 255}, 0.7 * (1 - Smooth(0, 3.5, glint)));
          } else {
            c = Mix(Scale(off, 1.5), off, Smooth(0, 14, r));
          }
        }
        p.at(fx + x, y) = Pack(c);
      }
  }
  return p;
}

// A 10 x 10 disc marker with a light rim, centred in its cell; black around it is keyed.
void Marker(Picture& p, int top, Rgb fill, Rgb rim) {
  for (int y = 0; y < 10; ++y)
    for (int x = 0; x < 10; ++x) {
      const double r = std::hypot(x + 0.5 - 5, y + 0.5 - 5);
      if (r > 4.9) continue;
      const Rgb c = r > 3.6 ? rim : Mix(Rgb{255, 255, 255}, fill, Smooth(0, 2.5, r));
      p.at(x, top + y) = Pack_Opaque(c);
    }
}

Picture MiniMap_Ships() {
  Picture p(10, 20);
  Marker(p, 0, Rgb{230, 70, 40}, Rgb{120, 24, 16});    // computer racers: red
  Marker(p, 10, Rgb{255, 214, 40}, Rgb{20, 60, 160});  // the player: amber with a blue ring
  return p;
}

// The ghost's marker: pale cyan with a dark ring, unlike any racer's.
Picture MiniMap_Ghost() {
  Picture p(10, 10);
  Marker(p, 0, Rgb{150, 235, 255}, Rgb{20, 70, 90});
  return p;
}

// The race-time bar (0, 0)-(234, 33) and the lap/position panel (0, 33)-(164, 157).
Picture Stats() {
  Picture p(234, 157);
  Panel(p, 2, 0, 232, 31, 7);
  // Lap and position sit at 15..45 and 48..78 of the panel (it is shown 5 pixels down).
  Panel(p, 2, 33 + 6, 160, 33 + 86, 9);
  // A divider between the two lines.
  for (int x = 12; x < 150; ++x) p.at(x, 33 + 47) = Pack_Opaque(Scale(kHudSteel, 0.55));
  return p;
}

// The flame seen from behind: a white-hot core low in the middle, fading through yellow
// and orange to a transparent rim; alpha carries the shape.
Picture Thrust() {
  Picture p(64, 32);
  for (int y = 0; y < 32; ++y)
    for (int x = 0; x < 64; ++x) {
      const double u = (x + 0.5) / 64 - 0.5, v = (y + 0.5) / 32 - 0.55;
      const double r = std::hypot(u / 0.5, v / 0.45);
      const double flicker = 0.85 + 0.15 * Fbm((x + 0.5) / 64, (y + 0.5) / 32, 4, 2, 31);
      const double heat = std::clamp((1 - r) * flicker * 1.4, 0.0, 1.0);
      Rgb c = heat > 0.6 ? Mix(Rgb{255, 220, 90}, Rgb{255, 255, 245}, Smooth(0.6, 0.95, heat))
                         : Mix(Rgb{220, 60, 20}, Rgb{255, 220, 90}, Smooth(0.1, 0.6, heat));
      // A blue edge where the exhaust meets the air.
      c = Mix(c, Rgb{90, 150, 255}, 0.35 * (1 - Smooth(0.0, 0.25, heat)) * Smooth(0.0, 0.05, heat));
      p.at(x, y) = Pack(c, Smooth(0.0, 0.55, heat));
    }
  return p;
}

// Dusk sky: deep blue overhead, a warm glow at the horizon, soft clouds, and two ranges
// of blue hills. The chase camera puts the horizon between a tenth and two fifths of the
// way down the screen, so the hills stand there. Everything wraps left to right.
Picture Sky() {
  constexpr int kSide = 256;
  Picture p(kSide, kSide);
  constexpr double kHorizon = 0.31;  // the foot of the far hills
  for (int y = 0; y < kSide; ++y)
    for (int x = 0; x < kSide; ++x) {
      const double u = (x + 0.5) / kSide, v = (y + 0.5) / kSide;
      Rgb c = Mix(Rgb{18, 36, 98}, Rgb{64, 112, 196}, Smooth(0.0, 0.22, v));
      c = Mix(c, Rgb{252, 180, 112}, Smooth(0.16, kHorizon, v) * 0.9);
      const double cloud = Fbm(u, v * 4.0, 4, 4, 7);
      const double band = Smooth(0.0, 0.06, v) * (1 - Smooth(0.2, 0.3, v));
      const double cover = Smooth(0.5, 0.72, cloud) * band;
      const Rgb cloud_colour = Mix(Rgb{240, 236, 246}, Rgb{252, 196, 160}, Smooth(0.08, 0.26, v));
      c = Mix(c, Mix(cloud_colour, Scale(cloud_colour, 0.82), Smooth(0.65, 0.9, cloud)), cover * 0.9);
      // Far hills, then nearer darker ones, then a hazy valley floor down to the bottom.
      const double far = kHorizon - 0.13 * Fbm(u, 0.5, 3, 4, 17);
      const double near = kHorizon + 0.03 - 0.09 * Fbm(u, 1.5, 6, 4, 19);
      if (v > far) c = Mix(Rgb{110, 118, 160}, Rgb{78, 90, 134}, Smooth(far, far + 0.12, v));
      if (v > near) c = Mix(Rgb{52, 70, 92}, Rgb{36, 62, 52}, Smooth(near, near + 0.25, v));
      p.at(x, y) = Pack(c);
    }
  return p;
}

bool Generate_Race_Art(const std::string& game_dir) {
  return Write_BMP(game_dir + "/Gfx/Lights.bmp", Lights()) &&
         Write_BMP(game_dir + "/Gfx/MiniMapShips.bmp", MiniMap_Ships()) &&
         Write_BMP(game_dir + "/Gfx/MiniMapGhost.bmp", MiniMap_Ghost()) &&
         Write_BMP(game_dir + "/Gfx/Stats1.bmp", Stats()) &&
         Write_DDS4444(game_dir + "/Textures/CarThrust.dds", Thrust()) &&
         Write_BMP(game_dir + "/Textures/sky1.bmp", Sky());
}

const bool registered = Register("race_art", Generate_Race_Art);

}  // namespace
}  // namespace assetgen
