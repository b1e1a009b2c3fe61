// The mini-map: the road seen from above, squeezed into a 127 x 127 square, rendered once
// per race through the 3D device into the back buffer and copied into the map texture.
#include <array>
#include <vector>

#include "gfx/mod3Denhance.h"
#include "mathmesh/modMATH.h"
#include "track/modTracks.h"

namespace modTracks {

namespace {

// Horizontal bounds of the road, set by Build_MiniMap (all 0 for a road with no vertex).
float TrackMinX = 0, TrackMaxX = 0, TrackMinZ = 0, TrackMaxZ = 0;

// Sets the four bounds from every road vertex; false when the road has no vertex at all.
bool Road_Bounds() {
  bool any = false;
  for (const TrackStrip& s : Track.Items()) {
    for (const LitVertex& v : s.Vertices.Items()) {
      if (!any) {
        TrackMinX = TrackMaxX = v.x;
        TrackMinZ = TrackMaxZ = v.z;
        any = true;
      }
      if (TrackMaxX < v.x) TrackMaxX = v.x;
      if (TrackMinX > v.x) TrackMinX = v.x;
      if (TrackMaxZ < v.z) TrackMaxZ = v.z;
      if (TrackMinZ > v.z) TrackMinZ = v.z;
    }
  }
  if (!any) TrackMinX = TrackMaxX = TrackMinZ = TrackMaxZ = 0;
  return any;
}

ScreenVertex Outline_Vertex(const LitVertex& v) {
  ScreenVertex s;
  MiniMap_Point(v.x, v.z, s.sx, s.sy);
  s.sz = 0;
  s.rhw = 1;
  s.color = modMATH::Create_Color_RGBA(1, 1, 1, 1);
  s.specular = 1;
  return s;
}

}  // namespace

bool MiniMap_Point(float x, float z, float& column, float& row) {
  const float dx = TrackMaxX - TrackMinX, dz = TrackMaxZ - TrackMinZ;
  // A road with no extent along an axis has no map along it: the caller skips the point.
  if (!(dx > 0) || !(dz > 0)) return false;
  column = (x - TrackMinX) / dx * static_cast<float>(kMiniMapSide);
  row = (z - TrackMinZ) / dz * static_cast<float>(kMiniMapSide);
  return true;
}

std::vector<ScreenVertex> MiniMap_Outline() {
  std::vector<ScreenVertex> out;
  float c = 0, r = 0;
  if (!MiniMap_Point(0, 0, c, r)) return out;
  // Each strip's last rung is the next strip's first, so it is left out; the first rung
  // of the road closes the loop.
  for (const TrackStrip& s : Track.Items()) {
    const auto& v = s.Vertices.Items();
    for (size_t j = 0; j + 2 < v.size(); ++j) out.push_back(Outline_Vertex(v[j]));
  }
  if (Track.Count() > 0) {
    const auto& first = Track(Track.Lower()).Vertices.Items();
    for (size_t j = 0; j < 2 && j < first.size(); ++j) out.push_back(Outline_Vertex(first[j]));
  }
  return out;
}

void Build_MiniMap(const mod3Denhance::Surface& target) {
  platform::Device3D* device = mod3Denhance::D3DDevice;
  if (device != nullptr) device->SetTexture(0, nullptr);
  Road_Bounds();
  if (target) platform::Fill_Rect(*target, Rect{0, 0, target->Width(), target->Height()}, 0);
  const std::vector<ScreenVertex> outline = MiniMap_Outline();
  if (device == nullptr || !mod3Denhance::BackBuffer) return;

  device->SetRenderState(platform::rs::Lighting, 0);
  device->SetRenderState(platform::rs::CullMode, platform::cull::None);
  device->Clear(nullptr, 0, platform::kClearTarget | platform::kClearZBuffer, 0x00000000u, 1.0f, 0);
  if (outline.size() >= 3)
    device->DrawPrimitive(platform::Primitive::TriangleStrip, outline.data(), static_cast<int>(outline.size()));
  device->SetRenderState(platform::rs::CullMode, platform::cull::CounterClockwise);
  // A degenerate road leaves the map black rather than a copy of the cleared screen.
  if (target && outline.size() >= 3)
    platform::Blit(*target, *mod3Denhance::BackBuffer, Rect{0, 0, kMiniMapSide, kMiniMapSide}, 0, 0, false);
}

std::array<float, 4> Map_Bounds() { return {TrackMinX, TrackMaxX, TrackMinZ, TrackMaxZ}; }

}  // namespace modTracks
