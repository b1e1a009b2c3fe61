
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <sstream>

#include "core/extras.h"
#include "core/modMain.h"
#include "core/numbers.h"
#include "support/test_env.h"

using namespace modMain;

namespace {
std::string Ini(std::initializer_list<const char*> lines) {
  std::string s;
  for (const char* l : lines) s += std::string(l) + "\r\n";
  return s;
}
}  // namespace

TEST(Settings, AMissingFileTakesDefaultsValuesRoundTripBadLinesKeepOldValuesAndKilledSavesLeaveAWholeFile) {
  testenv::ScratchAppDir dir;
  ScreenWidth = 1024, KeyUp = 65;
  Create_Log();
  Read_Settings();
  EXPECT_EQ(std::pair(ScreenWidth, KeyUp), std::pair(i16(640), i16(38)));
  EXPECT_EQ(std::pair(ScaleX, ScaleY), std::pair(1.0f, 1.0f));
  EXPECT_EQ(testenv::Read_Lines_CRLF(Log_Path()),
            (std::vector<std::string>{"Program Started", " ", "Quorval.ini not found, Using Default Settings"}));
  // The file is only written by the dialogs, never by reading.
  EXPECT_TRUE(testenv::Read_File(Settings_Path()).empty());

  Default_Settings();
  Write_Settings();
  EXPECT_EQ(testenv::Read_File(Settings_Path()),
            Ini({"0", "640", "480", "16", "<none>", "<none>", "1", "", "0", "38", "40", "37", "39"}));
  SkipSetup = 1, ScreenWidth = 800, ScreenHeight = 600, ScreenBPP = 32, Difficulty = 3, KeyUp = 87;
  D3DDeviceGuid = "IID_IDirect3DHALDevice", PlayerName = "Ada Vance";
  Write_Settings();
  Default_Settings();
  PlayerName = "stale";
  Read_Settings();
  EXPECT_EQ((std::array<int, 5>{SkipSetup, ScreenWidth, ScreenBPP, Difficulty, KeyUp}),
            (std::array<int, 5>{1, 800, 32, 3, 87}));
  EXPECT_EQ((std::array{D3DDeviceGuid, PlayerName, SoundDeviceGuid}),
            (std::array<std::string, 3>{"IID_IDirect3DHALDevice", "Ada Vance", "<none>"}));
  EXPECT_EQ(std::pair(ScaleX, ScaleY), std::pair(1.25f, 1.25f));
  Default_Settings();  // an empty name reads back empty
  Write_Settings();
  PlayerName = "stale";
  Read_Settings();
  EXPECT_EQ(PlayerName, "");
  testenv::Write_File(Settings_Path(), Ini({"1 skip it", "1024px", "abc", "16.5", "dev", "snd", "300", "Name", "-1",
                                            "17.5", "40", "99999", "39"}));
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

  testenv::Write_File(Settings_Path(), Ini({"1", "320", "240", "24"}));
  Default_Settings();
  D3DDeviceGuid = "kept", KeyDown = 83;
  Read_Settings();
  EXPECT_EQ((std::array<int, 4>{SkipSetup, ScreenWidth, ScreenBPP, KeyDown}), (std::array<int, 4>{1, 320, 24, 83}));
  EXPECT_EQ(D3DDeviceGuid, "kept");
  EXPECT_FLOAT_EQ(ScaleX, 0.5f);
  modMain::Default_Settings();
  modMain::Write_Settings();
  const std::string old_bytes = testenv::Read_File(modMain::Settings_Path());
  // New values unlike the old in every line, with a long name so a write takes a while.
  modMain::SkipSetup = 1, modMain::ScreenWidth = 1024, modMain::ScreenHeight = 768, modMain::Difficulty = 3;
  modMain::KeyUp = 87, modMain::KeyDown = 83, modMain::KeyLeft = 65, modMain::KeyRight = 68;
  modMain::PlayerName = std::string(20000, 'Q');
  modMain::Write_Settings();
  const std::string new_bytes = testenv::Read_File(modMain::Settings_Path());
  ASSERT_NE(old_bytes, new_bytes);
  ASSERT_FALSE(old_bytes.empty());

  int whole_old = 0, whole_new = 0;
  const int kills = testenv::Kill_While_Saving(
      [&] { testenv::Write_File(modMain::Settings_Path(), old_bytes); }, [] { modMain::Write_Settings(); },
      [&](int round) {
        const std::string now = testenv::Read_File(modMain::Settings_Path());
        whole_old += now == old_bytes, whole_new += now == new_bytes;
        EXPECT_TRUE(now == old_bytes || now == new_bytes) << "round " << round << ": " << now.size() << " bytes";
      });
  EXPECT_EQ(kills, 200);
  EXPECT_EQ(whole_old + whole_new, 200) << "neither whole file after some kills";
  std::printf("kills: %d left the old file, %d the new one\n", whole_old, whole_new);
}

TEST(LogStringsAndExtras, LogLinesAppendWithCrLfStringsAreCountedAndExtrasDropBadLinesAndRoundTrip) {
  testenv::ScratchAppDir dir;
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
