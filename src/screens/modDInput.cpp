#include "screens/modDInput.h"

#include <array>

#include "platform/platform.h"

namespace modDInput {

std::string Get_Key_Name(i16 code) {
  switch (code) {
    case 13:
      return "Enter";
    case 32:
      return "Spacebar";
    case 37:
      return "Left Arrow";
    case 38:
      return "Up Arrow";
    case 39:
      return "Right Arrow";
    case 40:
      return "Down Arrow";
    default:
      break;
  }
  if (code >= 48 && code <= 57) return std::string(1, static_cast<char>(code));
  // Every letter has its capital as its name, V included, so any letter can be bound.
  if (code >= 65 && code <= 90) return std::string(1, static_cast<char>(code));
  if (code >= 96 && code <= 105) return "Numpad " + std::string(1, static_cast<char>('0' + code - 96));
  return "<invalid>";
}

std::string Get_Pad_Control_Name(i16 code) {
  // Indexed by platform::PadControl; Start is left out so the pad can always pause.
  static constexpr std::array<const char*, platform::kPadControlCount> kNames = {"A",
                                                                                 "B",
                                                                                 "X",
                                                                                 "Y",
                                                                                 "Back",
                                                                                 "Guide",
                                                                                 "<invalid>",
                                                                                 "L Stick Press",
                                                                                 "R Stick Press",
                                                                                 "Left Bumper",
                                                                                 "Right Bumper",
                                                                                 "D-Pad Up",
                                                                                 "D-Pad Down",
                                                                                 "D-Pad Left",
                                                                                 "D-Pad Right",
                                                                                 "L Stick Left",
                                                                                 "L Stick Right",
                                                                                 "L Stick Up",
                                                                                 "L Stick Down",
                                                                                 "R Stick Left",
                                                                                 "R Stick Right",
                                                                                 "R Stick Up",
                                                                                 "R Stick Down",
                                                                                 "Left Trigger",
                                                                                 "Right Trigger"};
  if (code < 0 || code >= platform::kPadControlCount) return "<invalid>";
  return kNames[static_cast<size_t>(code)];
}

}  // namespace modDInput
