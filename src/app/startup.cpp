// Start-up, the game-state loop and shutdown.
#include "app/startup.h"

#include <string>

#include "audio_input/frmMain.h"
#include "core/extras.h"
#include "core/modMain.h"
#include "frontend/frmSetup.h"
#include "frontend/modIntro.h"
#include "frontend/modMainScr.h"
#include "frontend/modMouseParticles.h"
#include "gfx/mod3Denhance.h"
#include "gfx/modText.h"
#include "platform/platform.h"
#include "race/modGameLoop.h"
#include "screens/modHiScore.h"
#include "screens/modOptions.h"
#include "screens/modShipSelection.h"

namespace modMain {

namespace {
void Run_Screen(u8 state) {
  switch (state) {
    case kStateMainMenu:
      modMainScr::Main_Menu();
      break;
    case kStateRace:
      modGameLoop::Init_Race();
      break;
    case kStateHiScore:
      modHiScore::Init_HiScore_Screen();
      break;
    case kStateShipSelection:
      modShipSelection::Init_Ship_Selection();
      break;
    case kStateOptions:
      modOptions::Init_Options_Screen();
      break;
    case kStateIntro:
      modIntro::Intro();
      break;
    default:
      break;  // no screen: the loop only times, flips and pumps
  }
}
}  // namespace

int Main() {
  Randomize(platform::Time_Of_Day());
  Create_Log();
  Write_Log("Reading Quorval.ini...");
  Read_Settings();
  extras::Load();
  frmMain::Read_Pad_And_Volume();
  Write_Log("...Done");
  if (SkipSetup != 0 || frmSetup::Show()) Init_Game();
  return 0;
}

void Init_Game() {
  QuitRequested = false;
  if (!frmMain::Show()) {
    platform::Message_Box("Brindlex Quorval could not open its window.");
    return;
  }
  while (platform::Show_Cursor(false) >= 0) {
  }
  Write_Log("Initialising DDraw...");
  if (!mod3Denhance::Init_DDraw(ScreenWidth, ScreenHeight, ScreenBPP)) {
    // The player has been told why; nothing more can run without a display.
    frmMain::Unload();
    return;
  }
  Running = kTrue;
  Update_Frame_Timer();
  Write_Log("Making Fonts...");
  std::string missing_font;
  if (!modText::Load_Fonts(missing_font)) {
    // Every screen speaks through these pictures: without one the game cannot be played.
    platform::Message_Box("Brindlex Quorval cannot start: the font picture " + missing_font +
                          " is missing or unreadable.");
    Kill_Everything();
    return;
  }
  Write_Log("Fonts created");
  Write_Log("Initialising Sound and Music...");
  frmMain::Init_Streaming_Music();
  frmMain::Play_Streaming_Music(platform::Game_Path("\\Sm\\ASounds.raw"));
  Write_Log("...Sound and Music Ready");
  Write_Log("Initialising Menu Particles...");
  modMouseParticles::Init_Particles();
  Write_Log("...Menu Particles Ready");
  Write_Log("Starting Main loop");
  Main_Loop();
  Kill_Everything();
}

void Main_Loop() {
  GameState = kStateIntro;
  while (Is_Set(Running)) {
    Run_Screen(GameState);
    Update_Frame_Timer();
    mod3Denhance::Flip();
    platform::Pump_Messages();
  }
}

void Kill_Everything() {
  Write_Log("Ending Program");
  while (platform::Show_Cursor(true) < 0) {
  }
  // The window only ever covers the desktop at its own mode: there is no mode to restore.
  Write_Log("Cooperative level set back to normal");
  frmMain::Kill_DSound();
  Write_Log("DSound Killed");
  modText::Release_Fonts();  // their textures go with the device
  // The z-buffer and the screen itself belong to the display, which goes with DD.
  Write_Log("Z-buffer Killed");
  mod3Denhance::Release_D3DDevice();
  Write_Log("3D Device Killed");
  mod3Denhance::Release_D3D();
  Write_Log("D3D Killed");
  mod3Denhance::Release_BackBuffer();
  Write_Log("Backbuffer Killed");
  Write_Log("Primary Killed");
  mod3Denhance::Release_DD();
  Write_Log("DD Killed");
  mod3Denhance::Release_DX();
  Write_Log("DX Killed");
  Write_Log("Everything was killed successfully");
  Write_Log("Bye Bye");
  frmMain::Unload();
}

}  // namespace modMain
