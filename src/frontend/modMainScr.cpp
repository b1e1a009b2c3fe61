#include "frontend/modMainScr.h"

#include <array>

#include "audio_input/frmMain.h"
#include "core/modMain.h"
#include "core/numbers.h"
#include "frontend/modMouseParticles.h"
#include "gfx/mod3Denhance.h"
#include "platform/platform.h"

namespace modMainScr {

using modMain::Screen_X;
using modMain::Screen_Y;

namespace {
mod3Denhance::Surface MenuBackground, MenuCursor, MenuButtons;
std::array<Rect, 4> ButtonRects;  // screen rectangles of the buttons 0..3
// Slide-in offset in pixels; the buttons take clicks only once it is exactly 0.
float ButtonSlide = 0;
Bool16 MenuRunning = kFalse;

using mod3Denhance::BackBuffer;
using mod3Denhance::Blit_Clipped;

constexpr float kSlideSpeed = 0.4f;  // pixels per ms
constexpr int kRowHeight = 39;       // of each button in Buttons.bmp, design pixels
constexpr int kColumnWidth = 191;    // highlighted column left, plain column right

void Choose(int button) {
  switch (button) {
    case 0:
      modMain::NumOpponents = 0;
      modMain::GameState = modMain::kStateShipSelection;
      break;
    case 1:
      modMain::NumOpponents = 4;
      modMain::GameState = modMain::kStateShipSelection;
      break;
    case 2:
      modMain::GameState = modMain::kStateOptions;
      break;
    default:
      modMain::Running = kFalse;
      break;
  }
}

void Draw_Main_Menu() {
  using frmMain::MouseX, frmMain::MouseY;
  mod3Denhance::Clear_Screen();
  Rect whole = mod3Denhance::ScreenRect;
  i16 x = 0, y = 0;
  Blit_Clipped(BackBuffer, MenuBackground, whole, x, y, 0);
  for (int i = 0; i < 4; ++i) {
    const Rect& place = ButtonRects[static_cast<size_t>(i)];
    const i16 top = Screen_Y(kRowHeight * i), bottom = Screen_Y(kRowHeight * i + kRowHeight);
    // While sliding every button shows lit; odd buttons come in from the right.
    bool lit = true;
    double bx = place.left;
    if (ButtonSlide == 0) {
      lit = Is_Set(mod3Denhance::Point_In_Rect(place, MouseX, MouseY));
    } else {
      bx = i % 2 == 1 ? place.left + ButtonSlide : place.left - ButtonSlide;
    }
    Rect src = lit ? Rect{0, top, Screen_X(kColumnWidth), bottom}
                   : Rect{Screen_X(kColumnWidth), top, Screen_X(2 * kColumnWidth), bottom};
    i16 dx = static_cast<i16>(numbers::Round_Half_Even(bx)), dy = static_cast<i16>(place.top);
    Blit_Clipped(BackBuffer, MenuButtons, src, dx, dy, 1);
  }
  modMain::Update_Frame_Timer();
  modMouseParticles::Draw_Particles_Scene();
  modMouseParticles::Draw_Pointer(MenuCursor);
  mod3Denhance::Flip();
}

void Main_Menu_Loop() {
  while (Is_Set(MenuRunning)) {
    if (ButtonSlide == 0) {
      for (int i = 0; i < 4; ++i) {
        if (Is_Set(
                mod3Denhance::Point_In_Rect(ButtonRects[static_cast<size_t>(i)], frmMain::MouseX, frmMain::MouseY)) &&
            frmMain::Take(frmMain::Press::LeftClick)) {
          MenuRunning = kFalse;
          Choose(i);
        }
      }
    }
    Draw_Main_Menu();
    // The last step may overshoot below 0 for one frame before it settles at exactly 0.
    if (ButtonSlide > 0) {
      ButtonSlide -= kSlideSpeed * static_cast<float>(modMain::FrameTime);
    } else {
      ButtonSlide = 0;
    }
    platform::Pump_Messages();
    if (modMain::QuitRequested) MenuRunning = kFalse;
  }
}
}  // namespace

void Main_Menu() {
  using mod3Denhance::Create_Surface;
  using modMain::ScaleX, modMain::ScaleY;
  Create_Surface(MenuCursor, 11, 19, platform::Game_Path("\\Gfx\\Cursor.bmp"), mod3Denhance::kKeyBlack, kFalse);
  Create_Surface(MenuBackground, modMain::ScreenWidth, modMain::ScreenHeight,
                 platform::Game_Path("\\Gfx\\MainScr_bg.bmp"), mod3Denhance::kKeyNone, kFalse);
  Create_Surface(MenuButtons, 382.0 * ScaleX, 156.0 * ScaleY, platform::Game_Path("\\Gfx\\Buttons.bmp"),
                 mod3Denhance::kKeyBlack, kFalse);
  for (int i = 0; i < 4; ++i) {
    const int top = 150 + 50 * i;
    ButtonRects[static_cast<size_t>(i)] =
        mod3Denhance::Make_Rect(Screen_X(225), Screen_Y(top), Screen_X(416), Screen_Y(top + 39));
  }
  ButtonSlide = 416.0f * ScaleX;
  MenuRunning = kTrue;
  modMain::Reset_Game_Clock();
  Main_Menu_Loop();
  MenuCursor.reset();
  MenuBackground.reset();
  MenuButtons.reset();
}

float Button_Slide() { return ButtonSlide; }
const Rect& Button_Rect(int i) { return ButtonRects.at(static_cast<size_t>(i)); }
bool Running() { return Is_Set(MenuRunning); }
bool Surfaces_Held() { return MenuBackground || MenuCursor || MenuButtons; }

}  // namespace modMainScr
