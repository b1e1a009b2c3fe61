#pragma once
// The setup dialog shown before start (display mode, colour depth, 3D and sound device).

namespace frmSetup {
// Shows the dialog; its Start button runs the game. Returns when the dialog is closed.
void Show();
}
