#pragma once
// The intro: two full-screen pictures, each shown for 4 s or until a click or Enter,
// then the main menu. The first screen of every run.
#include "core/types.h"

namespace modIntro {

inline constexpr i32 kPageTime = 4000;  // ms each picture stays without input

// Runs both pages and returns with GameState 0 (or when the window is closed). A press
// that moves on from page 1 is left set, so a press still held ends page 2 as well.
void Intro();

// What the intro shows: its page (1 or 2; the last one after it has ended), whether it still
// runs, and whether a page picture is still held (none once it has ended).
i16 Page();
bool Running();
bool Picture_Held();

}  // namespace modIntro
