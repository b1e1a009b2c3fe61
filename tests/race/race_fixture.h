#pragma once
// A headless 640 x 480 race: the generated game files in a scratch folder, the main window's
// key handlers, a manual clock that moves 16 ms per race frame, and a per-frame script.
#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "audio_input/frmMain.h"
#include "core/log.h"
#include "core/modMain.h"
#include "core/settings.h"
#include "gfx/mod3Denhance.h"
#include "gfx/modText.h"
#include "platform/platform.h"
#include "platform/testing.h"
#include "race/modGameLoop.h"
#include "support/test_env.h"
#include "track/modTracks.h"
#include "vehicle/clsHumanPlayer.h"
#include "vehicle/create_racers.h"
#include "vehicle/players.h"

namespace race_test {

inline constexpr i32 kFrameMs = 16;
inline constexpr int16_t kEnter = 13, kEscape = 27, kUp = 38, kDown = 40;

// True on the first frame whose elapsed time t has reached ms.
inline bool Reached(i32 t, i32 ms) { return t >= ms && t - kFrameMs < ms; }
inline constexpr int kMaxFrames = 4000;  // a script that never ends its race is stopped here

inline clsHumanPlayer& Player(int i = 0) { return *modMain::Players[static_cast<size_t>(i)]; }

class RaceTest : public ::testing::Test {
 public:
  void SetUp() override {
    for (const char* folder : {"Gfx", "Textures", "Tracks", "Objects", "Data"}) dir_.Copy_From_Game(folder);
    modMain::Default_Settings();
    modMain::ScreenWidth = 640;
    modMain::ScreenHeight = 480;
    modMain::ScaleX = modMain::ScaleY = 1;
    modMain::GameState = modMain::kStateRace;
    modMain::Randomize(7);
    modMain::Create_Log();
    frmMain::Reset_Input();
    modGameLoop::RaceRunning = kFalse;
    modGameLoop::PauseSelection = 0;
    ASSERT_TRUE(frmMain::Show());
    ASSERT_TRUE(mod3Denhance::Init_DDraw(modMain::ScreenWidth, modMain::ScreenHeight, modMain::ScreenBPP));
    std::string font_error;
    ASSERT_TRUE(modText::Load_Fonts(font_error)) << font_error;
    platform::Use_Manual_Clock(true);
    platform::Set_Manual_Clock(100000);
    // Only race frames move the clock, so frame f of the loop sees f x 16 ms of countdown.
    platform::Set_Pump_Hook([this](uint64_t) {
      if (!Is_Set(modGameLoop::RaceRunning)) return;
      const i32 elapsed = ++frames_ * kFrameMs;  // the time the coming frame will read
      if (script_) script_(elapsed);
      if (frames_ == kMaxFrames) {
        ADD_FAILURE() << "the race did not end";
        platform::Post_Event({platform::EventKind::Quit});
      }
      platform::Advance_Manual_Clock(kFrameMs);
    });
  }
  void TearDown() override {
    platform::Set_Pump_Hook(nullptr);
    platform::Use_Manual_Clock(false);
    modMain::Players.clear();
    mod3Denhance::Restore_Display_Mode();
    mod3Denhance::Release_ZBuffer();
    mod3Denhance::Release_D3DDevice();
    mod3Denhance::Release_D3D();
    mod3Denhance::Release_BackBuffer();
    mod3Denhance::Release_Primary();
    mod3Denhance::Release_DD();
    mod3Denhance::Release_DX();
    frmMain::Unload();
  }

  // Runs a whole race; script(elapsed) runs after each drawn frame, before the pump, with
  // the countdown time the next frame will see. The script must end the race.
  void Run_Race(int opponents, std::function<void(i32)> script) {
    modMain::NumOpponents = static_cast<i16>(opponents);
    if (modMain::Players.empty()) modMain::Create_Racers(modMain::NumOpponents);
    script_ = std::move(script);
    modGameLoop::Init_Race();
  }

  static void Key(platform::EventKind kind, int16_t key) { platform::Post_Event({kind, key}); }
  static void Press(int16_t key) { Key(platform::EventKind::KeyDown, key); }
  static void Release(int16_t key) { Key(platform::EventKind::KeyUp, key); }

  // Back-buffer pixels as 0xRRGGBB, rows top to bottom.
  static std::vector<uint32_t> Read(int left, int top, int right, int bottom) {
    std::vector<uint32_t> px(size_t((right - left) * (bottom - top)));
    EXPECT_TRUE(platform::Read_Backbuffer(Rect{left, top, right, bottom}, px.data()));
    for (uint32_t& p : px) p &= 0x00FFFFFFu;
    return px;
  }
  static uint32_t At(int x, int y) { return Read(x, y, x + 1, y + 1)[0]; }

  // True when every glyph pixel of text, drawn alone at (x, y), is on screen there now.
  // Draws over its own cell area, so checks of one frame must not overlap.
  static bool Shows_Text(int x, int y, u8 font, const std::string& text) {
    const int w = static_cast<int>(text.size()) * modText::FontCell[font].width, h = modText::FontCell[font].height;
    const std::vector<uint32_t> frame = Read(x, y, x + w, y + h);
    platform::Fill_Rect(*mod3Denhance::BackBuffer, Rect{x, y, x + w, y + h}, 0);
    modText::Draw_Text(static_cast<i16>(x), static_cast<i16>(y), font, text);
    const std::vector<uint32_t> alone = Read(x, y, x + w, y + h);
    int glyph = 0;
    for (size_t i = 0; i < alone.size(); ++i) {
      if (alone[i] == 0) continue;
      ++glyph;
      if (frame[i] != alone[i]) return false;
    }
    return glyph > 0;
  }

  static std::vector<std::string> Log() { return testenv::Read_Lines_CRLF(modMain::Log_Path()); }

  int frames_ = 0;
  std::function<void(i32)> script_;
  testenv::ScratchAppDir dir_;
};

// Writes the whole back buffer as an 8-bit RGB PNG (stored, uncompressed) under the build's
// shots folder and returns its path.
std::string Save_Png(const std::string& name);

}  // namespace race_test
