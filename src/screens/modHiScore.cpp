#include "screens/modHiScore.h"

#include "core/plain_screen.h"

namespace modHiScore {

// A plain screen until this screen is built.
void Init_HiScore_Screen() { modMain::Run_Plain_Screen("Hi-Scores"); }

}  // namespace modHiScore
