// The shared helpers and the display and screen fixtures.
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_IMAGE_WRITE_STATIC
#include <stb_image_write.h>

#include <filesystem>
#include <fstream>
#include <random>

#include "support/screen_fixture.h"

namespace fs = std::filesystem;

namespace testenv {

ScratchAppDir::ScratchAppDir(std::initializer_list<const char*> game_folders) {
  static int counter = 0;
  path_ = (fs::temp_directory_path() / ("quorval-test-" + std::to_string(::getpid()) + "-" + std::to_string(counter++)))
              .string();
  fs::remove_all(path_);
  fs::create_directories(path_);
  platform::Set_App_Dir(path_);
  for (const char* folder : game_folders) Copy_From_Game(folder);
}

ScratchAppDir::~ScratchAppDir() {
  std::error_code ec;
  fs::remove_all(path_, ec);
}

void ScratchAppDir::Copy_From_Game(const std::string& relative) const {
  const fs::path from = fs::path(Game_Dir()) / relative;
  const fs::path to = fs::path(path_) / relative;
  fs::create_directories(to.parent_path());
  fs::copy(from, to, fs::copy_options::recursive | fs::copy_options::overwrite_existing);
}

std::string Read_File(const std::string& path) {
  std::ifstream f(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(f), {}};
}

void Write_File(const std::string& path, const std::string& bytes) {
  fs::create_directories(fs::path(path).parent_path());
  std::ofstream f(path, std::ios::binary | std::ios::trunc);
  f << bytes;
}

std::vector<std::string> Read_Lines_CRLF(const std::string& path) {
  const std::string all = Read_File(path);
  std::vector<std::string> lines;
  for (size_t start = 0, end; start < all.size(); start = end + 2) {
    end = std::min(all.find("\r\n", start), all.size());
    lines.push_back(all.substr(start, end - start));
  }
  return lines;
}

int Kill_While_Saving(const std::function<void()>& prepare, const std::function<void()>& save,
                      const std::function<void(int round)>& check) {
  std::mt19937 rng(20261123);
  int kills = 0;
  for (int round = 0; round < 200; ++round) {
    prepare();
    const pid_t child = fork();
    if (child < 0) break;
    if (child == 0)
      for (;;) save();
    usleep(std::uniform_int_distribution<useconds_t>(0, 4000)(rng));
    kill(child, SIGKILL);
    int status = 0;
    if (waitpid(child, &status, 0) != child || !WIFSIGNALED(status)) break;
    ++kills;
    check(round);
  }
  return kills;
}

std::string Game_Dir() { return QUORVAL_GAME_DIR; }

std::string Write_Png(const std::string& path, int width, int height, const std::vector<uint32_t>& rgb) {
  std::vector<uint8_t> bytes;
  for (uint32_t p : rgb) bytes.insert(bytes.end(), {uint8_t(p >> 16), uint8_t(p >> 8), uint8_t(p)});
  fs::create_directories(fs::path(path).parent_path());
  EXPECT_NE(stbi_write_png(path.c_str(), width, height, 3, bytes.data(), width * 3), 0) << path;
  return path;
}

std::vector<uint32_t> Read(int left, int top, int right, int bottom) {
  std::vector<uint32_t> px(size_t((right - left) * (bottom - top)));
  EXPECT_TRUE(platform::Read_Backbuffer(Rect{left, top, right, bottom}, px.data()));
  for (uint32_t& p : px) p &= 0x00FFFFFFu;
  return px;
}

std::string Save_Screen(const std::string& path) {
  return Write_Png(path, modMain::ScreenWidth, modMain::ScreenHeight,
                   Read(0, 0, modMain::ScreenWidth, modMain::ScreenHeight));
}

}  // namespace testenv

void DisplayTest::SetUp() {
  dir_.Copy_From_Game("Gfx");
  modMain::Default_Settings();
  modMain::ScreenWidth = static_cast<i16>(width_), modMain::ScreenHeight = static_cast<i16>(height_);
  modMain::ScaleX = float(width_) / 640.0f, modMain::ScaleY = float(height_) / 480.0f;
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
  modMain::Running = kTrue, modMain::QuitRequested = false;
  platform::Set_Pump_Hook([this](uint64_t) {
    platform::Advance_Manual_Clock(16);
    if (++frames > 3000) platform::Post_Event({platform::EventKind::Quit});
    if (on_frame) on_frame(frames);
    if (next_step_ == steps_.size()) return;
    Step& s = steps_[next_step_];
    if (!s.until || s.until()) {
      if (s.act) s.act();
      ++next_step_, waited_ = 0;
    } else if (++waited_ > s.limit) {
      ADD_FAILURE() << "step " << next_step_ + 1 << " waited " << s.limit << " frames for: " << s.what;
      next_step_ = steps_.size();
      platform::Post_Event({platform::EventKind::Quit});
    }
  });
}

void ScreenTest::Play(std::vector<Step> script, const std::function<void()>& screen) {
  steps_ = std::move(script), next_step_ = 0, waited_ = 0, frames = 0;
  screen();
  if (next_step_ < steps_.size())
    ADD_FAILURE() << "the screen left before step " << next_step_ + 1 << ": " << steps_[next_step_].what;
  steps_.clear(), next_step_ = 0;
}

void ScreenTest::TearDown() {
  platform::Set_Pump_Hook(nullptr);
  platform::Use_Manual_Clock(false);
  platform::Set_Input_Handlers({});
  modMain::Players.clear();
  modText::Release_Fonts();
  DisplayTest::TearDown();
}

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
