#include <gtest/gtest.h>

#include <set>
#include <string>

#include "screens/modDInput.h"

using modDInput::Get_Key_Name;

TEST(KeyNames, NamedCodesAndFiftyTwoUniqueNamesAllBelow124) {
  for (const auto& [code, name] : {std::pair{13, "Enter"},
                                   {32, "Spacebar"},
                                   {37, "Left Arrow"},
                                   {39, "Right Arrow"},
                                   {40, "Down Arrow"},
                                   {48, "0"},
                                   {65, "A"},
                                   {86, "V"},
                                   {90, "Z"},
                                   {96, "Numpad 0"},
                                   {105, "Numpad 9"}})
    EXPECT_EQ(Get_Key_Name(static_cast<i16>(code)), name) << code;
  // The 51 of the table plus V; every other code (Escape, Shift, punctuation, each range's
  // neighbours) reads "<invalid>".
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
