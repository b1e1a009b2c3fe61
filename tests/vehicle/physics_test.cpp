// Forces, integration, computer steering and the footprint.
#include <cmath>

#include "mathmesh/modMATH.h"
#include "racer_fixture.h"

using namespace vehicle_test;

namespace {

struct Physics : ::testing::Test {
  void SetUp() override {
    Make_Players(1);
    RA::ThrustForce(P(0)) = 1.0f;
    RA::LinearDrag(P(0)) = 3.0f;
    RA::AngularDrag(P(0)) = 2.0f;
    P(0).RacerKind = 1;
    modMain::FrameTime = 10;
  }
};

TEST_F(Physics, ThrustBeatsBrakeAndCoastingAfterTheFinishKeepsOnlyDrag) {
  clsHumanPlayer& r = P(0);
  r.VelocityZ = 1;  // drag 1 * 3 / 3 = 1 against +z
  r.Thrust = kTrue;
  r.Brake = kTrue;
  r.ComputeForces();
  EXPECT_FLOAT_EQ(RA::Force(r).z, 1.0f - 1.0f);
  r.Thrust = kFalse;
  r.ComputeForces();
  EXPECT_FLOAT_EQ(RA::Force(r).z, -1.0f / 5 - 1.0f);
  r.Thrust = 1;  // only -1 counts as set
  r.Brake = kFalse;
  r.ComputeForces();
  EXPECT_FLOAT_EQ(RA::Force(r).z, -1.0f);
  r.Thrust = kTrue;
  r.cFinishedRace = 1;
  r.ComputeForces();
  EXPECT_FLOAT_EQ(RA::Force(r).z, -1.0f);
}

TEST_F(Physics, SteeringNeedsSpeedAndTurnDampingIsLopsided) {
  clsHumanPlayer& r = P(0);
  r.SteerLeft = kTrue;
  r.ComputeForces();
  EXPECT_EQ(RA::Torque(r), 0.0f);
  r.VelocityX = 3;
  r.VelocityZ = 4;
  r.SteerRight = kTrue;  // left wins
  r.ComputeForces();
  EXPECT_FLOAT_EQ(RA::Torque(r), 0.1f);
  r.SteerLeft = r.SteerRight = kFalse;
  RA::AngularVelocity(r) = -0.5f;
  r.ComputeForces();
  EXPECT_NEAR(RA::Torque(r), 0.5556f * 2, 1e-3);
  RA::AngularVelocity(r) = 0.5f;
  r.ComputeForces();
  EXPECT_NEAR(RA::Torque(r), -0.2632f * 2, 1e-3);
  RA::AngularVelocity(r) = -1.4f;  // the damping's pole: skipped, never infinite
  r.ComputeForces();
  EXPECT_TRUE(std::isfinite(RA::Torque(r)));
}

TEST_F(Physics, IntegrationWrapsHeadingAndKeepsTopSpeed) {
  clsHumanPlayer& r = P(0);
  r.cOrientation = 3.1f;
  RA::AngularVelocity(r) = 0.1f;
  r.VelocityX = 3;
  r.VelocityZ = 4;
  r.ApplyForces();
  EXPECT_NEAR(r.cOrientation, 3.2 - 6.28318, 1e-5);
  EXPECT_FLOAT_EQ(r.PositionX, 3);
  EXPECT_FLOAT_EQ(r.cVelocityMag, 25);
  EXPECT_EQ(r.cTopSpeed, 1500);
  EXPECT_FLOAT_EQ(r.VelocityY, -0.03f);
  r.cOrientation = -3.1f;
  RA::AngularVelocity(r) = -0.1f;
  r.VelocityX = 1;
  r.VelocityZ = 0;
  r.ApplyForces();
  EXPECT_NEAR(r.cOrientation, -3.2 + 6.28318, 1e-5);
  EXPECT_EQ(r.cTopSpeed, 1500);  // a slower frame keeps the record

  modMain::FrameTime = 0;
  RA::Force(r) = {5, 0, 5};
  RA::Torque(r) = 1;
  const clsHumanPlayer& c = r;
  const float before[] = {c.PositionX, c.PositionY, c.PositionZ, c.cOrientation, c.VelocityX, c.VelocityY, c.VelocityZ};
  r.ApplyForces();
  const float after[] = {c.PositionX, c.PositionY, c.PositionZ, c.cOrientation, c.VelocityX, c.VelocityY, c.VelocityZ};
  for (int i = 0; i < 7; ++i) EXPECT_EQ(before[i], after[i]) << i;
  EXPECT_EQ(RA::AngularVelocity(r), -0.1f);
}

TEST_F(Physics, FullThrustSettlesAtTheDragBalanceAlongTheNose) {
  // s = 2 T / (LD - T) = 1 for T = 1, LD = 3; heading a quarter turn faces -x.
  clsHumanPlayer& r = P(0);
  r.cOrientation = static_cast<float>(modMATH::kHalfPi);
  r.Thrust = kTrue;
  for (int i = 0; i < 2000; ++i) {
    r.ComputeForces();
    r.ApplyForces();
  }
  EXPECT_NEAR(r.VelocityX, -1.0f, 1e-3);
  EXPECT_NEAR(r.VelocityZ, 0.0f, 1e-3);
}

TEST_F(Physics, ComputerTurnsTheShortWayRoundAndWeaves) {
  // Block whose forward normal gives a target heading of -3.0 after the wrap.
  auto block = Block(-5, 5, 0, 10);
  const float tau = static_cast<float>(-3.0 + 2 * modMATH::kPi);
  block.EdgeNormal[2] = {-std::sin(tau), 0, std::cos(tau)};
  Set_Track({block});
  clsHumanPlayer& r = P(0);
  modMain::Randomize(7);
  auto left_share = [&](float heading) {
    r.cOrientation = heading;
    int left = 0;
    for (int i = 0; i < 4000; ++i) {
      r.Thrust = kFalse;
      RA::Steer(r);
      EXPECT_NE(r.SteerLeft, r.SteerRight);
      EXPECT_EQ(r.Thrust, kTrue);
      EXPECT_EQ(r.Brake, kFalse);
      left += r.SteerLeft == kTrue;
    }
    return left / 4000.0;
  };
  EXPECT_NEAR(left_share(3.0f), 0.89, 0.02);         // gap 6.0 > pi: left, unless forced right
  EXPECT_NEAR(left_share(-2.5f), 0.89 * 0.11, 0.02);  // target to the right: only weaving goes left
}

TEST_F(Physics, FootprintCornersAndRacerBox) {
  clsHumanPlayer& r = P(0);
  RA::Corners(r)[2].y = 7;
  r.Calculate_Vertices(0);
  const float want[4][2] = {{1, 2}, {-1, 2}, {1, -2}, {-1, -2}};
  for (int i = 0; i < 4; ++i) {
    EXPECT_NEAR(RA::Corners(r)[i].x, want[i][0], 1e-6);
    EXPECT_NEAR(RA::Corners(r)[i].z, want[i][1], 1e-6);
  }
  EXPECT_EQ(RA::Corners(r)[2].y, 7);
  const auto& box = modGameLoop::RacerBox(0);
  EXPECT_EQ(box.MinZ, -2);
  EXPECT_EQ(box.MinX, -1);
  EXPECT_EQ(box.MaxZ, 2);
  EXPECT_EQ(box.MaxX, 1);

  r.cOrientation = 1.570795f;
  r.Calculate_Vertices(5);  // no RacerBox record 5: the corners still move
  const float turned[4][2] = {{-2, 1}, {-2, -1}, {2, 1}, {2, -1}};  // the nose points to -x
  for (int i = 0; i < 4; ++i) {
    EXPECT_NEAR(RA::Corners(r)[i].x, turned[i][0], 1e-5);
    EXPECT_NEAR(RA::Corners(r)[i].z, turned[i][1], 1e-5);
  }
  EXPECT_NEAR(RA::PrevCorners(r)[0].x, 1, 1e-6);
  EXPECT_EQ(modGameLoop::RacerBox(0).MaxX, 1);
}

TEST_F(Physics, FlameFadesWithSpeedAndShadowFollowsTheCorners) {
  clsHumanPlayer& r = P(0);
  r.PositionY = 4;
  r.Calculate_Vertices(0);
  const int want_alpha[] = {0, 128, 255};
  const float mags[] = {0, 2.5f, 9};
  for (int k = 0; k < 3; ++k) {
    r.cVelocityMag = mags[k];
    r.DrawThrust();  // no device here: the quad is still laid out
    EXPECT_EQ(RA::Flame(r)[2].color >> 24, static_cast<uint32_t>(want_alpha[k]));
  }
  EXPECT_EQ(RA::Flame(r)[1].x, RA::Corners(r)[3].x);
  EXPECT_FLOAT_EQ(RA::Flame(r)[1].y, 4 + 1.3f);
  EXPECT_FLOAT_EQ(RA::Flame(r)[2].y, 4 - 0.5f);
  EXPECT_EQ(RA::Flame(r)[2].z, RA::Corners(r)[2].z);
  r.DrawShadow();
  EXPECT_EQ(RA::Shadow(r)[0].x, RA::Corners(r)[1].x);
  EXPECT_EQ(RA::Shadow(r)[1].x, RA::Corners(r)[0].x);
  EXPECT_EQ(RA::Shadow(r)[3].x, RA::Corners(r)[2].x);
}

}  // namespace
