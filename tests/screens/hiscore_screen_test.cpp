// The hi-score screen run through its real loop: name typing, save on the first
// confirmation and leave on the second, the log lines, files that are short or corrupt,
// and what a frame draws.
#include <filesystem>
#include <string>
#include <vector>

#include "core/log.h"
#include "support/screen_fixture.h"
#include "screens/modHiScore.h"
#include "support/test_env.h"
#include "vehicle/create_racers.h"

namespace {

using modHiScore::HiScoreTable;

class HiScoreScreenTest : public ScreenTest {
 protected:
  void SetUp() override {
    ScreenTest::SetUp();
    std::filesystem::create_directories(dir_.path() + "/Data");
    modMain::GameState = modMain::kStateHiScore;
    max_frames = 400;
    modMain::Create_Racers(0);
    clsHumanPlayer& p = *modMain::Players[0];
    p.cTopSpeed = 212;
    p.cLapTime(1) = 41000;
    p.cLapTime(2) = 40000;
    p.cLapTime(3) = 40000;
    p.cRaceTime = 121000;
  }
  std::string Path() const { return dir_.path() + "/Data/Hiscores.Dat"; }
  void Write_Table(const HiScoreTable& t, const std::string& tail = "") const {
    testenv::Write_File(Path(), modHiScore::Encode_HiScores(t) + tail);
  }
};

TEST_F(HiScoreScreenTest, TypedNameIsSavedOnTheFirstEnterAndTheSecondLeaves) {
  // One key a frame; a key posted in one frame is typed in the next.
  struct Step {
    int shift;  // 1 held, 0 released, -1 as it was
    int16_t key;
  };
  const std::vector<Step> keys = {{-1, 8}, {1, 65}, {0, 65}, {1, 97}, {0, 123}, {-1, 96}, {-1, 53}, {-1, 32}, {-1, 8}};
  std::vector<std::string> names;
  HiScoreTable saved;
  std::string saved_bytes, setting_after_save;
  bool still_entering = true;
  on_frame = [&](int f) {
    const int k = f - 2;
    if (k >= 1 && k <= int(keys.size())) names.push_back(modHiScore::EnteredName);
    if (k >= 0 && k < int(keys.size())) {
      if (keys[size_t(k)].shift == 1) Key_Down(16);
      if (keys[size_t(k)].shift == 0) Key_Up(16);
      Key(keys[size_t(k)].key);
    }
    if (f >= 12 && f < 30) Key(66);  // to 23 characters
    if (f == 30) names.push_back(modHiScore::EnteredName);
    if (f == 31) names.push_back(modHiScore::EnteredName);  // a frame without a key: cut to 22
    if (f == 32) Key(13);                                   // saving pumps messages twice more: frames 34 and 35
    if (f == 38) {
      still_entering = Is_Set(modHiScore::NewHiScore);
      saved = modHiScore::Scores;
      saved_bytes = testenv::Read_File(Path());
      setting_after_save = modMain::PlayerName;
      EXPECT_TRUE(Is_Set(modHiScore::HiScoreRunning));
    }
    if (f == 40) Key(13);
  };
  modHiScore::Init_HiScore_Screen();

  EXPECT_EQ(names, (std::vector<std::string>{"", "A", "Aa", "Aaa", "Aaa{", "Aaa{", "Aaa{5", "Aaa{5 ", "Aaa{5",
                                             "Aaa{5bbbbbbbbbbbbbbbbbb", "Aaa{5bbbbbbbbbbbbbbbbb"}));
  EXPECT_EQ(modHiScore::RaceFastestLap, 2);
  const std::string name = "Aaa{5bbbbbbbbbbbbbbbbb";
  const HiScoreTable expected{212, name, 40000, name, 121000, name};
  EXPECT_FALSE(still_entering);
  EXPECT_EQ(saved, expected);
  EXPECT_EQ(saved_bytes, modHiScore::Encode_HiScores(expected));
  EXPECT_EQ(setting_after_save, name);
  EXPECT_EQ(testenv::Read_Lines_CRLF(modMain::Settings_Path())[7], name);
  // The second Enter left for the menu; leaving saved the same table again and released the racer.
  EXPECT_EQ(modMain::GameState, modMain::kStateMainMenu);
  EXPECT_EQ(testenv::Read_File(Path()), saved_bytes);
  ASSERT_EQ(modMain::Players.size(), 1u);
  EXPECT_FALSE(modMain::Players[0]);

  const auto log = testenv::Read_Lines_CRLF(modMain::Log_Path());
  const std::vector<std::string> lines = {"Initialising HiScores...", "   Loading Surfaces...",
                                          "   ...Surfaces Loaded",    "",
                                          "   Reading Scores...",     "   ...Done"};
  EXPECT_NE(std::search(log.begin(), log.end(), lines.begin(), lines.end()), log.end());
}

TEST_F(HiScoreScreenTest, WithoutARecordTheFirstEnterLeavesAndTiesKeepTheHolders) {
  const HiScoreTable held{212, "Old", 40000, "Old", 121000, "Old"};
  Write_Table(held, "tail");
  const std::string before = testenv::Read_File(Path());
  modMain::PlayerName = "Pilot";
  frmMain::EnterPressed = kTrue;  // the Enter that ended the race counts for nothing
  int left_at = 0;
  on_frame = [&](int f) {
    if (f == 3) Key(65);  // nothing to type into
    if (f == 6) Key(13);
    left_at = f;
  };
  modHiScore::Init_HiScore_Screen();
  // Enter posted with frame 6 ends the loop in frame 7; saving on the way out pumps once more.
  EXPECT_EQ(left_at, 8);
  EXPECT_EQ(modMain::GameState, modMain::kStateMainMenu);
  EXPECT_EQ(modHiScore::EnteredName, "Pilot");
  EXPECT_EQ(modHiScore::Scores, held);
  EXPECT_EQ(testenv::Read_File(Path()), before);
}

TEST_F(HiScoreScreenTest, ShortOrCorruptFilesNeverStopTheScreen) {
  // A top speed of 300, then a name said to be 30000 bytes long in a 7-byte file.
  testenv::Write_File(Path(), std::string("\x2C\x01\x30\x75"
                                          "abc",
                                          7));
  modMain::PlayerName = "Kit";
  on_frame = [&](int f) {
    if (f == 3) {
      EXPECT_EQ(modHiScore::Scores, (HiScoreTable{300, "", 0, "", 0, ""}));
      EXPECT_TRUE(Is_Set(modHiScore::NewHiScore));
    }
    if (f % 6 == 3) Key(13);
  };
  modHiScore::Init_HiScore_Screen();
  EXPECT_EQ(modHiScore::Scores, (HiScoreTable{300, "", 40000, "Kit", 121000, "Kit"}));
  HiScoreTable on_disk = modHiScore::Read_HiScore_File(Path());
  EXPECT_EQ(on_disk, modHiScore::Scores);

  // No file and no racers at all: the empty table, zero figures, no crash.
  std::filesystem::remove(Path());
  modMain::Players.clear();
  frames = 0;
  on_frame = [&](int f) {
    if (f % 6 == 3) Key(13);
  };
  modHiScore::Init_HiScore_Screen();
  EXPECT_EQ(modMain::GameState, modMain::kStateMainMenu);
  EXPECT_TRUE(std::filesystem::exists(Path()));
}

TEST_F(HiScoreScreenTest, TheNameBoxShowsABlinkingCursorOverTheRecords) {
  Write_Table({198, "Vesper Ace", 41230, "Kestrel Kid", 126540, "Vesper Ace"});
  modMain::PlayerName = "Nov";
  std::vector<uint32_t> cursor_on, cursor_off;
  bool shot = false;
  on_frame = [&](int f) {
    if (f == 2) {
      Key_Down(16);
      Move(452, 262);
    }
    if (f == 3) Key(65);
    if (f == 4) Key_Up(16);
    if (f < 10 || !Is_Set(modHiScore::NewHiScore)) return;
    // "NovA" is 4 cells from x = 68: the cursor's cell starts at 116.
    const bool on = modMain::GameClock % 1000 > 500;
    (on ? cursor_on : cursor_off) = Read(116, 265, 128, 280);
    if (on && !cursor_off.empty() && !shot) {
      Screenshot("hiscores");
      shot = true;
    }
    if (f == 140) Key(13);
    if (f == 142) Key(13);
  };
  modHiScore::Init_HiScore_Screen();
  ASSERT_FALSE(cursor_on.empty());
  ASSERT_FALSE(cursor_off.empty());
  EXPECT_NE(cursor_on, cursor_off);
  EXPECT_TRUE(shot);
  EXPECT_EQ(modHiScore::Scores, (HiScoreTable{212, "NovA", 40000, "NovA", 121000, "NovA"}));
}

}  // namespace
