#include "screens/modShipSelection.h"

#include "audio_input/plain_screen.h"

namespace modShipSelection {

// A plain screen until this screen is built.
void Init_Ship_Selection() { modMain::Run_Plain_Screen("Ship Selection"); }

}  // namespace modShipSelection
