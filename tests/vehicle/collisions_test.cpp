// Wall and racer collisions and the hover height.
#include <array>
#include <cmath>

#include "racer_fixture.h"
#include "vehicle/players.h"

using namespace vehicle_test;

namespace {

struct Collisions : ::testing::Test {
  clsHumanPlayer& r = Make_Players(2);
  void SetUp() override { Set_Track({Block(-5, 5, 0, 20)}); }
};

TEST_F(Collisions, WallBouncePutsTheCrossingCornerOnTheEdgeWithTheShipsGrip) {
  RA::InvMass(r) = 0.5f, RA::InvInertia(r) = 0.25f, RA::WallGrip(r) = 0.9f;
  // Turned slightly right so that only corner 0 reaches the right edge at x = 5.
  const float heading = -0.3f, s = std::sin(heading), c = std::cos(heading);
  const float x0 = 4.5f - (c - 2 * s);
  Place(0, x0, 10, heading);
  r.VelocityX = 1, r.VelocityZ = 2;
  Move(0, x0 + 1, 10);
  EXPECT_EQ(std::pair(RA::Corners(r)[0].x, r.PositionX), std::pair(5.0f, 5.0f - (c - 2 * s)));
  // Kick (-1, 0), then the impulse with lever r.n = -(w s + l c).
  const float lever = -(s + 2 * c), j = -1.1f * 1 / (0.25f * lever * lever + 0.5f);
  EXPECT_NEAR(std::hypot(r.VelocityX - j * 0.5f * 0.9f, r.VelocityZ - 2 * 0.9f), 0, 1e-6);

  // Moving along the edge or back into the road never bounces.
  const float x = r.PositionX;
  Move(0, x, 12);
  Move(0, x - 1, 12);
  EXPECT_EQ(r.PositionX, x - 1);
  EXPECT_NEAR(r.VelocityZ, 2 * 0.9f, 1e-6);

  r.RacerKind = 1;  // the player's grip is drawn afresh at every hit, with three decimals
  modMain::Randomize(3);
  for (int i = 0; i < 50; ++i) {
    Place(0, -3.5f, 10);
    Move(0, -4.5f, 10);  // through the left edge
    const float grip = RA::WallGrip(r) * 1000;
    EXPECT_NEAR(grip, std::round(grip), 1e-3);
    EXPECT_PRED3(Between, grip, 749.99f, 850.01f);
  }
}

TEST_F(Collisions, SideWallsAreTestedAgainstTheBlockACornerStartsTheFrameOn) {
  // Block 1 turns right: its left edge runs from (-5, 10) to (-3, 20), in from block 0's line.
  auto bend = Block(-5, 5, 10, 20);
  bend.Corner[2] = {7, 0, 20}, bend.Corner[3] = {-3, 0, 20};
  bend.EdgeNormal[0] = {0.98058f, 0, -0.19612f}, bend.EdgeNormal[1] = {-0.98058f, 0, 0.19612f};
  Set_Track({Block(-5, 5, 0, 10), bend});
  RA::WallGrip(r) = 0.8f;

  // Through block 0's left side and its front edge at once: bounced back onto block 0's side.
  Place(0, -3.9f, 7);  // corner 1 at (-4.9, 9), just inside block 0's left wall
  Move(0, -4.9f, 9);   // corner 1 to (-5.9, 11), crossing x = -5 at z = 9.2
  EXPECT_EQ(RA::BlockOf(r, 1), 0);
  EXPECT_NEAR(std::hypot(RA::Corners(r)[1].x + 5, RA::Corners(r)[1].z - 9.2f), 0, 1e-5);
  EXPECT_NEAR(r.PositionX, -4.0f, 1e-5);

  // Along block 0's wall past block 1's bent-in edge: block 1's side waits for the next frame.
  Place(0, -3.9f, 7);
  RA::Set_Blocks(r, 0);
  Move(0, -3.9f, 9);  // corner 1 to (-4.9, 11): 0.1 outside block 1's edge
  EXPECT_EQ(std::pair(RA::BlockOf(r, 1), r.PositionZ), std::pair(i16(1), 9.0f));
  EXPECT_NEAR(std::hypot(RA::Corners(r)[1].x + 4.9f, RA::Corners(r)[1].z - 11), 0, 1e-5);
}

TEST_F(Collisions, RacersBounceOnlyWhenCloseOverlappingAndClosing) {
  clsHumanPlayer &a = r, &b = P(1);
  // A at the origin moving along x at avx, B at (bx, by, bz) at rest; then A's check.
  auto run = [&](float bx, float bz, float avx, float by = 0) {
    a.VelocityX = avx;
    a.VelocityZ = b.VelocityX = b.VelocityZ = 0;
    b.PositionY = by;
    Place(0, 0, 0);
    Place(1, bx, bz);
    a.Check_Car_Collisions(0);
  };
  run(1.5f, 0.5f, 1);  // one corner of A inside B's box
  const float nx = 1.5f / std::sqrt(2.5f), nz = 0.5f / std::sqrt(2.5f), delta = 0.75f * nx;
  EXPECT_NEAR(std::hypot(a.VelocityX - 1 + delta * nx, a.VelocityZ + delta * nz), 0, 1e-6);
  EXPECT_NEAR(std::hypot(b.VelocityX - delta * nx, b.VelocityZ - delta * nz), 0, 1e-6);
  run(1.5f, 0.5f, -1);  // moving apart
  EXPECT_EQ(std::pair(a.VelocityX, b.VelocityX), std::pair(-1.0f, 0.0f));
  run(1.5f, 0.5f, 1, 10);  // far above
  EXPECT_EQ(a.VelocityX, 1);
  // Boxes are only consulted within 12 units, however large the box is.
  for (float bx : {12.0f, 11.9f}) {
    run(bx, 0, 1);
    modGameLoop::RacerBox(1) = {-100, -100, 100, 100};
    a.Check_Car_Collisions(0);
    EXPECT_EQ(b.VelocityX != 0, bx < 12) << bx;
  }
}

TEST_F(Collisions, HoverHeightLandsWithABounceAndLiftsTheShadow) {
  Set_Track({Block(-5, 5, 0, 20, 3)});
  Place(0, 0, 10);
  // Height and climb before and after: a hard landing bounces, a soft one settles, in the air gravity rules.
  for (const auto& [y, vy, want_y, want_vy] :
       {std::array{2.0f, -2.0f, 3 + 1.9f, 1.1f}, {0.0f, -0.4f, 3 + 1.9f, 0.0f}, {9.0f, -0.7f, 9.0f, -0.7f}}) {
    r.PositionY = y, r.VelocityY = vy;
    r.Get_Track_Height();
    EXPECT_FLOAT_EQ(r.PositionY, want_y) << y;
    EXPECT_FLOAT_EQ(r.VelocityY, want_vy) << y;
  }
  EXPECT_FLOAT_EQ(RA::Shadow(r)[2].y, 3 + 1.5f);  // over the road, however high the racer

  Set_Track({Block(0, 0, 0, 0, 4)});  // a block shrunk to a point
  Place(0, 0, 0);
  r.Get_Track_Height();
  EXPECT_FLOAT_EQ(RA::Shadow(r)[0].y, 4 + 1.5f);
}

}  // namespace
