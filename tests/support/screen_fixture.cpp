#include "support/screen_fixture.h"

#include <filesystem>
#include <fstream>

#include "audio_input/frmMain.h"
#include "core/log.h"
#include "core/modMain.h"
#include "core/settings.h"
#include "frontend/modMouseParticles.h"
#include "gfx/mod3Denhance.h"
#include "gfx/modText.h"
#include "platform/platform.h"
#include "platform/testing.h"
#include "vehicle/players.h"

namespace testenv {

std::vector<uint32_t> Read(int left, int top, int right, int bottom) {
  std::vector<uint32_t> px(size_t((right - left) * (bottom - top)));
  EXPECT_TRUE(platform::Read_Backbuffer(Rect{left, top, right, bottom}, px.data()));
  for (uint32_t& p : px) p &= 0x00FFFFFFu;
  return px;
}

namespace {
void Put32(std::string& out, uint32_t v) {
  for (int s = 24; s >= 0; s -= 8) out.push_back(char(v >> s));
}
void Chunk(std::string& out, const std::string& type_and_data) {
  Put32(out, uint32_t(type_and_data.size() - 4));
  uint32_t crc = ~0u;
  for (unsigned char c : type_and_data) {
    crc ^= c;
    for (int k = 0; k < 8; ++k) crc = (crc >> 1) ^ (0xEDB88320u & (0u - (crc & 1u)));
  }
  out += type_and_data;
  Put32(out, ~crc);
}
}  // namespace

// Stored (uncompressed) deflate blocks: no compression library needed.
std::string Save_Screen(const std::string& path) {
  const int w = modMain::ScreenWidth, h = modMain::ScreenHeight;
  const std::vector<uint32_t> px = Read(0, 0, w, h);
  std::string raw;
  for (int y = 0; y < h; ++y) {
    raw.push_back(0);  // no row filter
    for (int x = 0; x < w; ++x) {
      const uint32_t p = px[size_t(y) * size_t(w) + size_t(x)];
      raw += {char(p >> 16), char(p >> 8), char(p)};
    }
  }
  std::string z = "IDAT\x78\x01";
  uint32_t a = 1, b = 0;
  for (unsigned char c : raw) a = (a + c) % 65521, b = (b + a) % 65521;
  for (size_t at = 0; at < raw.size(); at += 65535) {
    const size_t n = std::min<size_t>(65535, raw.size() - at);
    z += {char(at + n == raw.size()), char(n), char(n >> 8), char(~n), char(~n >> 8)};
    z.append(raw, at, n);
  }
  Put32(z, b << 16 | a);
  std::string png = "\x89PNG\r\n\x1a\n", ihdr = "IHDR";
  Put32(ihdr, uint32_t(w));
  Put32(ihdr, uint32_t(h));
  ihdr += std::string{8, 2, 0, 0, 0};
  Chunk(png, ihdr);
  Chunk(png, z);
  Chunk(png, "IEND");
  const auto folder = std::filesystem::path(path).parent_path();
  if (!folder.empty()) std::filesystem::create_directories(folder);
  std::ofstream(path, std::ios::binary) << png;
  return path;
}

}  // namespace testenv

void DisplayTest::SetUp() {
  dir_.Copy_From_Game("Gfx");
  modMain::Default_Settings();
  modMain::ScreenWidth = static_cast<i16>(width_);
  modMain::ScreenHeight = static_cast<i16>(height_);
  modMain::ScaleX = float(width_) / 640.0f;
  modMain::ScaleY = float(height_) / 480.0f;
  modMain::Create_Log();
  ASSERT_TRUE(platform::Open_Window("Brindlex Quorval"));
  ASSERT_TRUE(mod3Denhance::Init_DDraw(modMain::ScreenWidth, modMain::ScreenHeight, modMain::ScreenBPP));
  ASSERT_NE(mod3Denhance::D3DDevice, nullptr);
}

void DisplayTest::TearDown() {
  mod3Denhance::Release_D3DDevice();
  mod3Denhance::Release_D3D();
  mod3Denhance::Release_BackBuffer();
  mod3Denhance::Release_DD();
  mod3Denhance::Release_DX();
  platform::Close_Window();
}

void ScreenTest::SetUp() {
  DisplayTest::SetUp();
  if (HasFatalFailure()) return;
  frmMain::Reset_Input();
  ASSERT_TRUE(frmMain::Show());
  std::string missing;
  ASSERT_TRUE(modText::Load_Fonts(missing)) << missing;
  modMouseParticles::Init_Particles();
  platform::Use_Manual_Clock(true);
  platform::Set_Manual_Clock(100000);
  modMain::Start_Frame_Timer();
  modMain::Randomize(7);
  modMain::Running = kTrue;
  modMain::QuitRequested = false;
  platform::Set_Pump_Hook([this](uint64_t) {
    platform::Advance_Manual_Clock(step_ms);
    ++frames;
    for (int16_t key : release_next_) Key_Up(key);
    release_next_.clear();
    if (frames > max_frames) platform::Post_Event({platform::EventKind::Quit});
    if (on_frame) on_frame(frames);
  });
}

void ScreenTest::TearDown() {
  platform::Set_Pump_Hook(nullptr);
  platform::Use_Manual_Clock(false);
  platform::Set_Input_Handlers({});
  modMain::Players.clear();
  modText::Release_Fonts();
  DisplayTest::TearDown();
}

void ScreenTest::Move(float x, float y) { platform::Post_Event({platform::EventKind::MouseMove, 0, 0, 0, x, y}); }
void ScreenTest::Press() { platform::Post_Event({platform::EventKind::MouseDown, 0, 1}); }
void ScreenTest::Release() { platform::Post_Event({platform::EventKind::MouseUp, 0, 1}); }
void ScreenTest::Key_Down(int16_t key) { platform::Post_Event({platform::EventKind::KeyDown, key}); }
void ScreenTest::Key_Up(int16_t key) { platform::Post_Event({platform::EventKind::KeyUp, key}); }

bool ScreenTest::Shows_Text(int x, int y, u8 font, const std::string& text) {
  const int w = static_cast<int>(text.size()) * modText::Cell(font).width, h = modText::Cell(font).height;
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

std::pair<int, int> ScreenTest::Drawn_Columns(int left, int top, int right, int bottom) {
  const std::vector<uint32_t> px = Read(left, top, right, bottom);
  int first = -1, last = -1;
  for (int x = 0; x < right - left; ++x)
    for (int y = 0; y < bottom - top; ++y)
      if (px[size_t(y * (right - left) + x)] != kClear) {
        if (first < 0) first = left + x;
        last = left + x;
      }
  return {first, last};
}
