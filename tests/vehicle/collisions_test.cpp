// Wall and racer collisions and the hover height.
#include <cmath>

#include "racer_fixture.h"

using namespace vehicle_test;

namespace {

struct Collisions : ::testing::Test {
  void SetUp() override {
    Set_Track({Block(-5, 5, 0, 20)});
    Make_Players(2);
  }
};

TEST_F(Collisions, WallBouncePutsTheCrossingCornerOnTheEdge) {
  clsHumanPlayer& r = P(0);
  RA::Ship(r, 1, 2, 0.5f, 0.25f);
  RA::WallGrip(r) = 0.9f;
  // Turned slightly right so that only corner 0 reaches the right edge at x = 5.
  const float heading = -0.3f, s = std::sin(heading), c = std::cos(heading);
  const float x0 = 4.5f - (c - 2 * s);
  Place(0, x0, 10, heading);
  r.VelocityX = 1;
  r.VelocityZ = 2;
  Move(0, x0 + 1, 10);
  EXPECT_FLOAT_EQ(RA::Corners(r)[0].x, 5.0f);
  EXPECT_FLOAT_EQ(r.PositionX, 5.0f - (c - 2 * s));
  EXPECT_FLOAT_EQ(RA::Corners(r)[2].x - RA::Corners(r)[0].x, 4 * s);
  // Kick (-1, 0), then the impulse with lever r.n = -(w s + l c).
  const float lever = -(s + 2 * c);
  const float j = -1.1f * 1 / (0.25f * lever * lever + 0.5f);
  EXPECT_NEAR(r.VelocityX, (0 + j * 0.5f) * 0.9f, 1e-6);
  EXPECT_NEAR(r.VelocityZ, 2 * 0.9f, 1e-6);
  EXPECT_EQ(RA::Force(r).x, 0);

  // Moving along the edge or back into the road never bounces.
  const float x = r.PositionX;
  Move(0, x, 12);
  Move(0, x - 1, 12);
  EXPECT_EQ(r.PositionX, x - 1);
  EXPECT_NEAR(r.VelocityZ, 2 * 0.9f, 1e-6);
}

TEST_F(Collisions, OuterWallOfACurveHoldsACornerEnteringTheNextBlock) {
  // Block 1 turns right: its left edge runs from (-5, 10) to (-3, 20), in from block 0's line.
  auto bend = Block(-5, 5, 10, 20);
  bend.Corner[2] = {7, 0, 20};
  bend.Corner[3] = {-3, 0, 20};
  bend.EdgeNormal[0] = {0.98058f, 0, -0.19612f};
  bend.EdgeNormal[1] = {-0.98058f, 0, 0.19612f};
  Set_Track({Block(-5, 5, 0, 10), bend});
  clsHumanPlayer& r = P(0);
  RA::WallGrip(r) = 0.8f;
  Place(0, -3.9f, 7);  // corner 1 at (-4.9, 9), just inside block 0's left wall
  Move(0, -3.9f, 9);   // to (-4.9, 11): inside block 0's line, outside block 1's edge
  EXPECT_EQ(RA::BlockOf(r, 1), 1);
  EXPECT_NEAR(RA::Corners(r)[1].x, -4.9f, 1e-5);
  EXPECT_NEAR(RA::Corners(r)[1].z, 10.5f, 1e-4);  // on block 1's left edge
  EXPECT_NEAR(r.PositionZ, 8.5f, 1e-4);
}

TEST_F(Collisions, PlayerWallGripIsDrawnWithThreeDecimals) {
  clsHumanPlayer& r = P(0);
  r.RacerKind = 1;
  modMain::Randomize(3);
  for (int i = 0; i < 50; ++i) {
    Place(0, -3.5f, 10);
    Move(0, -4.5f, 10);  // through the left edge
    const float grip = RA::WallGrip(r) * 1000;
    EXPECT_NEAR(grip, std::round(grip), 1e-3);
    EXPECT_GE(grip, 749.99f);
    EXPECT_LE(grip, 850.01f);
  }
}

TEST_F(Collisions, RacersBounceOnlyWhenCloseOverlappingAndClosing) {
  clsHumanPlayer &a = P(0), &b = P(1);
  auto run = [&](float bx, float bz, float avx, float by = 0) {
    a.VelocityX = avx;
    a.VelocityZ = 0;
    b.VelocityX = b.VelocityZ = 0;
    b.PositionY = by;
    Place(0, 0, 0);
    Place(1, bx, bz);
  };
  run(1.5f, 0.5f, 1);  // one corner of A inside B's box
  a.Check_Car_Collisions(0);
  const float nx = 1.5f / std::sqrt(1.5f * 1.5f + 0.25f), nz = 0.5f / std::sqrt(1.5f * 1.5f + 0.25f);
  const float delta = 0.75f * nx;
  EXPECT_NEAR(a.VelocityX, 1 - delta * nx, 1e-6);
  EXPECT_NEAR(a.VelocityZ, -delta * nz, 1e-6);
  EXPECT_NEAR(b.VelocityX, delta * nx, 1e-6);
  EXPECT_NEAR(b.VelocityZ, delta * nz, 1e-6);

  run(1.5f, 0.5f, -1);  // moving apart
  a.Check_Car_Collisions(0);
  EXPECT_EQ(a.VelocityX, -1);
  EXPECT_EQ(b.VelocityX, 0);

  run(1.5f, 0.5f, 1, 10);  // far above
  a.Check_Car_Collisions(0);
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
  clsHumanPlayer& r = P(0);
  Place(0, 0, 10);
  r.PositionY = 2;
  r.VelocityY = -2.0f;
  r.Get_Track_Height();
  EXPECT_FLOAT_EQ(r.PositionY, 3 + 1.9f);
  EXPECT_FLOAT_EQ(r.VelocityY, 1.1f);
  EXPECT_FLOAT_EQ(RA::Shadow(r)[2].y, 3 + 1.5f);

  r.VelocityY = -0.4f;
  r.PositionY = 0;
  r.Get_Track_Height();
  EXPECT_EQ(r.VelocityY, 0);

  r.PositionY = 9;  // above the road: gravity's job
  r.VelocityY = -0.7f;
  r.Get_Track_Height();
  EXPECT_EQ(r.PositionY, 9);
  EXPECT_EQ(r.VelocityY, -0.7f);

  Set_Track({Block(0, 0, 0, 0, 4)});  // a block shrunk to a point under the racer
  Place(0, 0, 0);
  r.Get_Track_Height();
  EXPECT_FLOAT_EQ(RA::Shadow(r)[0].y, 4 + 1.5f);
}

}  // namespace
