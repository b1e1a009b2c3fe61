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
  // One key a frame: Backspace on nothing, Shift A, A, Shift keypad 1, F12, keypad 0 (nothing),
  // 5, Space, Backspace; then B up to 23 characters. The name is read the frame after each key.
  const std::vector<std::pair<int, int16_t>> keys = {
      {-1, 8},  {1, 65},  {0, 65},  {1, 97}, {0, 123},
      {-1, 96}, {-1, 53}, {-1, 32}, {-1, 8}};  // shift: held, up, as it was
  std::vector<std::string> names;
  std::string saved_bytes;
  const auto read_name = [&] { names.push_back(modHiScore::EnteredName); };
  std::vector<Step> script;
  for (size_t i = 0; i < keys.size(); ++i)
    script.push_back({"type " + std::to_string(keys[i].second), nullptr, [&, i] {
                        if (i > 0) read_name();
                        if (keys[i].first >= 0) keys[i].first ? Key_Down(16) : Key_Up(16);
                        Key(keys[i].second);
                      }});
  script.push_back({"read", nullptr, read_name});
  for (int b = 0; b < 18; ++b) script.push_back({"type B", nullptr, [] { Key(66); }});
  script.push_back({"read", nullptr, read_name});
  script.push_back({"read, no key: cut to 22", nullptr, read_name});
  script.push_back({"Screenshot, Enter", nullptr, [] { Screenshot("hiscores"), Key(13); }});
  script.push_back({"saved", [] { return !Is_Set(modHiScore::NewHiScore); },
                    [&] {
                      saved_bytes = testenv::Read_File(Path());
                      EXPECT_TRUE(Is_Set(modHiScore::HiScoreRunning));
                      EXPECT_EQ(modMain::PlayerName, names.back());
                      Key(13);
                    }});
  Play(script, modHiScore::Init_HiScore_Screen);
  const std::string name = "Aaa{5bbbbbbbbbbbbbbbbb";
  EXPECT_EQ(names, (std::vector<std::string>{"", "A", "Aa", "Aaa", "Aaa{", "Aaa{", "Aaa{5", "Aaa{5 ", "Aaa{5",
                                             name + "b", name}));
  EXPECT_EQ(modHiScore::RaceFastestLap, 2);
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
  frmMain::EnterPressed = kTrue;  // the Enter that ended the race counts for nothing
  int enter_at = 0;
  Play({{"type into nothing", nullptr, [] { Key(65); }}, {"Enter", nullptr, [&] { Key(13), enter_at = frames; }}},
       modHiScore::Init_HiScore_Screen);
  // Enter ends the loop on the next frame; saving on the way out pumps once more.
  EXPECT_EQ(frames, enter_at + 2);
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
  Play({{"the table read as far as it holds", nullptr,
         [] {
           EXPECT_EQ(modHiScore::Scores, (HiScoreTable{300, "", 0, "", 0, ""}));
           EXPECT_TRUE(Is_Set(modHiScore::NewHiScore));
           Key(13);
         }},
        {"saved", [] { return !Is_Set(modHiScore::NewHiScore); }, [] { Key(13); }}},
       modHiScore::Init_HiScore_Screen);
  EXPECT_EQ(modHiScore::Scores, (HiScoreTable{300, "", 40000, "Kit", 121000, "Kit"}));
  EXPECT_EQ(modHiScore::Read_HiScore_File(Path()), modHiScore::Scores);
  // No file and no racers at all: the empty table, zero figures, no crash.
  std::filesystem::remove(Path());
  modMain::Players.clear();
  modMain::GameState = modMain::kStateHiScore;
  Play(
      {{"Enter", nullptr, [] { Key(13); }}, {"saved", [] { return !Is_Set(modHiScore::NewHiScore); }, [] { Key(13); }}},
      modHiScore::Init_HiScore_Screen);
  EXPECT_EQ(modMain::GameState, modMain::kStateMainMenu);
  EXPECT_TRUE(std::filesystem::exists(Path()));
}

}  // namespace
