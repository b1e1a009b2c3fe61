#include <gtest/gtest.h>

#include <set>
#include <string>

#include "screens/modDInput.h"

using modDInput::Get_Key_Name;

TEST(KeyNames, NamedCodes) {
  const std::pair<int, const char*> cases[] = {
      {13, "Enter"},      {32, "Spacebar"}, {37, "Left Arrow"}, {38, "Up Arrow"},   {39, "Right Arrow"},
      {40, "Down Arrow"}, {48, "0"},        {57, "9"},          {65, "A"},          {86, "V"},
      {87, "W"},          {90, "Z"},        {96, "Numpad 0"},   {101, "Numpad 5"},  {105, "Numpad 9"}};
  for (const auto& [code, name] : cases) EXPECT_EQ(Get_Key_Name(static_cast<i16>(code)), name) << code;
}

TEST(KeyNames, FiftyTwoCodesHaveNamesAndEachNameIsUnique) {
  // The 51 of the table plus V; no code outside 0..123 is bindable, and every other code
  // (Escape, Shift, punctuation, the neighbours of each named range) reads "<invalid>".
  std::set<std::string> names;
  int named = 0;
  for (int code = -32768; code <= 32767; ++code) {
    const std::string n = Get_Key_Name(static_cast<i16>(code));
    if (n == "<invalid>") continue;
    ++named;
    EXPECT_TRUE(code >= 0 && code < 124) << code;
    names.insert(n);
  }
  EXPECT_EQ(named, 52);
  EXPECT_EQ(names.size(), 52u);
}
