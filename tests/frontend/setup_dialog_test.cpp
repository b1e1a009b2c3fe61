// The setup dialog as the player sees it: ImGui on GL, clicked and dragged, its picture written to a PNG.
#include <gtest/gtest.h>

#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_IMAGE_WRITE_STATIC
#include <stb_image_write.h>

#include <filesystem>

#include "app/startup.h"
#include "core/modMain.h"
#include "frontend/frmSetup.h"
#include "platform/dialog.h"
#include "platform/platform.h"
#include "platform/testing.h"
#include "support/test_env.h"

namespace {

struct Step {
  const char* control;  // whose centre the pointer goes to
  float dx = 0;         // and this far right of it (a drag's end)
  bool down = false;
};

// One step per two frames from frame 2 on, so ImGui sees every press and release; a dialog
// still open long after the last step is closed, so a test fails instead of hanging.
void Script(std::vector<Step> steps) {
  platform::Set_Dialog_Script([steps](uint64_t frame, platform::DialogPointer& p) {
    if (frame < 2) return false;
    p.close = frame > 2 * steps.size() + 60;
    const Step& s = steps[std::min<size_t>((frame - 2) / 2, steps.size() - 1)];
    const Rect r = frmSetup::Control_Rect(s.control);
    p.x = float(r.left + r.right) / 2 + s.dx;
    p.y = float(r.top + r.bottom) / 2;
    p.down = s.down;
    return true;
  });
}

class SetupDialog : public testing::Test {
 protected:
  void SetUp() override { modMain::Default_Settings(); }
  void TearDown() override {
    platform::Set_Dialog_Script(nullptr);
    platform::Keep_Dialog_Frames(false);
    frmSetup::Set_Frame_Hook(nullptr);
  }
  testenv::ScratchAppDir dir;
};

}  // namespace

TEST_F(SetupDialog, ShowsTheWindowAndExitWritesNothing) {
  dir.Copy_From_Game("Gfx");
  Script({{"lblRes"}, {"lblRes"}, {"lblExit"}, {"lblExit", 0, true}, {"lblExit"}});  // two quiet frames for the picture
  platform::Keep_Dialog_Frames(true);
  std::vector<uint32_t> picture;
  int w = 0, h = 0;
  frmSetup::Set_Frame_Hook([&](const frmSetup::SetupForm&, int frame) {
    if (frame == 3) picture = platform::Dialog_Frame(w, h);
  });
  EXPECT_FALSE(frmSetup::Show());
  EXPECT_FALSE(std::filesystem::exists(modMain::Settings_Path()));
  EXPECT_FALSE(platform::Dialog_Open());
  ASSERT_GT(w, 300);
  ASSERT_EQ(picture.size(), size_t(w) * size_t(h));
  const Rect start = frmSetup::Control_Rect("lblStart");
  const uint32_t px = picture[size_t(start.top + 4) * size_t(w) + size_t(start.left + 4)];
  EXPECT_LT(
      std::abs(int(px >> 16 & 0xFF) - 0xE8) + std::abs(int(px >> 8 & 0xFF) - 0x7A) + std::abs(int(px & 0xFF) - 0x18),
      30)
      << "Start in the accent orange";
  for (uint32_t& p : picture) p = 0xFF000000u | (p & 0xFF) << 16 | (p & 0xFF00) | (p >> 16 & 0xFF);  // to RGBA bytes
  const std::string png = testenv::Game_Dir() + "/../setup_dialog.png";
  EXPECT_NE(stbi_write_png(png.c_str(), w, h, 4, picture.data(), w * 4), 0);
}

TEST_F(SetupDialog, DraggingClickingAndStartGoThroughTheWindow) {
  // Drag the resolution thumb from the left end to the right end of its bar, check the box, Start.
  Script({{"HScrollRes", -90},
          {"HScrollRes", -90, true},
          {"HScrollRes", -30, true},
          {"HScrollRes", 30, true},
          {"HScrollRes", 95, true},
          {"HScrollRes", 95},
          {"Label1"},
          {"Label1", 0, true},
          {"Label1"},
          {"lblStart"},
          {"lblStart", 0, true},
          {"lblStart"}});
  std::vector<std::string> captions;
  frmSetup::Set_Frame_Hook([&](const frmSetup::SetupForm& f, int) {
    if (captions.empty() || captions.back() != f.lblRes) captions.push_back(f.lblRes);
  });
  EXPECT_TRUE(frmSetup::Show());
  // The bar ends at the largest mode the desktop holds; the caption follows the thumb up to it.
  int desk_w = 0, desk_h = 0;
  ASSERT_TRUE(platform::Desktop_Size(desk_w, desk_h));
  const frmSetup::Resolution last = frmSetup::Offered_Resolutions(desk_w, desk_h).back();
  ASSERT_GE(captions.size(), 4u);
  EXPECT_EQ(captions[0] + " " + captions[1] + " " + captions[2], "640x480 320x240 640x400") << "follows the drag";
  EXPECT_EQ(captions.back(), last.caption);
  const auto lines = testenv::Read_Lines_CRLF(modMain::Settings_Path());
  ASSERT_EQ(lines.size(), 13u);
  EXPECT_EQ(std::vector<std::string>(lines.begin(), lines.begin() + 5),
            (std::vector<std::string>{"1", std::to_string(last.width), std::to_string(last.height), "16",
                                      platform::Device_List().front().identifier}));
}

TEST_F(SetupDialog, AfterStartWithTheBoxCheckedTheNextStartSkipsTheDialog) {
  dir.Copy_From_Game("Gfx");
  Script({{"Label1"}, {"Label1", 0, true}, {"Label1"}, {"lblStart"}, {"lblStart", 0, true}, {"lblStart"}});
  int frames = 0;
  frmSetup::Set_Frame_Hook([&](const frmSetup::SetupForm&, int) { ++frames; });
  platform::Use_Manual_Clock(true);
  platform::Set_Pump_Hook([](uint64_t pump) {
    platform::Advance_Manual_Clock(16);
    if (pump % 4 == 3) platform::Post_Event({platform::EventKind::Quit});  // each game run ends at once
  });
  modMain::Main();
  EXPECT_GT(frames, 0);
  EXPECT_EQ(testenv::Read_Lines_CRLF(modMain::Settings_Path()).at(0), "1");
  frames = 0;
  modMain::Default_Settings();
  modMain::Main();
  platform::Set_Pump_Hook(nullptr);
  platform::Use_Manual_Clock(false);
  EXPECT_EQ(frames, 0);
  EXPECT_EQ(testenv::Read_Lines_CRLF(modMain::Log_Path()).back(), "Bye Bye");
}
