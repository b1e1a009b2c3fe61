#include "core/numbers.h"

#include <cctype>
#include <cstdlib>

namespace numbers {

double Round_Half_Even(double v) {
  // nearbyint follows the current rounding mode, which is to-nearest-even by default.
  return std::nearbyint(v);
}

double Leading_Number(std::string_view text) {
  size_t i = 0;
  while (i < text.size() && (text[i] == ' ' || text[i] == '\t')) ++i;
  std::string number;
  if (i < text.size() && (text[i] == '-' || text[i] == '+')) number.push_back(text[i++]);
  bool any = false;
  while (i < text.size() && std::isdigit(static_cast<unsigned char>(text[i]))) {
    number.push_back(text[i++]);
    any = true;
  }
  if (i < text.size() && text[i] == '.') {
    number.push_back(text[i++]);
    while (i < text.size() && std::isdigit(static_cast<unsigned char>(text[i]))) {
      number.push_back(text[i++]);
      any = true;
    }
  }
  if (!any) return 0.0;
  return std::strtod(number.c_str(), nullptr);
}

std::string Format(double value, std::string_view pattern) {
  const double r = Round_Half_Even(value);
  const bool negative = r < 0;
  std::string digits = std::to_string(static_cast<long long>(std::fabs(r)));
  size_t placeholders = 0;
  for (char c : pattern)
    if (c == '0') ++placeholders;
  if (digits.size() < placeholders) digits.insert(0, placeholders - digits.size(), '0');
  // Fill placeholders from the right; surplus digits land in the first one.
  const size_t surplus = digits.size() - placeholders;
  std::string out;
  size_t next = 0;
  bool first = true;
  for (char c : pattern) {
    if (c == '0') {
      const size_t take = first ? surplus + 1 : 1;
      out.append(digits, next, take);
      next += take;
      first = false;
    } else {
      out.push_back(c);
    }
  }
  return negative ? "-" + out : out;
}

void Split_Time(i16& minutes, i16& hundredths, const i32& ms) {
  minutes = static_cast<i16>(ms / 60000);
  hundredths = static_cast<i16>(Round_Half_Even(static_cast<double>(ms % 60000) / 10.0));
}

std::string Time_Text(i32 ms) {
  i16 m = 0, h = 0;
  Split_Time(m, h, ms);
  return Format(m, "00") + ":" + Format(h, "00:00");
}

}  // namespace numbers
