// The intro's real loop on the manual clock: page timing, clicks and Enter, the pictures drawn.
#include <gtest/gtest.h>

#include <algorithm>

#include "frontend/modIntro.h"
#include "support/screen_fixture.h"

namespace {
class Intro : public ScreenTest {
 protected:
  // Runs the intro; returns per frame the page shown and the ms since the start.
  std::vector<std::pair<int, int32_t>> Run(std::function<void(int)> script = nullptr) {
    std::vector<std::pair<int, int32_t>> seen;
    const int32_t start = platform::Tick_Count();
    on_frame = [&, script](int f) {
      seen.push_back({modIntro::Page(), platform::Tick_Count() - start});
      if (script) script(f);
    };
    frames = 0;
    modMain::GameState = modMain::kStateIntro;
    modIntro::Intro();
    return seen;
  }
  // The first frame showing page 2 (one past the end if none).
  static int First_Page_2(const std::vector<std::pair<int, int32_t>>& seen) {
    return int(std::find_if(seen.begin(), seen.end(), [](const auto& s) { return s.first == 2; }) - seen.begin()) + 1;
  }
  bool Shows(const char* file) const {
    const auto pic = platform::Load_BMP(dir_.path() + "/Gfx/" + file, width_, height_, platform::PixelFormat::X8R8G8B8);
    return pic && (pic->Argb(320, 240) & 0xFFFFFF) == At(320, 240);
  }
};
}  // namespace

TEST_F(Intro, WithoutInputEachPageStaysFourSecondsThenTheMenuFollows) {
  bool page1 = false, page2 = false;
  const auto seen = Run([&](int f) {
    if (f == 10) page1 = Shows("Intro1.bmp"), Screenshot("intro1");
    if (modIntro::Page() == 2 && modIntro::Running() && !page2)
      page2 = Shows("Intro2.bmp"), Screenshot("intro2");
  });
  EXPECT_TRUE(page1 && page2);
  const int first2 = First_Page_2(seen);
  ASSERT_GT(first2, 1);
  EXPECT_LT(std::abs(seen[size_t(first2) - 2].second - 4000), 16) << "page 2 on the first frame after 4 s";
  EXPECT_GE(seen.back().second, 8000);
  EXPECT_LE(seen.back().second, 8000 + 3 * 16);
  EXPECT_EQ(modMain::GameState, modMain::kStateMainMenu);
  EXPECT_FALSE(modIntro::Picture_Held()) << "the picture is released on leaving";
}

TEST_F(Intro, AClickOrEnterSkipsAPageAndAHeldPressSkipsBoth) {
  auto seen = Run([](int f) { f == 20 ? Press() : f == 21 ? Release() : void(); });
  int first2 = First_Page_2(seen);
  EXPECT_EQ(first2, 21) << "the click is seen on the frame after it";
  EXPECT_GE(seen.back().second - seen[size_t(first2) - 1].second, 4000 - 16) << "page 2 then runs its full time";

  seen = Run([](int f) { f == 20 ? Press() : f == 30 ? Release() : void(); });
  EXPECT_EQ(First_Page_2(seen), 21);
  EXPECT_EQ(seen.size(), 22u) << "still held on the next frame: page 2 ends too";
  EXPECT_FALSE(frmMain::Pressed(frmMain::Press::LeftClick)) << "the menu does not see the press";

  first2 = 0;
  seen = Run([&](int f) {
    if (modIntro::Page() == 2 && first2 == 0) first2 = f, Key_Down(13);  // held: no key-up follows
  });
  ASSERT_GT(first2, 240);
  EXPECT_EQ(int(seen.size()), first2 + 1);
  EXPECT_FALSE(frmMain::Pressed(frmMain::Press::Enter));
  EXPECT_EQ(modMain::GameState, modMain::kStateMainMenu);
  seen = Run([](int f) { f == 5 ? platform::Post_Event({platform::EventKind::Quit}) : void(); });
  EXPECT_EQ(seen.size(), 5u) << "closing the window leaves at once";
  EXPECT_TRUE(modMain::QuitRequested);
}
