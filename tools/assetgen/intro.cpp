// The two intro pictures: the title card, then a hover ship racing down a lit track at
// dusk. Both are 640 x 480 and are stretched to the display.
#include <cmath>

#include "art.h"

namespace assetgen {
namespace {

using namespace art;

Picture Title_Card(int scale) {
  Picture p(640, 480, 0xFF000000u, scale);
  Vertical_Gradient(p, 0, 480, kNight, Mix(kDeep, kSteel, 0.3));
  Stars(p, 480, 31, 0.002, 0.25, 0.6);
  Glow(p, 320, 230, 330, kCyanDim, 0.35);
  // Speed lines streaming past behind the name.
  for (int i = 0; i < 24; ++i) {
    const double y = 120 + 250 * Noise(i, 0, 32), x = 640 * Noise(i, 1, 33), len = 80 + 200 * Noise(i, 2, 34);
    Line(p, {x, y}, {x + len, y}, 1 + 2 * Noise(i, 3, 35), i % 4 == 0 ? kOrange : kCyan, 0.18 + 0.25 * Noise(i, 4, 36));
  }
  TextStyle name{.face = "DejaVuSans-BoldOblique.ttf",
                 .pixel_size = 84,
                 .top = kIce,
                 .bottom = kCyan,
                 .align = Align::Centre,
                 .tracking = 4,
                 .shadow = 4};
  Text(p, 320, 120, "BRINDLEX", name);
  name.top = kAmber;
  name.bottom = kOrange;
  Text(p, 320, 220, "QUORVAL", name);
  Line(p, {96, 312}, {544, 312}, 3, kOrange);
  Line(p, {150, 320}, {490, 320}, 1.5, kCyan, 0.8);
  Hover_Ship(p, 330, 384, 0.55, kSteelLight, kOrange);
  Text(p, 320, 440, "HOVER  RACING",
       {.pixel_size = 15, .top = kSteelLight, .bottom = kSteelLight, .align = Align::Centre, .tracking = 6});
  return p;
}

// A straight track running to the horizon: road, light strips on its edges, lane dashes.
void Track(Picture& p, double horizon) {
  const double vx = 360;
  auto at = [&](double depth, double side) {  // depth 0 at the bottom edge, 1 at the horizon
    const double y = horizon + (480 - horizon) * (1 - depth);
    return Point{vx + side * (1 - depth), y};
  };
  Polygon(p, {at(0, -520), at(0, 520), at(1, 0)}, 0xFF161E2Cu);
  for (int side = -1; side <= 1; side += 2) {
    Polygon(p, {at(0, side * 520.0), at(0, side * 560.0), at(1, 0)}, kCyan, 0.85);
    Polygon(p, {at(0, side * 560.0), at(0, side * 700.0), at(1, 0)}, kSteel);
  }
  // Lane dashes, spaced evenly in depth so they shorten toward the horizon.
  for (int k = 0; k < 14; ++k) {
    const double d0 = 1 - std::pow(0.82, k * 1.0), d1 = 1 - std::pow(0.82, k + 0.45);
    for (int lane = -1; lane <= 1; lane += 2) {
      const double s = lane * 175.0;
      Polygon(p, {at(d0, s - 6), at(d0, s + 6), at(d1, s + 6), at(d1, s - 6)}, kAmber, 0.8);
    }
  }
}

Picture Ship_Scene(int scale) {
  Picture p(640, 480, 0xFF000000u, scale);
  const int horizon = 250;
  Vertical_Gradient(p, 0, horizon, kNight, 0xFF3A2A4Au);
  Glow(p, 360, horizon, 300, kOrange, 0.55);
  Stars(p, 150, 41, 0.002, 0.25, 0.6);
  // Hills along the horizon.
  std::vector<Point> hills{{0, double(horizon)}};
  for (int x = 0; x <= 640; x += 16)
    hills.push_back({double(x), horizon - 18 - 30 * Noise(x / 16, 0, 42) * (0.5 + 0.5 * std::sin(x / 90.0))});
  hills.push_back({640, double(horizon)});
  Polygon(p, hills, 0xFF0E1424u);
  Vertical_Gradient(p, horizon, 480, 0xFF0A1020u, kNight);
  Track(p, horizon);
  // Two rivals ahead, then the player's ship close in front.
  Hover_Ship(p, 300, 282, 0.22, kSteel, kCyan);
  Hover_Ship(p, 430, 300, 0.3, 0xFF804040u, kAmber);
  Hover_Ship(p, 330, 380, 1.05, kSteelLight, kOrange);
  Text(p, 28, 28, "BRINDLEX QUORVAL",
       {.face = "DejaVuSans-BoldOblique.ttf",
        .pixel_size = 30,
        .top = kIce,
        .bottom = kCyan,
        .tracking = 2,
        .shadow = 2});
  Line(p, {28, 62}, {404, 62}, 2, kOrange);
  Text(p, 30, 72, "THREE LAPS. FIVE SHIPS. ONE RECORD.",
       {.pixel_size = 14, .top = kAmber, .bottom = kAmber, .tracking = 4});
  return p;
}

bool Generate_Intro(const std::string& game_dir) {
  bool ok = Write_BMP(game_dir + "/Gfx/Intro1.bmp", Title_Card(1));
  ok = Write_BMP(game_dir + "/Gfx/Intro2.bmp", Ship_Scene(1)) && ok;
  // Twice as fine for screens above 640 x 480.
  ok = Write_BMP(game_dir + "/Gfx/2x/Intro1.bmp", Title_Card(2)) && ok;
  return Write_BMP(game_dir + "/Gfx/2x/Intro2.bmp", Ship_Scene(2)) && ok;
}

const bool registered = Register("intro", Generate_Intro);
}  // namespace
}  // namespace assetgen
