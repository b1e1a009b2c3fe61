#include <filesystem>

#include "core/hiscore_file.h"
#include "screens/modHiScore.h"
#include "support/screen_fixture.h"
#include "vehicle/create_racers.h"

using modHiScore::HiScoreTable;
using modHiScore::RaceFigures;

namespace {

HiScoreTable Decode(const std::string& bytes, int* fields = nullptr) {
  HiScoreTable t;
  const int n = modHiScore::Decode_HiScores(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size(), t);
  if (fields != nullptr) *fields = n;
  return t;
}

const HiScoreTable kLong{212, "Commander Long-Name", 41230, "Second Holder", 131070, "Third"};
const HiScoreTable kShort{230, "Al", 40000, "", 125000, "Bo"};

}  // namespace

TEST(HiScoreFile, BytesAreTheSixFieldsAnUnreadableFileIsKeptAndSavesSurviveBeingKilled) {
  const std::string expected(
      "\x5F\x00\x03\x00"
      "Ann"
      "\x40\x9C\x00\x00\x00\x00\x88\x59\xF9\xFF\x02\x00"
      "Bo",
      21);
  const HiScoreTable t{95, "Ann", 40000, "", -435832, "Bo"};
  EXPECT_EQ(modHiScore::Encode_HiScores(t), expected);
  EXPECT_EQ(Decode(expected), t);

  testenv::ScratchAppDir dir;
  const std::string path = dir.path() + "/Hiscores.Dat", fresh = modHiScore::Encode_HiScores(kShort);
  ASSERT_TRUE(modHiScore::Write_HiScore_File(path, kLong));
  const std::string long_bytes = testenv::Read_File(path);
  ASSERT_TRUE(modHiScore::Write_HiScore_File(path, kShort));
  ASSERT_GT(long_bytes.size(), fresh.size());
  EXPECT_EQ(testenv::Read_File(path), fresh + long_bytes.substr(fresh.size()));
  EXPECT_EQ(modHiScore::Read_HiScore_File(path), kShort);
  EXPECT_FALSE(std::filesystem::exists(path + ".new"));
  // Only a file that is truly absent is created; one that cannot be read is never replaced.
  // A folder and a link to itself stand in for unreadable files (mode 000 is readable to root).
  std::filesystem::remove(path);
  EXPECT_EQ(modHiScore::Read_HiScore_File(path), HiScoreTable{});
  EXPECT_EQ(testenv::Read_File(path), "") << "created empty when absent";
  EXPECT_TRUE(std::filesystem::is_regular_file(path));

  for (const bool folder : {true, false}) {
    SCOPED_TRACE(folder ? "a folder" : "a link to itself");
    std::filesystem::remove_all(path);
    modMain::Create_Log();
    if (folder) {
      std::filesystem::create_directories(path + "/inside");
    } else {
      std::filesystem::create_symlink("Hiscores.Dat", path);
    }
    EXPECT_EQ(modHiScore::Read_HiScore_File(path), HiScoreTable{});
    EXPECT_FALSE(modHiScore::Write_HiScore_File(path, kShort));
    EXPECT_EQ(folder, std::filesystem::is_directory(std::filesystem::symlink_status(path)));
    EXPECT_EQ(!folder, std::filesystem::is_symlink(path));
    std::error_code loop;
    EXPECT_EQ(folder, std::filesystem::exists(path + "/inside", loop));
    EXPECT_FALSE(std::filesystem::exists(std::filesystem::symlink_status(path + ".new")));
    const auto log = testenv::Read_Lines_CRLF(modMain::Log_Path());
    ASSERT_EQ(log.size(), 4u);  // the start of the log, then one line each
    EXPECT_EQ(log[2].rfind("Data\\Hiscores.Dat cannot be read (", 0), 0u) << log[2];
    EXPECT_NE(log[3].find("the new records are not saved"), std::string::npos) << log[3];
  }
  // A child saving over and over is killed at random: the file holds one whole table or the other.
  std::filesystem::remove_all(path);
  // A long tail makes every save copy a quarter megabyte, so kills land inside writes.
  const std::string old_bytes = modHiScore::Encode_HiScores(kLong) + std::string(256 * 1024, '\x5A');
  const std::string new_bytes = fresh + old_bytes.substr(fresh.size());

  int interrupted_writes = 0, ended_new = 0;
  const int kills = testenv::Kill_While_Saving(
      [&] { testenv::Write_File(path, old_bytes), std::filesystem::remove(path + ".new"); },
      [&] { modHiScore::Write_HiScore_File(path, kShort), modHiScore::Write_HiScore_File(path, kLong); },
      [&](int round) {
        if (std::filesystem::exists(path + ".new")) ++interrupted_writes;
        const std::string now = testenv::Read_File(path);
        EXPECT_TRUE(now == old_bytes || now == new_bytes) << "round " << round << ": " << now.size() << " bytes";
        ended_new += now == new_bytes;
        const HiScoreTable t = modHiScore::Read_HiScore_File(path);
        EXPECT_TRUE(t == kLong || t == kShort) << "round " << round << ": neither table reads back";
      });
  EXPECT_EQ(kills, 200);
  // Kills must catch copies part-way and both tables in place, or the test proves nothing.
  EXPECT_GT(interrupted_writes, 0);
  EXPECT_GT(ended_new, 0);
  EXPECT_LT(ended_new, kills);
}

