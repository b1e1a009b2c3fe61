#include "core/hiscore_file.h"

#include <filesystem>
#include <fstream>
#include <sstream>

#include "core/log.h"
#include "core/numbers.h"

namespace modHiScore {
namespace {

void Put(std::string& out, uint32_t v, int bytes) {
  for (int i = 0; i < bytes; ++i) out.push_back(static_cast<char>((v >> (8 * i)) & 0xFF));
}

// A cursor over the file's bytes that never reads past them.
struct Reader {
  const uint8_t* data;
  size_t size;
  size_t at = 0;
  bool Take(int bytes, uint32_t& v) {
    if (size - at < static_cast<size_t>(bytes)) return false;
    v = 0;
    for (int i = 0; i < bytes; ++i) v |= static_cast<uint32_t>(data[at + i]) << (8 * i);
    at += static_cast<size_t>(bytes);
    return true;
  }
  bool Name(std::string& out) {
    uint32_t raw = 0;
    if (!Take(2, raw)) return false;
    const auto n = static_cast<int16_t>(raw);
    if (n <= 0) return true;
    // A name running past the end of the data is no name at all.
    if (size - at < static_cast<size_t>(n)) return false;
    out.assign(reinterpret_cast<const char*>(data + at), static_cast<size_t>(n));
    at += static_cast<size_t>(n);
    return true;
  }
};

std::string Read_All(const std::string& path, bool& exists) {
  std::ifstream in(path, std::ios::binary);
  exists = static_cast<bool>(in);
  if (!exists) return {};
  std::string bytes;
  char chunk[4096];
  while (in.read(chunk, sizeof chunk) || in.gcount() > 0) bytes.append(chunk, static_cast<size_t>(in.gcount()));
  return bytes;
}

}  // namespace

std::string Encode_HiScores(const HiScoreTable& t) {
  std::ostringstream names[3];
  modMain::Write_String(names[0], t.BestTopSpeedName);
  modMain::Write_String(names[1], t.BestLapName);
  modMain::Write_String(names[2], t.BestRaceName);
  std::string out;
  Put(out, static_cast<uint16_t>(t.BestTopSpeed), 2);
  out += names[0].str();
  Put(out, static_cast<uint32_t>(t.BestLap), 4);
  out += names[1].str();
  Put(out, static_cast<uint32_t>(t.BestRace), 4);
  out += names[2].str();
  return out;
}

int Decode_HiScores(const uint8_t* data, size_t size, HiScoreTable& t) {
  t = HiScoreTable{};
  Reader r{data, size};
  uint32_t v = 0;
  if (!r.Take(2, v)) return 0;
  t.BestTopSpeed = static_cast<i16>(v);
  if (!r.Name(t.BestTopSpeedName)) return 1;
  if (!r.Take(4, v)) return 2;
  t.BestLap = static_cast<i32>(v);
  if (!r.Name(t.BestLapName)) return 3;
  if (!r.Take(4, v)) return 4;
  t.BestRace = static_cast<i32>(v);
  if (!r.Name(t.BestRaceName)) return 5;
  return 6;
}

HiScoreTable Read_HiScore_File(const std::string& path) {
  bool exists = false;
  const std::string bytes = Read_All(path, exists);
  if (!exists) std::ofstream(path, std::ios::binary);  // created empty, as the first read always has
  HiScoreTable t;
  Decode_HiScores(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size(), t);
  return t;
}

HiScoreTable Peek_HiScore_File(const std::string& path) {
  bool exists = false;
  const std::string bytes = Read_All(path, exists);
  HiScoreTable t;
  Decode_HiScores(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size(), t);
  return t;
}

bool Write_HiScore_File(const std::string& path, const HiScoreTable& table) {
  bool exists = false;
  std::string bytes = Read_All(path, exists);
  const std::string fresh = Encode_HiScores(table);
  // Rewritten in place from the first byte, never shortened: an older, longer table's
  // last bytes stay behind the new fields.
  if (bytes.size() < fresh.size()) bytes.resize(fresh.size());
  bytes.replace(0, fresh.size(), fresh);
  const std::string temp = path + ".new";
  {
    std::ofstream out(temp, std::ios::binary | std::ios::trunc);
    if (!out) return false;
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    out.flush();
    if (!out) {
      out.close();
      std::error_code ignored;
      std::filesystem::remove(temp, ignored);
      return false;
    }
  }
  std::error_code ec;
  std::filesystem::rename(temp, path, ec);
  return !ec;
}

bool Is_New_Record(const HiScoreTable& t, const RaceFigures& race) {
  if (race.TopSpeed > t.BestTopSpeed) return true;
  for (const i32 lap : race.LapTime)
    if (lap < t.BestLap || t.BestLap == 0) return true;
  return race.RaceTime < t.BestRace || t.BestRace == 0;
}

i16 Fastest_Lap(const RaceFigures& race) {
  i16 fastest = 1;
  for (i16 lap = 1; lap <= 3; ++lap)
    if (race.LapTime[lap - 1] < race.LapTime[fastest - 1]) fastest = lap;
  return fastest;
}

void Merge_Race(HiScoreTable& t, const RaceFigures& race, const std::string& name) {
  if (race.TopSpeed > t.BestTopSpeed) {
    t.BestTopSpeedName = name;
    t.BestTopSpeed = race.TopSpeed;
  }
  for (const i32 lap : race.LapTime) {
    if (lap < t.BestLap || t.BestLap == 0) {
      t.BestLapName = name;
      t.BestLap = lap;
    }
  }
  if (race.RaceTime < t.BestRace || t.BestRace == 0) {
    t.BestRaceName = name;
    t.BestRace = race.RaceTime;
  }
}

}  // namespace modHiScore
