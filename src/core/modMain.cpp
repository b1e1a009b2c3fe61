#include "core/modMain.h"

#include <random>

#include "platform/platform.h"

namespace modMain {

u8 GameState = kStateIntro;
Bool16 Running = kFalse;
i32 FrameTime = 0;
i32 GameClock = 0;
i32 LastTick = 0;
i16 NumOpponents = 0;
bool QuitRequested = false;

namespace {
constexpr i32 kMaxFrameTime = 50;
constexpr i32 kClockWrap = 3600000;
std::mt19937 g_random(0);
}  // namespace

void Update_Frame_Timer() {
  // Difference taken modulo 2^32 so the tick counter's own wrap gives a short frame.
  // No lower clamp, as the timer has always been.
  FrameTime = static_cast<i32>(static_cast<u32>(platform::Tick_Count()) - static_cast<u32>(LastTick));
  if (FrameTime > kMaxFrameTime) FrameTime = kMaxFrameTime;
  GameClock += FrameTime;
  if (GameClock >= kClockWrap) GameClock -= kClockWrap;
  LastTick = platform::Tick_Count();
}

void Reset_Game_Clock() { GameClock = 0; }

float Rnd() {
  // 24 random bits: every value is exactly representable and strictly below 1.
  return static_cast<float>(g_random() >> 8) * (1.0f / 16777216.0f);
}

void Randomize(u32 seed) { g_random.seed(seed); }

}  // namespace modMain
