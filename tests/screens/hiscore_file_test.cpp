// The hi-score file's bytes, short and corrupt files, the record rules, saves that survive kills.
#include "core/hiscore_file.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>

#include "core/log.h"
#include "support/test_env.h"

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

TEST(HiScoreFile, BytesAreTheSixFieldsLittleEndian) {
  // 95, "Ann", 40000, "", -435832, "Bo"
  const std::string expected(
      "\x5F\x00\x03\x00"
      "Ann"
      "\x40\x9C\x00\x00\x00\x00\x88\x59\xF9\xFF\x02\x00"
      "Bo",
      21);
  const HiScoreTable t{95, "Ann", 40000, "", -435832, "Bo"};
  EXPECT_EQ(modHiScore::Encode_HiScores(t), expected);
  EXPECT_EQ(Decode(expected), t);
}

TEST(HiScoreFile, ShorterTableLeavesTheOldTailAndReadsBackExactly) {
  testenv::ScratchAppDir dir;
  const std::string path = dir.path() + "/Hiscores.Dat";
  ASSERT_TRUE(modHiScore::Write_HiScore_File(path, kLong));
  const std::string long_bytes = testenv::Read_File(path);
  ASSERT_TRUE(modHiScore::Write_HiScore_File(path, kShort));
  const std::string bytes = testenv::Read_File(path);
  const std::string fresh = modHiScore::Encode_HiScores(kShort);
  ASSERT_GT(long_bytes.size(), fresh.size());
  EXPECT_EQ(bytes, fresh + long_bytes.substr(fresh.size()));
  EXPECT_EQ(modHiScore::Read_HiScore_File(path), kShort);
  EXPECT_FALSE(std::filesystem::exists(path + ".new"));
}

// Only a file that is truly absent is created; one that cannot be read is never replaced.
// A folder and a link to itself stand in for unreadable files (mode 000 is readable to root).
TEST(HiScoreFile, AnUnreadableFileIsKeptWhateverIsReadOrSaved) {
  testenv::ScratchAppDir dir;
  const std::string path = dir.path() + "/Hiscores.Dat";
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
    EXPECT_TRUE(t == want && (fields == 6) == (cut == whole.size())) << cut;
  }
  // A negative name count is an empty name and reading goes on; a count past the end stops it.
  const std::string negative("\x10\x00\xFF\xFF\x20\x00\x00\x00\x00\x80\x80\x07\x00\x00\x01\x00Z", 17);
  int fields = 0;
  EXPECT_EQ(Decode(negative, &fields), (HiScoreTable{16, "", 32, "", 1920, "Z"}));
  EXPECT_EQ(fields, 6);
  const std::string past("\x10\x00\xFF\x7Fwxyz", 8);
  EXPECT_EQ(Decode(past, &fields), (HiScoreTable{16, "", 0, "", 0, ""}));
  EXPECT_EQ(fields, 1);
}

TEST(HiScoreRules, TiesNeverCountAndEmptyTablesAlwaysFall) {
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

TEST(HiScoreRules, TimeTextRoundsHundredthsToEvenAndGrowsPastAnHour) {
  for (const auto& [ms, text] :
       {std::pair{83456, "01:23:46"}, {59996, "00:60:00"}, {60000, "01:00:00"}, {6000000, "100:00:00"}})
    EXPECT_EQ(modHiScore::Time_Text(ms), text) << ms;
}

// A child saving over and over is killed at random: the file holds one whole table or the other.
TEST(HiScoreFile, SavesSurviveBeingKilled) {
  testenv::ScratchAppDir dir;
  const std::string path = dir.path() + "/Hiscores.Dat";
  // A long tail makes every save copy a quarter megabyte, so kills land inside writes.
  const std::string old_bytes = modHiScore::Encode_HiScores(kLong) + std::string(256 * 1024, '\x5A');
  const std::string fresh = modHiScore::Encode_HiScores(kShort), new_bytes = fresh + old_bytes.substr(fresh.size());

  int interrupted_writes = 0, ended_new = 0;
  const int kills = testenv::Kill_While_Saving(
      [&] {
        testenv::Write_File(path, old_bytes);
        std::filesystem::remove(path + ".new");
      },
      [&] {
        modHiScore::Write_HiScore_File(path, kShort);
        modHiScore::Write_HiScore_File(path, kLong);
      },
      [&](int round) {
        if (std::filesystem::exists(path + ".new")) ++interrupted_writes;
        const std::string now = testenv::Read_File(path);
        EXPECT_TRUE(now == old_bytes || now == new_bytes) << "round " << round << ": " << now.size() << " bytes";
        ended_new += now == new_bytes;
        const HiScoreTable t = modHiScore::Read_HiScore_File(path);
        EXPECT_TRUE(t == kLong || t == kShort);
      });
  EXPECT_EQ(kills, 200);
  // Kills must catch copies part-way and both tables in place, or the test proves nothing.
  EXPECT_TRUE(interrupted_writes > 0 && ended_new > 0 && ended_new < kills);
  std::printf("kills: %d, copy half-made: %d, new table in place: %d\n", kills, interrupted_writes, ended_new);
}
