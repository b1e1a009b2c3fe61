#include <SDL.h>

#include <array>
#include <filesystem>

#include "core/extras.h"
#include "platform/gl_internal.h"
#include "platform/sdl_internal.h"
#include "support/screen_fixture.h"

namespace {

class WindowTest : public ScreenTest {
 protected:
  void SetUp() override {
    extras::Reset();
    ScreenTest::SetUp();
  }
  void TearDown() override {
    platform::Set_Windowed(false);
    ScreenTest::TearDown();
  }
  static void Press_Window_Key(int16_t key, int16_t shift) {
    for (auto kind : {platform::EventKind::KeyDown, platform::EventKind::KeyUp}) {
      platform::Post_Event({kind, key, 0, shift});
      platform::Pump_Messages();
    }
  }
  // Draws the buttons picture at (10, 20) and returns what the back buffer then shows there.
  std::vector<uint32_t> Draw_Buttons() {
    Rect all{0, 0, 382, 156};
    i16 x = 10, y = 20;
    mod3Denhance::Fill_Rect(mod3Denhance::BackBuffer, 0, 0, 640, 480, 0);
    mod3Denhance::Blit_Clipped(mod3Denhance::BackBuffer, buttons_, all, x, y, 1);
    return Read(10, 20, 392, 176);
  }
  mod3Denhance::Surface buttons_;
};

TEST_F(WindowTest, SwitchKeepsTexturesLetterboxesMapsThePointerAndIsRemembered) {
  SDL_Window* window = platform::detail::Window();
  int desk_w = 0, desk_h = 0;
  ASSERT_TRUE(platform::Desktop_Size(desk_w, desk_h));
  ASSERT_TRUE(mod3Denhance::Create_Surface(buttons_, 382, 156, platform::Game_Path("\\Gfx\\Buttons.bmp"),
                                           mod3Denhance::kKeyBlack, kFalse));
  const std::vector<uint32_t> before = Draw_Buttons();
  mod3Denhance::Flip();
  const platform::detail::GpuState gpu = platform::detail::ImageAccess::Gpu(*buttons_);
  ASSERT_NE(gpu.texture, 0u);
  EXPECT_NE(SDL_GetWindowFlags(window) & SDL_WINDOW_INPUT_GRABBED, 0u) << "full screen holds the pointer";

  Press_Window_Key(13, 4);  // Alt+Enter
  EXPECT_TRUE(platform::Windowed());
  EXPECT_EQ(SDL_GetWindowFlags(window) & SDL_WINDOW_FULLSCREEN, 0u);
  EXPECT_EQ(SDL_GetWindowFlags(window) & SDL_WINDOW_INPUT_GRABBED, 0u) << "a window lets the pointer go";
  int ww = 0, wh = 0;
  SDL_GetWindowSize(window, &ww, &wh);
  EXPECT_LT(wh, desk_h);
  EXPECT_EQ(ww * 3, wh * 4) << "a whole multiple of the back buffer";
  EXPECT_FALSE(frmMain::Pressed(frmMain::Press::Enter)) << "Alt+Enter is not Enter";
  EXPECT_EQ(testenv::Read_File(extras::Path()), "window=1\n");

  // The same texture draws the same pixels: nothing was lost or uploaded again.
  EXPECT_EQ(Draw_Buttons(), before);
  mod3Denhance::Flip();
  EXPECT_EQ(platform::detail::ImageAccess::Gpu(*buttons_).texture, gpu.texture);
  EXPECT_EQ(platform::detail::ImageAccess::Gpu(*buttons_).generation, gpu.generation) << "not uploaded again";

  // The player drags the window wide: bands left and right, the pointer mapped through them.
  SDL_SetWindowSize(window, 1000, 500);
  const platform::detail::Letterbox& lb = platform::detail::Current_Letterbox();
  EXPECT_EQ((std::array{lb.width, lb.height, lb.x0}), (std::array{667, 500, 166}));
  SDL_Event motion{};
  motion.motion = {SDL_MOUSEMOTION, 0, SDL_GetWindowID(window), 0, 0, 166 + 667 / 2, 125, 0, 0};
  SDL_PushEvent(&motion);
  platform::Pump_Messages();
  EXPECT_NEAR(frmMain::MouseX, 320, 1);
  EXPECT_EQ(frmMain::MouseY, 120);
  mod3Denhance::Flip();

  Press_Window_Key(122, 0);  // F11: back to full screen
  EXPECT_FALSE(platform::Windowed());
  EXPECT_EQ(SDL_GetWindowFlags(window) & SDL_WINDOW_FULLSCREEN_DESKTOP, SDL_WINDOW_FULLSCREEN_DESKTOP);
  EXPECT_NE(SDL_GetWindowFlags(window) & SDL_WINDOW_INPUT_GRABBED, 0u);
  EXPECT_EQ(frmMain::KeyState[122], kFalse) << "F11 belongs to the window, not the game";
  EXPECT_EQ(testenv::Read_File(extras::Path()), "window=0\n");
  EXPECT_EQ(Draw_Buttons(), before);
  EXPECT_FALSE(std::filesystem::exists(modMain::Settings_Path())) << "Quorval.ini is not written";

  // The next run opens the way the player left it.
  testenv::Write_File(extras::Path(), "window=1\n");
  extras::Load();
  ASSERT_TRUE(frmMain::Show());
  EXPECT_TRUE(platform::Windowed());
}

}  // namespace
