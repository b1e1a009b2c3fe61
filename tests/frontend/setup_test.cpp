#include <gtest/gtest.h>

#include <array>
#include <filesystem>

#include "app/startup.h"
#include "core/modMain.h"
#include "frontend/frmSetup.h"
#include "platform/dialog.h"
#include "platform/platform.h"
#include "platform/testing.h"
#include "support/test_env.h"

namespace {
const platform::DeviceInfo kRgb{platform::kSoftwareDevice, "llvmpipe - Mesa software rasteriser", true};
const platform::DeviceInfo kHal{platform::kHardwareDevice, "GPU - hardware rasterisation", false};
const platform::DeviceInfo kTnl{platform::kTnLHardwareDevice, "GPU - hardware transform and lighting", false};

frmSetup::SetupForm Loaded(std::vector<platform::DeviceInfo> devices,
                           std::vector<platform::SoundDeviceInfo> sounds = {{"Speakers", "Speakers"},
                                                                            {"Headphones", "Headphones"}}) {
  frmSetup::SetupForm f;
  f.Form_Load(std::move(devices), std::move(sounds));
  return f;
}
}  // namespace

TEST(SetupForm, PreselectionFromSettingsAndDevicesModesUpToTheDesktopAndWhatStartWrites) {
  modMain::Default_Settings();
  frmSetup::SetupForm f = Loaded({kRgb, kHal, kTnl});
  EXPECT_EQ(f.lblRes + "/" + f.lblBPP, "640x480/16");
  EXPECT_EQ(std::pair(f.cmb3DDevice, f.cmbSoundDriver), std::pair(2, 0)) << "device, sound";
  EXPECT_FALSE(f.chkShowAgain);
  // Without the transform-and-lighting device the hardware one, else the first listed.
  EXPECT_EQ((std::array{Loaded({kRgb, kHal}).cmb3DDevice, Loaded({kRgb}).cmb3DDevice, Loaded({}, {}).cmb3DDevice}),
            (std::array{1, 0, -1}));
  // Stored choices are preselected; ones that are gone fall back.
  modMain::D3DDeviceGuid = platform::kSoftwareDevice;
  modMain::SoundDeviceGuid = "Headphones";
  EXPECT_EQ(std::pair(Loaded({kTnl, kHal, kRgb}).cmb3DDevice, Loaded({kTnl, kHal, kRgb}).cmbSoundDriver),
            std::pair(2, 1));
  modMain::D3DDeviceGuid = platform::kHardwareDevice;  // the machine has lost its GPU driver
  modMain::SoundDeviceGuid = "USB headset";
  EXPECT_EQ(std::pair(Loaded({kRgb, kTnl}).cmb3DDevice, Loaded({kRgb, kTnl}).cmbSoundDriver), std::pair(1, 0));
  for (const auto& [height, bpp, shown] : {std::tuple{240, 24, "320x240/24"}, std::tuple{400, 32, "640x400/32"},
                                           std::tuple{600, 16, "800x600/16"}, std::tuple{768, 8, "640x480/16"}}) {
    modMain::Default_Settings();
    modMain::ScreenHeight = i16(height);
    modMain::ScreenBPP = u8(bpp);
    const frmSetup::SetupForm loaded = Loaded({kRgb});
    EXPECT_EQ(loaded.lblRes + "/" + loaded.lblBPP, shown);
  }
  testenv::ScratchAppDir dir;
  modMain::Difficulty = 3;  // untouched by the dialog, kept in the file
  f = Loaded({kTnl, kRgb});
  f.HScrollRes = 3, f.HScrollRes_Scroll();
  f.HScrollBPP = 2, f.HScrollBPP_Change();
  EXPECT_EQ(f.lblRes + "/" + f.lblBPP, "800x600/32");
  f.cmb3DDevice = f.cmbSoundDriver = 1;
  f.Label1_Click();
  f.lblStart_Click();
  EXPECT_EQ(testenv::Read_Lines_CRLF(modMain::Settings_Path()),
            (std::vector<std::string>{"1", "800", "600", "32", platform::kSoftwareDevice, "Headphones", "3", "", "0",
                                      "38", "40", "37", "39"}));
  EXPECT_FLOAT_EQ(modMain::ScaleX, 1.25f);
  Loaded({}, {}).lblStart_Click();  // empty lists store "<none>"
  auto lines = testenv::Read_Lines_CRLF(modMain::Settings_Path());
  ASSERT_EQ(lines.size(), 13u);
  EXPECT_EQ(lines[0] + lines[4] + lines[5], "0<none><none>");
  auto captions = [](const std::vector<frmSetup::Resolution>& modes) {
    std::string all;
    for (const auto& m : modes) all += std::string(m.caption) + " ";
    return all;
  };
  EXPECT_EQ(captions(frmSetup::Offered_Resolutions(0, 0)), "320x240 640x400 640x480 800x600 ");
  EXPECT_EQ(captions(frmSetup::Offered_Resolutions(1920, 1080)),
            "320x240 640x400 640x480 800x600 1024x768 1152x864 1280x960 1400x1050 1440x1080 ");
  // A desktop narrower than 4:3 drops what is too wide for it.
  EXPECT_EQ(frmSetup::Offered_Resolutions(1280, 1024).back().height, 960);
  EXPECT_EQ(frmSetup::Offered_Resolutions(3840, 2160).back().height, 2160);

  modMain::Default_Settings();
  modMain::ScreenWidth = 1440, modMain::ScreenHeight = 1080;
  f = frmSetup::SetupForm{};
  f.Modes = frmSetup::Offered_Resolutions(1920, 1080);
  f.Form_Load({kTnl}, {});
  EXPECT_EQ(f.HScrollRes, 8);
  EXPECT_EQ(f.lblRes, "1440x1080");
  f.HScrollRes = 7, f.HScrollRes_Scroll();
  EXPECT_EQ(f.lblRes, "1400x1050");
  f.lblStart_Click();
  lines = testenv::Read_Lines_CRLF(modMain::Settings_Path());
  ASSERT_EQ(lines.size(), 13u);
  EXPECT_EQ(lines[1] + "x" + lines[2], "1400x1050");
  EXPECT_FLOAT_EQ(modMain::ScaleY, 1050.0f / 480.0f);
}

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
  testenv::Write_Png(testenv::Game_Dir() + "/../setup_dialog.png", w, h, picture);
}

TEST_F(SetupDialog, DraggingClickingAndStartGoThroughTheWindow) {
  // Drag the resolution thumb from the left end to the right end of its bar, check the box, Start.
  std::vector<Step> steps = {{"HScrollRes", -90}};
  for (const float dx : {-90, -30, 30, 95}) steps.push_back({"HScrollRes", dx, true});
  steps.push_back({"HScrollRes", 95});
  for (const char* c : {"Label1", "lblStart"}) steps.insert(steps.end(), {{c}, {c, 0, true}, {c}});  // a click
  Script(steps);
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
