#pragma once
// Scripted play for whole-game runs: steps posted one pumped frame apart, a steady driver
// on the bound keys, and a new player's tour of the screens.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <vector>

#include "app/startup.h"
#include "core/settings.h"
#include "frontend/modIntro.h"
#include "frontend/modMainScr.h"
#include "platform/testing.h"
#include "screens/modShipSelection.h"
#include "support/test_env.h"
#include "track/modTracks.h"
#include "vehicle/racer_fixture.h"

namespace {

using platform::EventKind;

inline const std::string kDefaultIni =
    "1\r\n640\r\n480\r\n16\r\n<none>\r\n<none>\r\n1\r\n\r\n0\r\n38\r\n40\r\n37\r\n39\r\n";

// The whole game for a new player (no hi-score table yet) with the default settings.
inline void New_Player(testenv::ScratchAppDir& dir) {
  for (const char* folder : {"Gfx", "Textures", "Objects", "Tracks", "Data", "Sm"}) dir.Copy_From_Game(folder);
  std::filesystem::remove(dir.path() + "/Data/Hiscores.Dat");
  testenv::Write_File(modMain::Settings_Path(), kDefaultIni);
}

// Runs the game in process on the manual clock; hook(pump) runs at every pumped frame.
inline void Run_Main(std::function<void(uint64_t)> hook) {
  platform::Use_Manual_Clock(true);
  platform::Set_Pump_Hook(std::move(hook));
  EXPECT_EQ(modMain::Main(), 0);
  platform::Set_Pump_Hook(nullptr);
  platform::Use_Manual_Clock(false);
}

// Posts its steps one pumped frame apart; a screen's script queues steps when it sees that
// its screen is ready, and waits for them to run out before it looks again.
class Script {
 public:
  void Key(int16_t key, bool down) {
    steps_.push_back([=] { platform::Post_Event({down ? EventKind::KeyDown : EventKind::KeyUp, key}); });
  }
  void Tap(int16_t key) {
    Key(key, true);
    Key(key, false);
  }
  void Click(const Rect& r) {
    const float x = (r.left + r.right) / 2.0f, y = (r.top + r.bottom) / 2.0f;
    for (EventKind kind : {EventKind::MouseMove, EventKind::MouseDown, EventKind::MouseUp})
      steps_.push_back([=] {
        platform::InputEvent e{kind};
        e.button = kind == EventKind::MouseMove ? 0 : 1;
        e.x = x;
        e.y = y;
        platform::Post_Event(e);
      });
  }
  void Wait(int frames) {
    for (int i = 0; i < frames; ++i) steps_.push_back([] {});
  }
  bool Busy() const { return next_ < steps_.size(); }
  void Step() {
    if (Busy()) steps_[next_++]();
  }

 private:
  std::vector<std::function<void()>> steps_;
  size_t next_ = 0;
};

// A new player's way through the game, a screen at a time: each intro page seen a while and
// skipped with Enter, the menu's buttons in the order given, ship selection's start, a race
// driven on the bound keys, "ace" on the hi-score table and back to the menu. Pump() at
// every frame.
class Tour {
 public:
  std::vector<int> menu_buttons;                        // clicked at each visit, the last one from then on
  std::function<void(const clsHumanPlayer&)> finished;  // sees the player when the race is over
  std::vector<uint8_t> states;                          // each state entered, in order
  std::vector<int16_t> intro_pages;

  void Pump(uint64_t pump) {
    if (pump >= 40000) {
      ADD_FAILURE() << "the run is stuck in state " << int(modMain::GameState);
      return platform::Post_Event({EventKind::Quit});
    }
    const uint8_t state = modMain::GameState;
    if (states.empty() || state != states.back()) {
      states.push_back(state);
      menu_visits_ += state == modMain::kStateMainMenu;
    }
    if (script_.Busy()) return script_.Step();
    if (state == modMain::kStateIntro && (intro_pages.empty() || intro_pages.back() != modIntro::Page())) {
      intro_pages.push_back(modIntro::Page());
      script_.Wait(10);
      script_.Tap(13);
    } else if (state == modMain::kStateMainMenu && modMainScr::Button_Slide() == 0.0f) {
      script_.Click(modMainScr::Button_Rect(menu_buttons[std::min(size_t(menu_visits_), menu_buttons.size()) - 1]));
      script_.Wait(5);
    } else if (state == modMain::kStateShipSelection && !started_ && modShipSelection::Button_Slide() == 0.0f) {
      script_.Click(modShipSelection::Button_Rect(1));  // start
      started_ = true;
    } else if (state == modMain::kStateRace && !race_over_ && !modMain::Players.empty() &&
               modTracks::TrackBlock.Count() >= 3) {
      const clsHumanPlayer& p = *modMain::Players[0];
      if (p.cFinishedRace == 0) return Drive(p);
      if (finished) finished(p);
      for (int16_t k : {modMain::KeyUp, modMain::KeyLeft, modMain::KeyRight}) script_.Key(k, false);
      script_.Wait(20);  // the results
      script_.Tap(13);
      race_over_ = true;
    } else if (state == modMain::kStateHiScore && !named_) {
      script_.Wait(3);
      for (int16_t k : {65, 67, 69}) script_.Tap(k);
      script_.Tap(13);  // save
      script_.Wait(10);
      script_.Tap(13);  // back to the menu
      named_ = true;
    }
  }

 private:
  // Holds the bound keys the way a steady driver would: full thrust, steering as the racer
  // tests' autopilot does. Presses and releases only on a change, as a player does.
  void Drive(const clsHumanPlayer& r) {
    const float turn = vehicle_test::Turn_To_Road(r);
    Hold(modMain::KeyUp, true, held_[0]);
    Hold(modMain::KeyLeft, turn > 0.02f, held_[1]);
    Hold(modMain::KeyRight, turn < -0.02f, held_[2]);
  }
  static void Hold(int16_t key, bool want, bool& held) {
    if (want == held) return;
    platform::Post_Event({want ? EventKind::KeyDown : EventKind::KeyUp, key});
    held = want;
  }

  Script script_;
  bool held_[3] = {};
  int menu_visits_ = 0;
  bool started_ = false, race_over_ = false, named_ = false;
};

}  // namespace
