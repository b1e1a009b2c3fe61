// The main menu's real loop: the slide gate, the buttons' actions and rectangles, the
// highlight and pointer as drawn into the back buffer.
#include <gtest/gtest.h>

#include <cmath>

#include "support/screen_fixture.h"
#include "frontend/modMainScr.h"

using modMainScr::ButtonSlide;

namespace {
class Menu : public ScreenTest {
 protected:
  explicit Menu(int w = 640, int h = 480) : ScreenTest(w, h) {}
  // Runs the menu; returns the per-frame slide values (as left after each frame).
  std::vector<float> Run(std::function<void(int)> script) {
    std::vector<float> slides;
    frames = 0;
    on_frame = [&, script](int f) {
      slides.push_back(ButtonSlide);
      if (script) script(f);
    };
    modMain::GameState = modMain::kStateMainMenu;
    modMainScr::Main_Menu();
    return slides;
  }
  // The first frame after which the slide reads exactly 0.
  static int Slide_Over(const std::vector<float>& slides) {
    for (size_t i = 0; i < slides.size(); ++i)
      if (slides[i] == 0) return int(i) + 1;
    return -1;
  }
  uint32_t Buttons_Pixel(int x, int y) const {
    const auto pic = platform::Load_BMP(dir_.path() + "/Gfx/Buttons.bmp", 382, 156, platform::PixelFormat::X8R8G8B8);
    return pic ? pic->Argb(x, y) & 0xFFFFFF : 0xFFFFFFFF;
  }
};

class Menu800 : public Menu {
 protected:
  Menu800() : Menu(800, 600) {}
};
}  // namespace

TEST_F(Menu, AClickDuringTheSlideDoesNothingAndAHeldOneFiresOnTheFirstFrameAfterIt) {
  modMain::NumOpponents = -1;
  int ended_at = 0;
  const auto slides = Run([&](int f) {
    if (f == 1) Move(300, 220);  // button 1
    if (f == 5) Press();
    if (f == 8) Release();
    if (f == 20) Press();        // held until the slide is over
    if (!Is_Set(modMainScr::MenuRunning) && ended_at == 0) ended_at = f;
  });
  const int over = Slide_Over(slides);
  // 416 pixels at 0.4 per ms: 1040 ms of 16 ms frames, plus the first frame's zero step.
  EXPECT_GE(over, 66);
  EXPECT_LE(over, 68);
  EXPECT_EQ(ended_at, over + 1);
  EXPECT_EQ(modMain::NumOpponents, 4);
  EXPECT_EQ(modMain::GameState, modMain::kStateShipSelection);
  EXPECT_FALSE(Is_Set(frmMain::MouseLeftDown)) << "one press acts once";
}

TEST_F(Menu, EachButtonChoosesItsStateAndTheGapBetweenButtonsDoesNothing) {
  struct Case {
    float x, y;
    int state, opponents;
    bool running;
  };
  const Case cases[] = {{226, 150, 3, 0, true},
                        {415, 238, 3, 4, true},
                        {320, 270, 4, -1, true},
                        {320, 338, 0, -1, false}};
  for (const Case& c : cases) {
    modMain::NumOpponents = -1;
    modMain::Running = kTrue;
    int ended_at = 0;
    Run([&](int f) {
      if (f == 80) Move(320, 194);  // between buttons 0 and 1
      if (f == 81) Press();
      if (f == 83) Release();
      if (f == 90) Move(c.x, c.y);
      if (f == 91) Press();
      if (!Is_Set(modMainScr::MenuRunning) && ended_at == 0) ended_at = f;
    });
    EXPECT_EQ(ended_at, 92) << c.x << "," << c.y;
    EXPECT_EQ(modMain::GameState, c.state) << c.y;
    EXPECT_EQ(modMain::NumOpponents, c.opponents) << c.y;
    EXPECT_EQ(Is_Set(modMain::Running), c.running) << c.y;
  }
  EXPECT_FALSE(modMainScr::MenuBackground) << "surfaces are released on leaving";
}

TEST_F(Menu800, ButtonRectanglesAreScaledAndRoundedHalfToEven) {
  const auto slides = Run([](int f) {
    if (f == 120) Move(280, 188);  // one pixel left of button 0
    if (f == 121) Press();
    if (f == 123) Release();
    if (f == 130) Move(281, 188);  // its top-left pixel
    if (f == 131) Press();
  });
  const Rect r = modMainScr::ButtonRects[0];
  EXPECT_EQ((std::array<int, 4>{r.left, r.top, r.right, r.bottom}), (std::array<int, 4>{281, 188, 520, 236}));
  const Rect r3 = modMainScr::ButtonRects[3];
  EXPECT_EQ((std::array<int, 4>{r3.left, r3.top, r3.right, r3.bottom}), (std::array<int, 4>{281, 375, 520, 424}));
  EXPECT_EQ(slides.size(), 132u);
  EXPECT_EQ(modMain::NumOpponents, 0);
  // 520 pixels at 0.4 per ms: the slide lasts 1300 ms.
  EXPECT_NEAR(Slide_Over(slides) * 16, 1300 + 32, 16);
}

TEST_F(Menu, ButtonsSlideInLitFromAlternateSidesThenShowPlainWithTheHighlightUnderThePointer) {
  // Column 100 of each button, 30 rows down its row; lit on the left, plain on the right.
  auto lit = [&](int i) { return Buttons_Pixel(100, 39 * i + 30); };
  auto plain = [&](int i) { return Buttons_Pixel(291, 39 * i + 30); };
  ASSERT_NE(lit(0), plain(0));
  Run([&](int f) {
    if (f == 30) {
      // Drawn with the slide as it was before this frame's step.
      const float drawn = ButtonSlide + 6.4f;
      const int from_left = int(std::lround(225 - drawn)), from_right = int(std::lround(225 + drawn));
      EXPECT_EQ(At(from_left + 100, 150 + 30), lit(0)) << "button 0 from the left";
      EXPECT_EQ(At(from_right + 100, 200 + 30), lit(1)) << "button 1 from the right";
      EXPECT_EQ(At(from_left + 100, 250 + 30), lit(2)) << "button 2 from the left";
    }
    if (f == 1) Move(400, 187);  // over button 0, near its bottom right
    if (f == 90) {
      EXPECT_EQ(At(325, 180), lit(0));
      EXPECT_EQ(At(325, 230), plain(1));
      EXPECT_EQ(At(325, 330), plain(3));
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
