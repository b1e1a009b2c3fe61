#include "ship_paint.h"

#include <algorithm>
#include <cmath>

namespace assetgen::ship {
namespace {

constexpr float kTwoPi = 6.2831853f;

Rgb Mix(const Rgb& a, const Rgb& b, float t) {
  return {a.r + (b.r - a.r) * t, a.g + (b.g - a.g) * t, a.b + (b.b - a.b) * t};
}
Rgb Mul(const Rgb& a, float k) { return {a.r * k, a.g * k, a.b * k}; }
float Frac(float x) { return x - std::floor(x); }
float Clamp01(float x) { return std::clamp(x, 0.0f, 1.0f); }

// Seven-segment digit in a unit box (x right, y up).
bool Digit_Ink(int digit, float x, float y) {
  static constexpr unsigned char kSegments[10] = {0x3F, 0x06, 0x5B, 0x4F, 0x66, 0x6D, 0x7D, 0x07, 0x7F, 0x6F};
  if (x < 0 || x > 1 || y < 0 || y > 1) return false;
  const unsigned s = kSegments[digit % 10];
  const float w = 0.2f;
  const bool top_half = y >= 0.5f;
  return ((s & 0x01) && y > 1 - w) ||                  // a
         ((s & 0x02) && x > 1 - w && top_half) ||      // b
         ((s & 0x04) && x > 1 - w && !top_half) ||     // c
         ((s & 0x08) && y < w) ||                      // d
         ((s & 0x10) && x < w && !top_half) ||         // e
         ((s & 0x20) && x < w && top_half) ||          // f
         ((s & 0x40) && std::fabs(y - 0.5f) < w / 2);  // g
}

// The racing number's plate on a flank. `reading` and `up` are plate coordinates in -1..1.
bool Plate(const Livery& l, float reading, float up, Rgb& c) {
  const float r2 = reading * reading + up * up;
  if (r2 > 1) return false;
  c = r2 > 0.8f ? l.trim : Rgb{0.95f, 0.95f, 0.93f};
  const float dx = (reading + 0.62f) / 0.56f, dy = (up + 0.55f) / 1.1f;
  const bool ink = l.number >= 10 ? (Digit_Ink(l.number / 10, dx, dy) || Digit_Ink(l.number % 10, dx - 1.2f, dy))
                                  : Digit_Ink(l.number, (reading + 0.28f) / 0.56f, dy);
  if (ink) c = l.trim;
  return true;
}

// s runs round the body from the belly over the +x flank (0.25) to the top (0.5);
// t runs from the nose (0) to the tail (1).
Rgb Hull(const Livery& l, float s, float t) {
  const float elev = -std::cos(kTwoPi * s);  // 1 on top, -1 under the belly
  const float d = std::fabs(s - 0.5f);       // distance from the spine
  Rgb c = l.base;
  switch (l.pattern) {
    case Pattern::TwinStripes:
      if (d > 0.02f && d < 0.06f) c = l.second;
      if (d > 0.066f && d < 0.076f) c = l.accent;
      if (t < 0.1f) c = l.second;
      break;
    case Pattern::Chevrons:
      if (d < 0.22f && t > 0.08f && t < 0.8f) {
        const float k = Frac(t * 7 + d * 9);
        if (k < 0.3f)
          c = l.second;
        else if (k < 0.36f)
          c = l.accent;
      }
      if (t < 0.06f) c = l.accent;
      break;
    case Pattern::Sweep: {
      const float edge = 0.55f - 1.3f * t;
      if (elev > edge) c = l.second;
      if (std::fabs(elev - edge) < 0.05f) c = l.accent;
      break;
    }
    case Pattern::Blades: {
      const float tooth = 1 - std::fabs(Frac(s * 16) * 2 - 1);
      if (t < 0.26f + 0.08f * tooth) c = l.accent;
      if (elev > 0.05f && elev < 0.2f) c = l.second;
      break;
    }
  }
  // Dark belly with a pinstripe where the paint ends.
  if (elev < -0.45f)
    c = l.trim;
  else if (elev < -0.38f)
    c = l.accent;
  // Panel seams.
  if (elev > -0.45f && std::fabs(Frac(t * 4 + 0.5f) - 0.5f) < 0.012f) c = Mul(c, 0.72f);
  // Tail band with hazard dashes.
  if (t > 0.95f) c = Frac(s * 24 + t * 10) < 0.5f ? l.trim : l.accent;
  // Racing number on both flanks, read from the tail towards the nose on the right and
  // the other way on the left (each side seen upright).
  Rgb plate;
  const float along = (t - 0.52f) / 0.085f;
  if (Plate(l, -along, (s - 0.25f) / 0.07f, plate) || Plate(l, along, (0.75f - s) / 0.07f, plate)) c = plate;
  return Mul(c, 0.8f + 0.2f * (elev * 0.5f + 0.5f));
}

Rgb Canopy(const Livery& l, float s, float t) {
  const float elev = -std::cos(kTwoPi * s);
  Rgb c = Mix(Rgb{0.02f, 0.03f, 0.07f}, Rgb{0.16f, 0.3f, 0.5f}, 0.5f + 0.5f * elev);
  // A soft reflection streak along the upper right of the glass.
  const float streak = std::exp(-std::pow((s - 0.41f) / 0.025f, 2.0f)) * Clamp01(1 - std::fabs(t - 0.45f) / 0.35f);
  c = Mix(c, Rgb{0.92f, 0.96f, 1.0f}, 0.75f * streak);
  if (t < 0.05f || t > 0.95f || std::fabs(t - 0.38f) < 0.018f) c = l.trim;
  if (elev < -0.3f) c = l.second;
  return c;
}

Rgb Pod(const Livery& l, float s, float t) {
  const float elev = -std::cos(kTwoPi * s);
  Rgb c = Mix(l.second, Rgb{0.62f, 0.64f, 0.68f}, 0.55f);
  if (std::fabs(s - 0.5f) < 0.06f) c = l.base;
  if (std::fabs(t - 0.2f) < 0.035f || std::fabs(t - 0.8f) < 0.035f) c = l.accent;
  if (t < 0.07f) c = Rgb{0.05f, 0.05f, 0.06f};  // intake
  return Mul(c, 0.72f + 0.28f * (elev * 0.5f + 0.5f));
}

// s across the span (root to tip), t across the chord.
Rgb Wing(const Livery& l, float s, float t) {
  Rgb c = l.base;
  if (std::fabs(s - t * 0.5f - 0.25f) < 0.07f) c = l.second;
  if (s > 0.8f) c = l.accent;
  if (t < 0.05f || t > 0.95f) c = l.trim;
  return c;
}

// s along the fin (nose to tail side), t up.
Rgb Fin(const Livery& l, float s, float t) {
  Rgb c = l.base;
  if (std::fabs(t - (1 - s) * 0.6f - 0.2f) < 0.08f) c = l.second;
  if (t > 0.78f) c = l.accent;
  if (s < 0.04f || s > 0.96f) c = l.trim;
  return c;
}

Rgb Panel(float s, float t) {
  Rgb c{0.17f, 0.18f, 0.21f};
  if (Frac(t * 6) < 0.25f) c = Rgb{0.08f, 0.08f, 0.1f};
  if (std::fabs(Frac(s * 4) - 0.5f) < 0.06f && std::fabs(Frac(t * 3) - 0.5f) < 0.08f) c = Rgb{0.4f, 0.42f, 0.45f};
  return c;
}

Rgb Glow(float s, float t) {
  const float r = Clamp01(std::hypot(s - 0.5f, t - 0.5f) * 2);
  if (r < 0.45f) return Mix(Rgb{1.0f, 0.97f, 0.85f}, Rgb{1.0f, 0.7f, 0.25f}, r / 0.45f);
  return Mix(Rgb{1.0f, 0.7f, 0.25f}, Rgb{0.7f, 0.12f, 0.05f}, (r - 0.45f) / 0.55f);
}

bool In(const UvRect& r, float u, float v, float& s, float& t) {
  if (u < r.u0 || u >= r.u1 || v < r.v0 || v >= r.v1) return false;
  s = (u - r.u0) / (r.u1 - r.u0);
  t = (v - r.v0) / (r.v1 - r.v0);
  return true;
}

Rgb Skin_At(const Livery& l, float u, float v) {
  float s = 0, t = 0;
  if (In(kHullUv, u, v, s, t)) return Hull(l, s, t);
  if (In(kCanopyUv, u, v, s, t)) return Canopy(l, s, t);
  if (In(kPodUv, u, v, s, t)) return Pod(l, s, t);
  if (In(kWingUv, u, v, s, t)) return Wing(l, s, t);
  if (In(kFinUv, u, v, s, t)) return Fin(l, s, t);
  if (In(kPanelUv, u, v, s, t)) return Panel(s, t);
  In(kGlowUv, u, v, s, t);
  return Glow(s, t);
}

uint32_t Pack(const Rgb& c, float a = 1) {
  const auto b = [](float x) { return uint32_t(std::lround(Clamp01(x) * 255)); };
  return (b(a) << 24) | (b(c.r) << 16) | (b(c.g) << 8) | b(c.b);
}

bool Inside_Triangle(float px, float py, const float* a, const float* b, const float* c) {
  const auto side = [&](const float* p, const float* q) {
    return (q[0] - p[0]) * (py - p[1]) - (q[1] - p[1]) * (px - p[0]);
  };
  const float d0 = side(a, b), d1 = side(b, c), d2 = side(c, a);
  return (d0 >= 0 && d1 >= 0 && d2 >= 0) || (d0 <= 0 && d1 <= 0 && d2 <= 0);
}

}  // namespace

UvRect Inset(const UvRect& r, float texels) {
  const float e = texels / float(kSkinSize);
  return {r.u0 + e, r.v0 + e, r.u1 - e, r.v1 - e};
}

Picture Paint_Skin(const Livery& livery) {
  constexpr int kSamples = 4;  // per axis: smooth edges on every stripe
  Picture p(kSkinSize, kSkinSize);
  for (int y = 0; y < kSkinSize; ++y) {
    for (int x = 0; x < kSkinSize; ++x) {
      Rgb sum{0, 0, 0};
      for (int sy = 0; sy < kSamples; ++sy) {
        for (int sx = 0; sx < kSamples; ++sx) {
          const float u = (float(x) + (float(sx) + 0.5f) / kSamples) / kSkinSize;
          const float v = (float(y) + (float(sy) + 0.5f) / kSamples) / kSkinSize;
          const Rgb c = Skin_At(livery, u, v);
          sum = {sum.r + c.r, sum.g + c.g, sum.b + c.b};
        }
      }
      p.at(x, y) = Pack(Mul(sum, 1.0f / (kSamples * kSamples)));
    }
  }
  return p;
}

Picture Paint_Shadow(const std::vector<Part>& parts, int width, int height) {
  P3 lo, hi;
  Bounds(parts, lo, hi);
  // The outline keeps clear of the quad's border so the softened edge stays inside it.
  const int r = std::max(1, height / 32);
  const float margin_x = float(3 * r + 1) / float(width), margin_y = float(3 * r + 1) / float(height);
  const auto col = [&](float z) { return (margin_x + (1 - 2 * margin_x) * (hi.z - z) / (hi.z - lo.z)) * float(width); };
  const auto row = [&](float x) {
    return (margin_y + (1 - 2 * margin_y) * (hi.x - x) / (hi.x - lo.x)) * float(height);
  };
  // Union of every triangle on a finer grid, then averaged down: edges shared by two
  // triangles leave no seams.
  constexpr int kSamples = 4;
  const int fw = width * kSamples, fh = height * kSamples;
  std::vector<unsigned char> mask(size_t(fw) * size_t(fh), 0);
  for (const Part& part : parts) {
    for (const auto& face : part.faces) {
      for (size_t k = 1; k + 1 < face.size(); ++k) {
        float tri[3][2];
        const int ids[3] = {face[0], face[k], face[k + 1]};
        for (int i = 0; i < 3; ++i) {
          const P3& p = part.vertices[size_t(ids[i])].p;
          tri[i][0] = col(p.z) * kSamples;
          tri[i][1] = row(p.x) * kSamples;
        }
        const int x0 = std::max(0, int(std::floor(std::min({tri[0][0], tri[1][0], tri[2][0]}))));
        const int x1 = std::min(fw - 1, int(std::ceil(std::max({tri[0][0], tri[1][0], tri[2][0]}))));
        const int y0 = std::max(0, int(std::floor(std::min({tri[0][1], tri[1][1], tri[2][1]}))));
        const int y1 = std::min(fh - 1, int(std::ceil(std::max({tri[0][1], tri[1][1], tri[2][1]}))));
        for (int y = y0; y <= y1; ++y)
          for (int x = x0; x <= x1; ++x)
            if (Inside_Triangle(float(x) + 0.5f, float(y) + 0.5f, tri[0], tri[1], tri[2]))
              mask[size_t(y) * size_t(fw) + size_t(x)] = 1;
      }
    }
  }
  std::vector<float> cover(size_t(width) * size_t(height), 0.0f);
  for (int y = 0; y < fh; ++y)
    for (int x = 0; x < fw; ++x)
      cover[size_t(y / kSamples) * size_t(width) + size_t(x / kSamples)] +=
          float(mask[size_t(y) * size_t(fw) + size_t(x)]) / (kSamples * kSamples);
  // Three box blurs make a soft, nearly Gaussian edge.
  std::vector<float> tmp(cover.size());
  for (int pass = 0; pass < 3; ++pass) {
    for (int axis = 0; axis < 2; ++axis) {
      for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
          float sum = 0;
          for (int k = -r; k <= r; ++k) {
            const int xx = axis == 0 ? x + k : x, yy = axis == 0 ? y : y + k;
            if (xx >= 0 && xx < width && yy >= 0 && yy < height) sum += cover[size_t(yy) * size_t(width) + size_t(xx)];
          }
          tmp[size_t(y) * size_t(width) + size_t(x)] = sum / float(2 * r + 1);
        }
      }
      cover.swap(tmp);
    }
  }
  Picture p(width, height);
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x)
      p.at(x, y) = Pack(Rgb{0, 0, 0}, 0.9f * cover[size_t(y) * size_t(width) + size_t(x)]);
  return p;
}

}  // namespace assetgen::ship
