#pragma once
// A headless 640 x 480 display in a scratch game folder with the fonts, torn down in the game's order.
#include <gtest/gtest.h>

#include <vector>

#include "core/log.h"
#include "core/settings.h"
#include "gfx/mod3Denhance.h"
#include "gfx/modText.h"
#include "platform/platform.h"
#include "support/test_env.h"

class DisplayTest : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_.Copy_From_Game("Gfx");
    modMain::Default_Settings();
    modMain::ScreenWidth = 640;
    modMain::ScreenHeight = 480;
    modMain::ScreenBPP = 16;
    modMain::Create_Log();
    ASSERT_TRUE(platform::Open_Window("Brindlex Quorval"));
    ASSERT_TRUE(mod3Denhance::Init_DDraw(modMain::ScreenWidth, modMain::ScreenHeight, modMain::ScreenBPP));
    ASSERT_NE(mod3Denhance::D3DDevice, nullptr);
  }
  void TearDown() override {
    mod3Denhance::Restore_Display_Mode();
    mod3Denhance::Release_ZBuffer();
    mod3Denhance::Release_D3DDevice();
    mod3Denhance::Release_D3D();
    mod3Denhance::Release_BackBuffer();
    mod3Denhance::Release_Primary();
    mod3Denhance::Release_DD();
    mod3Denhance::Release_DX();
    platform::Close_Window();
  }

  // Back-buffer pixels of a rectangle as 0xRRGGBB (alpha dropped), rows top to bottom.
  static std::vector<uint32_t> Read(int left, int top, int right, int bottom) {
    std::vector<uint32_t> px(size_t((right - left) * (bottom - top)));
    EXPECT_TRUE(platform::Read_Backbuffer(Rect{left, top, right, bottom}, px.data()));
    for (uint32_t& p : px) p &= 0x00FFFFFFu;
    return px;
  }
  static uint32_t At(int x, int y) { return Read(x, y, x + 1, y + 1)[0]; }

  testenv::ScratchAppDir dir_;
};
