// The window during a race: losing the focus pauses as Escape does (held back by the
// countdown), switching the window keeps the race going, and on a 144 Hz display the
// pause menu blinks at the rate it has at 60 Hz.
#include "core/extras.h"
#include "race/race_fixture.h"

namespace {
using namespace race_test;

void Lose_Focus() { platform::Post_Event({platform::EventKind::FocusLost}); }

TEST_F(RaceTest, FocusLostPausesAsEscapeDoesTheClockWaitsAndAt144HzTheMenuBlinksAsAt60) {
  extras::Reset();
  platform::Set_Refresh_Rate(144);
  bool countdown_ignored = false, paused_at_start = false, resumed = false, switched_running = false;
  bool was_lit = false;
  int blink_changes = 0, paused_frames = 0;
  i32 paused_clock = -1, clock_after_switch = -1;
  const clsHumanPlayer* racer = nullptr;
  Run_Race(0, [&](i32 t) {
    if (Reached(t, 1000)) Lose_Focus();  // in the countdown: held back to the start signal
    if (Reached(t, 3040)) countdown_ignored = !Is_Set(modGameLoop::Paused);
    if (Reached(t, 3072)) {
      paused_at_start = Is_Set(modGameLoop::Paused);
      paused_clock = modMain::GameClock;
    }
    if (t > 3072 && t <= 5200) {
      EXPECT_EQ(modMain::GameClock, paused_clock) << "the clock waits while away, t " << t;
      const bool lit = modGameLoop::Pause_Highlight_Shown();
      blink_changes += paused_frames++ > 0 && lit != was_lit;
      was_lit = lit;
    }
    Keys(t, {{5200, kEnter}, {5216, -kEnter}});  // Resume
    if (Reached(t, 5300)) {
      resumed = !Is_Set(modGameLoop::Paused);
      racer = &Player();
      platform::InputEvent alt_enter{platform::EventKind::KeyDown, kEnter};
      alt_enter.shift = 4;
      platform::Post_Event(alt_enter);
    }
    if (Reached(t, 5400)) {
      // The switch neither pauses nor restarts the race.
      switched_running = platform::Windowed() && !Is_Set(modGameLoop::Paused) && racer == &Player();
      clock_after_switch = modMain::GameClock;
      Lose_Focus();
    }
    if (Reached(t, 5432)) {
      EXPECT_TRUE(Is_Set(modGameLoop::Paused)) << "focus lost mid-race";
      EXPECT_LE(modMain::GameClock, clock_after_switch + 2 * kFrameMs);
      modGameLoop::PauseSelection = 1;
    }
    Keys(t, {{5500, kEnter}});  // Quit Race
  });
  platform::Set_Refresh_Rate(0);
  platform::Set_Windowed(false);
  EXPECT_TRUE(countdown_ignored) << "no pause before the start signal";
  EXPECT_TRUE(paused_at_start) << "the request held through the countdown pauses at the signal";
  EXPECT_TRUE(resumed);
  EXPECT_TRUE(switched_running);
  EXPECT_EQ(modMain::GameState, modMain::kStateMainMenu);
  EXPECT_FALSE(frmMain::PauseRequested);
  // 133 paused frames at 144 Hz are 55 steps of 60 Hz: five blinks of eleven steps, two
  // changes each (one step a frame would give 24).
  EXPECT_EQ(paused_frames, 133);
  EXPECT_NEAR(blink_changes, 10, 1);
}

}  // namespace
