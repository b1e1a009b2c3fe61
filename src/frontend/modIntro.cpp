#include "frontend/modIntro.h"

#include "audio_input/plain_screen.h"

namespace modIntro {

// A plain screen until this screen is built.
void Intro() { modMain::Run_Plain_Screen("Brindlex Quorval"); }

}  // namespace modIntro
