#include "frontend/modMouseParticles.h"

namespace modMouseParticles {

// Nothing to prepare until the fountain is built with the menu screens.
void Init_Particles() {}

}  // namespace modMouseParticles
