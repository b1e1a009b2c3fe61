#pragma once
// Number conversions shared by every module: one rounding rule, one text-to-number
// rule, one formatter.
#include <cmath>
#include <limits>
#include <string>
#include <string_view>

#include "core/types.h"

namespace numbers {

// Nearest integer, halves to even (16.5 -> 16, 17.5 -> 18). Returns a double.
double Round_Half_Even(double v);

// Rounds half to even into T; false (and out untouched) when the result does not fit.
template <class T>
bool Convert_Round(double v, T& out) {
  if (!std::isfinite(v)) return false;
  const double r = Round_Half_Even(v);
  if (r < static_cast<double>(std::numeric_limits<T>::min()) || r > static_cast<double>(std::numeric_limits<T>::max()))
    return false;
  out = static_cast<T>(r);
  return true;
}

// The leading decimal number of a text (optional blanks, sign, digits, point,
// digits); text after it is ignored and a text without one reads as 0.
double Leading_Number(std::string_view text);

// Formats a number with a digit pattern: "000" -> 007, "00" -> 05, "00:00" -> 01:05.
// Digits beyond the pattern go into the leftmost placeholder.
std::string Format(double value, std::string_view pattern);

// Minutes (truncated) and hundredths of the rest (rounded half to even) of a time in ms.
void Split_Time(i16& minutes, i16& hundredths, const i32& ms);
// A time as the game prints it: "mm:ss:hh" (59996 ms reads "00:60:00").
std::string Time_Text(i32 ms);

}  // namespace numbers
