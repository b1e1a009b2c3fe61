#include "core/modMain.h"

#include <random>

#include "platform/platform.h"
#include "platform/render.h"

namespace modMain {

u8 GameState = kStateIntro;
Bool16 Running = kFalse;
i32 FrameTime = 0;
i32 GameClock = 0;
i16 NumOpponents = 0;
bool QuitRequested = false;
i32 DesignSteps = 1;

namespace {
i32 LastTick = 0;  // tick count at the last frame
constexpr i32 kMaxFrameTime = 50;
constexpr i32 kClockWrap = 3600000;
std::mt19937 g_random(0);
double g_design_carry = 0;
}  // namespace

void Count_Design_Steps() {
  g_design_carry += platform::Design_Steps_Per_Frame();
  // The margin keeps a sum of thirds and twelfths from falling a hair short of a whole step.
  DesignSteps = static_cast<i32>(g_design_carry + 1e-9);
  g_design_carry -= DesignSteps;
}

void Update_Frame_Timer() {
  // Difference taken modulo 2^32 so the tick counter's own wrap gives a short frame.
  // No lower clamp, as the timer has always been.
  FrameTime = static_cast<i32>(static_cast<u32>(platform::Tick_Count()) - static_cast<u32>(LastTick));
  if (FrameTime > kMaxFrameTime) FrameTime = kMaxFrameTime;
  GameClock += FrameTime;
  if (GameClock >= kClockWrap) GameClock -= kClockWrap;
  LastTick = platform::Tick_Count();
}

void Start_Frame_Timer() { LastTick = platform::Tick_Count(); }

void Reset_Game_Clock() { GameClock = 0; }

float Rnd() {
  // 24 random bits: every value is exactly representable and strictly below 1.
  return static_cast<float>(g_random() >> 8) * (1.0f / 16777216.0f);
}

void Randomize(u32 seed) { g_random.seed(seed); }

}  // namespace modMain
