#pragma once
// Whole-game runs: a new player's scripted tour, and the log lines of start-up, a race and shutdown.

#include <algorithm>
#include <filesystem>

#include "app/startup.h"
#include "frontend/modIntro.h"
#include "frontend/modMainScr.h"
#include "platform/testing.h"
#include "screens/modShipSelection.h"
#include "support/test_env.h"
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

// The lines of text, separated by '|'.
inline std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines(1);
  for (char c : text) c == '|' ? lines.emplace_back() : lines.back() += c;
  return lines;
}

inline const std::vector<std::string> kStartUpLines = Lines(
    "Program Started| |Reading Quorval.ini...|...Done|Initialising DDraw...|DX and DDraw objects created|"
    "Exclusive mode set, at 640x480x16|Primary Surface Created|Backbuffer Created|...DDraw Initialized||"
    "Initializing D3D...|D3D object created|Device found - <none>|Z-buffer created|Z-buffer Attached to backbuffer|"
    "Device Created|...D3D initialized||Making Fonts...|Loading Font0.bmp...|...Done|Loading Font1.bmp...|...Done|"
    "Loading Font2.bmp...|...Done|Fonts created|Initialising Sound and Music...|...Sound and Music Ready|"
    "Initialising Menu Particles...|...Menu Particles Ready|Starting Main loop");

inline const std::vector<std::string> kShutdownLines = Lines(
    "Ending Program|Cooperative level set back to normal|DSound Killed|Z-buffer Killed|3D Device Killed|D3D Killed|"
    "Backbuffer Killed|Primary Killed|DD Killed|DX Killed|Everything was killed successfully|Bye Bye");

// A race from its set-up to its teardown, on a track of `textures` textures.
inline std::vector<std::string> Race_Log_Lines(int textures) {
  std::string text =
      "|Initialising Race...|LightSurface Made|Grey2x2Surf Made|CarThrustSurf Made|SkySurf Made|MiniMapSurf Made|"
      "MiniMapShipsSurf Made|StatsBGSurf Made|   Loading Track...|   ...Done|...Done||Destroying Race Objects...|";
  for (int i = 0; i < textures; ++i) text += "TrackTexture(" + std::to_string(i) + ").Texture = Nothing|";
  return Lines(text +
               "StatsBGSurf = Nothing|MiniMapShipsSurf = Nothing|MiniMapSurf = Nothing|CarThrustSurf = Nothing|"
               "Grey2x2Surf = Nothing|LightSurface = Nothing|Track|TrackWalls|Grass|TrackTexture|TrackBlock|"
               "TrackSector|...Done|");
}

// Runs the game in process on the manual clock; hook(pump) runs at every pumped frame.
inline void Run_Main(std::function<void(uint64_t)> hook) {
  platform::Use_Manual_Clock(true);
  platform::Set_Pump_Hook(std::move(hook));
  EXPECT_EQ(modMain::Main(), 0);
  platform::Set_Pump_Hook(nullptr);
  platform::Use_Manual_Clock(false);
}

// A new player's way, a Pump() a frame: intro pages, the menu buttons given, ship selection's start, race, "ace", menu.
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
    if (next_ < steps_.size()) return steps_[next_++]();  // queued steps go one pumped frame apart
    if (state == modMain::kStateIntro && (intro_pages.empty() || intro_pages.back() != modIntro::Page())) {
      intro_pages.push_back(modIntro::Page());
      Wait(10);
      Tap(13);
    } else if (state == modMain::kStateMainMenu && modMainScr::Button_Slide() == 0.0f) {
      Click(modMainScr::Button_Rect(menu_buttons[std::min(size_t(menu_visits_), menu_buttons.size()) - 1]));
      Wait(5);
    } else if (state == modMain::kStateShipSelection && !started_ && modShipSelection::Button_Slide() == 0.0f) {
      Click(modShipSelection::Button_Rect(1));  // start
      started_ = true;
    } else if (state == modMain::kStateRace && !race_over_ && !modMain::Players.empty() &&
               modTracks::TrackBlock.Count() >= 3) {
      const clsHumanPlayer& p = *modMain::Players[0];
      if (p.cFinishedRace == 0) return Drive(p);
      if (finished) finished(p);
      for (int16_t k : {modMain::KeyUp, modMain::KeyLeft, modMain::KeyRight}) Key(k, false);
      Wait(20);  // the results
      Tap(13);
      race_over_ = true;
    } else if (state == modMain::kStateHiScore && !named_) {
      Wait(3);
      for (int16_t k : {65, 67, 69}) Tap(k);
      Tap(13);  // save
      Wait(10);
      Tap(13);  // back to the menu
      named_ = true;
    }
  }

 private:
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
        platform::Post_Event({.kind = kind, .button = int16_t(kind == EventKind::MouseMove ? 0 : 1), .x = x, .y = y});
      });
  }
  void Wait(int frames) {
    steps_.resize(steps_.size() + size_t(frames), [] {});
  }
  // Holds the bound keys as a steady player would: full thrust, the autopilot's steering, on changes.
  void Drive(const clsHumanPlayer& r) {
    const float turn = vehicle_test::Turn_To_Road(r);
    const bool want[3] = {true, turn > 0.02f, turn < -0.02f};
    const int16_t keys[3] = {modMain::KeyUp, modMain::KeyLeft, modMain::KeyRight};
    for (int i = 0; i < 3; ++i) {
      if (want[i] != held_[i]) platform::Post_Event({want[i] ? EventKind::KeyDown : EventKind::KeyUp, keys[i]});
      held_[i] = want[i];
    }
  }

  std::vector<std::function<void()>> steps_;
  size_t next_ = 0;
  bool held_[3] = {};
  int menu_visits_ = 0;
  bool started_ = false, race_over_ = false, named_ = false;
};

inline void Run_Tour(Tour& tour) {
  Run_Main([&](uint64_t pump) {
    platform::Advance_Manual_Clock(16);
    tour.Pump(pump);
  });
}

}  // namespace
