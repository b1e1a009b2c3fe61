#include "screens/modDInput.h"

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

}  // namespace modDInput