TEST(HiScoreFile, ShortAndCorruptFilesReadAsFarAsTheyHold) {
  const std::string whole = modHiScore::Encode_HiScores(kLong);
  // Every cut of a valid file: the fields it holds whole, nothing after them.
  for (size_t cut = 0; cut <= whole.size(); ++cut) {
    int fields = -1;
    const HiScoreTable t = Decode(whole.substr(0, cut), &fields);
    const HiScoreTable want{i16(fields >= 1 ? kLong.BestTopSpeed : 0), fields >= 2 ? kLong.BestTopSpeedName : "",
                            fields >= 3 ? kLong.BestLap : 0,           fields >= 4 ? kLong.BestLapName : "",
                            fields >= 5 ? kLong.BestRace : 0,          fields >= 6 ? kLong.BestRaceName : ""};
    EXPECT_EQ(t, want) << cut;
    EXPECT_EQ(fields == 6, cut == whole.size()) << cut;
  }
  // A negative name count is an empty name and reading goes on; a count past the end stops it.
  const std::string negative("\x10\x00\xFF\xFF\x20\x00\x00\x00\x00\x80\x80\x07\x00\x00\x01\x00Z", 17);
  int fields = 0;
  EXPECT_EQ(std::pair(Decode(negative, &fields), fields), std::pair(HiScoreTable{16, "", 32, "", 1920, "Z"}, 6));
  const std::string past("\x10\x00\xFF\x7Fwxyz", 8);
  EXPECT_EQ(std::pair(Decode(past, &fields), fields), std::pair(HiScoreTable{16, "", 0, "", 0, ""}, 1));
}

TEST(HiScoreRules, TiesNeverCountEmptyTablesAlwaysFallAndTimesRoundHundredthsToEven) {
  for (const auto& [ms, text] :
       {std::pair{83456, "01:23:46"}, {59996, "00:60:00"}, {60000, "01:00:00"}, {6000000, "100:00:00"}})
    EXPECT_EQ(modHiScore::Time_Text(ms), text) << ms;
  const HiScoreTable held{150, "Old", 40000, "Old", 125000, "Old"};
  RaceFigures same{150, {40000, 40500, 41000}, 125000};  // ties on all three
  EXPECT_FALSE(modHiScore::Is_New_Record(held, same));
  HiScoreTable after = held;
  modHiScore::Merge_Race(after, same, "New");
  EXPECT_EQ(after, held);

  RaceFigures faster = same;
  faster.LapTime[2] = 39999;
  EXPECT_TRUE(modHiScore::Is_New_Record(held, faster));
  modHiScore::Merge_Race(after, faster, "New");
  EXPECT_EQ(after, (HiScoreTable{150, "Old", 39999, "New", 125000, "Old"}));

  RaceFigures first{0, {41000, 40000, 40000}, 121000};
  EXPECT_TRUE(modHiScore::Is_New_Record(HiScoreTable{}, first));
  EXPECT_EQ(modHiScore::Fastest_Lap(first), 2);  // the first of the fastest
  HiScoreTable fresh;
  modHiScore::Merge_Race(fresh, first, "Ann");
  // A top speed of 0 is no record: that holder stays empty.
  EXPECT_EQ(fresh, (HiScoreTable{0, "", 40000, "Ann", 121000, "Ann"}));
}

