#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <sstream>

#include "audio_input/frmMain.h"
#include "core/extras.h"
#include "core/modMain.h"
#include "core/numbers.h"
#include "platform/testing.h"
#include "support/test_env.h"
#include "vehicle/clsHumanPlayer.h"
#include "vehicle/players.h"

using namespace modMain;
using namespace frmMain;

TEST(PlayerFiles, SettingsDefaultRoundTripKeepOldValuesOnBadLinesAndSurviveKillsLogAndExtrasLines) {
  testenv::ScratchAppDir dir;
  ScreenWidth = 1024, KeyUp = 65;
  Create_Log();
  Read_Settings();
  EXPECT_EQ(std::tuple(ScreenWidth, KeyUp, ScaleX, ScaleY), std::tuple(i16(640), i16(38), 1.0f, 1.0f));
  EXPECT_EQ(testenv::Read_Lines_CRLF(Log_Path()),
            (std::vector<std::string>{"Program Started", " ", "Quorval.ini not found, Using Default Settings"}));
  // The file is only written by the dialogs, never by reading.
  EXPECT_TRUE(testenv::Read_File(Settings_Path()).empty());

  const std::string defaults = "0\r\n640\r\n480\r\n16\r\n<none>\r\n<none>\r\n1\r\n\r\n0\r\n38\r\n40\r\n37\r\n39\r\n";
  Default_Settings();
  Write_Settings();
  EXPECT_EQ(testenv::Read_File(Settings_Path()), defaults);
  PlayerName = "stale";
  Read_Settings();
  EXPECT_EQ(PlayerName, "") << "an empty name reads back empty";
  SkipSetup = 1, ScreenWidth = 800, ScreenHeight = 600, ScreenBPP = 32, Difficulty = 3, KeyUp = 87;
  D3DDeviceGuid = "IID_IDirect3DHALDevice", PlayerName = "Ada Vance";
  Write_Settings();
  Default_Settings();
  Read_Settings();
  EXPECT_EQ((std::array<int, 5>{SkipSetup, ScreenWidth, ScreenBPP, Difficulty, KeyUp}),
            (std::array<int, 5>{1, 800, 32, 3, 87}));
  EXPECT_EQ((std::array{D3DDeviceGuid, PlayerName, SoundDeviceGuid}),
            (std::array<std::string, 3>{"IID_IDirect3DHALDevice", "Ada Vance", "<none>"}));
  EXPECT_EQ(std::pair(ScaleX, ScaleY), std::pair(1.25f, 1.25f));
  testenv::Write_File(
      Settings_Path(),
      "1 skip it\r\n1024px\r\nabc\r\n16.5\r\ndev\r\nsnd\r\n300\r\nName\r\n-1\r\n17.5\r\n40\r\n99999\r\n39\r\n");
  Default_Settings();
  ScreenHeight = 555, Difficulty = 2, ControlDevice = 5, KeyLeft = 70;
  Read_Settings();
  EXPECT_EQ(SkipSetup, 1) << "text after the number is ignored";
  EXPECT_EQ(ScreenWidth, 1024);
  EXPECT_EQ(ScreenHeight, 0) << "a line without a number reads as 0";
  EXPECT_EQ(ScreenBPP, 16) << "16.5 -> 16";
  EXPECT_EQ(Difficulty, 2) << "300 does not fit 8 bits: unchanged";
  EXPECT_EQ(ControlDevice, 5) << "-1 does not fit either";
  EXPECT_EQ(KeyUp, 18) << "17.5 -> 18";
  EXPECT_EQ(KeyLeft, 70) << "99999 does not fit 16 bits";
  EXPECT_EQ(PlayerName, "Name");

  testenv::Write_File(Settings_Path(), "1\r\n320\r\n240\r\n24\r\n");
  Default_Settings();
  D3DDeviceGuid = "kept", KeyDown = 83;
  Read_Settings();
  EXPECT_EQ((std::array<int, 4>{SkipSetup, ScreenWidth, ScreenBPP, KeyDown}), (std::array<int, 4>{1, 320, 24, 83}));
  EXPECT_EQ(std::pair(D3DDeviceGuid, ScaleX), std::pair(std::string("kept"), 0.5f));
  // New values unlike the defaults in every line, with a long name so a write takes a while.
  SkipSetup = 1, ScreenWidth = 1024, ScreenHeight = 768, Difficulty = 3;
  KeyUp = 87, KeyDown = 83, KeyLeft = 65, KeyRight = 68;
  PlayerName = std::string(20000, 'Q');
  Write_Settings();
  const std::string new_bytes = testenv::Read_File(Settings_Path());
  int whole_old = 0, whole_new = 0;
  const int kills = testenv::Kill_While_Saving(
      [&] { testenv::Write_File(Settings_Path(), defaults); }, [] { Write_Settings(); },
      [&](int round) {
        const std::string now = testenv::Read_File(Settings_Path());
        whole_old += now == defaults, whole_new += now == new_bytes;
        EXPECT_TRUE(now == defaults || now == new_bytes) << "round " << round << ": " << now.size() << " bytes";
      });
  EXPECT_EQ(kills, 200);
  EXPECT_EQ(whole_old + whole_new, 200) << "whole after the kills: " << whole_old << " old, " << whole_new << " new";

  Create_Log();
  Write_Log("first");
  Write_Log("");
  Write_Log("third");
  EXPECT_EQ(testenv::Read_File(Log_Path()), "Program Started\r\n \r\nfirst\r\n\r\nthird\r\n");
  Create_Log();  // a new run truncates
  EXPECT_EQ(testenv::Read_File(Log_Path()), "Program Started\r\n \r\n");

  std::ostringstream out;
  Write_String(out, "AB");
  Write_String(out, "");
  EXPECT_EQ(out.str(), std::string("\2\0AB\0\0", 6));
  std::istringstream in(out.str());
  std::string s, t;
  ASSERT_TRUE(Read_String(in, s));
  ASSERT_TRUE(Read_String(in, t));
  EXPECT_EQ(s + "|" + t, "AB|");
  std::istringstream negative(std::string("\xFF\xFFxyz", 5));  // length -1 reads as empty
  ASSERT_TRUE(Read_String(negative, s));
  EXPECT_EQ(s, "");
  std::istringstream short_data(std::string("\5\0ab", 4));
  EXPECT_FALSE(Read_String(short_data, s));
  EXPECT_EQ(s, "ab");
  extras::Load();
  EXPECT_EQ(extras::Get("volume", 10, 0, 10), 10);
  extras::Set("volume", 10);  // nothing remembered yet: written once
  EXPECT_EQ(testenv::Read_File(extras::Path()), "volume=10\n");
  testenv::Write_File(extras::Path(), "window=1\r\nnot a line\nvolume=99\n\nghost=0x\nghost=0\n");
  extras::Load();
  EXPECT_EQ(extras::Get("window", 0, 0, 1), 1) << "CR LF lines read";
  EXPECT_EQ(extras::Get("volume", 7, 0, 10), 7) << "out of range gives the fallback";
  EXPECT_EQ(extras::Get("ghost", 1, 0, 1), 0);
  EXPECT_EQ(testenv::Read_Lines_CRLF(Log_Path()).back(), "Quorval.cfg: line 5 ignored");
  extras::Set("window", 0);
  extras::Load();
  EXPECT_EQ(extras::Get("window", 1, 0, 1), 0);
  EXPECT_EQ(testenv::Read_File(extras::Path()), "ghost=0\nvolume=99\nwindow=0\n") << "unknown values kept";
  EXPECT_FALSE(std::filesystem::exists(extras::Path() + ".new"));
  extras::Reset();
}

