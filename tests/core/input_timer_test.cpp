#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "audio_input/frmMain.h"
#include "core/modMain.h"
#include "platform/platform.h"
#include "platform/testing.h"
#include "vehicle/clsHumanPlayer.h"
#include "vehicle/players.h"

using namespace modMain;
using namespace frmMain;

class InputTest : public ::testing::Test {
 protected:
  void SetUp() override {
    Default_Settings();
    Reset_Input();
    Players.clear();
  }
  void TearDown() override { Players.clear(); }
};

TEST_F(InputTest, BoundKeysDriveThePlayerFirstBindingWinsAndOnlyUnboundEnterEscapeShiftRaiseFlags) {
  for (i16 key : {13, 27, 16}) Form_KeyDown(key, 0);
  EXPECT_EQ((std::array{Pressed(Press::Enter), Pressed(Press::Escape), Is_Set(ShiftPressed)}),
            (std::array{true, true, true}));
  Form_KeyUp(27, 0);
  EXPECT_FALSE(Pressed(Press::Escape));
  Reset_Input();

  Form_KeyDown(38, 0);  // no racer yet: only the key state
  EXPECT_EQ(KeyState[38], kTrue);
  Players.push_back(std::make_unique<clsHumanPlayer>());
  clsHumanPlayer& p = *Players.back();
  for (i16 key : {38, 40, 37, 39}) Form_KeyDown(key, 0);
  EXPECT_EQ((std::array{p.Thrust, p.Brake, p.SteerLeft, p.SteerRight}), (std::array{kTrue, kTrue, kTrue, kTrue}));
  Form_KeyUp(38, 0);
  EXPECT_EQ((std::array{p.Thrust, p.Brake, KeyState[38]}), (std::array{kFalse, kTrue, kFalse}));

  Reset_Input();
  p.Thrust = p.Brake = kFalse;
  KeyDown = 38;  // Up bound twice: the first control in order takes it
  Form_KeyDown(38, 0);
  EXPECT_EQ(std::pair(p.Thrust, p.Brake), std::pair(kTrue, kFalse));

  KeyUp = 13, KeyLeft = 27, KeyRight = 16;  // bound Enter, Escape, Shift drive, never flag
  for (i16 key : {13, 27, 16}) Form_KeyDown(key, 0);
  EXPECT_EQ((std::array{Is_Set(p.SteerLeft), Is_Set(p.SteerRight), Pressed(Press::Enter), Pressed(Press::Escape),
                        Is_Set(ShiftPressed)}),
            (std::array{true, true, false, false, false}));
  EXPECT_EQ(KeyState[13], kTrue);

  // Codes from 124 up reach the bindings but record no key state.
  p.Thrust = kFalse;
  KeyUp = 186;
  Form_KeyDown(186, 0);
  Form_KeyDown(124, 0);
  EXPECT_EQ(p.Thrust, kTrue);
  Form_KeyDown(123, 0);
  EXPECT_EQ(KeyState[123], kTrue);
}

TEST_F(InputTest, MouseButtonsActOnceAndPointerPositionsRoundHalfToEven) {
  Form_MouseDown(2, 0, 10, 10);
  EXPECT_FALSE(Pressed(Press::LeftClick));
  Form_MouseDown(1, 0, 10, 10);
  EXPECT_TRUE(Pressed(Press::LeftClick));
  Form_MouseUp(2, 0, 10, 10);
  EXPECT_TRUE(Pressed(Press::LeftClick));
  Form_MouseUp(1, 0, 10, 10);
  EXPECT_FALSE(Pressed(Press::LeftClick));
  // A press acts once: taken, it is spent while still held, and the next one counts again.
  Form_MouseDown(1, 0, 10, 10);
  Form_KeyDown(13, 0);
  EXPECT_TRUE(Take(Press::LeftClick));
  EXPECT_FALSE(Take(Press::LeftClick)) << "spent while held";
  EXPECT_TRUE(Pressed(Press::Enter)) << "taking the click leaves Enter down";
  Form_MouseUp(1, 0, 10, 10);
  Form_MouseDown(1, 0, 10, 10);
  EXPECT_TRUE(Pressed(Press::LeftClick)) << "the next press";
  Form_MouseMove(0, 0, 319.5f, 320.5f);
  EXPECT_EQ(std::pair(MouseX, MouseY), std::pair(i16(320), i16(320)));
  Form_MouseMove(0, 0, 0.49f, 479.51f);
  EXPECT_EQ(std::pair(MouseX, MouseY), std::pair(i16(0), i16(480)));
}

TEST(Clocks, LongFramesAreCappedAt50BothClocksWrapAndDisplaysAbove60HzStepSixtyASecond) {
  platform::Use_Manual_Clock(true);
  platform::Set_Manual_Clock(1000);
  Start_Frame_Timer();
  GameClock = 0;
  platform::Advance_Manual_Clock(200);
  Update_Frame_Timer();
  EXPECT_EQ((std::array{FrameTime, GameClock}), (std::array{50, 50}));
  GameClock = 3600000 - 10;  // the game clock wraps after one hour
  platform::Advance_Manual_Clock(20);
  Update_Frame_Timer();
  EXPECT_EQ(FrameTime, 20) << "the next frame counts from the capped one's end";
  EXPECT_EQ(GameClock, 10);
  Reset_Game_Clock();
  EXPECT_EQ(GameClock, 0);
  platform::Set_Manual_Clock(INT32_MAX - 5);  // the tick counter wraps: frames stay short
  Start_Frame_Timer();
  platform::Advance_Manual_Clock(16);
  Update_Frame_Timer();
  EXPECT_EQ(FrameTime, 16);
  platform::Use_Manual_Clock(false);

  // Every frame at 60 Hz and below is one step; faster displays take sixty a second.
  for (const auto& [hz, steps_per_second] :
       {std::pair{60, 60}, std::pair{50, 50}, std::pair{120, 60}, std::pair{144, 60}}) {
    platform::Set_Refresh_Rate(hz);
    int total = 0, most = 0;
    for (int frame = 0; frame < hz; ++frame) {
      Count_Design_Steps();
      total += DesignSteps;
      most = std::max(most, int(DesignSteps));
    }
    EXPECT_EQ(total, steps_per_second) << hz << " Hz";
    EXPECT_EQ(most, 1) << hz << " Hz";
  }
  platform::Set_Refresh_Rate(0);
}

TEST(RandomSource, UniformInUnitIntervalAndSeeded) {
  Randomize(42);
  double sum = 0;
  float lo = 1, hi = 0;
  for (int i = 0; i < 100000; ++i) {
    const float r = Rnd();
    ASSERT_GE(r, 0.0f);
    ASSERT_LT(r, 1.0f);
    sum += r, lo = std::min(lo, r), hi = std::max(hi, r);
  }
  EXPECT_NEAR(sum / 100000, 0.5, 0.01);
  EXPECT_LT(lo, 0.001f);
  EXPECT_GT(hi, 0.999f);
  Randomize(42);
  const float a = Rnd();
  Randomize(42);
  EXPECT_EQ(a, Rnd());
}
