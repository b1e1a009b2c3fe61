#pragma once
// The setup dialog shown before start (display mode, colour depth, 3D and sound device).

namespace frmSetup {
// Shows the dialog and returns when it closes: true after Start (the settings written and
// read back), false after Exit (nothing written).
bool Show();
}
