#pragma once
// Scripted play for whole-game runs: steps posted one pumped frame apart, and a steady
// driver on the bound keys.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <functional>
#include <vector>

#include "app/startup.h"
#include "core/settings.h"
#include "platform/testing.h"
#include "support/test_env.h"
#include "track/modTracks.h"
#include "vehicle/clsHumanPlayer.h"

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
  void Key(int16_t key, bool down, int16_t shift = 0) {
    steps_.push_back([=] {
      platform::InputEvent e{down ? EventKind::KeyDown : EventKind::KeyUp, key};
      e.shift = shift;
      platform::Post_Event(e);
    });
  }
  void Tap(int16_t key, int16_t shift = 0) {
    Key(key, true, shift);
    Key(key, false, shift);
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

// Holds the bound keys the way a steady driver would: full thrust, steering at the middle
// of the road two blocks ahead. Presses and releases only on a change, as a player does.
class Autopilot {
 public:
  void Drive(const clsHumanPlayer& r) {
    const int n = modTracks::TrackBlock.Count();
    const Vector3* c = modTracks::TrackBlock((r.cCurrentTrackBlock() + 2) % n).Corner;
    const float dx = (c[2].x + c[3].x) / 2 - r.PositionX, dz = (c[2].z + c[3].z) / 2 - r.PositionZ;
    const float turn = std::remainder(std::atan2(-dx, dz) - r.cOrientation, 2 * 3.14159265f);
    Hold(modMain::KeyUp, true, thrust_);
    Hold(modMain::KeyLeft, turn > 0.02f, left_);
    Hold(modMain::KeyRight, turn < -0.02f, right_);
  }

 private:
  static void Hold(int16_t key, bool want, bool& held) {
    if (want == held) return;
    platform::Post_Event({want ? EventKind::KeyDown : EventKind::KeyUp, key});
    held = want;
  }
  bool thrust_ = false, left_ = false, right_ = false;
};

}  // namespace
