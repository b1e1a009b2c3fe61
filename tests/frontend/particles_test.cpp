#include <algorithm>
#include <array>

#include "mathmesh/modMATH.h"
#include "support/screen_fixture.h"

using namespace modMouseParticles;

namespace {
class Particles : public DisplayTest {
 protected:
  void SetUp() override {
    DisplayTest::SetUp();
    frmMain::Reset_Input();
    modMain::Randomize(3);
    ASSERT_TRUE(Init_Particles());
  }
  static void Rest_At(i16 x, i16 y) {
    frmMain::MouseX = x, frmMain::MouseY = y;
    ASSERT_TRUE(Init_Particles());
  }
  static void Frame(int frame_ms) {
    modMain::FrameTime = frame_ms;
    mod3Denhance::Clear_Screen();
    Update_Particles();
  }
  static std::pair<float, float> VX_Range() {
    const auto [lo, hi] = std::minmax_element(modMouseParticles::Particles.begin(), modMouseParticles::Particles.end(),
                                              [](const Particle& a, const Particle& b) { return a.VX < b.VX; });
    return {lo->VX, hi->VX};
  }
};
}  // namespace

TEST_F(Particles, BirthMotionFadingRebirthThePointersPullAndClippedSprites) {
  Rest_At(300, 200);
  Frame(16);
  for (const Particle& p : modMouseParticles::Particles)
    EXPECT_EQ((std::array{p.Life, p.X, p.Y}), (std::array{1.0f, 300.0f, 200.0f})) << "life, x, y";
  EXPECT_EQ(At(300, 200), kClear) << "nothing is drawn on the birth frame";
  const auto [lo, hi] = VX_Range();
  // At rest newborns spread both ways.
  EXPECT_GT(lo, -0.2f);
  EXPECT_LT(lo, 0);
  EXPECT_GT(hi, 0);
  EXPECT_LE(hi, 0.15f);
  const auto born = modMouseParticles::Particles;
  Frame(16);
  for (size_t i = 0; i < born.size(); ++i) {
    const Particle& p = modMouseParticles::Particles[i];
    EXPECT_FLOAT_EQ(p.Life, 1.0f - born[i].Fade * 16);
    EXPECT_FLOAT_EQ(p.X, 300 + born[i].VX * 16);
    EXPECT_FLOAT_EQ(p.VY, born[i].VY + 0.002f * 16);
  }
  // Nearly opaque yellow-white sprites pile up on the pointer; blending is off again.
  const uint32_t centre = At(300, 200);
  EXPECT_GT(centre >> 16 & 0xFF, 0xC0u) << "red";
  EXPECT_GT(centre >> 8 & 0xFF, 0x80u) << "green";
  EXPECT_LT(centre & 0xFF, 0x40u) << "blue";
  EXPECT_EQ(At(300, 100), kClear) << "the sprite is 20 x 20, unscaled";
  EXPECT_EQ(platform::Render_State(*mod3Denhance::D3DDevice, platform::rs::AlphaBlendEnable), 0u);
  Rest_At(100, 100);
  Frame(16);
  Particle& first = modMouseParticles::Particles[0];
  first.Fade = 0.0051f;
  Frame(50);
  EXPECT_NEAR(first.Life, 1.0f - 0.255f, 1e-6) << "a long frame fades by Fade x 50";
  first.Life = 0.1f;
  Frame(50);
  EXPECT_EQ(first.Colour, modMATH::Create_Color_RGBA(1, 0, 0, 0)) << "a life below 0 draws clamped to clear";
  frmMain::MouseX = 400;
  Frame(50);
  EXPECT_EQ(first.Life, 1.0f) << "then reborn";
  EXPECT_EQ(first.X, 400.0f);
  Rest_At(539, 240);
  Frame(16);
  for (Particle& p : modMouseParticles::Particles) p.Life = 0;
  frmMain::MouseX = 639;  // 100 pixels to the right since the last update
  Frame(16);
  const auto [pulled_lo, pulled_hi] = VX_Range();  // the pointer's move pulls newborns right
  EXPECT_GE(pulled_lo, 0.15f);
  EXPECT_GT(pulled_hi, 2.0f);
  EXPECT_LT(pulled_hi, 4.8f);
  for (Particle& p : modMouseParticles::Particles) p.VX = p.VY = 0, p.Fade = 0.0001f, p.X = 639, p.Y = 240;
  Frame(16);
  EXPECT_NE(At(636, 240), kClear) << "a sprite at the edge is clipped, not dropped";
  EXPECT_EQ(At(620, 240), kClear);
}
