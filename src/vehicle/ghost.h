#pragma once
// The ghost: the player's path through their best race, kept as "Data\Ghost.Dat" and flown
// again as a see-through ship in later races on the same track, with split times against
// it at four sector lines a lap. This module keeps the record, reads and writes the file and
// tracks the sectors; the race draws the ghost and the splits.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "core/types.h"

class clsHumanPlayer;

namespace ghost {

// One frame of the player's flight: race clock, place, heading and bank.
struct Sample {
  i32 time = 0;
  float x = 0, y = 0, z = 0, heading = 0, bank = 0;
};

// Split lines a race has: three sector lines and the lap line on each of the three laps.
inline constexpr int kSplits = 12;
// A record longer than this many frames (about 36 minutes at 60 frames a second) is not kept.
inline constexpr size_t kMaxSamples = 1 << 17;

struct Recording {
  uint32_t track_size = 0, track_checksum = 0;  // of the track file raced on
  i16 ship = 0, skin = 1;
  std::string ship_name;  // base name of the ship's files: letters, digits and '_' only
  i32 race_time = 0;
  i32 splits[kSplits] = {};  // race clock at each split line; 0: not reached
  std::vector<Sample> samples;
};

// --- the file ---
std::string Path();
std::string Encode(const Recording& r);
// Checks every count, size and value before trusting it. False, with a one-line reason in
// error, for anything but a whole, consistent record.
bool Decode(const uint8_t* data, size_t size, Recording& out, std::string& error);
// Size and CRC-32 of a file's bytes; false when it cannot be read.
bool File_Checksum(const std::string& path, uint32_t& size, uint32_t& checksum);

// Place at race time t, between the two samples around it (held at the ends).
Sample Sample_At(const std::vector<Sample>& samples, i32 t);

// Sector s (1..3) starts at block s x blocks / 4; the lap line is sector 0.
int Sector_Start(int sector, int blocks);

// --- during a race ---
// On or off, remembered in Quorval.cfg (off unless the player switched it on).
bool Enabled();
void Set_Enabled(bool on);

// Race set-up: loads the ghost of this track (one log line when a file is there but cannot
// be used) and starts a fresh recording of the player. Nothing happens while disabled.
void Begin_Race(const clsHumanPlayer& player, const std::string& ship_name, uint32_t track_size,
                uint32_t track_checksum, int blocks);
// After the racers moved, once the race clock runs: records the player's frame until the
// finish and notes each split line crossed. Allocates nothing.
void Record_Frame(const clsHumanPlayer& player, i32 race_clock);
// The ghost to fly this race; null when none.
const Recording* Racing();
// The last split crossed: its line (0..11) and the player's time minus the ghost's (or,
// without a ghost, -1); best lap diff set when a lap was just completed. last_clock is the
// race clock of the crossing.
struct Split {
  int line = -1;
  i32 clock = 0;
  bool has_ghost_diff = false;
  i32 ghost_diff = 0;
};
const Split& Last_Split();
// The race ended: forgets the ghost flown (the recording waits for the hi-score table).
void End_Race();

// The hi-score table saves: a finished recording whose race time beats best_race (0: no
// best yet) replaces Ghost.Dat. The recording is dropped either way.
void Save_If_Best(i32 best_race);

}  // namespace ghost