namespace {

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
  const auto read_name = [&] { names.push_back(modHiScore::Entered_Name()); };
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
  script.push_back({"saved", [] { return !modHiScore::Entering_Name(); },
                    [&] {
                      saved_bytes = testenv::Read_File(Path());
                      EXPECT_TRUE(modHiScore::Running());
                      EXPECT_EQ(modMain::PlayerName, names.back());
                      Key(13);
                    }});
  Play(script, modHiScore::Init_HiScore_Screen);
  const std::string name = "Aaa{5bbbbbbbbbbbbbbbbb";
  EXPECT_EQ(names, (std::vector<std::string>{"", "A", "Aa", "Aaa", "Aaa{", "Aaa{", "Aaa{5", "Aaa{5 ", "Aaa{5",
                                             name + "b", name}));
  EXPECT_EQ(modHiScore::Race_Fastest_Lap(), 2);
  EXPECT_EQ(saved_bytes, modHiScore::Encode_HiScores({212, name, 40000, name, 121000, name}));
  EXPECT_EQ(testenv::Read_Lines_CRLF(modMain::Settings_Path())[7], name);
  // The second Enter left; leaving saved the same table again and released the racer.
  EXPECT_EQ(modMain::GameState, modMain::kStateMainMenu);
  EXPECT_EQ(testenv::Read_File(Path()), saved_bytes);
  ASSERT_EQ(modMain::Players.size(), 1u);
  EXPECT_FALSE(modMain::Players[0]);
}

TEST_F(HiScoreScreenTest, WithoutARecordTheFirstEnterLeavesAndTiesKeepTheHolders) {
  const HiScoreTable held{212, "Old", 40000, "Old", 121000, "Old"};
  const std::string before = modHiScore::Encode_HiScores(held) + "tail";
  testenv::Write_File(Path(), before);
  modMain::PlayerName = "Pilot";
  frmMain::Form_KeyDown(13, 0);  // the Enter that ended the race, still held, counts for nothing
  int enter_at = 0;
  Play({{"type into nothing", nullptr, [] { Key(65); }}, {"Enter", nullptr, [&] { Key(13), enter_at = frames; }}},
       modHiScore::Init_HiScore_Screen);
  // Enter ends the loop on the next frame; saving on the way out pumps once more.
  EXPECT_EQ(frames, enter_at + 2);
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
  Play({{"the table read as far as it holds", nullptr,
         [] {
           EXPECT_EQ(modHiScore::Table(), (HiScoreTable{300, "", 0, "", 0, ""}));
           EXPECT_TRUE(modHiScore::Entering_Name());
           Key(13);
         }},
        {"saved", [] { return !modHiScore::Entering_Name(); }, [] { Key(13); }}},
       modHiScore::Init_HiScore_Screen);
  EXPECT_EQ(modHiScore::Table(), (HiScoreTable{300, "", 40000, "Kit", 121000, "Kit"}));
  EXPECT_EQ(modHiScore::Read_HiScore_File(Path()), modHiScore::Table());
  // No file and no racers at all: the empty table, zero figures, no crash.
  std::filesystem::remove(Path());
  modMain::Players.clear();
  modMain::GameState = modMain::kStateHiScore;
  Play({{"Enter", nullptr, [] { Key(13); }}, {"saved", [] { return !modHiScore::Entering_Name(); }, [] { Key(13); }}},
       modHiScore::Init_HiScore_Screen);
  EXPECT_EQ(modMain::GameState, modMain::kStateMainMenu);
  EXPECT_TRUE(std::filesystem::exists(Path()));
}

}  // namespace
