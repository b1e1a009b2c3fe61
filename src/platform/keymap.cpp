#include <SDL.h>

#include "platform/sdl_internal.h"

namespace platform::detail {

int16_t Virtual_Key(int32_t k) {
  if (k >= SDLK_a && k <= SDLK_z) return static_cast<int16_t>(65 + (k - SDLK_a));
  if (k >= SDLK_0 && k <= SDLK_9) return static_cast<int16_t>(48 + (k - SDLK_0));
  if (k >= SDLK_F1 && k <= SDLK_F12) return static_cast<int16_t>(112 + (k - SDLK_F1));
  if (k >= SDLK_F13 && k <= SDLK_F24) return static_cast<int16_t>(124 + (k - SDLK_F13));
  if (k >= SDLK_KP_1 && k <= SDLK_KP_9) return static_cast<int16_t>(97 + (k - SDLK_KP_1));
  switch (k) {
    case SDLK_KP_0:
      return 96;
    case SDLK_KP_MULTIPLY:
      return 106;
    case SDLK_KP_PLUS:
      return 107;
    case SDLK_KP_MINUS:
      return 109;
    case SDLK_KP_PERIOD:
      return 110;
    case SDLK_KP_DIVIDE:
      return 111;
    case SDLK_KP_ENTER:
      return 13;
    case SDLK_BACKSPACE:
      return 8;
    case SDLK_TAB:
      return 9;
    case SDLK_CLEAR:
      return 12;
    case SDLK_RETURN:
      return 13;
    case SDLK_LSHIFT:
    case SDLK_RSHIFT:
      return 16;
    case SDLK_LCTRL:
    case SDLK_RCTRL:
      return 17;
    case SDLK_LALT:
    case SDLK_RALT:
      return 18;
    case SDLK_PAUSE:
      return 19;
    case SDLK_CAPSLOCK:
      return 20;
    case SDLK_ESCAPE:
      return 27;
    case SDLK_SPACE:
      return 32;
    case SDLK_PAGEUP:
      return 33;
    case SDLK_PAGEDOWN:
      return 34;
    case SDLK_END:
      return 35;
    case SDLK_HOME:
      return 36;
    case SDLK_LEFT:
      return 37;
    case SDLK_UP:
      return 38;
    case SDLK_RIGHT:
      return 39;
    case SDLK_DOWN:
      return 40;
    case SDLK_PRINTSCREEN:
      return 44;
    case SDLK_INSERT:
      return 45;
    case SDLK_DELETE:
      return 46;
    case SDLK_LGUI:
      return 91;
    case SDLK_RGUI:
      return 92;
    case SDLK_APPLICATION:
      return 93;
    case SDLK_NUMLOCKCLEAR:
      return 144;
    case SDLK_SCROLLLOCK:
      return 145;
    case SDLK_SEMICOLON:
      return 186;
    case SDLK_EQUALS:
      return 187;
    case SDLK_COMMA:
      return 188;
    case SDLK_MINUS:
      return 189;
    case SDLK_PERIOD:
      return 190;
    case SDLK_SLASH:
      return 191;
    case SDLK_BACKQUOTE:
      return 192;
    case SDLK_LEFTBRACKET:
      return 219;
    case SDLK_BACKSLASH:
      return 220;
    case SDLK_RIGHTBRACKET:
      return 221;
    case SDLK_QUOTE:
      return 222;
    case SDLK_LESS:
      return 226;
    default:
      return 0;
  }
}

int16_t Shift_Bits(uint16_t m) {
  return static_cast<int16_t>(((m & KMOD_SHIFT) ? 1 : 0) | ((m & KMOD_CTRL) ? 2 : 0) | ((m & KMOD_ALT) ? 4 : 0));
}

}  // namespace platform::detail
