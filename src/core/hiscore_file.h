#pragma once
// The hi-score table, its file "Data\Hiscores.Dat" and the record rules. No drawing, no
// input: the screen (modHiScore) and the tests use these directly.
#include <cstddef>
#include <cstdint>
#include <string>

#include "core/numbers.h"
#include "core/types.h"

namespace modHiScore {

// One table for the whole game; 0 in a figure means no record yet.
struct HiScoreTable {
  i16 BestTopSpeed = 0;
  std::string BestTopSpeedName;
  i32 BestLap = 0;
  std::string BestLapName;
  i32 BestRace = 0;
  std::string BestRaceName;
  bool operator==(const HiScoreTable&) const = default;
};

// The figures of the race just finished.
struct RaceFigures {
  i16 TopSpeed = 0;
  i32 LapTime[3] = {0, 0, 0};  // laps 1..3
  i32 RaceTime = 0;
};

// The six fields as the file holds them, little-endian: 16 + the three name lengths bytes.
std::string Encode_HiScores(const HiScoreTable& table);
// Reads the six fields from the start of data; bytes after them are ignored. A field the
// data does not hold whole reads as 0 or "" and ends the reading (so do later fields); a
// name count of 0 or less is the empty name. Returns how many fields were read whole.
int Decode_HiScores(const uint8_t* data, size_t size, HiScoreTable& table);

// Reads the file at path. Only a file that is truly absent is created (empty: the empty
// table); one that exists but cannot be read reads as the empty table, is logged and is
// left exactly as it is.
HiScoreTable Read_HiScore_File(const std::string& path);
// Reads the file at path without creating it (the empty table when it cannot be read).
HiScoreTable Peek_HiScore_File(const std::string& path);
// Writes the table's bytes from the first byte on, keeping whatever longer tail the old
// file had, as one step through modMain::Replace_File: a kill at any moment leaves the
// whole old file or the whole new one. False, the file untouched, when the old file exists
// but cannot be read (logged) or the new one cannot be written.
bool Write_HiScore_File(const std::string& path, const HiScoreTable& table);

// A record falls when the race beats one strictly (ties never count); an empty lap or
// race record (0) is beaten by any time.
bool Is_New_Record(const HiScoreTable& table, const RaceFigures& race);
// The number (1..3) of the race's fastest lap; of equal laps the earliest.
i16 Fastest_Lap(const RaceFigures& race);
// Puts the race's figures into the records they beat, each under name.
void Merge_Race(HiScoreTable& table, const RaceFigures& race, const std::string& name);

// Times read as the race prints them: 83456 ms is "01:23:46".
using numbers::Time_Text;

}  // namespace modHiScore
