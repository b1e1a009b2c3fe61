#include "audio_input/plain_screen.h"

#include "audio_input/frmMain.h"
#include "core/modMain.h"
#include "gfx/mod3Denhance.h"
#include "gfx/modText.h"
#include "platform/platform.h"

namespace modMain {

void Run_Plain_Screen(const std::string& title) {
  Reset_Game_Clock();
  const u8 entered_as = GameState;
  bool leaving = false;
  while (!leaving) {
    if (Is_Set(frmMain::EnterPressed)) {
      frmMain::EnterPressed = kFalse;
      GameState = kStateMainMenu;
      leaving = true;
    } else if (Is_Set(frmMain::EscapePressed)) {
      frmMain::EscapePressed = kFalse;
      Running = kFalse;
      leaving = true;
    }
    if (QuitRequested) leaving = true;
    mod3Denhance::Clear_Screen();
    modText::Draw_Text(static_cast<i16>(20 * ScaleX), static_cast<i16>(200 * ScaleY), 0, title);
    modText::Draw_Text(static_cast<i16>(20 * ScaleX), static_cast<i16>(260 * ScaleY), 2,
                       "Enter - Main Menu     Esc - Quit");
    Update_Frame_Timer();
    mod3Denhance::Flip();
    platform::Pump_Messages();
    // Entering the main menu from itself would loop here for ever; leave only on a change.
    if (leaving && GameState == entered_as && Is_Set(Running) && !QuitRequested) leaving = false;
  }
}

}  // namespace modMain
