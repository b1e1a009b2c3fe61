// The 3D part of a race frame: chase camera, road, ground, walls, the scrolling sky behind
// them, the racers' shadows, flames and bodies, see-through walls last, and the mini-map quad.
#include <algorithm>
#include <cctype>
#include <cmath>
#include <string>

#include "core/modMain.h"
#include "core/settings.h"
#include "mathmesh/modMATH.h"
#include "race/modGameLoop.h"
#include "track/modTracks.h"
#include "vehicle/clsHumanPlayer.h"
#include "vehicle/players.h"

namespace modGameLoop {

namespace {

using platform::Device3D;
namespace rs = platform::rs;

constexpr float kDistancePerSpeed = 3.0f, kDistanceStep = 0.1f, kEyeBehind = 6.0f, kEyeAbove = 5.0f;
constexpr float kLookAhead = 0.01f, kSkyDepth = 0.9999f, kSkySpan = 0.5f;
constexpr float kMapLeft = 500, kMapRight = 628, kMapTop = 300, kMapBottom = 428;

// The texture bound last this frame; compared by name so strips sharing a texture
// (the file orders them so) bind it once.
const std::string* g_bound = nullptr;
const std::string kNone;

bool Is_Bound(const std::string& name) { return (g_bound != nullptr ? *g_bound : kNone) == name; }

void Texture_Switch(Device3D& device, const modTracks::TrackStrip& strip) {
  if (!modTracks::TrackTexture.Contains(strip.TextureIndex)) return;
  const modTracks::TextureEntry& t = modTracks::TrackTexture(strip.TextureIndex);
  if (Is_Bound(t.TextureName)) return;
  if (!t.Texture) {
    device.SetTexture(0, nullptr);
    g_bound = nullptr;
  } else {
    device.SetTexture(0, t.Texture);
    g_bound = &t.TextureName;
  }
}

bool Ends_With_Dds(const std::string& name) {
  const size_t n = name.size();
  auto lower = [&](size_t i) { return static_cast<char>(std::tolower(static_cast<unsigned char>(name[n - i]))); };
  return n >= 3 && lower(3) == 'd' && lower(2) == 'd' && lower(1) == 's';
}

void Move_Camera(Device3D& device, const clsHumanPlayer& p) {
  const float target = p.cVelocityMag * kDistancePerSpeed;
  for (i32 step = 0; step < modMain::DesignSteps; ++step) {
    if (target - CameraDistance > kDistanceStep)
      CameraDistance += kDistanceStep;
    else if (target - CameraDistance < -kDistanceStep)
      CameraDistance -= kDistanceStep;
    else
      CameraDistance = target;
  }
  const float s = std::sin(-p.cOrientation), c = std::cos(p.cOrientation);
  const Vector3 eye{p.PositionX - s * CameraDistance - s * kEyeBehind, p.PositionY + kEyeAbove,
                    p.PositionZ - c * CameraDistance - c * kEyeBehind};
  const Vector3 at{p.PositionX, p.PositionY, p.PositionZ + kLookAhead};
  Matrix4 view;
  modMATH::View_Matrix(view, eye, at, Vector3{0, 1, 0}, 0);
  device.SetTransform(platform::TransformKind::View, view);
}

void Draw_Sky(Device3D& device, ScreenVertex (&quad)[4], float orientation) {
  const u32 white = modMATH::Create_Color_RGBA(1, 1, 1, 1);
  const float w = modMain::ScreenWidth, h = modMain::ScreenHeight;
  // Half the texture spans the screen; one full turn scrolls it by two widths.
  const float u = static_cast<float>(-orientation / modMATH::kPi);
  quad[0] = ScreenVertex{0, h, kSkyDepth, 1, white, 1, u, 1};
  quad[1] = ScreenVertex{0, 0, kSkyDepth, 1, white, 1, u, 0};
  quad[2] = ScreenVertex{w, h, kSkyDepth, 1, white, 1, u + kSkySpan, 1};
  quad[3] = ScreenVertex{w, 0, kSkyDepth, 1, white, 1, u + kSkySpan, 0};
  device.SetTexture(0, SkySurf);
  device.DrawPrimitive(platform::Primitive::TriangleStrip, quad, 4);
}

// The wall pass; returns how many walls went to the see-through pass.
int Draw_Walls(Device3D& device) {
  using modTracks::TrackWalls;
  int deferred = 0;
  if (TrackWalls.Upper() < 0) return 0;  // the single index -1 stands for no walls
  for (int i = std::max(0, TrackWalls.Lower()); i <= TrackWalls.Upper(); ++i) {
    const modTracks::TrackStrip& wall = TrackWalls(i);
    bool walls_deferred = false;
    if (modTracks::TrackTexture.Contains(wall.TextureIndex)) {
      const modTracks::TextureEntry& t = modTracks::TrackTexture(wall.TextureIndex);
      if (!Is_Bound(t.TextureName)) {
        if (!t.Texture) {
          device.SetTexture(0, nullptr);
          g_bound = nullptr;
        } else if (Ends_With_Dds(t.TextureName)) {
          // See-through walls wait for the racers, so they show what is behind them.
          walls_deferred = true;
          TransparentWalls.Resize_Keep(deferred);
          TransparentWalls(deferred++) = static_cast<i16>(i);
        } else {
          device.SetTexture(0, t.Texture);
          g_bound = &t.TextureName;
        }
      }
    }
    if (!walls_deferred) modTracks::Draw_Strip(device, modTracks::StripSet::Walls, i);
  }
  return deferred;
}

void Draw_See_Through_Walls(Device3D& device, int deferred) {
  if (deferred == 0) return;
  device.SetRenderState(rs::CullMode, platform::cull::None);
  device.SetRenderState(rs::ZWriteEnable, 1);
  for (int k = 0; k < deferred; ++k) {
    const i16 wall = TransparentWalls(k);
    if (!modTracks::TrackWalls.Contains(wall)) continue;
    Texture_Switch(device, modTracks::TrackWalls(wall));
    modTracks::Draw_Strip(device, modTracks::StripSet::Walls, wall);
  }
  device.SetRenderState(rs::ZWriteEnable, 0);
  device.SetRenderState(rs::CullMode, platform::cull::CounterClockwise);
}

void Draw_Mini_Map(Device3D& device, ScreenVertex (&quad)[4]) {
  const u32 white = modMATH::Create_Color_RGBA(1, 1, 1, 1);
  const float sx = modMain::ScaleX, sy = modMain::ScaleY;
  // Row 0 of the map at the bottom: larger z is higher on screen, as the markers place it.
  quad[0] = ScreenVertex{kMapLeft * sx, kMapBottom * sy, 0, 1, white, 1, 0, 0};
  quad[1] = ScreenVertex{kMapLeft * sx, kMapTop * sy, 0, 1, white, 1, 0, 1};
  quad[2] = ScreenVertex{kMapRight * sx, kMapBottom * sy, 0, 1, white, 1, 1, 0};
  quad[3] = ScreenVertex{kMapRight * sx, kMapTop * sy, 0, 1, white, 1, 1, 1};
  device.SetTexture(0, MiniMapSurf);
  // Additive, so the black of the map leaves the scene untouched.
  device.SetRenderState(rs::DestBlend, platform::blend::One);
  device.SetRenderState(rs::SrcBlend, platform::blend::One);
  device.DrawPrimitive(platform::Primitive::TriangleStrip, quad, 4);
  device.SetRenderState(rs::DestBlend, platform::blend::InvSrcAlpha);
  device.SetRenderState(rs::SrcBlend, platform::blend::SrcAlpha);
  device.SetRenderState(rs::AlphaBlendEnable, 0);
  device.SetRenderState(rs::ZWriteEnable, 1);
}

template <class Fn>
void For_Each_Racer(Fn fn) {
  const int count = static_cast<int>(modMain::Players.size());
  for (int i = 0; i <= modMain::NumOpponents && i < count; ++i)
    if (modMain::Players[static_cast<size_t>(i)]) fn(*modMain::Players[static_cast<size_t>(i)]);
}

}  // namespace

void Render_Race_Frame() {
  Device3D* device = mod3Denhance::D3DDevice;
  if (device == nullptr || modMain::Players.empty() || !modMain::Players[0]) return;
  const clsHumanPlayer& player = *modMain::Players[0];
  TransparentWalls.Resize(0, 0);
  g_bound = nullptr;
  ScreenVertex quad[4];

  Move_Camera(*device, player);
  device->SetRenderState(rs::Lighting, 0);
  // Only depth: the sky, drawn over the whole screen, leaves no pixel of the last frame.
  device->Clear(nullptr, 0, platform::kClearZBuffer, 0, 1.0f, 0);
  device->SetRenderState(rs::CullMode, platform::cull::None);

  for (int i = modTracks::Track.Lower(); i <= modTracks::Track.Upper(); ++i) {
    Texture_Switch(*device, modTracks::Track(i));
    modTracks::Draw_Strip(*device, modTracks::StripSet::Road, i);
  }
  if (modTracks::Grass.Count() > 0) {
    const int ground = modTracks::Grass.Lower();
    Texture_Switch(*device, modTracks::Grass(ground));
    modTracks::Draw_Strip(*device, modTracks::StripSet::Ground, ground);
  }
  const int deferred = Draw_Walls(*device);
  device->SetRenderState(rs::CullMode, platform::cull::CounterClockwise);
  // The sky after the solid scene: it lies behind all of it, so only the pixels it shows
  // are shaded.
  Draw_Sky(*device, quad, player.cOrientation);

  device->SetRenderState(rs::AlphaBlendEnable, 1);
  device->SetRenderState(rs::ZWriteEnable, 0);
  For_Each_Racer([](clsHumanPlayer& r) { r.DrawShadow(); });
  device->SetTexture(0, CarThrustSurf);
  For_Each_Racer([](clsHumanPlayer& r) { r.DrawThrust(); });
  device->SetRenderState(rs::AlphaBlendEnable, 0);
  device->SetRenderState(rs::ZWriteEnable, 1);
  device->SetRenderState(rs::Lighting, 1);
  For_Each_Racer([](clsHumanPlayer& r) { r.DrawBody(); });
  Draw_Ghost();
  device->SetRenderState(rs::Lighting, 0);
  Matrix4 identity;
  modMATH::Identity_Matrix(identity);
  device->SetTransform(platform::TransformKind::World, identity);
  device->SetMaterial(mod3Denhance::Material);
  // The flames again, over the bodies, so a flame in front of its own hull shows.
  device->SetRenderState(rs::AlphaBlendEnable, 1);
  device->SetRenderState(rs::ZWriteEnable, 0);
  device->SetTexture(0, CarThrustSurf);
  For_Each_Racer([](clsHumanPlayer& r) { r.DrawThrust(); });
  Draw_See_Through_Walls(*device, deferred);
  Draw_Mini_Map(*device, quad);
}

}  // namespace modGameLoop
