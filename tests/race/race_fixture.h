#pragma once
// A headless race on the generated files, a manual clock moving 16 ms a race frame, and a script.
#include "race/modGameLoop.h"
#include "support/screen_fixture.h"
#include "vehicle/create_racers.h"
#include "vehicle/racer_fixture.h"

namespace race_test {

using vehicle_test::P;

inline constexpr i32 kFrameMs = 16;
inline constexpr int16_t kEnter = 13, kEscape = 27, kLeft = 37, kUp = 38, kDown = 40;

// True on the first frame whose elapsed time t has reached ms.
inline bool Reached(i32 t, i32 ms) { return t >= ms && t - kFrameMs < ms; }

class RaceTest : public ScreenTest {
 public:
  void SetUp() override {
    for (const char* folder : {"Textures", "Tracks", "Objects", "Data"}) dir_.Copy_From_Game(folder);
    ScreenTest::SetUp();
    if (HasFatalFailure()) return;
    modMain::GameState = modMain::kStateRace;
    modGameLoop::PauseSelection = 0;
    platform::Set_Pump_Hook([this](uint64_t) {
      if (!modGameLoop::Race_Running()) return;
      const i32 elapsed = ++frames * kFrameMs;  // the time the coming frame will read
      if (script_) script_(elapsed);
      if (frames == 4000) {  // a script that never ends its race is stopped here
        ADD_FAILURE() << "the race did not end";
        platform::Post_Event({platform::EventKind::Quit});
      }
      platform::Advance_Manual_Clock(kFrameMs);
    });
  }

  // Runs a whole race; script(t) runs after each drawn frame with the time the next will see.
  // Timed checks run only if the race gets there: a test makes sure by the state it quits to.
  void Run_Race(int opponents, std::function<void(i32)> script) {
    modMain::NumOpponents = static_cast<i16>(opponents);
    if (modMain::Players.empty()) modMain::Create_Racers(modMain::NumOpponents);
    script_ = std::move(script);
    modGameLoop::Init_Race();
  }

  // Presses (key > 0) and releases (key < 0) keys when the countdown time t reaches each time.
  static void Keys(i32 t, const std::vector<std::pair<i32, int>>& script) {
    for (const auto& [at, key] : script)
      if (Reached(t, at)) key > 0 ? Key_Down(int16_t(key)) : Key_Up(int16_t(-key));
  }

  std::function<void(i32)> script_;
};

}  // namespace race_test
