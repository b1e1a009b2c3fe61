#include "vehicle/ghost.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <fstream>
#include <iterator>

#include "core/bytes.h"
#include "core/extras.h"
#include "core/files.h"
#include "core/log.h"
#include "platform/platform.h"
#include "vehicle/clsHumanPlayer.h"

namespace ghost {
namespace {

constexpr char kMagic[4] = {'Q', 'G', 'S', 'T'};
constexpr uint16_t kVersion = 1;
constexpr size_t kSampleBytes = 24;
constexpr size_t kMaxName = 64;
constexpr float kMaxCoordinate = 1e7f;
constexpr const char* kEnabledName = "ghost";

// The ghost flown this race, the recording of the player, and where the player is in the lap.
Recording g_racing;
bool g_has_racing = false;
Recording g_recording;
bool g_recording_open = false;  // still recording; false once finished, overflowed or idle
bool g_recording_done = false;  // a whole race is waiting for the hi-score table
int g_blocks = 0;
int g_next_sector = 1;  // the next sector line of the lap (1..3), 4: only the lap line left
i16 g_lap = 1;
Split g_last;

using bytes::Put;
void Put_Float(std::string& out, float f) {
  uint32_t v = 0;
  std::memcpy(&v, &f, 4);
  Put(out, v, 4);
}

struct Reader : bytes::Reader {
  bool Take_I32(i32& v) {
    uint32_t u = 0;
    if (!Take(4, u)) return false;
    v = static_cast<i32>(u);
    return true;
  }
  bool Take_Float(float& f) {
    uint32_t u = 0;
    if (!Take(4, u)) return false;
    std::memcpy(&f, &u, 4);
    // Far beyond any track, and small enough that mixing two samples stays finite.
    return std::isfinite(f) && std::fabs(f) <= kMaxCoordinate;
  }
};

bool Name_Is_Safe(const std::string& name) {
  if (name.empty() || name.size() > kMaxName) return false;
  return std::all_of(name.begin(), name.end(),
                     [](char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_'; });
}

std::array<uint32_t, 256> Crc_Table() {
  std::array<uint32_t, 256> t{};
  for (uint32_t i = 0; i < 256; ++i) {
    uint32_t c = i;
    for (int k = 0; k < 8; ++k) c = (c & 1) ? 0xEDB88320u ^ (c >> 1) : c >> 1;
    t[i] = c;
  }
  return t;
}

void Note_Split(int line, i32 clock) {
  g_last.line = line;
  g_last.clock = clock;
  g_last.has_ghost_diff = g_has_racing && g_racing.splits[line] > 0;
  g_last.ghost_diff = g_last.has_ghost_diff ? clock - g_racing.splits[line] : 0;
  g_recording.splits[line] = clock;
}

}  // namespace

std::string Path() { return platform::Player_Path("\\Data\\Ghost.Dat"); }

std::string Encode(const Recording& r) {
  std::string out(kMagic, 4);
  Put(out, kVersion, 2);
  Put(out, r.track_size, 4);
  Put(out, r.track_checksum, 4);
  Put(out, static_cast<uint16_t>(r.ship), 2);
  Put(out, static_cast<uint16_t>(r.skin), 2);
  Put(out, static_cast<uint32_t>(r.ship_name.size()), 1);
  out += r.ship_name;
  Put(out, static_cast<uint32_t>(r.race_time), 4);
  for (const i32 s : r.splits) Put(out, static_cast<uint32_t>(s), 4);
  Put(out, static_cast<uint32_t>(r.samples.size()), 4);
  for (const Sample& s : r.samples) {
    Put(out, static_cast<uint32_t>(s.time), 4);
    for (const float f : {s.x, s.y, s.z, s.heading, s.bank}) Put_Float(out, f);
  }
  return out;
}

bool Decode(const uint8_t* data, size_t size, Recording& out, std::string& error) {
  out = Recording{};
  Reader r{data, size};
  uint32_t v = 0;
  if (size < 4 || std::memcmp(data, kMagic, 4) != 0) return error = "not a ghost file", false;
  r.at = 4;
  if (!r.Take(2, v) || v != kVersion) return error = "unknown version", false;
  if (!r.Take(4, out.track_size) || !r.Take(4, out.track_checksum)) return error = "header cut short", false;
  if (!r.Take(2, v)) return error = "header cut short", false;
  out.ship = static_cast<i16>(v);
  if (!r.Take(2, v)) return error = "header cut short", false;
  out.skin = static_cast<i16>(v);
  if (out.ship < 0 || out.skin < 1 || out.skin > 3) return error = "no such ship or skin", false;
  if (!r.Take(1, v) || size - r.at < v) return error = "header cut short", false;
  out.ship_name.assign(reinterpret_cast<const char*>(data + r.at), v);
  r.at += v;
  if (!Name_Is_Safe(out.ship_name)) return error = "bad ship name", false;
  if (!r.Take_I32(out.race_time) || out.race_time <= 0) return error = "bad race time", false;
  i32 previous = 0;
  for (i32& s : out.splits) {
    if (!r.Take_I32(s) || s < previous || s > out.race_time) return error = "bad split times", false;
    previous = s;
  }
  if (!r.Take(4, v)) return error = "header cut short", false;
  // The count must match the bytes exactly before anything is reserved for it.
  if (v < 2 || v > kMaxSamples || (size - r.at) / kSampleBytes != v || (size - r.at) % kSampleBytes != 0)
    return error = "sample count does not match the file", false;
  out.samples.resize(v);
  previous = 0;  // the race clock never runs backwards nor below 0
  for (Sample& s : out.samples) {
    const bool ok = r.Take_I32(s.time) && r.Take_Float(s.x) && r.Take_Float(s.y) && r.Take_Float(s.z) &&
                    r.Take_Float(s.heading) && r.Take_Float(s.bank);
    if (!ok || s.time < previous) {
      out.samples.clear();
      return error = "bad sample", false;
    }
    previous = s.time;
  }
  return true;
}

bool File_Checksum(const std::string& path, uint32_t& size, uint32_t& checksum) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return false;
  static const std::array<uint32_t, 256> table = Crc_Table();
  uint32_t crc = 0xFFFFFFFFu;
  size = 0;
  char buffer[8192];
  while (in.read(buffer, sizeof buffer) || in.gcount() > 0) {
    const auto n = static_cast<size_t>(in.gcount());
    for (size_t i = 0; i < n; ++i) crc = table[(crc ^ static_cast<uint8_t>(buffer[i])) & 0xFF] ^ (crc >> 8);
    size += static_cast<uint32_t>(n);
  }
  checksum = crc ^ 0xFFFFFFFFu;
  return true;
}

Sample Sample_At(const std::vector<Sample>& samples, i32 t) {
  if (samples.empty()) return Sample{};
  const auto after = std::upper_bound(samples.begin(), samples.end(), t,
                                      [](i32 time, const Sample& s) { return time < s.time; });
  if (after == samples.begin()) return samples.front();
  if (after == samples.end()) return samples.back();
  const Sample& a = *std::prev(after);
  const Sample& b = *after;
  const float f = static_cast<float>(t - a.time) / static_cast<float>(b.time - a.time);
  auto mix = [f](float p, float q) { return p + (q - p) * f; };
  return Sample{t, mix(a.x, b.x), mix(a.y, b.y), mix(a.z, b.z), mix(a.heading, b.heading), mix(a.bank, b.bank)};
}

int Sector_Start(int sector, int blocks) { return sector * blocks / 4; }

bool Enabled() { return extras::Get(kEnabledName, 0, 0, 1) == 1; }
void Set_Enabled(bool on) { extras::Set(kEnabledName, on ? 1 : 0); }

void Begin_Race(const clsHumanPlayer& player, const std::string& ship_name, uint32_t track_size,
                uint32_t track_checksum, int blocks) {
  End_Race();
  g_recording = Recording{};
  g_recording_open = g_recording_done = false;
  if (!Enabled()) return;
  std::ifstream in(Path(), std::ios::binary);
  if (in) {
    const std::string bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    std::string error;
    if (!Decode(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size(), g_racing, error))
      modMain::Write_Log("Ghost.Dat ignored: " + error);
    else if (g_racing.track_size != track_size || g_racing.track_checksum != track_checksum)
      modMain::Write_Log("Ghost.Dat ignored: recorded on another track");
    else
      g_has_racing = true;
  }
  g_recording.track_size = track_size;
  g_recording.track_checksum = track_checksum;
  g_recording.ship = player.cCurrentlySelectedShip;
  g_recording.skin = player.cCurrentlySelectedSkin;
  g_recording.ship_name = ship_name;
  g_recording.samples.reserve(kMaxSamples);
  g_recording_open = Name_Is_Safe(ship_name);
  g_blocks = blocks;
  g_next_sector = 1;
  g_lap = 1;
}

void Record_Frame(const clsHumanPlayer& player, i32 race_clock) {
  if (!g_recording_open) return;
  if (g_recording.samples.size() == kMaxSamples) {
    g_recording_open = false;  // too long to keep; the race goes on unrecorded
    return;
  }
  g_recording.samples.push_back(
      Sample{race_clock, player.PositionX, player.PositionY, player.PositionZ, player.cOrientation, player.Bank()});
  const int base = (g_lap - 1) * 4;
  if (player.cOnLap > g_lap) {
    Note_Split(base + 3, race_clock);
    g_lap = player.cOnLap;
    g_next_sector = 1;
  } else if (g_next_sector <= 3 && player.cCheatMinusLaps == 0 &&
             player.cCurrentTrackBlock() == Sector_Start(g_next_sector, g_blocks)) {
    Note_Split(base + g_next_sector - 1, race_clock);
    ++g_next_sector;
  }
  if ((player.cFinishedRace & 0xFF) != 0) {
    g_recording.race_time = player.cRaceTime;
    g_recording_open = false;
    g_recording_done = g_recording.samples.size() >= 2 && player.cRaceTime > 0;
  }
}

const Recording* Racing() { return g_has_racing ? &g_racing : nullptr; }

const Split& Last_Split() { return g_last; }

void End_Race() {
  g_has_racing = false;
  g_racing.samples.clear();
  g_last = Split{};
  g_recording_open = false;
}

void Save_If_Best(i32 best_race) {
  if (g_recording_done && (best_race == 0 || g_recording.race_time < best_race))
    modMain::Replace_File(Path(), Encode(g_recording));
  g_recording_done = false;
  g_recording = Recording{};
  g_recording.samples.shrink_to_fit();
}

}  // namespace ghost
