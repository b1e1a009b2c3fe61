// The options save killed at random moments: the settings file is always the whole old
// file or the whole new one, never a mix, a part or empty.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "core/modMain.h"
#include "support/test_env.h"

namespace {
// New values unlike the old in every line, with a long name so a write takes a while.
void Set_New_Values() {
  modMain::SkipSetup = 1;
  modMain::ScreenWidth = 1024;
  modMain::ScreenHeight = 768;
  modMain::Difficulty = 3;
  modMain::KeyUp = 87;
  modMain::KeyDown = 83;
  modMain::KeyLeft = 65;
  modMain::KeyRight = 68;
  modMain::PlayerName = std::string(20000, 'Q');
}
}  // namespace

TEST(SettingsKill, TwoHundredKillsDuringTheSaveLeaveTheWholeOldOrTheWholeNewFile) {
  testenv::ScratchAppDir dir;
  modMain::Default_Settings();
  modMain::Write_Settings();
  const std::string old_bytes = testenv::Read_File(modMain::Settings_Path());
  Set_New_Values();
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
