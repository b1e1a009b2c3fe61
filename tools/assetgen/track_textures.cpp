// Track textures, one look: dark blue-grey asphalt with ice-white edge lines and amber lane
// dashes, red and white kerbs, concrete barriers with amber chevrons, tinted glass panels
// in steel frames, and meadow grass. Noise is hashed, so every run writes the same bytes.
#include "track_textures.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "art.h"
#include "track_params.h"

namespace trackgen {
namespace {

using assetgen::Picture;

using art::Mix;
using art::Noise;
using art::Pack;
using art::Rgb;
using art::Scale;

// Four octaves, -1..1 roughly, tiling over the w x h picture.
double Fbm(int x, int y, int w, int h, int base_cells, uint32_t seed) {
  return art::Fbm(x, y, w, h, base_cells, 4, true, seed) * 2 - 1;
}

constexpr Rgb kAsphalt{54, 58, 68};
constexpr Rgb kEdgeLine{215, 235, 245};
constexpr Rgb kAmber{238, 168, 42};
constexpr Rgb kKerbRed{196, 36, 40};
constexpr Rgb kKerbWhite{226, 226, 222};

// Pixels per world unit across the 50-unit road on a 256-pixel texture.
constexpr double kAcross = 256.0 / (2 * kHalfWidth);
// Pixels per world unit along the road (256 pixels per tile).
constexpr double kAlong = 256.0 / kRoadTile;

// Painted markings look worn: paint coverage drops a little in noisy patches.
void Paint(Picture& p, int x, int y, Rgb paint, double coverage, uint32_t seed) {
  const double wear = 0.82 + 0.18 * Noise(x, y, seed);
  p.at(x, y) = Pack(Mix(art::Unpack(p.at(x, y)), paint, std::clamp(coverage * wear, 0.0, 1.0)));
}

// Asphalt of height h, tiling in both directions (h a multiple of 256 keeps the lines' phase).
Picture Asphalt(int h) {
  Picture p(256, h);
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < 256; ++x) {
      const double n = Fbm(x, y % 256, 256, 256, 8, 11);
      const double grit = Noise(x, y % 256, 12);
      double k = 1.0 + 0.10 * n + (grit > 0.97 ? 0.28 : grit < 0.04 ? -0.18 : 0.0);
      // The racing line in each lane is polished slightly darker by traffic.
      const double lane = std::fmod(x / kAcross, (2 * kHalfWidth) / 3) / ((2 * kHalfWidth) / 3);
      k -= 0.06 * std::exp(-std::pow((lane - 0.5) / 0.18, 2));
      p.at(x, y) = Pack(Scale(kAsphalt, k));
    }
  return p;
}

void Road_Markings(Picture& p, bool kerbs) {
  const int h = p.height;
  const double kerb_w = kerbs ? 2.5 : 0.0;  // world units of kerb at each edge
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < 256; ++x) {
      const double u = (x + 0.5) / kAcross;                 // units from the left edge
      const double edge = std::min(u, 2 * kHalfWidth - u);  // units from the nearer edge
      const double along = (y % 256 + 0.5) / kAlong;
      if (edge < kerb_w) {
        // Kerb blocks of 4.7 units, with a darker lip toward the road.
        const bool red = static_cast<int>(along / (kRoadTile / 16)) % 2 == 0;
        const double lip = edge > kerb_w - 0.35 ? 0.7 : 1.0;
        Paint(p, x, y, Scale(red ? kKerbRed : kKerbWhite, lip), 1.0, 21);
        continue;
      }
      // Solid edge line one unit wide, a unit in from the kerb or road edge.
      const double line_at = kerb_w + 1.0;
      if (edge >= line_at && edge < line_at + 1.0) Paint(p, x, y, kEdgeLine, 0.95, 22);
      // Two amber lane dividers, dashed: 12 units painted in every 37.5.
      for (double lane_line : {2 * kHalfWidth / 3, 4 * kHalfWidth / 3})
        if (std::fabs(u - lane_line) < 0.5 && std::fmod(along, kRoadTile / 2) < 12.0) Paint(p, x, y, kAmber, 0.9, 23);
    }
}

void Fill_Rect_Paint(Picture& p, double x0, double y0, double x1, double y1, Rgb c, uint32_t seed) {
  for (int y = std::max(0, static_cast<int>(y0)); y < std::min(p.height, static_cast<int>(std::ceil(y1))); ++y)
    for (int x = std::max(0, static_cast<int>(x0)); x < std::min(p.width, static_cast<int>(std::ceil(x1))); ++x)
      Paint(p, x, y, c, 0.95, seed);
}

}  // namespace

Picture Road_Picture(bool kerbs) {
  Picture p = Asphalt(256);
  Road_Markings(p, kerbs);
  return p;
}

