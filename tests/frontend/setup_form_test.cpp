// The setup dialog's form: preselection from the settings and the lists, fallbacks,
// captions, and what Start stores.
#include <gtest/gtest.h>

#include "core/modMain.h"
#include "frontend/frmSetup.h"
#include "platform/platform.h"
#include "support/test_env.h"

namespace {

using platform::DeviceInfo;
using platform::SoundDeviceInfo;

const DeviceInfo kRgb{platform::kSoftwareDevice, "llvmpipe - Mesa software rasteriser", true};
const DeviceInfo kHal{platform::kHardwareDevice, "GPU - hardware rasterisation", false};
const DeviceInfo kTnl{platform::kTnLHardwareDevice, "GPU - hardware transform and lighting", false};
const std::vector<SoundDeviceInfo> kSounds = {{"Speakers", "Speakers"}, {"Headphones", "Headphones"}};

frmSetup::SetupForm Loaded(std::vector<DeviceInfo> devices, std::vector<SoundDeviceInfo> sounds = kSounds) {
  frmSetup::SetupForm f;
  f.Form_Load(std::move(devices), std::move(sounds));
  return f;
}

}  // namespace

TEST(SetupForm, FirstStartPreselectsTheDefaultModeTheBestDeviceAndTheFirstSoundDevice) {
  modMain::Default_Settings();
  const frmSetup::SetupForm f = Loaded({kRgb, kHal, kTnl});
  EXPECT_EQ(f.HScrollRes, 2);
  EXPECT_EQ(f.lblRes, "640x480");
  EXPECT_EQ(f.HScrollBPP, 0);
  EXPECT_EQ(f.lblBPP, "16");
  EXPECT_EQ(f.cmb3DDevice, 2);
  EXPECT_EQ(f.cmbSoundDriver, 0);
  EXPECT_FALSE(f.chkShowAgain);
  // Without the transform-and-lighting device the hardware one, else the first listed.
  EXPECT_EQ(Loaded({kRgb, kHal}).cmb3DDevice, 1);
  EXPECT_EQ(Loaded({kRgb}).cmb3DDevice, 0);
  const frmSetup::SetupForm empty = Loaded({}, {});
  EXPECT_EQ(empty.cmb3DDevice, -1);
  EXPECT_EQ(empty.Device_Caption(), "Renderer");
  EXPECT_EQ(empty.Sound_Caption(), "Sound Devices");
  // This machine's own list starts with its best device.
  const frmSetup::SetupForm real = Loaded(platform::Device_List(), platform::Sound_Device_List());
  ASSERT_GE(real.cmb3DDevice, 0);
  EXPECT_EQ(real.Devices[size_t(real.cmb3DDevice)].identifier, platform::Device_List().front().identifier);
}

TEST(SetupForm, StoredChoicesArePreselectedAndOnesThatAreGoneFallBack) {
  modMain::Default_Settings();
  modMain::D3DDeviceGuid = platform::kSoftwareDevice;
  modMain::SoundDeviceGuid = "Headphones";
  frmSetup::SetupForm f = Loaded({kTnl, kHal, kRgb});
  EXPECT_EQ(f.cmb3DDevice, 2);
  EXPECT_EQ(f.cmbSoundDriver, 1);
  modMain::D3DDeviceGuid = platform::kHardwareDevice;  // the machine has lost its GPU driver
  modMain::SoundDeviceGuid = "USB headset";
  f = Loaded({kRgb, kTnl});
  EXPECT_EQ(f.cmb3DDevice, 1);
  EXPECT_EQ(f.cmbSoundDriver, 0);
}

TEST(SetupForm, ModeAndDepthComeFromTheSettingsAndCaptionsFollowTheScrollBars) {
  struct Case {
    i16 height;
    u8 bpp;
    int res;
    const char* res_caption;
    int depth;
    const char* depth_caption;
  };
  for (const Case& c : {Case{240, 24, 0, "320x240", 1, "24"}, Case{400, 32, 1, "640x400", 2, "32"},
                        Case{600, 16, 3, "800x600", 0, "16"}, Case{768, 8, 2, "640x480", 0, "16"}}) {
    modMain::Default_Settings();
    modMain::ScreenHeight = c.height;
    modMain::ScreenBPP = c.bpp;
    const frmSetup::SetupForm f = Loaded({kRgb});
    EXPECT_EQ(f.HScrollRes, c.res) << c.height;
    EXPECT_EQ(f.lblRes, c.res_caption) << c.height;
    EXPECT_EQ(f.HScrollBPP, c.depth) << int(c.bpp);
    EXPECT_EQ(f.lblBPP, c.depth_caption) << int(c.bpp);
  }
  frmSetup::SetupForm f = Loaded({kRgb});
  const char* res[] = {"320x240", "640x400", "640x480", "800x600"};
  for (int v : {0, 3, 1, 2}) {
    f.HScrollRes = v;
    f.HScrollRes_Scroll();
    EXPECT_EQ(f.lblRes, res[v]);
  }
  for (int v : {2, 0, 1}) {
    f.HScrollBPP = v;
    f.HScrollBPP_Change();
    EXPECT_EQ(f.lblBPP, std::to_string(16 + 8 * v));
  }
  f.Label1_Click();
  EXPECT_TRUE(f.chkShowAgain);
  f.Label1_Click();
  EXPECT_FALSE(f.chkShowAgain);
}

TEST(SetupForm, StartWritesTheChoicesAndReadsThemBack) {
  testenv::ScratchAppDir dir;
  modMain::Default_Settings();
  modMain::Difficulty = 3;  // untouched by the dialog, kept in the file
  frmSetup::SetupForm f = Loaded({kTnl, kRgb});
  f.HScrollRes = 3;
  f.HScrollBPP = 2;
  f.cmb3DDevice = 1;
  f.cmbSoundDriver = 1;
  f.Label1_Click();
  f.lblStart_Click();
  EXPECT_EQ(testenv::Read_Lines_CRLF(modMain::Settings_Path()),
            (std::vector<std::string>{"1", "800", "600", "32", platform::kSoftwareDevice, "Headphones", "3", "", "0", "38",
                                      "40", "37", "39"}));
  EXPECT_FLOAT_EQ(modMain::ScaleX, 1.25f);
  EXPECT_FLOAT_EQ(modMain::ScaleY, 1.25f);
  // Empty lists store "<none>".
  frmSetup::SetupForm none = Loaded({}, {});
  none.lblStart_Click();
  const auto lines = testenv::Read_Lines_CRLF(modMain::Settings_Path());
  ASSERT_EQ(lines.size(), 13u);
  EXPECT_EQ(lines[0], "0");
  EXPECT_EQ(lines[4], "<none>");
  EXPECT_EQ(lines[5], "<none>");
}
