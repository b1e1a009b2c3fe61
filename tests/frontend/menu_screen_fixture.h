#pragma once
// Runs a real screen loop on the headless display with the manual clock: every pumped
// frame advances the clock by step_ms and calls on_frame (frame numbers from 1), where a
// test posts input and inspects state. A runaway loop is ended by a window-close event.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "audio_input/frmMain.h"
#include "core/modMain.h"
#include "audio_input/modMouseParticles.h"
#include "gfx/display_fixture.h"
#include "gfx/modText.h"
#include "platform/platform.h"
#include "platform/testing.h"

class ScreenTest : public DisplayTest {
 protected:
  explicit ScreenTest(int width = 640, int height = 480) : width_(width), height_(height) {}
  // The display fixture's set-up at this fixture's screen size.
  void SetUp() override {
    dir_.Copy_From_Game("Gfx");
    modMain::Default_Settings();
    modMain::ScreenWidth = static_cast<i16>(width_);
    modMain::ScreenHeight = static_cast<i16>(height_);
    modMain::ScaleX = float(width_) / 640.0f;
    modMain::ScaleY = float(height_) / 480.0f;
    modMain::Create_Log();
    ASSERT_TRUE(platform::Open_Window("Brindlex Quorval"));
    ASSERT_TRUE(mod3Denhance::Init_DDraw(modMain::ScreenWidth, modMain::ScreenHeight, modMain::ScreenBPP));
    frmMain::Reset_Input();
    ASSERT_TRUE(frmMain::Show());
    platform::Use_Manual_Clock(true);
    platform::Set_Manual_Clock(100000);
    modMain::LastTick = platform::Tick_Count();
    modMain::Randomize(7);
    modMain::Running = kTrue;
    modMain::QuitRequested = false;
    std::string missing;
    ASSERT_TRUE(modText::Load_Fonts(missing)) << missing;
    modMouseParticles::Init_Particles();
    platform::Set_Pump_Hook([this](uint64_t) {
      platform::Advance_Manual_Clock(step_ms);
      ++frames;
      if (frames > max_frames) platform::Post_Event({platform::EventKind::Quit});
      if (on_frame) on_frame(frames);
    });
  }
  void TearDown() override {
    platform::Set_Pump_Hook(nullptr);
    platform::Use_Manual_Clock(false);
    platform::Set_Input_Handlers({});
    DisplayTest::TearDown();
  }

  static void Move(float x, float y) { platform::Post_Event({platform::EventKind::MouseMove, 0, 0, 0, x, y}); }
  static void Press() { platform::Post_Event({platform::EventKind::MouseDown, 0, 1}); }
  static void Release() { platform::Post_Event({platform::EventKind::MouseUp, 0, 1}); }
  static void Key_Down(int16_t key) { platform::Post_Event({platform::EventKind::KeyDown, key}); }
  static void Key_Up(int16_t key) { platform::Post_Event({platform::EventKind::KeyUp, key}); }

  // Writes the whole back buffer as a PNG under screenshots/ in the test's folder.
  static void Screenshot(const std::string& name) {
    const int w = modMain::ScreenWidth, h = modMain::ScreenHeight;
    std::vector<uint32_t> px = Read(0, 0, w, h);
    std::filesystem::create_directories("screenshots");
    Write_PNG("screenshots/" + name + ".png", w, h, px);
  }

  const int width_, height_;
  // True when every glyph pixel of text in font 2 is on screen at (x, y): the back
  // buffer shows exactly that text there (glyph-less cells are not checked).
  bool Shows_Text(int x, int y, const std::string& text) const {
    const auto font = platform::Load_BMP(dir_.path() + "/Gfx/Font2.bmp", 0, 0, platform::PixelFormat::X8R8G8B8);
    if (!font) return false;
    const std::vector<uint32_t> shown = Read(x, y, x + 12 * int(text.size()), y + 15);
    for (size_t i = 0; i < text.size(); ++i) {
      const int c = static_cast<unsigned char>(text[i]);
      int left = -1, top = 0;
      if (c >= 65 && c <= 90) left = (c - 65) * 12;
      else if (c >= 97 && c <= 123) left = (c - 97) * 12, top = 15;
      else if (c >= 38 && c <= 62) left = (c - 38) * 12, top = 30;
      if (left < 0) continue;
      for (int gy = 0; gy < 15; ++gy)
        for (int gx = 0; gx < 12; ++gx) {
          const uint32_t g = font->Argb(left + gx, top + gy) & 0xFFFFFF;
          if (g != 0 && shown[size_t(gy) * text.size() * 12 + i * 12 + size_t(gx)] != g) return false;
        }
    }
    return true;
  }

  int step_ms = 16;
  int frames = 0;
  int max_frames = 2000;
  std::function<void(int frame)> on_frame;

 private:
  // Stored (uncompressed) deflate blocks: no compression library needed.
  static void Write_PNG(const std::string& path, int w, int h, const std::vector<uint32_t>& px) {
    std::string raw;
    for (int y = 0; y < h; ++y) {
      raw.push_back(0);
      for (int x = 0; x < w; ++x) {
        const uint32_t c = px[size_t(y) * size_t(w) + size_t(x)];
        raw.push_back(char(c >> 16 & 0xFF));
        raw.push_back(char(c >> 8 & 0xFF));
        raw.push_back(char(c & 0xFF));
      }
    }
    std::string z = "\x78\x01";
    uint32_t a = 1, b = 0;
    for (unsigned char c : raw) a = (a + c) % 65521, b = (b + a) % 65521;
    for (size_t at = 0; at < raw.size(); at += 65535) {
      const size_t n = std::min<size_t>(65535, raw.size() - at);
      z.push_back(at + n == raw.size() ? 1 : 0);
      z.push_back(char(n & 0xFF));
      z.push_back(char(n >> 8));
      z.push_back(char(~n & 0xFF));
      z.push_back(char((~n >> 8) & 0xFF));
      z.append(raw, at, n);
    }
    Put32(z, b << 16 | a);
    std::string ihdr;
    Put32(ihdr, uint32_t(w));
    Put32(ihdr, uint32_t(h));
    ihdr += std::string("\x08\x02\x00\x00\x00", 5);
    std::string out = "\x89PNG\r\n\x1a\n";
    Chunk(out, "IHDR", ihdr);
    Chunk(out, "IDAT", z);
    Chunk(out, "IEND", "");
    if (std::FILE* f = std::fopen(path.c_str(), "wb")) {
      std::fwrite(out.data(), 1, out.size(), f);
      std::fclose(f);
    }
  }
  static void Put32(std::string& s, uint32_t v) {
    for (int k = 24; k >= 0; k -= 8) s.push_back(char(v >> k & 0xFF));
  }
  static void Chunk(std::string& out, const char* type, const std::string& data) {
    Put32(out, uint32_t(data.size()));
    const std::string body = std::string(type, 4) + data;
    uint32_t crc = 0xFFFFFFFFu;
    for (unsigned char c : body) {
      crc ^= c;
      for (int k = 0; k < 8; ++k) crc = crc & 1 ? 0xEDB88320u ^ (crc >> 1) : crc >> 1;
    }
    out += body;
    Put32(out, ~crc);
  }
};
