#pragma once
// The setup dialog shown before start (display mode, colour depth, 3D and sound device).
#include <functional>
#include <string>

#include "frontend/setup_form.h"
#include "platform/records.h"

namespace frmSetup {

inline constexpr const char* kCaption = "Brindlex Quorval Setup";

// Runs the dialog until Start or Exit. Start stores the choices ("Quorval.ini" written,
// messages pumped, settings re-read) and returns true; Exit, or closing the window,
// returns false with nothing written. Without a window system there is no dialog: true,
// nothing written, and the game starts on the settings it has.
bool Show();

// The window rectangle (pixels) a control was last drawn in, by its name ("HScrollRes",
// "lblRes", "HScrollBPP", "lblBPP", "cmb3DDevice", "cmbSoundDriver", "chkShowAgain", "Label1",
// "lblStart", "lblExit"); empty when it has not been drawn.
Rect Control_Rect(const std::string& name);
// Called after every drawn frame with the form and the frame's number (tests look at it).
void Set_Frame_Hook(std::function<void(const SetupForm& form, int frame)> hook);

}  // namespace frmSetup
