#include <algorithm>
#include <cmath>

#include "frontend/modIntro.h"
#include "frontend/modMainScr.h"
#include "support/screen_fixture.h"

using modMainScr::Button_Slide;

namespace {
class Menu : public ScreenTest {
 protected:
  explicit Menu(int w = 640, int h = 480) : ScreenTest(w, h) {}
  // Runs the menu under the script; returns the frame the slide first read 0 after, and sets ended_at.
  int Run(std::vector<Step> script) {
    int over = -1;
    ended_at = 0;
    on_frame = [&](int f) {
      if (Button_Slide() == 0 && over < 0) over = f;
      if (!modMainScr::Running() && ended_at == 0) ended_at = f;
    };
    modMain::GameState = modMain::kStateMainMenu;
    Play(std::move(script), modMainScr::Main_Menu);
    return over;
  }
  // A press away from any button once the slide is over, then a press at (x, y) that leaves.
  std::vector<Step> Miss_Then_Hit(float miss_x, float miss_y, float x, float y) {
    return {{"slid in", [] { return Button_Slide() == 0; }, [=] { Move(miss_x, miss_y), Press(), Release(); }},
            {"the miss let go", nullptr, nullptr},
            {"press", nullptr, [=, this] { Move(x, y), Press(), pressed_at = frames; }}};
  }
  int ended_at = 0, pressed_at = 0;
};

struct Menu800 : Menu {
  Menu800() : Menu(800, 600) {}
};
}  // namespace

TEST_F(Menu, ClicksDuringTheSlideDoNothingEachButtonChoosesItsStateAndButtonsSlideInAndLightUp) {
  modMain::NumOpponents = -1;
  const auto sliding = [] { return Button_Slide() > 0; };
  const int over = Run({Click("click button 1 while sliding", 300, 220, sliding),
                        {"the click let go", nullptr, nullptr},
                        {"press held from the slide", sliding, Press}});
  // 416 pixels at 0.4 per ms: 1040 ms of 16 ms frames, plus the first frame's zero step.
  EXPECT_GE(over, 66);
  EXPECT_LE(over, 68);
  EXPECT_EQ(ended_at, over + 1);
  EXPECT_EQ(modMain::NumOpponents, 4);
  EXPECT_EQ(modMain::GameState, modMain::kStateShipSelection);
  EXPECT_FALSE(frmMain::Pressed(frmMain::Press::LeftClick)) << "one press acts once";
  struct Case {
    float x, y;
    int state, opponents;
    bool running;
  };
  for (const Case& c : {Case{226, 150, 3, 0, true}, Case{415, 238, 3, 4, true}, Case{320, 270, 4, -1, true},
                        Case{320, 338, 0, -1, false}}) {
    SCOPED_TRACE(c.y);
    modMain::NumOpponents = -1;
    modMain::Running = kTrue;
    Run(Miss_Then_Hit(320, 194, c.x, c.y));  // the miss between buttons 0 and 1
    EXPECT_EQ(ended_at, pressed_at + 1);
    EXPECT_EQ(modMain::GameState, c.state);
    EXPECT_EQ(modMain::NumOpponents, c.opponents);
    EXPECT_EQ(Is_Set(modMain::Running), c.running);
  }
  EXPECT_FALSE(modMainScr::Surfaces_Held()) << "surfaces are released on leaving";
  const auto pic = platform::Load_BMP(dir_.path() + "/Gfx/Buttons.bmp", 382, 156, platform::PixelFormat::X8R8G8B8);
  ASSERT_TRUE(pic);
  // Column 100 of each button, 30 rows down its row; lit on the left half, plain on the right.
  auto lit = [&](int i) { return pic->Pixel(100, 39 * i + 30) & 0xFFFFFF; };
  auto plain = [&](int i) { return pic->Pixel(291, 39 * i + 30) & 0xFFFFFF; };
  ASSERT_NE(lit(0), plain(0));
  Run({{"pointer over button 0, near its bottom right", nullptr, [] { Move(400, 187); }},
       {"half way in", [] { return Button_Slide() < 240; },
        [&] {
          const float drawn = Button_Slide() + 6.4f;  // the slide before this frame's step
          EXPECT_EQ(At(int(std::lround(225 - drawn)) + 100, 180), lit(0)) << "button 0 from the left";
          EXPECT_EQ(At(int(std::lround(225 + drawn)) + 100, 230), lit(1)) << "button 1 from the right";
        }},
       {"slid in", [] { return Button_Slide() == 0; }},
       {"a frame drawn in place", nullptr,
        [&] {
          EXPECT_EQ(At(325, 180), lit(0));
          EXPECT_EQ(At(400, 187), 0x18203Au) << "the pointer's hot spot is its top-left pixel";
          Screenshot("main_menu");
          Move(636, 476);
        }},
       {"the pointer in the corner", nullptr, [&] {
          EXPECT_EQ(At(325, 180), plain(0));
          EXPECT_EQ(At(636, 476), 0x18203Au) << "the pointer is clipped at the corner, not dropped";
          platform::Post_Event({platform::EventKind::Quit});
        }}});
}

