#include "frontend/modMainScr.h"

#include "audio_input/plain_screen.h"

namespace modMainScr {

// A plain screen until this screen is built.
void Main_Menu() { modMain::Run_Plain_Screen("Main Menu"); }

}  // namespace modMainScr
