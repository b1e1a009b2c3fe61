#pragma once
// A headless 640 x 480 race: the generated game files in a scratch folder, the main window's
// key handlers, a manual clock that moves 16 ms per race frame, and a per-frame script.
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "race/modGameLoop.h"
#include "support/screen_fixture.h"
#include "track/modTracks.h"
#include "vehicle/clsHumanPlayer.h"
#include "vehicle/create_racers.h"

namespace race_test {

inline constexpr i32 kFrameMs = 16;
inline constexpr int16_t kEnter = 13, kEscape = 27, kUp = 38, kDown = 40;

// True on the first frame whose elapsed time t has reached ms.
inline bool Reached(i32 t, i32 ms) { return t >= ms && t - kFrameMs < ms; }
inline constexpr int kMaxFrames = 4000;  // a script that never ends its race is stopped here

inline clsHumanPlayer& Player(int i = 0) { return *modMain::Players[static_cast<size_t>(i)]; }

// A road strip through the given (x, z) points, and a road made of such strips.
inline modTracks::TrackStrip Strip(std::vector<std::pair<float, float>> xz, i16 texture = 0) {
  modTracks::TrackStrip s;
  s.TextureIndex = texture;
  for (auto [x, z] : xz) s.Vertices.Items().push_back(LitVertex{x, 0, z});
  return s;
}
inline void Set_Road(std::vector<modTracks::TrackStrip> strips) {
  modTracks::Track.Resize(0, static_cast<int>(strips.size()) - 1);
  modTracks::Track.Items() = std::move(strips);
}

class RaceTest : public ScreenTest {
 public:
  void SetUp() override {
    for (const char* folder : {"Textures", "Tracks", "Objects", "Data"}) dir_.Copy_From_Game(folder);
    ScreenTest::SetUp();
    if (HasFatalFailure()) return;
    modMain::GameState = modMain::kStateRace;
    modGameLoop::RaceRunning = kFalse;
    modGameLoop::PauseSelection = 0;
    // Only race frames move the clock, so frame f of the loop sees f x 16 ms of countdown.
    platform::Set_Pump_Hook([this](uint64_t) {
      if (!Is_Set(modGameLoop::RaceRunning)) return;
      const i32 elapsed = ++frames * kFrameMs;  // the time the coming frame will read
      if (script_) script_(elapsed);
      if (frames == kMaxFrames) {
        ADD_FAILURE() << "the race did not end";
        platform::Post_Event({platform::EventKind::Quit});
      }
      platform::Advance_Manual_Clock(kFrameMs);
    });
  }

  // Runs a whole race; script(elapsed) runs after each drawn frame, before the pump, with
  // the countdown time the next frame will see. The script must end the race.
  void Run_Race(int opponents, std::function<void(i32)> script) {
    modMain::NumOpponents = static_cast<i16>(opponents);
    if (modMain::Players.empty()) modMain::Create_Racers(modMain::NumOpponents);
    script_ = std::move(script);
    modGameLoop::Init_Race();
  }

  static std::vector<std::string> Log() { return testenv::Read_Lines_CRLF(modMain::Log_Path()); }
  // Writes the back buffer to build/race_shots/<name>.png and returns its path.
  static std::string Save_Png(const std::string& name) {
    const auto folder = std::filesystem::path(testenv::Game_Dir()).parent_path() / "race_shots";
    return testenv::Save_Screen((folder / (name + ".png")).string());
  }

  std::function<void(i32)> script_;
};

}  // namespace race_test