TEST_F(Menu800, ButtonRectanglesAreScaledAndRoundedHalfToEven) {
  const int over = Run(Miss_Then_Hit(280, 188, 281, 188));  // one pixel left of button 0, then its top-left pixel
  const Rect r = modMainScr::Button_Rect(0), r3 = modMainScr::Button_Rect(3);
  EXPECT_EQ((std::array<int, 4>{r.left, r.top, r.right, r.bottom}), (std::array<int, 4>{281, 188, 520, 236}));
  EXPECT_EQ((std::array<int, 4>{r3.left, r3.top, r3.right, r3.bottom}), (std::array<int, 4>{281, 375, 520, 424}));
  EXPECT_EQ(ended_at, pressed_at + 1);
  EXPECT_EQ(modMain::NumOpponents, 0);
  EXPECT_NEAR(over * 16, 1300 + 32, 16) << "520 pixels at 0.4 per ms";
}

namespace {
class Intro : public ScreenTest {
 protected:
  // Runs the intro under the script; returns per frame the page shown and the ms since the start.
  std::vector<std::pair<int, int32_t>> Run(std::vector<Step> script) {
    std::vector<std::pair<int, int32_t>> seen;
    const int32_t start = platform::Tick_Count();
    on_frame = [&](int) { seen.push_back({modIntro::Page(), platform::Tick_Count() - start}); };
    modMain::GameState = modMain::kStateIntro;
    Play(std::move(script), modIntro::Intro);
    return seen;
  }
  // The first frame showing page 2 (one past the end if none).
  static int First_Page_2(const std::vector<std::pair<int, int32_t>>& seen) {
    return int(std::find_if(seen.begin(), seen.end(), [](const auto& s) { return s.first == 2; }) - seen.begin()) + 1;
  }
  std::function<bool()> Shows(const char* file) const {
    return [this, file] {
      const auto pic =
          platform::Load_BMP(dir_.path() + "/Gfx/" + file, width_, height_, platform::PixelFormat::X8R8G8B8);
      return pic && (pic->Pixel(320, 240) & 0xFFFFFF) == At(320, 240);
    };
  }
  static bool On_Page_2() { return modIntro::Page() == 2; }
};
}  // namespace

TEST_F(Intro, WithoutInputEachPageStaysFourSecondsAClickOrEnterSkipsAPageAndAHeldPressSkipsBoth) {
  auto seen = Run({{"Intro1.bmp shown", Shows("Intro1.bmp"), [] { Screenshot("intro1"); }},
                   {"page 2", On_Page_2},
                   {"Intro2.bmp shown", Shows("Intro2.bmp"), [] { Screenshot("intro2"); }}});
  int first2 = First_Page_2(seen);
  ASSERT_GT(first2, 1);
  EXPECT_LT(std::abs(seen[size_t(first2) - 2].second - 4000), 16) << "page 2 on the first frame after 4 s";
  EXPECT_GE(seen.back().second, 8000);
  EXPECT_LE(seen.back().second, 8000 + 3 * 16);
  EXPECT_EQ(modMain::GameState, modMain::kStateMainMenu);
  EXPECT_FALSE(modIntro::Picture_Held()) << "the picture is released on leaving";

  // A click or Enter skips a page, a held press both.
  int at = 0;
  const Step press{"press on page 1", nullptr, [&] { Press(), at = frames; }};
  seen = Run({{"click on page 1", nullptr, [&] { Press(), Release(), at = frames; }}});
  first2 = First_Page_2(seen);
  EXPECT_EQ(first2, at + 1) << "the click is seen on the frame after it";
  EXPECT_GE(seen.back().second - seen[size_t(first2) - 1].second, 4000 - 16) << "page 2 then runs its full time";

  seen = Run({press});  // never let go
  EXPECT_EQ(First_Page_2(seen), at + 1);
  EXPECT_EQ(int(seen.size()), at + 2) << "still held on the next frame: page 2 ends too";
  EXPECT_FALSE(frmMain::Pressed(frmMain::Press::LeftClick)) << "the menu does not see the press";

  seen = Run({{"page 2", On_Page_2, [&] { Key_Down(13), at = frames; }}});  // held: no key-up follows
  ASSERT_GT(at, 240);
  EXPECT_EQ(int(seen.size()), at + 1);
  EXPECT_FALSE(frmMain::Pressed(frmMain::Press::Enter));
  EXPECT_EQ(modMain::GameState, modMain::kStateMainMenu);
  seen = Run({{"close", nullptr, [&] { platform::Post_Event({platform::EventKind::Quit}), at = frames; }}});
  EXPECT_EQ(int(seen.size()), at) << "closing the window leaves at once";
  EXPECT_TRUE(modMain::QuitRequested);
}
