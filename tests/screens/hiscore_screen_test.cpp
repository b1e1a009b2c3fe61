// The hi-score screen's real loop: typing, save on the first Enter, leave on the second, bad files.
#include <filesystem>

#include "screens/modHiScore.h"
#include "support/screen_fixture.h"
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
    p.cTopSpeed = 212, p.cRaceTime = 121000;
    p.cLapTime(1) = 41000, p.cLapTime(2) = 40000, p.cLapTime(3) = 40000;
  }
  std::string Path() const { return dir_.path() + "/Data/Hiscores.Dat"; }
};

TEST_F(HiScoreScreenTest, TypedNameIsSavedOnTheFirstEnterAndTheSecondLeaves) {
  // One key a frame, typed the frame after: Backspace on nothing, Shift A, A, Shift keypad 1,
  // F12, keypad 0 (nothing), 5, Space, Backspace; then B up to 23 characters.
  const std::vector<std::pair<int, int16_t>> keys = {
      {-1, 8},  {1, 65},  {0, 65},  {1, 97}, {0, 123},
      {-1, 96}, {-1, 53}, {-1, 32}, {-1, 8}};  // shift: held, up, as it was
  std::vector<std::string> names;
  std::string saved_bytes;
  bool still_entering = true;
  on_frame = [&](int f) {
    const size_t k = size_t(f - 2);
    if (f >= 3 && k <= keys.size()) names.push_back(modHiScore::Entered_Name());
    if (f >= 2 && k < keys.size()) {
      if (keys[k].first >= 0) keys[k].first ? Key_Down(16) : Key_Up(16);
      Key(keys[k].second);
    }
    if (f >= 12 && f < 30) Key(66);
    if (f == 20) Screenshot("hiscores");
    if (f == 30 || f == 31) names.push_back(modHiScore::Entered_Name());  // 31: no key, cut to 22
    if (f == 32) Key(13);                                              // saving pumps twice more: frames 34 and 35
    if (f == 38) {
      still_entering = modHiScore::Entering_Name();
      saved_bytes = testenv::Read_File(Path());
      EXPECT_TRUE(modHiScore::Running());
      EXPECT_EQ(modMain::PlayerName, names.back());
    }
    if (f == 40) Key(13);
  };
  modHiScore::Init_HiScore_Screen();
  const std::string name = "Aaa{5bbbbbbbbbbbbbbbbb";
  EXPECT_EQ(names, (std::vector<std::string>{"", "A", "Aa", "Aaa", "Aaa{", "Aaa{", "Aaa{5", "Aaa{5 ", "Aaa{5",
                                             name + "b", name}));
  EXPECT_EQ(modHiScore::Race_Fastest_Lap(), 2);
  EXPECT_FALSE(still_entering);
  EXPECT_EQ(saved_bytes, modHiScore::Encode_HiScores({212, name, 40000, name, 121000, name}));
  EXPECT_EQ(testenv::Read_Lines_CRLF(modMain::Settings_Path())[7], name);
  // The second Enter left; leaving saved the same table again and released the racer.
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
  const std::string before = modHiScore::Encode_HiScores(held) + "tail";
  testenv::Write_File(Path(), before);
  modMain::PlayerName = "Pilot";
  frmMain::Form_KeyDown(13, 0);  // the Enter that ended the race, still held, counts for nothing
  on_frame = [&](int f) {
    if (f == 3) Key(65);  // nothing to type into
    if (f == 6) Key(13);
  };
  modHiScore::Init_HiScore_Screen();
  // Enter posted with frame 6 ends the loop in frame 7; saving on the way out pumps once more.
  EXPECT_EQ(frames, 8);
  EXPECT_EQ(modMain::GameState, modMain::kStateMainMenu);
  EXPECT_EQ(modHiScore::Entered_Name(), "Pilot");
  EXPECT_EQ(modHiScore::Table(), held);
  EXPECT_EQ(testenv::Read_File(Path()), before);
}

TEST_F(HiScoreScreenTest, ShortOrCorruptFilesNeverStopTheScreen) {
  // A top speed of 300, then a name said to be 30000 bytes long in a 7-byte file.
  testenv::Write_File(Path(), std::string("\x2C\x01\x30\x75"
                                          "abc",
                                          7));
  modMain::PlayerName = "Kit";
  bool read_as_far_as_held = false;
  on_frame = [&](int f) {
    if (f == 3)
      read_as_far_as_held = modHiScore::Table() == HiScoreTable{300, "", 0, "", 0, ""} && modHiScore::Entering_Name();
    if (f % 6 == 3) Key(13);
  };
  modHiScore::Init_HiScore_Screen();
  EXPECT_TRUE(read_as_far_as_held);
  EXPECT_EQ(modHiScore::Table(), (HiScoreTable{300, "", 40000, "Kit", 121000, "Kit"}));
  EXPECT_EQ(modHiScore::Read_HiScore_File(Path()), modHiScore::Table());
  // No file and no racers at all: the empty table, zero figures, no crash.
  std::filesystem::remove(Path());
  modMain::Players.clear();
  frames = 0;
  on_frame = [this](int f) {
    if (f % 6 == 3) Key(13);
  };
  modHiScore::Init_HiScore_Screen();
  EXPECT_EQ(modMain::GameState, modMain::kStateMainMenu);
  EXPECT_TRUE(std::filesystem::exists(Path()));
}

}  // namespace
