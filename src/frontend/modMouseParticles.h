#pragma once
// The mouse-particle fountain of the menu screens (main menu, options, hi-scores, ship
// selection; kept below them all so each can draw it): 41 glowing sprites born at the pointer,
// falling under gravity and fading from yellow to clear red. Created once at start-up;
// the records live for the whole run, so each screen continues the fountain.
#include <array>

#include "core/types.h"
#include "gfx/mod3Denhance.h"

namespace modMouseParticles {

struct Particle {
  float X = 0, Y = 0;    // centre, screen pixels
  float VX = 0, VY = 0;  // pixels per ms, y down
  u32 Colour = 0;        // diffuse colour it was last drawn with
  float Life = 0;        // 1 at birth, dead at 0 or below
  float Fade = 0;        // Life lost per ms
};

inline constexpr int kParticleCount = 41;
extern std::array<Particle, kParticleCount> Particles;

// Loads the sprite (Gfx/particle.dds, kept for the run), marks every particle dead and
// takes the pointer as at rest. Called once by Init_Game. False when the sprite could not
// be loaded: the fountain then runs unseen.
bool Init_Particles();
// Advances by FrameTime and draws every particle; call once per frame inside a 3D scene.
// A dead particle is only reborn at the pointer in this call, and drawn from the next.
void Update_Particles();
// Update_Particles inside a 3D scene of its own (screens with nothing else in 3D).
void Draw_Particles_Scene();
// The game-drawn pointer (the screen's 11 x 19 cursor picture, black key) at the mouse
// position, clipped at the screen edges.
void Draw_Pointer(const mod3Denhance::Surface& cursor);
// Rebirth of particle i at the pointer with a speed that follows the pointer's motion.
void Spawn_Particle(int i);
// Draws particle i as a 20 x 20 pixel alpha-blended square.
void Draw_Particle(int i);

}  // namespace modMouseParticles
