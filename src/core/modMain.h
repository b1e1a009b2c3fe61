#pragma once
// The run's shared state that every screen reads: the game state, the frame timer and the
// one random source. Start-up, the state loop and shutdown are in app/startup.h.
#include "core/log.h"
#include "core/settings.h"
#include "core/types.h"

namespace modMain {

// Screens by GameState: 0 menu, 1 race, 2 hi-scores, 3 ship selection, 4 options, 5 intro.
inline constexpr u8 kStateMainMenu = 0, kStateRace = 1, kStateHiScore = 2, kStateShipSelection = 3, kStateOptions = 4,
                    kStateIntro = 5;

extern u8 GameState;
extern Bool16 Running;
extern i32 FrameTime;  // last frame in ms, at most 50
extern i32 GameClock;  // ms since the current screen began, wraps at one hour
extern i16 NumOpponents;
// Set when the window system asks the game to close (window closed, process told to stop):
// every screen loop leaves, the state loop ends, and shutdown runs as for the quit button.
extern bool QuitRequested;

// What the game steps once a frame (the pause-menu blink, the stat bars, the chase
// camera's steps) it steps DesignSteps times: always 1 on a 60 Hz display, and on a faster
// one 0 or 1 so that it still steps 60 times a second.
extern i32 DesignSteps;
// Counts the steps the coming frame holds; called once a frame, by the flip.
void Count_Design_Steps();

// FrameTime = now - the last frame's tick (at most 50); GameClock advances by it (one-hour wrap).
void Update_Frame_Timer();
// The next frame's time counts from now.
void Start_Frame_Timer();
void Reset_Game_Clock();

// The one random source: uniform in [0, 1).
float Rnd();
// Seeds the random source (Main seeds it with the seconds since midnight).
void Randomize(u32 seed);

}  // namespace modMain
