// The ship selection pictures: background (title, control panel, name plate, preview
// stage, bar labels and slots), the stats bar and the six buttons.
#include <cmath>

#include "art.h"

namespace assetgen {
namespace {
using namespace art;

// Where the screen puts things (640 x 480 design units); the pictures are drawn to match.
constexpr int kBarX = 415, kBarY[3] = {321, 351, 381}, kBarW = 198, kBarH = 18;
constexpr int kNameCentreX = 470, kNameY = 120;
constexpr int kPreviewX = 448, kPreviewY = 226;  // where the spinning ship appears

bool Background(const std::string& file, int scale) {
  Picture p(640, 480, 0xFF000000u, scale);
  Backdrop(p, 17);
  bool ok = Heading(p, 26, "SHIP SELECTION",
                    {.pixel_size = 30, .top = kIce, .bottom = kCyan, .tracking = 3, .shadow = 1}, 66, 120, kOrange);
  Fill(p, 240, 70, 400, 71, kCyanDim);

  // Controls: skin buttons above and below, ship arrows in the middle row.
  Panel(p, 36, 102, 214, 216, kCyan);
  ok = Text(p, 96, 154, "SHIP",
            {.pixel_size = 13, .top = kAmber, .bottom = kOrange, .align = Align::Right, .tracking = 1}) &&
       ok;

  // Name plate, centred on the name's centre.
  Panel(p, 330, 108, 610, 144, kOrange);
  ok = Text(p, 338, 96, "MODEL", {.pixel_size = 10, .top = kSteelLight, .bottom = kSteelLight, .tracking = 1}) && ok;
  Fill(p, kNameCentreX - 1, 140, kNameCentreX + 1, 143, kCyanDim);

  // Preview stage: a lit disc of floor under the ship.
  Glow(p, kPreviewX, kPreviewY + 58, 120, kCyanDim, 0.55);
  for (int a = 0; a < 360; ++a) {
    const double r = a * 3.14159 / 180;
    Blend(p, int(kPreviewX + 110 * std::cos(r)), int(kPreviewY + 58 + 18 * std::sin(r)), kCyan, 0.6);
    Blend(p, int(kPreviewX + 70 * std::cos(r)), int(kPreviewY + 58 + 11 * std::sin(r)), kCyanDim, 0.5);
  }

  // Statistic bars: labels on the left, an empty slot the bar fills.
  Panel(p, 300, 304, 626, 412, kCyan);
  const char* const labels[3] = {"THRUST", "INERTIA", "MASS"};
  for (int i = 0; i < 3; ++i) {
    ok = Text(p, kBarX - 12, kBarY[i] + 4, labels[i],
              {.pixel_size = 13, .top = kIce, .bottom = kSteelLight, .align = Align::Right, .tracking = 1}) &&
         ok;
    Fill(p, kBarX - 2, kBarY[i] - 2, kBarX + kBarW + 2, kBarY[i] + kBarH + 2, kSteel);
    Fill(p, kBarX, kBarY[i], kBarX + kBarW, kBarY[i] + kBarH, kSlot);
    for (int t = 20; t < kBarW; t += 20)
      Fill(p, kBarX + t, kBarY[i] + kBarH, kBarX + t + 1, kBarY[i] + kBarH + 2, kSteelLight);
  }
  // Back and start sit on a strip of their own.
  Fill(p, 40, 344, 252, 446, Mix(kNight, kDeep, 0.5));
  Frame(p, 40, 344, 252, 446, kSteel);
  return ok && Write_BMP(file, p);
}

bool Stats(const std::string& dir) {
  Picture p(200, 20, 0xFF0A1226u);
  for (int x = 0; x < 200; ++x) {
    const uint32_t base = Mix(kCyan, kOrange, x / 199.0);
    for (int y = 0; y < kBarH; ++y) {
      // Light top edge, darker underside: a rounded bar.
      const double shade = y < 3 ? 0.35 : (y > 13 ? -0.35 : 0.0);
      uint32_t c = shade > 0 ? Mix(base, kIce, shade) : Mix(base, kNight, -shade);
      if (x % 10 == 9) c = Mix(c, kNight, 0.55);  // segment gaps
      p.at(x, y) = Not_Black(c);
    }
  }
  return Write_BMP(dir + "/Gfx/ShipSelection_stats.bmp", p);
}

// One button face of w x h at (x, y): steel with a bevel, cyan frame; orange and brighter
// when highlighted.
void Button_Face(Picture& p, int x, int y, int w, int h, bool lit) {
  const uint32_t top = lit ? Mix(kSteel, kOrange, 0.45) : kSteel, bottom = lit ? Mix(kDeep, kOrange, 0.25) : kDeep;
  for (int j = 0; j < h; ++j)
    for (int i = 0; i < w; ++i) p.at(x + i, y + j) = Not_Black(Mix(top, bottom, double(j) / (h - 1)));
  Frame(p, x, y, x + w, y + h, lit ? kAmber : kCyanDim);
  Fill(p, x + 1, y + 1, x + w - 1, y + 2, lit ? kIce : kSteelLight);
  Fill(p, x, y + h - 2, x + std::min(18, w / 3), y + h, lit ? kIce : kCyan);
}

bool Buttons(const std::string& dir) {
  Picture p(382, 234, 0xFF000000u);  // black around each face is keyed out
  struct Cell {
    int w, h;
    const char* caption;
    int arrow;  // 0 none, 1 up, 2 down, 3 left, 4 right
  };
  const Cell cells[6] = {{191, 39, "BACK", 3}, {191, 39, "START RACE", 4},
                         {96, 35, "SKIN", 1},  {96, 35, "SKIN", 2},
                         {48, 22, "", 3},      {48, 22, "", 4}};
  bool ok = true;
  for (int row = 0; row < 6; ++row)
    for (int col = 0; col < 2; ++col) {
      const Cell& c = cells[row];
      const int x = col * 191, y = row * 39;
      const bool lit = col == 1;
      Button_Face(p, x, y, c.w, c.h, lit);
      const uint32_t ink = lit ? kIce : Mix(kIce, kCyan, 0.3);
      const double cy = y + c.h / 2.0;
      std::vector<Point> tri;
      double ax = x + (c.caption[0] ? 18 : c.w / 2.0), s = c.h >= 35 ? 7 : 6;
      if (c.arrow == 1) tri = {{ax - s, cy + s * 0.6}, {ax + s, cy + s * 0.6}, {ax, cy - s * 0.8}};
      if (c.arrow == 2) tri = {{ax - s, cy - s * 0.6}, {ax + s, cy - s * 0.6}, {ax, cy + s * 0.8}};
      if (c.arrow == 3) tri = {{ax + s * 0.6, cy - s}, {ax + s * 0.6, cy + s}, {ax - s * 0.8, cy}};
      if (c.arrow == 4) tri = {{ax - s * 0.6, cy - s}, {ax - s * 0.6, cy + s}, {ax + s * 0.8, cy}};
      if (row == 1) {  // start's arrow sits on the right, pointing on to the race
        ax = x + c.w - 20;
        tri = {{ax - s * 0.6, cy - s}, {ax - s * 0.6, cy + s}, {ax + s * 0.8, cy}};
      }
      Polygon(p, tri, lit ? kAmber : kCyan);
      if (c.caption[0] != 0) {
        const int size = c.h >= 39 ? 17 : 14;
        const int tx = row == 0 ? x + c.w / 2 + 6 : row == 1 ? x + (c.w - 28) / 2 : x + 30 + (c.w - 30) / 2;
        ok = Text(p, tx, int(std::lround(cy - size * 0.73 / 2)), c.caption,
                  {.pixel_size = size,
                   .top = ink,
                   .bottom = lit ? kAmber : kSteelLight,
                   .align = Align::Centre,
                   .tracking = 2}) &&
             ok;
      }
    }
  return ok && Write_BMP(dir + "/Gfx/ShipSelection_buttons.bmp", p);
}

bool Generate_Ship_Selection(const std::string& dir) {
  const bool a =
      Background(dir + "/Gfx/ShipSelection_bg.bmp", 1) && Background(dir + "/Gfx/2x/ShipSelection_bg.bmp", 2);
  const bool b = Stats(dir), c = Buttons(dir);
  return a && b && c;
}

const bool registered = Register("shipsel", Generate_Ship_Selection);
}  // namespace
}  // namespace assetgen
