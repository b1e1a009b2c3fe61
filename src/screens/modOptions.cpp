#include "screens/modOptions.h"

#include "audio_input/plain_screen.h"

namespace modOptions {

// A plain screen until this screen is built.
void Init_Options_Screen() { modMain::Run_Plain_Screen("Options"); }

}  // namespace modOptions
