#include "frontend/modMouseParticles.h"

#include <algorithm>

#include "audio_input/frmMain.h"
#include "core/modMain.h"
#include "mathmesh/modMATH.h"
#include "platform/platform.h"

namespace modMouseParticles {

std::array<Particle, kParticleCount> Particles;

namespace {
mod3Denhance::Surface ParticleTexture;  // Gfx/particle.dds, kept for the run
i16 PrevMouseX = 0, PrevMouseY = 0;     // pointer at the end of the last update
constexpr float kGravity = 0.002f;  // pixels per ms per ms
constexpr float kHalfSize = 10.0f;  // the sprite is 20 x 20 pixels at every resolution
// Strip of the current sprite, rewritten in place each draw.
std::array<ScreenVertex, 4> g_quad;
}  // namespace

bool Init_Particles() {
  ParticleTexture = mod3Denhance::Create_Texture(platform::Game_Path("\\Gfx\\particle.dds"), 32, 32, 0);
  for (Particle& p : Particles) p.Life = 0;
  PrevMouseX = frmMain::MouseX;
  PrevMouseY = frmMain::MouseY;
  return static_cast<bool>(ParticleTexture);
}

void Draw_Particles_Scene() {
  platform::Device3D* device = mod3Denhance::D3DDevice;
  if (device == nullptr) return;
  Update_Particles();
}

void Draw_Pointer(const mod3Denhance::Surface& cursor) {
  Rect pointer{0, 0, 11, 19};
  i16 x = frmMain::MouseX, y = frmMain::MouseY;
  mod3Denhance::Blit_Clipped(mod3Denhance::BackBuffer, cursor, pointer, x, y, 1);
}

void Spawn_Particle(int i) {
  using frmMain::MouseX, frmMain::MouseY;
  Particle& p = Particles[static_cast<size_t>(i)];
  p.Life = 1.0f;
  p.Fade = (modMain::Rnd() * 41.0f + 10.0f) / 10000.0f;
  p.X = MouseX;
  p.Y = MouseY;
  // The spread leans toward the way the pointer moved since the last update.
  p.VX = (3.0f - static_cast<float>(PrevMouseX - MouseX + 7) * modMain::Rnd()) / 20.0f;
  p.VY = (3.0f - static_cast<float>(PrevMouseY - MouseY + 7) * modMain::Rnd()) / 20.0f;
}

void Draw_Particle(int i) {
  platform::Device3D* device = mod3Denhance::D3DDevice;
  if (device == nullptr) return;
  Particle& p = Particles[static_cast<size_t>(i)];
  // A dying particle's Life may be just below 0: its colour components are clamped.
  const float life = std::clamp(p.Life, 0.0f, 1.0f);
  p.Colour = modMATH::Create_Color_RGBA(1.0f, life, 0.0f, life);
  auto corner = [&](int k, float dx, float dy, float u, float v) {
    g_quad[static_cast<size_t>(k)] = ScreenVertex{p.X + dx, p.Y + dy, 0.0f, 1.0f, p.Colour, 0, u, v};
  };
  corner(0, -kHalfSize, kHalfSize, 0, 1);
  corner(1, -kHalfSize, -kHalfSize, 0, 0);
  corner(2, kHalfSize, kHalfSize, 1, 1);
  corner(3, kHalfSize, -kHalfSize, 1, 0);
  device->DrawPrimitive(platform::Primitive::TriangleStrip, g_quad.data(), 4);
}

void Update_Particles() {
  platform::Device3D* device = mod3Denhance::D3DDevice;
  if (device != nullptr) {
    device->SetRenderState(platform::rs::DestBlend, platform::blend::InvSrcAlpha);
    device->SetRenderState(platform::rs::SrcBlend, platform::blend::SrcAlpha);
    device->SetRenderState(platform::rs::AlphaBlendEnable, 1);
    device->SetTexture(0, ParticleTexture);
  }
  const float t = static_cast<float>(modMain::FrameTime);
  for (int i = 0; i < kParticleCount; ++i) {
    Particle& p = Particles[static_cast<size_t>(i)];
    if (p.Life <= 0) {
      Spawn_Particle(i);
      continue;
    }
    p.Life -= p.Fade * t;
    p.X += p.VX * t;
    p.Y += p.VY * t;
    p.VY += kGravity * t;
    Draw_Particle(i);
  }
  if (device != nullptr) device->SetRenderState(platform::rs::AlphaBlendEnable, 0);
  PrevMouseX = frmMain::MouseX;
  PrevMouseY = frmMain::MouseY;
}

}  // namespace modMouseParticles
