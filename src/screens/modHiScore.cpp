#include "screens/modHiScore.h"

#include "audio_input/plain_screen.h"

namespace modHiScore {

// A plain screen until this screen is built.
void Init_HiScore_Screen() { modMain::Run_Plain_Screen("Hi-Scores"); }

}  // namespace modHiScore
