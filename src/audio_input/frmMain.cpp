#include "audio_input/frmMain.h"

#include <algorithm>

#include "core/extras.h"
#include "core/modMain.h"
#include "core/numbers.h"
#include "platform/platform.h"
#include "vehicle/clsHumanPlayer.h"
#include "vehicle/players.h"

namespace frmMain {

Bool16 KeyState[kKeyStateCount] = {};
Bool16 EnterPressed = kFalse;
Bool16 EscapePressed = kFalse;
Bool16 ShiftPressed = kFalse;
i16 MouseX = 0, MouseY = 0;
Bool16 MouseLeftDown = kFalse;
bool PauseRequested = false;

namespace {
constexpr i16 kLeftButton = 1;
constexpr i16 kEnter = 13, kF11 = 122, kAltBit = 4;
constexpr const char* kWindowSetting = "window";  // 1: an ordinary window, 0: full screen

bool Window_Key(i16 key, i16 shift) { return key == kF11 || (key == kEnter && (shift & kAltBit) != 0); }

void Key_Event(i16 key, Bool16 v) {
  using namespace modMain;
  clsHumanPlayer* player = Players.empty() ? nullptr : Players[0].get();
  // A key bound to a control drives the ship and never doubles as Enter, Escape or Shift.
  if (key == KeyUp) {
    if (player != nullptr) player->Thrust = v;
  } else if (key == KeyDown) {
    if (player != nullptr) player->Brake = v;
  } else if (key == KeyLeft) {
    if (player != nullptr) player->SteerLeft = v;
  } else if (key == KeyRight) {
    if (player != nullptr) player->SteerRight = v;
  } else if (key == 27) {
    EscapePressed = v;
  } else if (key == 13) {
    EnterPressed = v;
  } else if (key == 16) {
    ShiftPressed = v;
  }
  if (key >= 0 && key < kKeyStateCount) KeyState[key] = v;
}
}  // namespace

bool Show() {
  platform::Set_Windowed(extras::Get(kWindowSetting, 0, 0, 1) == 1);
  if (!platform::Open_Window("Brindlex Quorval")) return false;
  platform::InputHandlers h;
  h.key_down = Form_KeyDown;
  h.key_up = Form_KeyUp;
  h.mouse_down = Form_MouseDown;
  h.mouse_up = Form_MouseUp;
  h.mouse_move = Form_MouseMove;
  h.quit = [] {
    modMain::QuitRequested = true;
    modMain::Running = kFalse;
  };
  h.focus_lost = Request_Pause;
  platform::Set_Input_Handlers(h);
  return true;
}

void Unload() {
  platform::Set_Input_Handlers({});
  platform::Close_Window();
}

void Form_KeyDown(i16 key_code, i16 shift) {
  if (Window_Key(key_code, shift)) {
    Toggle_Window();
    return;
  }
  Key_Event(key_code, kTrue);
}

void Form_KeyUp(i16 key_code, i16 shift) {
  if (!Window_Key(key_code, shift)) Key_Event(key_code, kFalse);
}

void Request_Pause() { PauseRequested = true; }

void Toggle_Window() {
  const bool windowed = !platform::Windowed();
  platform::Set_Windowed(windowed);
  extras::Set(kWindowSetting, windowed ? 1 : 0);
}

void Form_MouseDown(i16 button, i16, float, float) {
  if (button == kLeftButton) MouseLeftDown = kTrue;
}

void Form_MouseUp(i16 button, i16, float, float) {
  if (button == kLeftButton) MouseLeftDown = kFalse;
}

void Form_MouseMove(i16, i16, float x, float y) {
  numbers::Convert_Round(x, MouseX);
  numbers::Convert_Round(y, MouseY);
}

void Reset_Input() {
  std::fill(std::begin(KeyState), std::end(KeyState), kFalse);
  EnterPressed = EscapePressed = ShiftPressed = MouseLeftDown = kFalse;
  PauseRequested = false;
  MouseX = MouseY = 0;
}

}  // namespace frmMain
