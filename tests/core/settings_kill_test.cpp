// The options save killed at random moments: the settings file is always the whole old
// file or the whole new one, never a mix, a part or empty.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <random>
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

  std::mt19937 random(20261123);
  std::uniform_int_distribution<int> delay_us(0, 4000);
  int whole_old = 0, whole_new = 0, torn = 0;
  for (int trial = 0; trial < 200; ++trial) {
    testenv::Write_File(modMain::Settings_Path(), old_bytes);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      // The save, over and over, until the kill lands somewhere inside one.
      for (;;) modMain::Write_Settings();
    }
    usleep(static_cast<useconds_t>(delay_us(random)));
    kill(child, SIGKILL);
    int status = 0;
    waitpid(child, &status, 0);
    const std::string now = testenv::Read_File(modMain::Settings_Path());
    if (now == old_bytes) {
      ++whole_old;
    } else if (now == new_bytes) {
      ++whole_new;
    } else {
      ++torn;
      ADD_FAILURE() << "trial " << trial << ": " << now.size() << " bytes, neither whole file";
    }
  }
  EXPECT_EQ(torn, 0);
  EXPECT_EQ(whole_old + whole_new, 200);
  std::printf("kills: %d left the old file, %d the new one\n", whole_old, whole_new);
}
