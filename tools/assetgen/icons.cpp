// The desktop icon: a hover ship climbing over the night floor grid on a rounded steel
// badge, in the front end's colours. Each size is painted at a whole multiple of itself
// of at least 512 pixels and shrunk, so the small sizes stay smooth.
#include <algorithm>
#include <cmath>

#include "art.h"

namespace assetgen {
namespace {
using namespace art;

constexpr int kSizes[] = {16, 22, 24, 32, 48, 64, 128, 256};
constexpr const char* kIconName = "org.brindlex.quorval";

// How far (x, y) lies outside the rounded square inset by `inset` with corner radius r
// (negative inside), all in pixels of an n-pixel picture.
double Outside(double x, double y, double n, double inset, double r) {
  const double half = n / 2 - inset - r;
  const double dx = std::max(std::fabs(x - n / 2) - half, 0.0), dy = std::max(std::fabs(y - n / 2) - half, 0.0);
  const double inner = std::min(std::max(std::fabs(x - n / 2), std::fabs(y - n / 2)) - half, 0.0);
  return std::hypot(dx, dy) + inner - r;
}

// The badge at n x n; coordinates below are in units of a 512-pixel badge.
Picture Paint(int n) {
  const double u = n / 512.0;
  Picture p(n, n);
  const int horizon = int(std::lround(330 * u));
  Vertical_Gradient(p, 0, horizon, kNight, Mix(kDeep, kSteel, 0.4));
  Vertical_Gradient(p, horizon, n, Mix(kNight, kDeep, 0.6), kNight);
  Glow(p, 256 * u, horizon, 330 * u, kCyanDim, 0.35);
  // The floor grid runs to a vanishing point on the horizon, as on the main menu.
  for (int i = -6; i <= 6; ++i)
    Line(p, {256 * u + i * 14 * u, double(horizon)}, {256 * u + i * 150 * u, double(n)}, 3 * u, kCyanDim, 0.6);
  for (int k = 1; k < 6; ++k) {
    const double y = horizon + (n - horizon) * std::pow(k / 5.0, 2.0);
    Line(p, {0, y}, {double(n), y}, 2.5 * u, kCyanDim, 0.3 + 0.4 * k / 5.0);
  }
  Line(p, {0, double(horizon)}, {double(n), double(horizon)}, 4 * u, kCyan, 0.8);
  // The ship climbs across the badge with speed streaks trailing from its tail.
  const double tilt = 0.42, s = 1.8 * u, cx = 252 * u, cy = 236 * u;
  auto At = [&](double x, double y) {
    return Point{cx + (x * std::cos(tilt) - y * std::sin(tilt)) * s,
                 cy + (x * std::sin(tilt) + y * std::cos(tilt)) * s};
  };
  for (int i = 0; i < 4; ++i) {
    const double y = -30 + 18 * i, from = 104 + 16 * (i % 2);
    Line(p, At(from, y), At(from + 70 + 25 * (i % 3), y), 7 * u, i % 2 ? kOrange : kCyan, 0.7);
  }
  Hover_Ship(p, cx, cy, s, kSteelLight, kOrange, tilt);

  // The badge: steel rim with the orange corner dashes of the game's panels; outside it
  // the picture is clear.
  const double inset = 16 * u, radius = 84 * u, rim = 14 * u;
  for (int y = 0; y < n; ++y)
    for (int x = 0; x < n; ++x) {
      const double d = Outside(x + 0.5, y + 0.5, n, inset, radius);
      uint32_t c = p.at(x, y);
      if (d > -rim) {
        const bool dash = (x + y < 300 * u) || (x + y > 724 * u);
        c = Mix(c, dash ? kOrange : Mix(kSteel, kSteelLight, 0.5), Smooth(-rim - 1.5 * u, -rim + 1.5 * u, d));
      }
      const double alpha = std::clamp(0.5 - d, 0.0, 1.0);
      p.at(x, y) = (c & 0x00FFFFFFu) | uint32_t(std::lround(alpha * 255)) << 24;
    }
  return p;
}

// Averages k x k blocks, weighting colour by coverage so the clear outside never darkens
// the rim.
Picture Shrink(const Picture& big, int k) {
  Picture small(big.width / k, big.height / k, 0);
  for (int y = 0; y < small.height; ++y)
    for (int x = 0; x < small.width; ++x) {
      double a = 0, r = 0, g = 0, b = 0;
      for (int sy = 0; sy < k; ++sy)
        for (int sx = 0; sx < k; ++sx) {
          const uint32_t c = big.at(x * k + sx, y * k + sy);
          const double w = double(c >> 24) / 255;
          a += w;
          r += w * double(c >> 16 & 0xFF), g += w * double(c >> 8 & 0xFF), b += w * double(c & 0xFF);
        }
      small.at(x, y) = a > 0 ? Pack({r / a, g / a, b / a}, a / (k * k)) : 0;
    }
  return small;
}

}  // namespace

bool Generate_Icons(const std::string& folder) {
  bool ok = true;
  for (int size : kSizes) {
    const int k = (512 + size - 1) / size;
    const std::string dir = folder + "/hicolor/" + std::to_string(size) + "x" + std::to_string(size) + "/apps/";
    ok = Write_PNG(dir + kIconName + ".png", Shrink(Paint(size * k), k)) && ok;
  }
  return ok;
}

}  // namespace assetgen
