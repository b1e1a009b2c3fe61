#pragma once
// The ships' skins and shadows. Every ship maps its parts into the same regions of a
// square skin, so one painter serves all ships; a livery chooses colours, pattern and
// racing number.
#include <vector>

#include "assetgen.h"
#include "ship_mesh.h"

namespace assetgen::ship {

// Skin regions (u0, v0, u1, v1). Loft regions run around (u) and along (v) the body.
inline constexpr UvRect kHullUv{0.0f, 0.0f, 0.5f, 1.0f};
inline constexpr UvRect kCanopyUv{0.5f, 0.0f, 0.75f, 0.375f};
inline constexpr UvRect kPodUv{0.75f, 0.0f, 1.0f, 0.375f};
inline constexpr UvRect kWingUv{0.5f, 0.375f, 1.0f, 0.75f};
inline constexpr UvRect kFinUv{0.5f, 0.75f, 0.8125f, 1.0f};
inline constexpr UvRect kPanelUv{0.8125f, 0.75f, 1.0f, 0.875f};
inline constexpr UvRect kGlowUv{0.8125f, 0.875f, 1.0f, 1.0f};

inline constexpr int kSkinSize = 256;

// The rect shrunk by `texels` of the skin on every side, so filtering never reaches a
// neighbouring region.
UvRect Inset(const UvRect& r, float texels = 1.5f);

struct Rgb {
  float r, g, b;
};

enum class Pattern { TwinStripes, Chevrons, Sweep, Blades };

struct Livery {
  Rgb base, second, accent, trim;
  Pattern pattern;
  int number;  // 0..99, painted on both flanks
};

Picture Paint_Skin(const Livery& livery);

// A black picture whose alpha is the ship's outline seen from above, softened: columns
// run from the nose (left) to the tail, rows from the +x side (top) to the -x side,
// matching the shadow quad's texture coordinates.
Picture Paint_Shadow(const std::vector<Part>& parts, int width, int height);

}  // namespace assetgen::ship