TEST(Numbers, RoundingParsingAndFormats) {
  using namespace numbers;
  EXPECT_EQ((std::array{Round_Half_Even(0.5), Round_Half_Even(1.5), Round_Half_Even(-2.5)}),
            (std::array{0.0, 2.0, -2.0}));
  EXPECT_EQ((std::array{Leading_Number("  -12.25kg"), Leading_Number(".5"), Leading_Number("x12")}),
            (std::array{-12.25, 0.5, 0.0}));
  EXPECT_EQ((std::array{Format(7, "000"), Format(1234, "00"), Format(105, "00:00"), Format(12345, "00:00")}),
            (std::array<std::string, 4>{"007", "1234", "01:05", "123:45"}));
}

TEST(Input, BoundKeysDriveThePlayerFirstBindingWinsOnlyUnboundEnterEscapeShiftFlagMouseClicksActOnceAndRoundToEven) {
  Default_Settings();
  Reset_Input();
  Players.clear();
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

  Reset_Input();
  // Down or up, the button, and the left click after it: the right button never clicks.
  for (const auto& [down, button, clicked] : {std::tuple{1, 2, 0}, {1, 1, 1}, {0, 2, 1}, {0, 1, 0}}) {
    (down ? Form_MouseDown : Form_MouseUp)(i16(button), 0, 10, 10);
    EXPECT_EQ(Pressed(Press::LeftClick), clicked == 1) << (down ? "down " : "up ") << button;
  }
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
  Players.clear();
}

TEST(Clocks, LongFramesAreCappedBothClocksWrapAndFastDisplaysStepSixtyASecond) {
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
  EXPECT_EQ(std::pair(FrameTime, GameClock), std::pair(20, 10)) << "the next frame counts from the capped one's end";
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
    EXPECT_EQ(std::pair(total, most), std::pair(steps_per_second, 1)) << hz << " Hz: steps, the most in one frame";
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
