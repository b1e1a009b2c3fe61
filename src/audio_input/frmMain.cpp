#include "audio_input/frmMain.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "core/extras.h"
#include "core/modMain.h"
#include "core/numbers.h"
#include "platform/audio.h"
#include "platform/platform.h"
#include "vehicle/clsHumanPlayer.h"
#include "vehicle/players.h"

namespace frmMain {

Bool16 KeyState[kKeyStateCount] = {};
Bool16 ShiftPressed = kFalse;
i16 MouseX = 0, MouseY = 0;
std::array<i16, 4> PadBinding = kDefaultPadBinding;
bool PauseRequested = false;
u8 MusicVolume = 10;

namespace {
// The presses, set by the handlers and cleared on release or by Take only.
Bool16 EnterPressed = kFalse;
Bool16 EscapePressed = kFalse;
Bool16 MouseLeftDown = kFalse;
Bool16 PadState[platform::kPadControlCount] = {};  // held pad controls, as KeyState
i16 PadPressed = -1;  // the last control pressed, -1 for none
constexpr i16 kLeftButton = 1;
constexpr u8 kFullVolume = 10;
constexpr std::string_view kPadNames[4] = {"pad_thrust", "pad_brake", "pad_left", "pad_right"};
constexpr std::string_view kVolumeName = "volume";
// Pointer speed at full stick, design pixels per millisecond: the screen's width in about a second.
constexpr float kPointerSpeed = 0.6f;

Bool16* g_a_flag = nullptr;  // what the held A set: Enter in a race, the left button elsewhere
float g_pointer_x = 0, g_pointer_y = 0;
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

// The D-pad is the left stick's digital twin: a stick binding answers to both.
bool Pad_Matches(i16 binding, i16 control) {
  if (binding == control) return true;
  switch (binding) {
    case platform::kPadLeftStickLeft:
      return control == platform::kPadDpadLeft;
    case platform::kPadLeftStickRight:
      return control == platform::kPadDpadRight;
    case platform::kPadLeftStickUp:
      return control == platform::kPadDpadUp;
    case platform::kPadLeftStickDown:
      return control == platform::kPadDpadDown;
    default:
      return false;
  }
}

bool Pad_Held(i16 control) { return control >= 0 && control < platform::kPadControlCount && Is_Set(PadState[control]); }

// The driving flag of a bound control: held while any control answering the binding is.
bool Drive_With_Pad(i16 control) {
  clsHumanPlayer* player = modMain::Players.empty() ? nullptr : modMain::Players[0].get();
  for (size_t i = 0; i < PadBinding.size(); ++i) {
    const i16 b = PadBinding[i];
    if (!Pad_Matches(b, control)) continue;
    bool held = Pad_Held(b);
    for (i16 c = 0; c < platform::kPadControlCount; ++c)
      if (c != b && Pad_Matches(b, c)) held = held || Pad_Held(c);
    if (player != nullptr) {
      Bool16* flags[4] = {&player->Thrust, &player->Brake, &player->SteerLeft, &player->SteerRight};
      *flags[i] = To_Bool16(held);
    }
    return true;
  }
  return false;
}

void Pad_Event(i16 control, Bool16 v) {
  if (control < 0 || control >= platform::kPadControlCount) return;
  PadState[control] = v;
  if (Is_Set(v)) PadPressed = control;
  if (modMain::ControlDevice == 1 && Drive_With_Pad(control)) return;
  if (control == platform::kPadStart) {
    EscapePressed = v;
  } else if (control == platform::kPadA) {
    if (Is_Set(v)) {
      g_a_flag = modMain::GameState == modMain::kStateRace ? &EnterPressed : &MouseLeftDown;
      *g_a_flag = kTrue;
    } else if (g_a_flag != nullptr) {
      // Released as it was pressed, even when the screen changed in between.
      *g_a_flag = kFalse;
      g_a_flag = nullptr;
    }
  }
}

float Volume_Gain(u8 steps) {
  const float v = static_cast<float>(std::min(steps, kFullVolume)) / kFullVolume;
  // Squared, so the steps sound about even; a straight line would crowd the change into
  // the lowest steps.
  return v * v;
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
  h.pad_down = Form_PadDown;
  h.pad_up = Form_PadUp;
  h.pad_stick = Form_PadStick;
  h.pad_plug = Form_PadPlug;
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

bool Pressed(Press p) {
  switch (p) {
    case Press::Enter:
      return Is_Set(EnterPressed);
    case Press::Escape:
      return Is_Set(EscapePressed);
    case Press::LeftClick:
      return Is_Set(MouseLeftDown);
  }
  return false;
}

bool Take(Press p) {
  if (!Pressed(p)) return false;
  (p == Press::Enter ? EnterPressed : p == Press::Escape ? EscapePressed : MouseLeftDown) = kFalse;
  return true;
}

i16 Take_Pad_Press() { return std::exchange(PadPressed, i16{-1}); }

void Request_Pause() { PauseRequested = true; }

void Toggle_Window() {
  const bool windowed = extras::Get(kWindowSetting, 0, 0, 1) == 0;
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
  std::fill(std::begin(PadState), std::end(PadState), kFalse);
  EnterPressed = EscapePressed = ShiftPressed = MouseLeftDown = kFalse;
  PauseRequested = false;
  MouseX = MouseY = 0;
  PadPressed = -1;
  g_a_flag = nullptr;
}

void Form_PadDown(i16 control) { Pad_Event(control, kTrue); }
void Form_PadUp(i16 control) { Pad_Event(control, kFalse); }

void Form_PadStick(float x, float y) {
  using modMain::ScreenWidth, modMain::ScreenHeight;
  if (modMain::GameState == modMain::kStateRace) return;
  // The pointer keeps its fraction between frames unless the mouse has moved it since.
  if (numbers::Round_Half_Even(g_pointer_x) != MouseX) g_pointer_x = MouseX;
  if (numbers::Round_Half_Even(g_pointer_y) != MouseY) g_pointer_y = MouseY;
  const float step = kPointerSpeed * static_cast<float>(modMain::FrameTime);
  g_pointer_x = std::clamp(g_pointer_x + x * step * modMain::ScaleX, 0.0f, static_cast<float>(ScreenWidth - 1));
  g_pointer_y = std::clamp(g_pointer_y + y * step * modMain::ScaleY, 0.0f, static_cast<float>(ScreenHeight - 1));
  numbers::Convert_Round(g_pointer_x, MouseX);
  numbers::Convert_Round(g_pointer_y, MouseY);
}

void Form_PadPlug(bool connected) {
  if (!connected) Request_Pause();
}


void Set_Music_Volume(u8 steps) {
  MusicVolume = std::min(steps, kFullVolume);
  platform::Set_Stream_Volume(Volume_Gain(MusicVolume));
}

void Read_Pad_And_Volume() {
  for (size_t i = 0; i < PadBinding.size(); ++i)
    PadBinding[i] =
        static_cast<i16>(extras::Get(kPadNames[i], kDefaultPadBinding[i], 0, platform::kPadControlCount - 1));
  Set_Music_Volume(static_cast<u8>(extras::Get(kVolumeName, kFullVolume, 0, kFullVolume)));
}

void Store_Pad_And_Volume() {
  const auto keep = [](std::string_view name, int value, int fallback, int hi) {
    if (value != extras::Get(name, fallback, 0, hi)) extras::Set(name, value);
  };
  for (size_t i = 0; i < PadBinding.size(); ++i)
    keep(kPadNames[i], PadBinding[i], kDefaultPadBinding[i], platform::kPadControlCount - 1);
  keep(kVolumeName, MusicVolume, kFullVolume, kFullVolume);
}

}  // namespace frmMain
