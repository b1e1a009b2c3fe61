#include "frontend/frmSetup.h"

namespace frmSetup {

// Until the dialog is built, Start is pressed at once with the current settings.
bool Show() { return true; }

}  // namespace frmSetup
