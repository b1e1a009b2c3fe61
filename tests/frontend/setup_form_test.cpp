// The setup form: preselection from the settings and the lists, fallbacks, captions, what Start stores.
#include <gtest/gtest.h>

#include "core/modMain.h"
#include "frontend/frmSetup.h"
#include "platform/platform.h"
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

TEST(SetupForm, FirstStartPreselectsTheDefaultModeTheBestDeviceAndTheFirstSoundDevice) {
  modMain::Default_Settings();
  const frmSetup::SetupForm f = Loaded({kRgb, kHal, kTnl});
  EXPECT_EQ(f.lblRes + "/" + f.lblBPP, "640x480/16");
  EXPECT_EQ(f.cmb3DDevice, 2);
  EXPECT_EQ(f.cmbSoundDriver, 0);
  EXPECT_FALSE(f.chkShowAgain);
  // Without the transform-and-lighting device the hardware one, else the first listed.
  EXPECT_EQ(Loaded({kRgb, kHal}).cmb3DDevice, 1);
  EXPECT_EQ(Loaded({kRgb}).cmb3DDevice, 0);
  EXPECT_EQ(Loaded({}, {}).cmb3DDevice, -1);
  // Stored choices are preselected; ones that are gone fall back.
  modMain::D3DDeviceGuid = platform::kSoftwareDevice;
  modMain::SoundDeviceGuid = "Headphones";
  EXPECT_EQ(Loaded({kTnl, kHal, kRgb}).cmb3DDevice, 2);
  EXPECT_EQ(Loaded({kTnl, kHal, kRgb}).cmbSoundDriver, 1);
  modMain::D3DDeviceGuid = platform::kHardwareDevice;  // the machine has lost its GPU driver
  modMain::SoundDeviceGuid = "USB headset";
  EXPECT_EQ(Loaded({kRgb, kTnl}).cmb3DDevice, 1);
  EXPECT_EQ(Loaded({kRgb, kTnl}).cmbSoundDriver, 0);
}

TEST(SetupForm, ModeAndDepthComeFromTheSettingsAndStartWritesTheChoices) {
  for (const auto& [height, bpp, shown] : {std::tuple{240, 24, "320x240/24"}, std::tuple{400, 32, "640x400/32"},
                                           std::tuple{600, 16, "800x600/16"}, std::tuple{768, 8, "640x480/16"}}) {
    modMain::Default_Settings();
    modMain::ScreenHeight = i16(height);
    modMain::ScreenBPP = u8(bpp);
    const frmSetup::SetupForm f = Loaded({kRgb});
    EXPECT_EQ(f.lblRes + "/" + f.lblBPP, shown);
  }
  testenv::ScratchAppDir dir;
  modMain::Difficulty = 3;  // untouched by the dialog, kept in the file
  frmSetup::SetupForm f = Loaded({kTnl, kRgb});
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
  const auto lines = testenv::Read_Lines_CRLF(modMain::Settings_Path());
  ASSERT_EQ(lines.size(), 13u);
  EXPECT_EQ(lines[0] + lines[4] + lines[5], "0<none><none>");
}

TEST(SetupForm, LargerModesFollowTheDesignsFourUpToTheDesktopAndStartUsesThem) {
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

  testenv::ScratchAppDir dir;
  modMain::Default_Settings();
  modMain::ScreenWidth = 1440, modMain::ScreenHeight = 1080;
  frmSetup::SetupForm f;
  f.Modes = frmSetup::Offered_Resolutions(1920, 1080);
  f.Form_Load({kTnl}, {});
  EXPECT_EQ(f.HScrollRes, 8);
  EXPECT_EQ(f.lblRes, "1440x1080");
  f.HScrollRes = 7, f.HScrollRes_Scroll();
  EXPECT_EQ(f.lblRes, "1400x1050");
  f.lblStart_Click();
  const auto lines = testenv::Read_Lines_CRLF(modMain::Settings_Path());
  ASSERT_EQ(lines.size(), 13u);
  EXPECT_EQ(lines[1] + "x" + lines[2], "1400x1050");
  EXPECT_FLOAT_EQ(modMain::ScaleY, 1050.0f / 480.0f);
}
