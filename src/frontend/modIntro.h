#pragma once
// The intro: two full-screen pictures, each shown for 4 s or until a click or Enter,
// then the main menu. The first screen of every run.
#include "core/types.h"
#include "gfx/mod3Denhance.h"

namespace modIntro {

inline constexpr i32 kPageTime = 4000;  // ms each picture stays without input

extern mod3Denhance::Surface IntroSurface;  // the picture on show, stretched to the screen
extern Bool16 IntroRunning;
extern i16 IntroPage;  // 1 or 2
extern i32 PageStart;  // tick count when the page appeared

// Runs both pages and returns with GameState 0 (or when the window is closed). A press
// that moves on from page 1 is left set, so a press still held ends page 2 as well.
void Intro();

}  // namespace modIntro
