#pragma once
// "Quorval.cfg": what the game's additions remember (window mode, music volume, ghost,
// pad bindings), one "name=number" line each. Quorval.ini keeps its thirteen lines; this
// file exists only once the player has changed one of these from its default.
#include <string>
#include <string_view>

namespace extras {

// Reads the file (absent: every value takes its default, nothing logged). A line that is
// not "name=number" is dropped with one log line naming the file and the line.
void Load();
// The named value, or fallback when it is absent or outside [lo, hi].
int Get(std::string_view name, int fallback, int lo, int hi);
// Remembers the value and rewrites the file at once (a synced side file renamed into
// place); nothing is written when the value is already the remembered one.
void Set(std::string_view name, int value);
// Forgets every value (tests; a fresh run starts so).
void Reset();
std::string Path();

}  // namespace extras
