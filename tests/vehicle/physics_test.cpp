// Forces, integration, computer steering and the footprint.
#include <array>
#include <cmath>
#include <tuple>

#include "mathmesh/modMATH.h"
#include "racer_fixture.h"
#include "vehicle/players.h"

using namespace vehicle_test;

namespace {

struct Physics : ::testing::Test {
  clsHumanPlayer& r = Make_Players(1);
  void SetUp() override {
    RA::ThrustForce(r) = 1, RA::LinearDrag(r) = 3, RA::AngularDrag(r) = 2;
    r.RacerKind = 1;
    modMain::FrameTime = 10;
  }
};

TEST_F(Physics, ThrustBrakeAndDragSettleAtTheirBalanceAlongTheNose) {
  r.VelocityZ = 1;  // drag 1 * 3 / 3 = 1 against +z; the brake takes a fifth of the speed
  const struct {
    Bool16 thrust, brake;
    u8 finished;
    float z;
  } cases[] = {{kTrue, kTrue, 0, 1 - 1}, {kFalse, kTrue, 0, -1.0f / 5 - 1}, {1, kFalse, 0, -1}, {kTrue, kFalse, 1, -1}};
  for (const auto& c : cases) {  // only -1 counts as set; after the finish only drag is left
    r.Thrust = c.thrust, r.Brake = c.brake, r.cFinishedRace = c.finished;
    r.ComputeForces();
    EXPECT_FLOAT_EQ(RA::Force(r).z, c.z) << c.thrust << " " << c.brake << " " << int(c.finished);
  }
  // Full thrust: s = 2 T / (LD - T) = 1 for T = 1, LD = 3; a quarter turn faces -x.
  r.cFinishedRace = 0;
  r.cOrientation = static_cast<float>(modMATH::kHalfPi);
  for (int i = 0; i < 2000; ++i) r.ComputeForces(), r.ApplyForces();
  EXPECT_NEAR(std::hypot(r.VelocityX + 1, r.VelocityZ), 0, 1e-3);
}

TEST_F(Physics, SteeringNeedsSpeedAndTurnDampingIsLopsided) {
  r.SteerLeft = kTrue;
  r.ComputeForces();
  EXPECT_EQ(RA::Torque(r), 0.0f);
  r.VelocityX = 3, r.VelocityZ = 4;
  r.SteerRight = kTrue;  // left wins
  r.ComputeForces();
  EXPECT_FLOAT_EQ(RA::Torque(r), 0.1f);
  r.SteerLeft = r.SteerRight = kFalse;
  for (const auto& [spin, torque] : {std::pair{-0.5f, 0.5556f * 2}, {0.5f, -0.2632f * 2}}) {
    RA::AngularVelocity(r) = spin;
    r.ComputeForces();
    EXPECT_NEAR(RA::Torque(r), torque, 1e-3) << spin;
  }
  RA::AngularVelocity(r) = -1.4f;  // the damping's pole: skipped, never infinite
  r.ComputeForces();
  EXPECT_TRUE(std::isfinite(RA::Torque(r)));
}

TEST_F(Physics, IntegrationWrapsHeadingKeepsTopSpeedAndNeedsTime) {
  r.cOrientation = 3.1f;
  RA::AngularVelocity(r) = 0.1f;
  r.VelocityX = 3, r.VelocityZ = 4;
  r.ApplyForces();
  EXPECT_NEAR(r.cOrientation, 3.2 - 6.28318, 1e-5);
  EXPECT_EQ(std::tuple(r.PositionX, r.cVelocityMag, int(r.cTopSpeed)), std::tuple(3.0f, 25.0f, 1500));
  EXPECT_FLOAT_EQ(r.VelocityY, -0.03f);
  r.cOrientation = -3.1f;
  RA::AngularVelocity(r) = -0.1f;
  r.VelocityX = 1, r.VelocityZ = 0;
  r.ApplyForces();
  EXPECT_NEAR(r.cOrientation, -3.2 + 6.28318, 1e-5);
  EXPECT_EQ(r.cTopSpeed, 1500);  // a slower frame keeps the record

  modMain::FrameTime = 0;  // a zero-length frame moves nothing, whatever the forces
  RA::Force(r) = {5, 0, 5};
  RA::Torque(r) = 1;
  const auto state = [this] {
    return std::array{r.PositionX, r.PositionY, r.PositionZ, r.cOrientation,
                      r.VelocityX, r.VelocityY, r.VelocityZ, RA::AngularVelocity(r)};
  };
  const auto before = state();
  r.ApplyForces();
  EXPECT_EQ(state(), before);
}

TEST_F(Physics, ComputerTurnsTheShortWayRoundAndWeaves) {
  // Block whose forward normal gives a target heading of -3.0 after the wrap.
  auto block = Block(-5, 5, 0, 10);
  const float tau = static_cast<float>(-3.0 + 2 * modMATH::kPi);
  block.EdgeNormal[2] = {-std::sin(tau), 0, std::cos(tau)};
  Set_Track({block});
  modMain::Randomize(7);
  auto left_share = [&](float heading) {
    r.cOrientation = heading;
    int left = 0;
    for (int i = 0; i < 4000; ++i) {
      r.Thrust = kFalse;
      RA::Steer(r);
      // One way or the other, always at full thrust.
      EXPECT_EQ(std::tuple(r.SteerLeft != r.SteerRight, r.Thrust, r.Brake), std::tuple(true, kTrue, kFalse));
      left += r.SteerLeft == kTrue;
    }
    return left / 4000.0;
  };
  EXPECT_NEAR(left_share(3.0f), 0.89, 0.02);          // gap 6.0 > pi: left, unless forced right
  EXPECT_NEAR(left_share(-2.5f), 0.89 * 0.11, 0.02);  // target to the right: only weaving goes left
}

TEST_F(Physics, FootprintRacerBoxFlameAndShadow) {
  const auto expect_corners = [this](const float(&want)[4][2]) {
    for (int i = 0; i < 4; ++i)
      EXPECT_NEAR(std::hypot(RA::Corners(r)[i].x - want[i][0], RA::Corners(r)[i].z - want[i][1]), 0, 1e-5) << i;
  };
  RA::Corners(r)[2].y = 7;
  r.PositionY = 4;
  r.Calculate_Vertices(0);
  expect_corners({{1, 2}, {-1, 2}, {1, -2}, {-1, -2}});
  EXPECT_EQ(RA::Corners(r)[2].y, 7);  // the height is the hover step's
  const auto& box = modGameLoop::RacerBox(0);
  EXPECT_EQ((std::array{box.MinZ, box.MinX, box.MaxZ, box.MaxX}), (std::array{-2.0f, -1.0f, 2.0f, 1.0f}));

  for (const auto& [speed, alpha] : {std::pair{0.0f, 0u}, {2.5f, 128u}, {9.0f, 255u}}) {
    r.cVelocityMag = speed;
    r.DrawThrust();  // no device here: the quad is still laid out
    EXPECT_EQ(RA::Flame(r)[2].color >> 24, alpha) << speed;
  }
  EXPECT_EQ(std::pair(RA::Flame(r)[1].x, RA::Flame(r)[2].z), std::pair(RA::Corners(r)[3].x, RA::Corners(r)[2].z));
  EXPECT_NEAR(std::hypot(RA::Flame(r)[1].y - 5.3f, RA::Flame(r)[2].y - 3.5f), 0, 1e-5);
  r.DrawShadow();
  const LitVertex* shadow = RA::Shadow(r);
  const Vector3* corner = RA::Corners(r);
  EXPECT_EQ((std::array{shadow[0].x, shadow[1].x, shadow[3].x}), (std::array{corner[1].x, corner[0].x, corner[2].x}));

  r.cOrientation = 1.570795f;
  r.Calculate_Vertices(5);                               // no RacerBox record 5: the corners still move
  expect_corners({{-2, 1}, {-2, -1}, {2, 1}, {2, -1}});  // the nose points to -x
  EXPECT_EQ(std::pair(RA::PrevCorners(r)[0].x, box.MaxX), std::pair(1.0f, 1.0f));
}

}  // namespace
