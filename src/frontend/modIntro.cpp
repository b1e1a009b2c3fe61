#include "frontend/modIntro.h"

#include "audio_input/frmMain.h"
#include "core/modMain.h"
#include "gfx/mod3Denhance.h"
#include "platform/platform.h"

namespace modIntro {

namespace {
mod3Denhance::Surface IntroSurface;  // the picture on show, stretched to the screen
Bool16 IntroRunning = kFalse;
i16 IntroPage = 1;  // 1 or 2
i32 PageStart = 0;  // tick count when the page appeared

void Load_Page(const char* file) {
  // A missing picture leaves the surface empty; the page still runs for its time.
  mod3Denhance::Create_Surface(IntroSurface, modMain::ScreenWidth, modMain::ScreenHeight, platform::Game_Path(file),
                               mod3Denhance::kKeyNone, kFalse);
}

i32 Since_Page_Start() {
  return static_cast<i32>(static_cast<u32>(platform::Tick_Count()) - static_cast<u32>(PageStart));
}

void Show_Page_2() {
  Load_Page("\\Gfx\\Intro2.bmp");
  IntroPage = 2;
  PageStart = platform::Tick_Count();
}

void End_Intro() {
  IntroRunning = kFalse;
  frmMain::Take(frmMain::Press::LeftClick);
  frmMain::Take(frmMain::Press::Enter);
  modMain::GameState = modMain::kStateMainMenu;
}

void Draw_Intro() {
  if (IntroSurface) {
    Rect src = mod3Denhance::ScreenRect;
    i16 x = 0, y = 0;
    mod3Denhance::Blit_Clipped(mod3Denhance::BackBuffer, IntroSurface, src, x, y, 0);
  }
  modMain::Update_Frame_Timer();
  mod3Denhance::Flip();
}

void Intro_Loop() {
  PageStart = platform::Tick_Count();
  IntroPage = 1;
  while (Is_Set(IntroRunning)) {
    // Read, not taken, on page 1: a press still held ends page 2 as well.
    if (frmMain::Pressed(frmMain::Press::LeftClick) || frmMain::Pressed(frmMain::Press::Enter)) {
      if (IntroPage == 2) {
        End_Intro();
      } else {
        Show_Page_2();
      }
    }
    if (IntroPage == 1 && Since_Page_Start() >= kPageTime) {
      Show_Page_2();
    } else if (IntroPage == 2 && Since_Page_Start() >= kPageTime) {
      End_Intro();
    }
    Draw_Intro();
    platform::Pump_Messages();
    if (modMain::QuitRequested) IntroRunning = kFalse;
  }
}
}  // namespace

void Intro() {
  Load_Page("\\Gfx\\Intro1.bmp");
  IntroRunning = kTrue;
  modMain::Reset_Game_Clock();
  Intro_Loop();
  IntroSurface.reset();
}

i16 Page() { return IntroPage; }
bool Running() { return Is_Set(IntroRunning); }
bool Picture_Held() { return static_cast<bool>(IntroSurface); }

}  // namespace modIntro
