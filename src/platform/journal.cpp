// Recorded runs: the journal of the clock, the time of day and the input, and its replay.
#include <cinttypes>
#include <cstdio>
#include <ctime>
#include <sstream>

#include "platform/journal_internal.h"
#include "platform/platform.h"
#include "platform/testing.h"

namespace platform {
namespace {
bool g_recording = false;
Journal g_journal;          // being recorded, or being replayed
size_t g_next_pump = 0;     // replay: the pump to play next
bool g_replaying = false;
}  // namespace

uint32_t Time_Of_Day() {
  if (g_replaying) return g_journal.time_of_day;
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  const auto seconds = static_cast<uint32_t>(local.tm_hour * 3600 + local.tm_min * 60 + local.tm_sec);
  if (g_recording) g_journal.time_of_day = seconds;
  return seconds;
}

void Start_Journal() {
  g_journal = Journal{};
  g_journal.start_tick = Tick_Count();
  g_recording = true;
}

Journal Stop_Journal() {
  g_recording = false;
  return std::move(g_journal);
}

void Replay_Journal(Journal journal) {
  g_journal = std::move(journal);
  g_next_pump = 0;
  g_replaying = !g_journal.pumps.empty();
  g_recording = false;
  if (!g_replaying) return;
  Use_Manual_Clock(true);
  Set_Manual_Clock(g_journal.start_tick);
}

bool Replaying() { return g_replaying; }

namespace detail {
void Journal_Pump_Begins() {
  if (g_recording) g_journal.pumps.push_back(JournalPump{Tick_Count(), {}});
}

void Journal_Dispatched(const InputEvent& e) {
  if (g_recording && !g_journal.pumps.empty()) g_journal.pumps.back().events.push_back(e);
}

bool Journal_Replay_Pump(std::vector<InputEvent>& events) {
  if (!g_replaying) return false;
  events.clear();
  if (g_next_pump < g_journal.pumps.size()) {
    const JournalPump& pump = g_journal.pumps[g_next_pump++];
    Set_Manual_Clock(pump.tick);
    events = pump.events;
  } else {
    events.push_back(InputEvent{EventKind::Quit});
  }
  return true;
}
}  // namespace detail

std::string Journal_Text(const Journal& journal) {
  std::string out = "quorval journal 1\ntime " + std::to_string(journal.time_of_day) + " start " +
                    std::to_string(journal.start_tick) + "\n";
  char buffer[96];
  for (const JournalPump& pump : journal.pumps) {
    out += std::to_string(pump.tick);
    for (const InputEvent& e : pump.events) {
      // Nine digits bring a float back exactly.
      std::snprintf(buffer, sizeof buffer, " %d,%d,%d,%d,%.9g,%.9g", static_cast<int>(e.kind), e.key, e.button,
                    e.shift, static_cast<double>(e.x), static_cast<double>(e.y));
      out += buffer;
    }
    out += '\n';
  }
  return out;
}

bool Parse_Journal(const std::string& text, Journal& journal, std::string& error) {
  journal = Journal{};
  std::istringstream in(text);
  std::string line;
  if (!std::getline(in, line) || line != "quorval journal 1") return error = "not a journal", false;
  if (!std::getline(in, line) || std::sscanf(line.c_str(), "time %" SCNu32 " start %" SCNd32, &journal.time_of_day,
                                             &journal.start_tick) != 2)
    return error = "no time of day", false;
  for (size_t number = 3; std::getline(in, line); ++number) {
    std::istringstream fields(line);
    JournalPump pump;
    std::string event;
    if (!(fields >> pump.tick)) return error = "line " + std::to_string(number) + ": no tick", false;
    while (fields >> event) {
      int kind = 0, key = 0, button = 0, shift = 0;
      InputEvent e;
      if (std::sscanf(event.c_str(), "%d,%d,%d,%d,%f,%f", &kind, &key, &button, &shift, &e.x, &e.y) != 6 ||
          kind < 0 || kind > static_cast<int>(EventKind::FocusLost))
        return error = "line " + std::to_string(number) + ": bad event", false;
      e.kind = static_cast<EventKind>(kind);
      e.key = static_cast<int16_t>(key), e.button = static_cast<int16_t>(button), e.shift = static_cast<int16_t>(shift);
      pump.events.push_back(e);
    }
    journal.pumps.push_back(std::move(pump));
  }
  return true;
}

}  // namespace platform
