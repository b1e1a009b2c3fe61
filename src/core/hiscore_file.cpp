#include "core/hiscore_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <sstream>

#include "core/bytes.h"
#include "core/files.h"
#include "core/log.h"
#include "core/numbers.h"

namespace modHiScore {
namespace {

using bytes::Put;

// The hi-score file's cursor: numbers, and counted names.
struct Reader : bytes::Reader {
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

// Files this large are no hi-score table the game wrote: refused rather than held.
constexpr off_t kMaxFileBytes = 64 << 20;

enum class FileState { Absent, Read, Unreadable };

// The whole file, or why it cannot be read. Only a file that is truly not there is absent:
// one that exists but cannot be opened or read must never be replaced by an empty table.
FileState Read_All(const std::string& path, std::string& bytes, std::string& why) {
  bytes.clear();
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) {
    if (errno == ENOENT) return FileState::Absent;
    why = std::strerror(errno);
    return FileState::Unreadable;
  }
  struct stat st {};
  FileState state = FileState::Read;
  if (::fstat(fd, &st) != 0) {
    why = std::strerror(errno);
    state = FileState::Unreadable;
  } else if (!S_ISREG(st.st_mode)) {
    why = "not a plain file";
    state = FileState::Unreadable;
  } else if (st.st_size > kMaxFileBytes) {
    why = "larger than " + std::to_string(kMaxFileBytes) + " bytes";
    state = FileState::Unreadable;
  }
  char chunk[4096];
  while (state == FileState::Read) {
    const ssize_t n = ::read(fd, chunk, sizeof chunk);
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) {
      why = std::strerror(errno);
      state = FileState::Unreadable;
    }
    if (n <= 0) break;
    bytes.append(chunk, static_cast<size_t>(n));
  }
  ::close(fd);
  if (state != FileState::Read) bytes.clear();
  return state;
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
  std::string bytes, why;
  switch (Read_All(path, bytes, why)) {
    case FileState::Absent:
      modMain::Replace_File(path, "");  // created empty, as the first read always has
      break;
    case FileState::Unreadable:
      modMain::Write_Log("Data\\Hiscores.Dat cannot be read (" + why + "): the table shows empty, the file is kept");
      break;
    case FileState::Read:
      break;
  }
  HiScoreTable t;
  Decode_HiScores(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size(), t);
  return t;
}

HiScoreTable Peek_HiScore_File(const std::string& path) {
  std::string bytes, why;
  Read_All(path, bytes, why);
  HiScoreTable t;
  Decode_HiScores(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size(), t);
  return t;
}

bool Write_HiScore_File(const std::string& path, const HiScoreTable& table) {
  std::string bytes, why;
  if (Read_All(path, bytes, why) == FileState::Unreadable) {
    modMain::Write_Log("Data\\Hiscores.Dat cannot be read (" + why + "): the new records are not saved");
    return false;
  }
  const std::string fresh = Encode_HiScores(table);
  // Rewritten from the first byte, never shortened: an older, longer table's last bytes
  // stay behind the new fields.
  if (bytes.size() < fresh.size()) bytes.resize(fresh.size());
  bytes.replace(0, fresh.size(), fresh);
  return modMain::Replace_File(path, bytes);
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