// Blocks 0 and 1 (300 units) on one 256 x 1024 picture: the chequered start/finish band
// where the road begins, then the painted grid boxes where the racers are placed.
Picture Start_Picture() {
  Picture p = Asphalt(1024);
  Road_Markings(p, false);
  const double rows_per_unit = 1024.0 / (2 * kGridBlockLength);
  // Chequer: 16 squares across, two rows, 8 units deep.
  const int band = static_cast<int>(8 * rows_per_unit);
  for (int y = 0; y < band; ++y)
    for (int x = 0; x < 256; ++x) {
      const bool white = ((x / 16) + (y * 2 / band)) % 2 == 0;
      Paint(p, x, y, white ? Rgb{236, 236, 232} : Rgb{18, 18, 22}, 1.0, 31);
    }
  // Grid boxes: centre z of each slot as the racers' placement puts it, two columns at
  // 2.6 and -0.6 times the centre offset. Each box is a bracket open toward the front.
  struct Slot {
    double fz, fx;
    int block;
  };
  const Slot slots[7] = {{0.54, 1.3, 0}, {0.5, -0.3, 0},  {0.46, 1.3, 0}, {0.42, -0.3, 0},
                         {0.38, 1.3, 0}, {0.64, -0.3, 1}, {0.6, 1.3, 1}};
  const double left_x = kCentreX - kHalfWidth;
  for (const Slot& s : slots) {
    const double z = (s.block == 0 ? kGridBlockLength : 3 * kGridBlockLength) * s.fz;
    const double x = 2 * kCentreX * s.fx;
    const double col = (x - left_x) * kAcross, row = z * rows_per_unit;
    const double hw = 4.0 * kAcross, back = 5.0 * rows_per_unit, front = 4.5 * rows_per_unit;
    const double t = 0.6 * kAcross, tz = 0.8 * rows_per_unit;
    Fill_Rect_Paint(p, col - hw, row - back, col + hw, row - back + tz, kEdgeLine, 32);
    Fill_Rect_Paint(p, col - hw, row - back, col - hw + t, row + front, kEdgeLine, 33);
    Fill_Rect_Paint(p, col + hw - t, row - back, col + hw, row + front, kEdgeLine, 34);
  }
  return p;
}

Picture Grass_Picture() {
  Picture p(256, 256);
  const Rgb dark{46, 88, 36}, light{98, 142, 58}, dry{128, 132, 70};
  for (int y = 0; y < 256; ++y)
    for (int x = 0; x < 256; ++x) {
      const double broad = Fbm(x, y, 256, 256, 4, 41) * 0.5 + 0.5;
      const double patch = Fbm(x, y, 256, 256, 2, 42) * 0.5 + 0.5;
      const double blade = Noise(x, y, 43);
      Rgb c = Mix(dark, light, std::clamp(broad * 1.2 - 0.1, 0.0, 1.0));
      c = Mix(c, dry, std::clamp((patch - 0.62) * 2.5, 0.0, 0.6));
      c = Scale(c, 0.86 + 0.28 * blade);
      p.at(x, y) = Pack(c);
    }
  return p;
}

// 128 x 64 across 10 units of length and the full wall height; v = 0 at the top.
Picture Concrete_Wall_Picture() {
  Picture p(128, 64);
  const Rgb concrete{176, 176, 170};
  for (int y = 0; y < 64; ++y)
    for (int x = 0; x < 128; ++x) {
      const double n = Fbm(x, y, 128, 64, 8, 51);
      const double pit = Noise(x, y, 52);
      double k = 1.0 + 0.08 * n - (pit > 0.985 ? 0.25 : 0.0);
      if (y < 5) k += 0.12;                     // rounded cap catches the light
      if (y == 5) k -= 0.25;                    // its shadow line
      if (y > 50) k -= 0.22 * (y - 50) / 13.0;  // grime from the road spray
      if (x < 2) k -= 0.35;                     // panel joint
      Rgb c = Scale(concrete, k);
      if (y >= 22 && y < 40) {
        // Amber and black chevrons, slanted toward the direction of travel.
        const bool amber = ((x + (y - 22)) / 16) % 2 == 0;
        c = Scale(amber ? kAmber : Rgb{30, 30, 34}, 0.92 + 0.08 * n);
      }
      p.at(x, y) = Pack(c);
    }
  return p;
}

// Tinted glass between steel rails and posts; alpha carries the see-through panes.
Picture Glass_Wall_Picture() {
  Picture p(128, 64);
  const Rgb steel{150, 160, 178}, glass{120, 200, 250};
  for (int y = 0; y < 64; ++y)
    for (int x = 0; x < 128; ++x) {
      const bool rail = y < 6 || y >= 58 || (y >= 30 && y < 33);
      const bool post = x < 6;
      if (rail || post) {
        const double shade = rail ? (y < 3 || (y >= 58 && y < 60) ? 1.15 : 0.85) : (x < 2 ? 1.15 : 0.9);
        p.at(x, y) = Pack(Scale(steel, shade));
        continue;
      }
      // Two diagonal highlights per panel; the rest is lightly tinted.
      const double diag = std::fmod(x + 0.8 * y, 64.0);
      const double glint = diag < 5 ? 0.55 : diag > 11 && diag < 13 ? 0.45 : 0.0;
      const double alpha = 0.28 + glint;
      p.at(x, y) = Pack(Mix(glass, Rgb{240, 250, 255}, glint), alpha);
    }
  return p;
}

bool Write_Track_Textures(const std::string& game_dir) {
  const std::string dir = game_dir + "/Textures/";
  return assetgen::Write_BMP(dir + kTextureNames[kTexRoadStart], Start_Picture()) &&
         assetgen::Write_BMP(dir + kTextureNames[kTexRoad], Road_Picture(false)) &&
         assetgen::Write_BMP(dir + kTextureNames[kTexRoadKerb], Road_Picture(true)) &&
         assetgen::Write_BMP(dir + kTextureNames[kTexGrass], Grass_Picture()) &&
         assetgen::Write_BMP(dir + kTextureNames[kTexWallConcrete], Concrete_Wall_Picture()) &&
         assetgen::Write_DDS4444(dir + kTextureNames[kTexWallGlass], Glass_Wall_Picture());
}

}  // namespace trackgen
