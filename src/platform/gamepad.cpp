// The gamepad: the first game controller plugged in, its buttons passed on as they are and
// its sticks and triggers turned into presses past their dead zones, all through the one
// event queue. Hot-plug included: a pad unplugged lets go of everything it held.
#include <SDL.h>

#include <bitset>
#include <cmath>
#include <string>

#include "platform/platform.h"
#include "platform/sdl_internal.h"
#include "platform/testing.h"

namespace platform {
namespace {

SDL_GameController* g_pad = nullptr;
SDL_JoystickID g_pad_id = -1;
std::string g_pad_name;
std::bitset<kPadControlCount> g_held;
int g_axis[SDL_CONTROLLER_AXIS_MAX] = {};
bool g_started = false;

// A press needs a clear push; the release comes lower, so a thumb resting near the
// threshold does not chatter.
constexpr int kStickPress = 16384, kStickRelease = 10000;
constexpr int kTriggerPress = 9830, kTriggerRelease = 6500;
// The pointer ignores the stick's first quarter: worn sticks rest off centre.
constexpr float kPointerDeadZone = 0.25f;

void Report(int control, bool down) {
  if (g_held.test(size_t(control)) == down) return;
  g_held.set(size_t(control), down);
  Post_Event({down ? EventKind::PadDown : EventKind::PadUp, static_cast<int16_t>(control)});
}

bool Past(int control, int magnitude, int press, int release) {
  return g_held.test(size_t(control)) ? magnitude > release : magnitude >= press;
}

// One stick axis: its negative direction (left or up) and its positive one.
void Stick_Axis(int value, int negative, int positive) {
  Report(negative, Past(negative, -value, kStickPress, kStickRelease));
  Report(positive, Past(positive, value, kStickPress, kStickRelease));
}

void Axis_Moved(int axis, int value) {
  g_axis[axis] = value;
  switch (axis) {
    case SDL_CONTROLLER_AXIS_LEFTX:
      Stick_Axis(value, kPadLeftStickLeft, kPadLeftStickRight);
      break;
    case SDL_CONTROLLER_AXIS_LEFTY:
      Stick_Axis(value, kPadLeftStickUp, kPadLeftStickDown);
      break;
    case SDL_CONTROLLER_AXIS_RIGHTX:
      Stick_Axis(value, kPadRightStickLeft, kPadRightStickRight);
      break;
    case SDL_CONTROLLER_AXIS_RIGHTY:
      Stick_Axis(value, kPadRightStickUp, kPadRightStickDown);
      break;
    case SDL_CONTROLLER_AXIS_TRIGGERLEFT:
      Report(kPadLeftTrigger, Past(kPadLeftTrigger, value, kTriggerPress, kTriggerRelease));
      break;
    case SDL_CONTROLLER_AXIS_TRIGGERRIGHT:
      Report(kPadRightTrigger, Past(kPadRightTrigger, value, kTriggerPress, kTriggerRelease));
      break;
    default:
      break;
  }
}

bool Open_Pad(int device_index) {
  g_pad = SDL_GameControllerOpen(device_index);
  if (g_pad == nullptr) return false;
  g_pad_id = SDL_JoystickInstanceID(SDL_GameControllerGetJoystick(g_pad));
  const char* name = SDL_GameControllerName(g_pad);
  g_pad_name = name != nullptr && name[0] != '\0' ? name : "Gamepad";
  g_held.reset();
  for (int& a : g_axis) a = 0;
  Post_Event({EventKind::PadPlug, 1});
  return true;
}

// Another pad still plugged in takes over from the one that went.
void Open_Any_Pad(SDL_JoystickID except) {
  for (int i = 0; i < SDL_NumJoysticks() && g_pad == nullptr; ++i)
    if (SDL_IsGameController(i) && SDL_JoystickGetDeviceInstanceID(i) != except) Open_Pad(i);
}

void Close_Pad() {
  for (int c = 0; c < kPadControlCount; ++c) Report(c, false);
  SDL_GameControllerClose(g_pad);
  g_pad = nullptr;
  g_pad_id = -1;
  g_pad_name.clear();
  for (int& a : g_axis) a = 0;
}

}  // namespace

const std::string& Pad_Name() { return g_pad_name; }

namespace detail {

void Start_Gamepads() {
  if (g_started) return;
  // The pads present now arrive as plug-in events at the next pump.
  g_started = SDL_InitSubSystem(SDL_INIT_GAMECONTROLLER) == 0;
}

void Stop_Gamepads() {
  if (!g_started) return;
  if (g_pad != nullptr) SDL_GameControllerClose(g_pad);
  g_pad = nullptr;
  g_pad_id = -1;
  g_pad_name.clear();
  g_held.reset();
  for (int& a : g_axis) a = 0;
  SDL_QuitSubSystem(SDL_INIT_GAMECONTROLLER);
  g_started = false;
}

bool Pad_Event(const SDL_Event& e) {
  switch (e.type) {
    case SDL_CONTROLLERDEVICEADDED:
      if (g_pad == nullptr) Open_Pad(e.cdevice.which);
      return true;
    case SDL_CONTROLLERDEVICEREMOVED:
      if (g_pad != nullptr && e.cdevice.which == g_pad_id) {
        Close_Pad();
        Post_Event({EventKind::PadPlug, 0});
        Open_Any_Pad(e.cdevice.which);
      }
      return true;
    case SDL_CONTROLLERBUTTONDOWN:
    case SDL_CONTROLLERBUTTONUP:
      // Buttons past the D-pad (paddles, touchpad) are not offered.
      if (g_pad != nullptr && e.cbutton.which == g_pad_id && e.cbutton.button <= kPadDpadRight)
        Report(e.cbutton.button, e.cbutton.state == SDL_PRESSED);
      return true;
    case SDL_CONTROLLERAXISMOTION:
      if (g_pad != nullptr && e.caxis.which == g_pad_id && e.caxis.axis < SDL_CONTROLLER_AXIS_MAX)
        Axis_Moved(e.caxis.axis, e.caxis.value);
      return true;
    default:
      return false;
  }
}

bool Pad_Stick(float& x, float& y) {
  if (g_pad == nullptr) return false;
  const float ax = std::fmax(-1.0f, float(g_axis[SDL_CONTROLLER_AXIS_LEFTX]) / 32767.0f);
  const float ay = std::fmax(-1.0f, float(g_axis[SDL_CONTROLLER_AXIS_LEFTY]) / 32767.0f);
  const float length = std::hypot(ax, ay);
  if (length <= kPointerDeadZone) return false;
  // Measured from the dead zone's edge, so the pointer starts slow however far it rests.
  const float k = std::fmin(1.0f, (length - kPointerDeadZone) / (1.0f - kPointerDeadZone)) / length;
  x = ax * k;
  y = ay * k;
  return true;
}

}  // namespace detail

// --- the virtual pad of the tests ---------------------------------------------------
namespace {
SDL_Joystick* g_virtual = nullptr;

void Set_Axis(int axis, float amount) {
  const float v = std::fmax(-1.0f, std::fmin(1.0f, amount));
  SDL_JoystickSetVirtualAxis(g_virtual, axis, static_cast<Sint16>(std::lround(v * 32767.0f)));
}
}  // namespace

bool Attach_Virtual_Pad(const std::string& name) {
  if (g_virtual != nullptr || SDL_InitSubSystem(SDL_INIT_GAMECONTROLLER) != 0) return false;
  // Tests have no focused window; the pad must be heard all the same.
  SDL_SetHint(SDL_HINT_JOYSTICK_ALLOW_BACKGROUND_EVENTS, "1");
  SDL_VirtualJoystickDesc desc{};
  desc.version = SDL_VIRTUAL_JOYSTICK_DESC_VERSION;
  desc.type = SDL_JOYSTICK_TYPE_GAMECONTROLLER;
  desc.naxes = SDL_CONTROLLER_AXIS_MAX;
  desc.nbuttons = SDL_CONTROLLER_BUTTON_MAX;
  desc.name = name.c_str();
  const int index = SDL_JoystickAttachVirtualEx(&desc);
  if (index < 0) return false;
  g_virtual = SDL_JoystickOpen(index);
  return g_virtual != nullptr;
}

void Detach_Virtual_Pad() {
  if (g_virtual == nullptr) return;
  const SDL_JoystickID id = SDL_JoystickInstanceID(g_virtual);
  SDL_JoystickClose(g_virtual);
  g_virtual = nullptr;
  for (int i = 0; i < SDL_NumJoysticks(); ++i)
    if (SDL_JoystickGetDeviceInstanceID(i) == id) SDL_JoystickDetachVirtual(i);
  SDL_QuitSubSystem(SDL_INIT_GAMECONTROLLER);
}

void Set_Virtual_Pad(int16_t control, float amount) {
  if (g_virtual == nullptr || control < 0 || control >= kPadControlCount) return;
  if (control <= kPadDpadRight) {
    SDL_JoystickSetVirtualButton(g_virtual, control, amount >= 0.5f ? SDL_PRESSED : SDL_RELEASED);
    return;
  }
  switch (control) {
    case kPadLeftStickLeft:
    case kPadLeftStickRight:
      return Set_Axis(SDL_CONTROLLER_AXIS_LEFTX, control == kPadLeftStickLeft ? -amount : amount);
    case kPadLeftStickUp:
    case kPadLeftStickDown:
      return Set_Axis(SDL_CONTROLLER_AXIS_LEFTY, control == kPadLeftStickUp ? -amount : amount);
    case kPadRightStickLeft:
    case kPadRightStickRight:
      return Set_Axis(SDL_CONTROLLER_AXIS_RIGHTX, control == kPadRightStickLeft ? -amount : amount);
    case kPadRightStickUp:
    case kPadRightStickDown:
      return Set_Axis(SDL_CONTROLLER_AXIS_RIGHTY, control == kPadRightStickUp ? -amount : amount);
    default:
      // A trigger's axis rests at its minimum: a pull runs over the whole range.
      return Set_Axis(control == kPadLeftTrigger ? SDL_CONTROLLER_AXIS_TRIGGERLEFT : SDL_CONTROLLER_AXIS_TRIGGERRIGHT,
                      amount * 2.0f - 1.0f);
  }
}

}  // namespace platform
