#include "frontend/frmSetup.h"

#include "core/modMain.h"

namespace frmSetup {

// Until the dialog is built, Start is pressed at once with the current settings.
void Show() { modMain::Init_Game(); }

}  // namespace frmSetup
