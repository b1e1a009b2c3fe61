// The intro's real loop on the manual clock: page timing, clicks and Enter, the pictures drawn.
#include <algorithm>

#include "frontend/modIntro.h"
#include "support/screen_fixture.h"

namespace {
class Intro : public ScreenTest {
 protected:
  // Runs the intro under the script; returns per frame the page shown and the ms since the start.
  std::vector<std::pair<int, int32_t>> Run(std::vector<Step> script) {
    std::vector<std::pair<int, int32_t>> seen;
    const int32_t start = platform::Tick_Count();
    on_frame = [&](int) { seen.push_back({modIntro::IntroPage, platform::Tick_Count() - start}); };
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
      return pic && (pic->Argb(320, 240) & 0xFFFFFF) == At(320, 240);
    };
  }
  static bool On_Page_2() { return modIntro::IntroPage == 2; }
};
}  // namespace

TEST_F(Intro, WithoutInputEachPageStaysFourSecondsThenTheMenuFollows) {
  const auto seen = Run({{"Intro1.bmp shown", Shows("Intro1.bmp"), [] { Screenshot("intro1"); }},
                         {"page 2", On_Page_2},
                         {"Intro2.bmp shown", Shows("Intro2.bmp"), [] { Screenshot("intro2"); }}});
  const int first2 = First_Page_2(seen);
  ASSERT_GT(first2, 1);
  EXPECT_LT(std::abs(seen[size_t(first2) - 2].second - 4000), 16) << "page 2 on the first frame after 4 s";
  EXPECT_GE(seen.back().second, 8000);
  EXPECT_LE(seen.back().second, 8000 + 3 * 16);
  EXPECT_EQ(modMain::GameState, modMain::kStateMainMenu);
  EXPECT_FALSE(modIntro::IntroSurface) << "the picture is released on leaving";
}

TEST_F(Intro, AClickOrEnterSkipsAPageAndAHeldPressSkipsBoth) {
  int at = 0;
  const Step press{"press on page 1", nullptr, [&] { Press(), at = frames; }};
  auto seen = Run({press, {"release", nullptr, Release}});
  int first2 = First_Page_2(seen);
  EXPECT_EQ(first2, at + 1) << "the click is seen on the frame after it";
  EXPECT_GE(seen.back().second - seen[size_t(first2) - 1].second, 4000 - 16) << "page 2 then runs its full time";

  seen = Run({press});  // never let go
  EXPECT_EQ(First_Page_2(seen), at + 1);
  EXPECT_EQ(int(seen.size()), at + 2) << "still held on the next frame: page 2 ends too";
  EXPECT_FALSE(Is_Set(frmMain::MouseLeftDown)) << "the menu does not see the press";

  seen = Run({{"page 2", On_Page_2, [&] { Key_Down(13), at = frames; }}});  // held: no key-up follows
  ASSERT_GT(at, 240);
  EXPECT_EQ(int(seen.size()), at + 1);
  EXPECT_FALSE(Is_Set(frmMain::EnterPressed));
  EXPECT_EQ(modMain::GameState, modMain::kStateMainMenu);
  seen = Run({{"close", nullptr, [&] { platform::Post_Event({platform::EventKind::Quit}), at = frames; }}});
  EXPECT_EQ(int(seen.size()), at) << "closing the window leaves at once";
  EXPECT_TRUE(modMain::QuitRequested);
}
