// The main menu's real loop: the slide gate, the buttons' actions and rectangles, the drawing.
#include <gtest/gtest.h>

#include <cmath>

#include "frontend/modMainScr.h"
#include "support/screen_fixture.h"

using modMainScr::Button_Slide;

namespace {
class Menu : public ScreenTest {
 protected:
  explicit Menu(int w = 640, int h = 480) : ScreenTest(w, h) {}
  // Runs the menu; returns the frame the slide first read 0 after, and sets ended_at.
  int Run(std::function<void(int)> script) {
    int over = -1;
    frames = ended_at = 0;
    on_frame = [&, script](int f) {
      if (Button_Slide() == 0 && over < 0) over = f;
      if (script) script(f);
      if (!modMainScr::Running() && ended_at == 0) ended_at = f;
    };
    modMain::GameState = modMain::kStateMainMenu;
    modMainScr::Main_Menu();
    return over;
  }
  int ended_at = 0;
};

struct Menu800 : Menu {
  Menu800() : Menu(800, 600) {}
};
}  // namespace

TEST_F(Menu, AClickDuringTheSlideDoesNothingAndAHeldOneFiresOnTheFirstFrameAfterIt) {
  modMain::NumOpponents = -1;
  const int over = Run([&](int f) {
    if (f == 1) Move(300, 220);  // button 1
    if (f == 5) Press();
    if (f == 8) Release();
    if (f == 20) Press();  // held until the slide is over
  });
  // 416 pixels at 0.4 per ms: 1040 ms of 16 ms frames, plus the first frame's zero step.
  EXPECT_GE(over, 66);
  EXPECT_LE(over, 68);
  EXPECT_EQ(ended_at, over + 1);
  EXPECT_EQ(modMain::NumOpponents, 4);
  EXPECT_EQ(modMain::GameState, modMain::kStateShipSelection);
  EXPECT_FALSE(frmMain::Pressed(frmMain::Press::LeftClick)) << "one press acts once";
}

TEST_F(Menu, EachButtonChoosesItsStateAndTheGapBetweenButtonsDoesNothing) {
  struct Case {
    float x, y;
    int state, opponents;
    bool running;
  };
  for (const Case& c : {Case{226, 150, 3, 0, true}, Case{415, 238, 3, 4, true}, Case{320, 270, 4, -1, true},
                        Case{320, 338, 0, -1, false}}) {
    modMain::NumOpponents = -1;
    modMain::Running = kTrue;
    Run([&](int f) {
      if (f == 80) Move(320, 194);  // between buttons 0 and 1
      if (f == 81) Press();
      if (f == 83) Release();
      if (f == 90) Move(c.x, c.y);
      if (f == 91) Press();
    });
    EXPECT_EQ(ended_at, 92) << c.y;
    EXPECT_EQ(modMain::GameState, c.state) << c.y;
    EXPECT_EQ(modMain::NumOpponents, c.opponents) << c.y;
    EXPECT_EQ(Is_Set(modMain::Running), c.running) << c.y;
  }
  EXPECT_FALSE(modMainScr::Surfaces_Held()) << "surfaces are released on leaving";
}

TEST_F(Menu800, ButtonRectanglesAreScaledAndRoundedHalfToEven) {
  const int over = Run([](int f) {
    if (f == 120) Move(280, 188);  // one pixel left of button 0
    if (f == 121) Press();
    if (f == 123) Release();
    if (f == 130) Move(281, 188);  // its top-left pixel
    if (f == 131) Press();
  });
  const Rect r = modMainScr::Button_Rect(0), r3 = modMainScr::Button_Rect(3);
  EXPECT_EQ((std::array<int, 4>{r.left, r.top, r.right, r.bottom}), (std::array<int, 4>{281, 188, 520, 236}));
  EXPECT_EQ((std::array<int, 4>{r3.left, r3.top, r3.right, r3.bottom}), (std::array<int, 4>{281, 375, 520, 424}));
  EXPECT_EQ(ended_at, 132);
  EXPECT_EQ(modMain::NumOpponents, 0);
  EXPECT_NEAR(over * 16, 1300 + 32, 16) << "520 pixels at 0.4 per ms";
}

TEST_F(Menu, ButtonsSlideInFromAlternateSidesThenShowTheHighlightUnderThePointer) {
  const auto pic = platform::Load_BMP(dir_.path() + "/Gfx/Buttons.bmp", 382, 156, platform::PixelFormat::X8R8G8B8);
  ASSERT_TRUE(pic);
  // Column 100 of each button, 30 rows down its row; lit on the left half, plain on the right.
  auto lit = [&](int i) { return pic->Argb(100, 39 * i + 30) & 0xFFFFFF; };
  auto plain = [&](int i) { return pic->Argb(291, 39 * i + 30) & 0xFFFFFF; };
  ASSERT_NE(lit(0), plain(0));
  Run([&](int f) {
    if (f == 1) Move(400, 187);  // over button 0, near its bottom right
    if (f == 30) {
      const float drawn = Button_Slide() + 6.4f;  // the slide before this frame's step
      EXPECT_EQ(At(int(std::lround(225 - drawn)) + 100, 180), lit(0)) << "button 0 from the left";
      EXPECT_EQ(At(int(std::lround(225 + drawn)) + 100, 230), lit(1)) << "button 1 from the right";
    }
    if (f == 90) {
      EXPECT_EQ(At(325, 180), lit(0));
      EXPECT_EQ(At(400, 187), 0x18203Au) << "the pointer's hot spot is its top-left pixel";
      Screenshot("main_menu");
      Move(636, 476);
    }
    if (f == 92) {
      EXPECT_EQ(At(325, 180), plain(0));
      EXPECT_EQ(At(636, 476), 0x18203Au) << "the pointer is clipped at the corner, not dropped";
      platform::Post_Event({platform::EventKind::Quit});
    }
  });
}
