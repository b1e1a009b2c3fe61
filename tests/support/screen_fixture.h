#pragma once
// DisplayTest: a headless display (640 x 480 unless asked) in a scratch game folder with the graphics. ScreenTest adds
// fonts, input, a manual clock: a pump moves it 16 ms, calls on_frame (from 1), steps the script; 3000 frames at most.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "audio_input/frmMain.h"
#include "core/log.h"
#include "core/modMain.h"
#include "core/settings.h"
#include "frontend/modMouseParticles.h"
#include "gfx/mod3Denhance.h"
#include "gfx/modText.h"
#include "platform/platform.h"
#include "platform/testing.h"
#include "support/test_env.h"
#include "vehicle/players.h"

namespace testenv {
// Back-buffer pixels of a rectangle as 0xRRGGBB, rows top to bottom.
std::vector<uint32_t> Read(int left, int top, int right, int bottom);
inline uint32_t At(int x, int y) { return Read(x, y, x + 1, y + 1)[0]; }
// Writes the whole back buffer as a PNG at path; returns path.
std::string Save_Screen(const std::string& path);
}  // namespace testenv

class DisplayTest : public ::testing::Test {
 protected:
  explicit DisplayTest(int width = 640, int height = 480) : width_(width), height_(height) {}
  void SetUp() override;
  void TearDown() override;
  static std::vector<uint32_t> Read(int l, int t, int r, int b) { return testenv::Read(l, t, r, b); }
  static uint32_t At(int x, int y) { return testenv::At(x, y); }

  static constexpr uint32_t kClear = 0x000066;  // Clear_Screen's dark blue
  const int width_, height_;
  testenv::ScratchAppDir dir_;
};

class ScreenTest : public DisplayTest {
 protected:
  using DisplayTest::DisplayTest;
  void SetUp() override;
  void TearDown() override;

  // A script step: once `until` holds (asked at each pump; none: at once) `act` runs, and the next step waits from the
  // next pump. A step still waiting after `limit` frames fails, naming what it waited for, and closes the screen.
  struct Step {
    std::string what;
    std::function<bool()> until = nullptr;
    std::function<void()> act = nullptr;
    int limit = 300;
  };
  // Runs screen() under the script; fails naming the first step the screen left before.
  void Play(std::vector<Step> script, const std::function<void()>& screen);
  // The step that clicks at (x, y): pressed there, let go at the next pump.
  static Step Click(std::string what, float x, float y, std::function<bool()> until = nullptr) {
    return {std::move(what), std::move(until), [x, y] { Move(x, y), Press(), Release(); }};
  }

  static void Move(float x, float y) { platform::Post_Event({platform::EventKind::MouseMove, 0, 0, 0, x, y}); }
  static void Press() { platform::Post_Event({platform::EventKind::MouseDown, 0, 1}); }  // left mouse button
  static void Release() { platform::Post_Event({platform::EventKind::MouseUp, 0, 1}); }
  static void Key_Down(int16_t key) { platform::Post_Event({platform::EventKind::KeyDown, key}); }
  static void Key_Up(int16_t key) { platform::Post_Event({platform::EventKind::KeyUp, key}); }
  // Pressed now, let go at the next pump (which holds a release back behind its own press): one frame sees it held.
  static void Key(int16_t key) { Key_Down(key), Key_Up(key); }
  static void Screenshot(const std::string& name) { testenv::Save_Screen("screenshots/" + name + ".png"); }
  // True if each glyph pixel of text in font, drawn alone at (x, y), shows; it draws there, so checks must not overlap.
  static bool Shows_Text(int x, int y, u8 font, const std::string& text);

  int frames = 0;
  std::function<void(int frame)> on_frame;

 private:
  std::vector<Step> steps_;
  size_t next_step_ = 0;
  int waited_ = 0;
};
