// A race driven with the virtual gamepad chosen as the control device.
#include "platform/testing.h"
#include "race_fixture.h"

using namespace race_test;

namespace {

TEST_F(RaceTest, ThePadDrivesStartPausesAnUnpluggedPadPausesAndWorksAgainOnceBack) {
  using platform::Set_Virtual_Pad;
  modMain::ControlDevice = 1;
  frmMain::PadBinding[0] = platform::kPadX;  // thrust on a button; brake stays on the left trigger
  ASSERT_TRUE(platform::Attach_Virtual_Pad("Test Pad"));
  float start_x = 0, start_z = 0, moved = 0;
  bool paused_by_start = false, resumed_by_a = false, paused_by_unplug = false, thrust_let_go = false;
  bool thrust_after_replug = false, still_paused = false, resumed_again = false;
  const auto pad = [](i32 t, std::initializer_list<std::tuple<i32, int16_t, float>> script) {
    for (const auto& [at, control, amount] : script)
      if (Reached(t, at)) Set_Virtual_Pad(control, amount);
  };
  Run_Race(0, [&](i32 t) {
    const clsHumanPlayer& p = Player();
    if (Reached(t, 3050)) start_x = p.PositionX, start_z = p.PositionZ;
    if (Reached(t, 3800)) moved = std::hypot(p.PositionX - start_x, p.PositionZ - start_z);
    if (Reached(t, 3900)) paused_by_start = Is_Set(modGameLoop::Paused);
    if (Reached(t, 4000)) resumed_by_a = !Is_Set(modGameLoop::Paused);
    if (Reached(t, 4200)) paused_by_unplug = Is_Set(modGameLoop::Paused), thrust_let_go = !Is_Set(p.Thrust);
    if (Reached(t, 4400)) thrust_after_replug = Is_Set(p.Thrust), still_paused = Is_Set(modGameLoop::Paused);
    if (Reached(t, 4600)) resumed_again = !Is_Set(modGameLoop::Paused);
    if (Reached(t, 4100)) Set_Virtual_Pad(platform::kPadX, 1);
    if (Reached(t, 4150)) platform::Detach_Virtual_Pad();
    if (Reached(t, 4300)) {
      EXPECT_TRUE(platform::Attach_Virtual_Pad("Test Pad"));
    }
    // Thrust; Start pauses, A resumes; thrust, unplug; back: X drives again, A resumes;
    // Start, the brake moves the selection to "Quit Race", A quits.
    pad(t, {{3050, platform::kPadX, 1},
            {3700, platform::kPadX, 0},
            {3800, platform::kPadStart, 1},
            {3850, platform::kPadStart, 0},
            {3950, platform::kPadA, 1},
            {3970, platform::kPadA, 0},
            {4350, platform::kPadX, 1},
            {4450, platform::kPadX, 0},
            {4500, platform::kPadA, 1},
            {4520, platform::kPadA, 0},
            {4700, platform::kPadStart, 1},
            {4720, platform::kPadStart, 0},
            {4800, platform::kPadLeftTrigger, 1},
            {4820, platform::kPadLeftTrigger, 0},
            {4900, platform::kPadA, 1}});
  });
  platform::Detach_Virtual_Pad();
  EXPECT_GT(moved, 1.0f) << "the ship moves under thrust from the pad's X";
  EXPECT_TRUE(paused_by_start) << "Start pauses";
  EXPECT_TRUE(resumed_by_a) << "A on Resume";
  EXPECT_TRUE(paused_by_unplug) << "unplugging pauses";
  EXPECT_TRUE(thrust_let_go) << "an unplugged pad holds nothing";
  EXPECT_TRUE(thrust_after_replug) << "the pad works again once plugged back in";
  EXPECT_TRUE(still_paused) << "until the player resumes";
  EXPECT_TRUE(resumed_again);
  EXPECT_EQ(modGameLoop::PauseSelection, 1) << "the brake moved the selection";
  EXPECT_EQ(modMain::GameState, modMain::kStateMainMenu) << "A on Quit Race";
}

}  // namespace
