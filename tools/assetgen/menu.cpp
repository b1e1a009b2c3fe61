// The main menu's pictures: the background (title, the panel the buttons slide onto, a
// grid floor and a ship), the four buttons (highlighted left, plain right) and the
// particle sprite the menu screens' fountain is drawn with.
#include <algorithm>
#include <cmath>

#include "art.h"

namespace assetgen {
namespace {

using namespace art;

// The buttons' place on the 640 x 480 menu: x 225..416, rows from y 150 every 50.
constexpr int kButtonLeft = 225, kButtonRight = 416, kButtonTop = 150, kButtonPitch = 50, kButtonH = 39;

// Floor grid receding to a horizon, with a glow where it meets the sky.
void Grid_Floor(Picture& p, int horizon, uint32_t line) {
  Glow(p, 320, horizon, 420, kCyanDim, 0.25);
  const double vx = 320;
  for (int i = -14; i <= 14; ++i) Line(p, {vx + i * 8.0, double(horizon)}, {vx + i * 120.0, 480.0}, 1.2, line, 0.45);
  for (int k = 1; k < 12; ++k) {
    const double y = horizon + (480 - horizon) * std::pow(k / 11.0, 2.2);
    Line(p, {0, y}, {640, y}, 1.0, line, 0.25 + 0.3 * k / 11.0);
  }
  Line(p, {0, double(horizon)}, {640, double(horizon)}, 1.5, kCyan, 0.7);
}

void Title(Picture& p) {
  Heading(p, 38, "BRINDLEX QUORVAL",
          {.face = "DejaVuSans-BoldOblique.ttf",
           .pixel_size = 46,
           .top = kIce,
           .bottom = kCyan,
           .tracking = 2,
           .shadow = 3},
          97, 170, kOrange);
  Line(p, {190, 103}, {450, 103}, 1, kCyanDim);
  Text(p, 320, 112, "HOVER  RACING  LEAGUE",
       {.pixel_size = 13, .top = kAmber, .bottom = kAmber, .align = Align::Centre, .tracking = 4});
}

Picture Background(int scale) {
  Picture p(640, 480, 0xFF000000u, scale);
  Vertical_Gradient(p, 0, 330, kNight, Mix(kDeep, kSteel, 0.35));
  Vertical_Gradient(p, 330, 480, Mix(kNight, kDeep, 0.5), kNight);
  // Faint stars and speed streaks in the sky.
  Stars(p, 320, 11, 0.0015, 0.3, 0.5);
  for (int i = 0; i < 9; ++i) {
    const double y = 160 + i * 19, len = 60 + 110 * Noise(i, 0, 13);
    Line(p, {18.0 + 20 * Noise(i, 1, 14), y}, {18 + len, y - 6}, 1.5, i % 3 == 0 ? kOrange : kCyan, 0.35);
    Line(p, {622.0 - 20 * Noise(i, 2, 14), y + 8}, {622 - len, y + 2}, 1.5, i % 3 == 1 ? kOrange : kCyan, 0.35);
  }
  Grid_Floor(p, 330, kCyanDim);
  Hover_Ship(p, 545, 408, 0.62, kSteelLight, kOrange);
  Title(p);
  // The panel the buttons come to rest on, with slots in the button rows.
  Panel(p, kButtonLeft - 22, kButtonTop - 18, kButtonRight + 22, kButtonTop + 3 * kButtonPitch + kButtonH + 18,
        kOrange);
  for (int i = 0; i < 4; ++i) {
    const int top = kButtonTop + i * kButtonPitch;
    Fill(p, kButtonLeft - 2, top - 2, kButtonRight + 2, top + kButtonH + 2, kSlot);
    Frame(p, kButtonLeft - 3, top - 3, kButtonRight + 3, top + kButtonH + 3, kSteel);
  }
  return p;
}

const char* const kCaptions[4] = {"RACE ALONE", "RACE 4 SHIPS", "OPTIONS", "QUIT"};

// One 191 x 39 button with chamfered corners; the corners stay black (keyed out).
void Button(Picture& p, int left, int top, const char* caption, bool lit) {
  // Shaded pixel by pixel in the picture's own pixels: k of them to a layout pixel.
  const int k = p.scale, w = 191 * k, h = 39 * k, cut = 8 * k, x0 = left * k, y0 = top * k;
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) {
      if (x + y < cut || (w - 1 - x) + (h - 1 - y) < cut) continue;
      const double t = double(y) / (h - 1);
      uint32_t c = lit ? Mix(0xFF7A3A08u, 0xFF2A1404u, t) : Mix(kSteel, 0xFF141E30u, t);
      if (y < 2 * k) c = lit ? kAmber : kSteelLight;
      if (x < 5 * k) c = lit ? kAmber : kCyanDim;  // the accent bar on the leading edge
      c = Mix(c, kNight, 0.05 * Noise(x + x0, y + y0, 21));
      p.at(x0 + x, y0 + y) = c;
    }
  // Edge line along the bottom.
  for (int x = cut; x < w; ++x)
    for (int j = 1; j <= k; ++j) p.at(x0 + x, y0 + h - j) = lit ? kOrange : 0xFF0E1626u;
  Text(p, left + 191 / 2 + 10, top + 13, caption,
       {.pixel_size = 16,
        .top = lit ? 0xFFFFFFFFu : kIce,
        .bottom = lit ? kAmber : 0xFFA8C0D8u,
        .align = Align::Centre,
        .tracking = 1,
        .shadow = 1});
  if (lit) {
    // Chevrons pointing at the caption.
    for (int k = 0; k < 2; ++k) {
      const double x = left + 14 + k * 7;
      Polygon(p, {{x, top + 13.0}, {x + 5, top + 19.5}, {x, top + 26.0}, {x + 2.5, top + 19.5}}, kIce);
    }
  }
}

Picture Buttons(int scale) {
  Picture p(382, 156, 0xFF000000u, scale);
  for (int i = 0; i < 4; ++i) {
    Button(p, 0, 39 * i, kCaptions[i], true);
    Button(p, 191, 39 * i, kCaptions[i], false);
  }
  return p;
}

// A white sprite whose alpha falls off softly to the rim; the fountain tints it.
Picture Particle() {
  Picture p(32, 32, 0);
  for (int y = 0; y < 32; ++y)
    for (int x = 0; x < 32; ++x) {
      const double d = std::hypot(x + 0.5 - 16, y + 0.5 - 16) / 15.5;
      const double a = d >= 1 ? 0 : std::pow(1 - d, 1.6);
      const uint32_t rgb = Mix(0xFFFFE8C0u, 0xFFFFFFFFu, 1 - d) & 0xFFFFFFu;
      p.at(x, y) = uint32_t(std::lround(a * 255)) << 24 | rgb;
    }
  return p;
}

bool Generate_Menu(const std::string& game_dir) {
  bool ok = Write_BMP(game_dir + "/Gfx/MainScr_bg.bmp", Background(1));
  ok = Write_BMP(game_dir + "/Gfx/2x/MainScr_bg.bmp", Background(2)) && ok;
  ok = Write_BMP(game_dir + "/Gfx/Buttons.bmp", Buttons(1)) && ok;
  ok = Write_BMP(game_dir + "/Gfx/2x/Buttons.bmp", Buttons(2)) && ok;
  return Write_DDS4444(game_dir + "/Gfx/particle.dds", Particle()) && ok;
}

const bool registered = Register("menu", Generate_Menu);
}  // namespace
}  // namespace assetgen
