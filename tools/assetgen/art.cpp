#include "art.h"

#include <ft2build.h>
#include FT_FREETYPE_H

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace art {

uint32_t Mix(uint32_t a, uint32_t b, double t) {
  t = std::clamp(t, 0.0, 1.0);
  uint32_t out = 0xFF000000u;
  for (int shift = 0; shift < 24; shift += 8) {
    const double ca = double((a >> shift) & 0xFF), cb = double((b >> shift) & 0xFF);
    out |= uint32_t(std::lround(ca + (cb - ca) * t)) << shift;
  }
  return out;
}

uint32_t Not_Black(uint32_t c) { return (c & 0x00FFFFFFu) == 0 ? 0xFF010101u : c; }

Rgb Mix(Rgb a, Rgb b, double t) { return {a.r + (b.r - a.r) * t, a.g + (b.g - a.g) * t, a.b + (b.b - a.b) * t}; }
Rgb Scale(Rgb a, double k) { return {a.r * k, a.g * k, a.b * k}; }
uint32_t Pack(Rgb c, double alpha) {
  auto q = [](double v) { return static_cast<uint32_t>(std::clamp(std::lround(v), 0l, 255l)); };
  return q(alpha * 255) << 24 | q(c.r) << 16 | q(c.g) << 8 | q(c.b);
}
Rgb Unpack(uint32_t c) { return {double(c >> 16 & 0xFF), double(c >> 8 & 0xFF), double(c & 0xFF)}; }

double Smooth(double e0, double e1, double x) {
  const double t = std::clamp((x - e0) / (e1 - e0), 0.0, 1.0);
  return t * t * (3 - 2 * t);
}

double Noise(int x, int y, uint32_t seed) {
  uint32_t h = uint32_t(x) * 0x8da6b343u ^ uint32_t(y) * 0xd8163841u ^ seed * 0xcb1ab31fu;
  h ^= h >> 13;
  h *= 0x5bd1e995u;
  h ^= h >> 15;
  return (h & 0xFFFFFF) / 16777216.0;
}

double Value_Noise(double fx, double fy, int wrap_x, int wrap_y, uint32_t seed) {
  const int x0 = int(std::floor(fx)), y0 = int(std::floor(fy));
  double tx = fx - x0, ty = fy - y0;
  tx = tx * tx * (3 - 2 * tx);
  ty = ty * ty * (3 - 2 * ty);
  auto wrap = [](int c, int n) { return n > 0 ? ((c % n) + n) % n : c; };
  auto at = [&](int cx, int cy) { return Noise(wrap(cx, wrap_x), wrap(cy, wrap_y), seed); };
  const double a = at(x0, y0) + (at(x0 + 1, y0) - at(x0, y0)) * tx;
  const double b = at(x0, y0 + 1) + (at(x0 + 1, y0 + 1) - at(x0, y0 + 1)) * tx;
  return a + (b - a) * ty;
}

double Fbm(double x, double y, double width, double height, int base_cells, int octaves, bool wrap_down,
           uint32_t seed) {
  double sum = 0, amp = 0.5, norm = 0;
  for (int o = 0; o < octaves; ++o) {
    const int across = base_cells << o, down = wrap_down ? int(across * height / width) : across;
    sum += amp * Value_Noise(x * across / width, y * down / height, across, wrap_down ? down : 0,
                             seed + static_cast<uint32_t>(o));
    norm += amp;
    amp *= 0.5;
  }
  return sum / norm;
}

namespace {
// One pixel of the picture itself, whatever its scale.
void Blend_Pixel(Picture& p, int x, int y, uint32_t colour, double coverage) {
  if (x < 0 || y < 0 || x >= p.width || y >= p.height || coverage <= 0) return;
  p.at(x, y) = Mix(p.at(x, y), colour, coverage);
}
}  // namespace

void Blend(Picture& p, int x, int y, uint32_t colour, double coverage) {
  for (int j = 0; j < p.scale; ++j)
    for (int i = 0; i < p.scale; ++i) Blend_Pixel(p, x * p.scale + i, y * p.scale + j, colour, coverage);
}

void Fill(Picture& p, int left, int top, int right, int bottom, uint32_t colour) {
  const int k = p.scale;
  for (int y = std::max(0, top * k); y < std::min(p.height, bottom * k); ++y)
    for (int x = std::max(0, left * k); x < std::min(p.width, right * k); ++x) p.at(x, y) = colour;
}

void Frame(Picture& p, int left, int top, int right, int bottom, uint32_t colour) {
  Fill(p, left, top, right, top + 1, colour);
  Fill(p, left, bottom - 1, right, bottom, colour);
  Fill(p, left, top, left + 1, bottom, colour);
  Fill(p, right - 1, top, right, bottom, colour);
}

void Vertical_Gradient(Picture& p, int top, int bottom, uint32_t from, uint32_t to) {
  top *= p.scale, bottom *= p.scale;
  for (int y = std::max(0, top); y < std::min(p.height, bottom); ++y) {
    const uint32_t c = Mix(from, to, double(y - top) / std::max(1, bottom - top - 1));
    for (int x = 0; x < p.width; ++x) p.at(x, y) = c;
  }
}

void Panel(Picture& p, int left, int top, int right, int bottom, uint32_t accent) {
  const int k = p.scale;
  for (int y = std::max(0, top * k); y < std::min(p.height, bottom * k); ++y)
    for (int x = std::max(0, left * k); x < std::min(p.width, right * k); ++x)
      p.at(x, y) =
          Not_Black(Mix(p.at(x, y), kNight, 0.72 - 0.12 * double(y - top * k) / std::max(1, (bottom - top) * k)));
  Frame(p, left, top, right, bottom, Mix(kSteel, accent, 0.35));
  Fill(p, left + 1, top + 1, right - 1, top + 2, kSteelLight);
  // Accent ticks on the corners, the racing-dash look of the whole game.
  Fill(p, left, top, left + 18, top + 2, accent);
  Fill(p, right - 18, bottom - 2, right, bottom, accent);
}

void Stars(Picture& p, int bottom, uint32_t seed, double chance, double faintest, double spread) {
  for (int y = 0; y < std::min(p.height, bottom * p.scale); ++y)
    for (int x = 0; x < p.width; ++x)
      if (Noise(x, y, seed) > 1 - chance) Blend_Pixel(p, x, y, kIce, faintest + spread * Noise(x, y, seed + 1));
}

void Backdrop(Picture& p, uint32_t seed) {
  for (int y = 0; y < p.height; ++y) {
    const double t = double(y) / std::max(1, p.height - 1);
    const uint32_t row = Mix(kNight, kDeep, 1.0 - std::fabs(t - 0.55) * 1.6);
    for (int x = 0; x < p.width; ++x) {
      // A little grain keeps large fills from banding.
      uint32_t c = Mix(row, kSteel, Noise(x, y, seed) * 0.08);
      // Perspective floor grid below the horizon, in dim cyan.
      if (t > 0.62) {
        const double depth = (t - 0.62) / 0.38;
        const double gx = (x - p.width / 2.0) / (depth + 0.05) / (40.0 * p.scale);
        const double gy = 1.0 / (depth + 0.05);
        const bool line = std::fabs(gx - std::round(gx)) < 0.02 * (1 + depth) ||
                          (std::fabs(gy - std::round(gy)) < 0.04 && depth < 0.9);
        if (line) c = Mix(c, kCyanDim, 0.35 * depth);
      }
      p.at(x, y) = Not_Black(c);
    }
  }
}

namespace {
// Whether (x, y) lies inside the polygon (even-odd rule).
bool Inside(const std::vector<Point>& pts, double x, double y) {
  bool in = false;
  for (size_t i = 0, j = pts.size() - 1; i < pts.size(); j = i++) {
    const Point a = pts[i], b = pts[j];
    if ((a.y > y) != (b.y > y) && x < (b.x - a.x) * (y - a.y) / (b.y - a.y) + a.x) in = !in;
  }
  return in;
}
}  // namespace

void Polygon(Picture& p, const std::vector<Point>& layout_pts, uint32_t colour, double opacity) {
  if (layout_pts.size() < 3) return;
  std::vector<Point> pts = layout_pts;
  for (Point& q : pts) q.x *= p.scale, q.y *= p.scale;
  double x0 = pts[0].x, x1 = x0, y0 = pts[0].y, y1 = y0;
  for (const Point& q : pts) {
    x0 = std::min(x0, q.x), x1 = std::max(x1, q.x);
    y0 = std::min(y0, q.y), y1 = std::max(y1, q.y);
  }
  for (int y = std::max(0, int(std::floor(y0))); y <= std::min(p.height - 1, int(std::ceil(y1))); ++y)
    for (int x = std::max(0, int(std::floor(x0))); x <= std::min(p.width - 1, int(std::ceil(x1))); ++x) {
      int hits = 0;
      for (int sy = 0; sy < 4; ++sy)
        for (int sx = 0; sx < 4; ++sx) hits += Inside(pts, x + (sx + 0.5) / 4, y + (sy + 0.5) / 4);
      Blend_Pixel(p, x, y, colour, opacity * hits / 16.0);
    }
}

void Line(Picture& p, Point a, Point b, double width, uint32_t colour, double opacity) {
  const double dx = b.x - a.x, dy = b.y - a.y, len = std::hypot(dx, dy);
  if (len <= 0) return;
  const double nx = -dy / len * width / 2, ny = dx / len * width / 2;
  Polygon(p, {{a.x + nx, a.y + ny}, {b.x + nx, b.y + ny}, {b.x - nx, b.y - ny}, {a.x - nx, a.y - ny}}, colour, opacity);
}

void Glow(Picture& p, double cx, double cy, double radius, uint32_t colour, double strength) {
  cx *= p.scale, cy *= p.scale, radius *= p.scale;
  for (int y = std::max(0, int(cy - radius)); y < std::min(p.height, int(cy + radius) + 1); ++y)
    for (int x = std::max(0, int(cx - radius)); x < std::min(p.width, int(cx + radius) + 1); ++x) {
      const double d = std::hypot(x + 0.5 - cx, y + 0.5 - cy) / radius;
      if (d >= 1) continue;
      const double k = (1 - d) * (1 - d) * strength;
      uint32_t out = 0xFF000000u;
      const uint32_t base = p.at(x, y);
      for (int shift = 0; shift < 24; shift += 8) {
        const double v = double((base >> shift) & 0xFF) + double((colour >> shift) & 0xFF) * k;
        out |= uint32_t(std::min(255.0, v)) << shift;
      }
      p.at(x, y) = out;
    }
}

void Hover_Ship(Picture& p, double cx, double cy, double s, uint32_t hull, uint32_t stripe, double tilt) {
  const double cs = std::cos(tilt), sn = std::sin(tilt);
  auto P = [&](double x, double y) { return Point{cx + (x * cs - y * sn) * s, cy + (x * sn + y * cs) * s}; };
  // Hover glow under the hull first, so the body sits on its light.
  Glow(p, P(-10, 34).x, P(-10, 34).y, 95 * s, kCyanDim, 0.9);
  // Far fin and lower hull in shadow.
  Polygon(p, {P(40, -10), P(78, -48), P(92, -48), P(84, -6)}, Mix(hull, kNight, 0.55));
  Polygon(p, {P(-100, 8), P(90, -4), P(96, 18), P(-70, 24)}, Mix(hull, kNight, 0.6));
  // Upper hull: a long wedge, nose to the left.
  Polygon(p, {P(-104, 8), P(-30, -14), P(70, -22), P(98, -6), P(90, 12)}, hull);
  Polygon(p, {P(-104, 8), P(-30, -14), P(70, -22), P(68, -16), P(-28, -8)}, Mix(hull, kIce, 0.35));
  // Racing stripe along the flank.
  Polygon(p, {P(-86, 6), P(80, -6), P(82, 0), P(-80, 11)}, stripe);
  // Canopy.
  Polygon(p, {P(-34, -12), P(-4, -30), P(30, -30), P(40, -18)}, Mix(kCyan, kNight, 0.55));
  Polygon(p, {P(-26, -13), P(-4, -27), P(10, -27), P(0, -15)}, Mix(kCyan, kIce, 0.3), 0.6);
  // Near fin.
  Polygon(p, {P(52, -16), P(88, -56), P(104, -56), P(96, -10)}, Mix(hull, kSteelLight, 0.3));
  Polygon(p, {P(88, -56), P(104, -56), P(102, -50), P(86, -50)}, stripe);
  // Engine nozzle and flame.
  Polygon(p, {P(92, -10), P(104, -12), P(106, 12), P(94, 12)}, kSteel);
  Glow(p, P(112, 0).x, P(112, 0).y, 34 * s, kCyan, 1.4);
  Glow(p, P(108, 0).x, P(108, 0).y, 14 * s, kIce, 1.6);
}

namespace {
struct Face {
  FT_Library lib = nullptr;
  FT_Face face = nullptr;
  Face(const char* file, int size) {
    const std::string path = std::string(QUORVAL_FONT_DIR) + "/" + file;
    if (FT_Init_FreeType(&lib) != 0) return;
    if (FT_New_Face(lib, path.c_str(), 0, &face) != 0) {
      std::fprintf(stderr, "assetgen: cannot open %s\n", path.c_str());
      face = nullptr;
      return;
    }
    FT_Set_Pixel_Sizes(face, 0, FT_UInt(size));
  }
  ~Face() {
    if (face != nullptr) FT_Done_Face(face);
    if (lib != nullptr) FT_Done_FreeType(lib);
  }
  Face(const Face&) = delete;
  Face& operator=(const Face&) = delete;
};

// One pass over the glyphs: the text itself, or its shadow `offset` pixels down and right.
void Draw_Run(Picture& p, FT_Face face, int x, int top, const std::string& text, const TextStyle& style, int offset,
              bool shadow) {
  const int ascent = int(std::lround(style.pixel_size * 0.73));
  const int baseline = top + ascent;
  for (unsigned char c : text) {
    if (FT_Load_Char(face, c, FT_LOAD_RENDER) != 0) continue;
    const FT_GlyphSlot g = face->glyph;
    for (int y = 0; y < int(g->bitmap.rows); ++y)
      for (int gx = 0; gx < int(g->bitmap.width); ++gx) {
        const double coverage = g->bitmap.buffer[y * g->bitmap.pitch + gx] / 255.0;
        const int px = x + g->bitmap_left + gx + offset, py = baseline - g->bitmap_top + y + offset;
        const double t = double(py - offset - top) / std::max(1, ascent);
        Blend_Pixel(p, px, py, shadow ? 0xFF000000u : Mix(style.top, style.bottom, t), coverage * (shadow ? 0.7 : 1.0));
      }
    x += int(g->advance.x >> 6) + style.tracking;
  }
}
}  // namespace

bool Text(Picture& p, int x, int top, const std::string& text, const TextStyle& layout_style) {
  TextStyle style = layout_style;
  style.pixel_size *= p.scale, style.tracking *= p.scale, style.shadow *= p.scale;
  x *= p.scale, top *= p.scale;
  Face f(style.face, style.pixel_size);
  if (f.face == nullptr) return false;
  int w = 0;
  for (unsigned char c : text)
    if (FT_Load_Char(f.face, c, FT_LOAD_DEFAULT) == 0) w += int(f.face->glyph->advance.x >> 6) + style.tracking;
  if (!text.empty()) w -= style.tracking;
  if (style.align == Align::Centre) x -= w / 2;
  if (style.align == Align::Right) x -= w;
  if (style.shadow != 0) Draw_Run(p, f.face, x, top, text, style, style.shadow, true);
  Draw_Run(p, f.face, x, top, text, style, 0, false);
  return true;
}

bool Heading(Picture& p, int top, const std::string& text, TextStyle style, int rule_top, int rule_half,
             uint32_t rule_colour) {
  style.align = Align::Centre;
  const int centre = p.width / p.scale / 2;
  const bool ok = Text(p, centre, top, text, style);
  Fill(p, centre - rule_half, rule_top, centre + rule_half, rule_top + 2, rule_colour);
  return ok;
}

}  // namespace art
