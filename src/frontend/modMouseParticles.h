#pragma once
// The menu screens' mouse-particle fountain.

namespace modMouseParticles {
// Prepares the particles once at start-up.
void Init_Particles();
}
