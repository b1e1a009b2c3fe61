#include "race/modGameLoop.h"

#include "audio_input/plain_screen.h"

namespace modGameLoop {

// A plain screen until this screen is built.
void Init_Race() { modMain::Run_Plain_Screen("Race"); }

}  // namespace modGameLoop
