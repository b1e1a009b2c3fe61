#pragma once
// The hi-score screen: the three records, the figures of the race just finished and, when
// the race beat a record, name entry; the first click or Enter saves, the next goes to the
// main menu. Leaving releases the racers of the finished race.
#include <string>

#include "core/types.h"
#include "core/hiscore_file.h"

namespace modHiScore {

// Game state 2: loads the screen, runs its loop, returns once it has been left (GameState
// 0) or the game is closing. Reads the race from Players(0) (zero figures when there is
// none).
void Init_HiScore_Screen();
void HiScore_Screen_Loop();
void Draw_HiScore_Screen();
// Takes at most one typed key from KeyState into EnteredName (only while NewHiScore).
void HiScore_Name_Entry();
// Merges the race into the table, writes the file, stores the name as PlayerName.
void Save_HiScores();
// Reads the file into Scores (a missing file is created empty).
void Load_HiScores();
// Releases the surfaces, saves once more, releases every racer (Players keeps its size).
void Exit_HiScore_Screen();

// The file's path below the application folder.
std::string HiScore_Path();

// What the screen holds: the table as last read from the file, whether the screen runs,
// whether a record fell and its name is still being typed, the name typed so far, and the
// lap (1..3) of the race's fastest.
const HiScoreTable& Table();
bool Running();
bool Entering_Name();
const std::string& Entered_Name();
i16 Race_Fastest_Lap();

}  // namespace modHiScore
