// The intro's real loop on the manual clock: timing of both pages, clicks and Enter,
// and the pictures as they land in the back buffer.
#include <gtest/gtest.h>

#include "support/screen_fixture.h"
#include "frontend/modIntro.h"

namespace {
class Intro : public ScreenTest {
 protected:
  // Per frame: the page shown and the tick count the frame ended at.
  struct Seen {
    int page;
    int32_t tick;
  };
  std::vector<Seen> Run(std::function<void(int)> script = nullptr) {
    std::vector<Seen> seen;
    on_frame = [&, script](int f) {
      seen.push_back({modIntro::IntroPage, platform::Tick_Count()});
      if (script) script(f);
    };
    start_ = platform::Tick_Count();
    frames = 0;
    modMain::GameState = modMain::kStateIntro;
    modIntro::Intro();
    return seen;
  }
  // The first frame showing page 2, or -1.
  static int First_Page_2(const std::vector<Seen>& seen) {
    for (size_t i = 0; i < seen.size(); ++i)
      if (seen[i].page == 2) return int(i) + 1;
    return -1;
  }
  // True when sampled back-buffer pixels match the picture stretched to the screen.
  bool Shows(const char* file) const {
    const auto pic = platform::Load_BMP(dir_.path() + "/Gfx/" + file, width_, height_, platform::PixelFormat::X8R8G8B8);
    if (!pic) return false;
    for (int y = 7; y < height_; y += 53)
      for (int x = 11; x < width_; x += 61)
        if ((pic->Argb(x, y) & 0xFFFFFF) != At(x, y)) return false;
    return true;
  }
  int32_t start_ = 0;
};
}  // namespace

TEST_F(Intro, WithoutInputEachPageStaysFourSecondsThenTheMenuFollows) {
  bool page1_drawn = false, page2_drawn = false;
  const auto seen = Run([&](int f) {
    if (f == 10) {
      page1_drawn = Shows("Intro1.bmp");
      Screenshot("intro1");
    }
    if (modIntro::IntroPage == 2 && Is_Set(modIntro::IntroRunning) && !page2_drawn) {
      page2_drawn = Shows("Intro2.bmp");
      Screenshot("intro2");
    }
  });
  EXPECT_TRUE(page1_drawn);
  EXPECT_TRUE(page2_drawn);
  const int first2 = First_Page_2(seen);
  ASSERT_GT(first2, 1);
  // Page 2 appears on the first frame at least 4000 ms after the start, never before.
  EXPECT_GE(seen[size_t(first2) - 2].tick - start_, 4000 - 16);
  EXPECT_LT(seen[size_t(first2) - 2].tick - start_, 4000 + 16);
  const int32_t total = seen.back().tick - start_;
  EXPECT_GE(total, 8000);
  EXPECT_LE(total, 8000 + 3 * 16);
  EXPECT_EQ(modMain::GameState, modMain::kStateMainMenu);
  EXPECT_FALSE(modIntro::IntroSurface) << "the picture is released on leaving";
}

TEST_F(Intro, AOneFrameClickShowsPage2AndAHeldPressSkipsBoth) {
  auto seen = Run([](int f) {
    if (f == 20) Press();
    if (f == 21) Release();
  });
  const int first2 = First_Page_2(seen);
  EXPECT_EQ(first2, 21) << "the click is seen on the frame after it";
  EXPECT_GE(seen.back().tick - seen[size_t(first2) - 1].tick, 4000 - 16) << "page 2 then runs its full time";

  seen = Run([](int f) {
    if (f == 20) Press();
    if (f == 30) Release();
  });
  EXPECT_EQ(First_Page_2(seen), 21);
  EXPECT_EQ(seen.size(), 22u) << "still held on the next frame: page 2 ends too";
  EXPECT_FALSE(Is_Set(frmMain::MouseLeftDown)) << "the menu does not see the press";
  EXPECT_EQ(modMain::GameState, modMain::kStateMainMenu);
}

TEST_F(Intro, EnterOnPage2EndsTheIntroAndIsClearedForTheMenu) {
  int entered = 0;
  const auto seen = Run([&](int f) {
    if (modIntro::IntroPage == 2 && entered == 0) {
      entered = f;
      Key_Down(13);  // held: no key-up follows
    }
  });
  ASSERT_GT(entered, 240);
  EXPECT_EQ(int(seen.size()), entered + 1);
  EXPECT_FALSE(Is_Set(frmMain::EnterPressed));
  EXPECT_EQ(modMain::GameState, modMain::kStateMainMenu);
}

TEST_F(Intro, ClosingTheWindowLeavesAtOnce) {
  const auto seen = Run([](int f) {
    if (f == 5) platform::Post_Event({platform::EventKind::Quit});
  });
  EXPECT_EQ(seen.size(), 5u);
  EXPECT_TRUE(modMain::QuitRequested);
}
