// A racer's step (forces, steering, footprint, collisions, hover, laps, wrong way, position), ships and the grid.

#include "mathmesh/modMATH.h"
#include "racer_fixture.h"
#include "support/test_env.h"
#include "vehicle/ships_dat.h"

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
  // Thrust, brake, finished, force along z: only -1 counts as set; after the finish only drag is left.
  const std::tuple<Bool16, Bool16, u8, float> cases[] = {
      {kTrue, kTrue, 0, 1 - 1}, {kFalse, kTrue, 0, -1.0f / 5 - 1}, {1, kFalse, 0, -1}, {kTrue, kFalse, 1, -1}};
  for (const auto& [thrust, brake, finished, z] : cases) {
    r.Thrust = thrust, r.Brake = brake, r.cFinishedRace = finished;
    r.ComputeForces();
    EXPECT_FLOAT_EQ(RA::Force(r).z, z) << thrust << " " << brake << " " << int(finished);
  }
  // Full thrust: s = 2 T / (LD - T) = 1 for T = 1, LD = 3; a quarter turn faces -x.
  r.cFinishedRace = 0;
  r.cOrientation = static_cast<float>(modMATH::kHalfPi);
  for (int i = 0; i < 2000; ++i) r.ComputeForces(), r.ApplyForces();
  EXPECT_NEAR(std::hypot(r.VelocityX + 1, r.VelocityZ), 0, 1e-3);
}

TEST_F(Physics, SteeringNeedsSpeedTurnDampingIsLopsidedAndTheComputerTurnsTheShortWayRoundAndWeaves) {
  r.SteerLeft = kTrue;
  r.ComputeForces();
  EXPECT_EQ(RA::Torque(r), 0.0f);
  r.VelocityX = 3, r.VelocityZ = 4;
  r.SteerRight = kTrue;  // left wins
  r.ComputeForces();
  EXPECT_FLOAT_EQ(RA::Torque(r), 0.1f);
  r.SteerLeft = r.SteerRight = kFalse;
  // -1.4: the damping's pole, where it is skipped rather than made infinite.
  for (const auto& [spin, torque] : {std::pair{-0.5f, 0.5556f * 2}, {0.5f, -0.2632f * 2}, {-1.4f, 0.0f}}) {
    RA::AngularVelocity(r) = spin;
    r.ComputeForces();
    EXPECT_NEAR(RA::Torque(r), torque, 1e-3) << spin;
  }

  // Block whose forward normal gives a target heading of -3.0 after the wrap.
  auto block = Block(-5, 5, 0, 10);
  const float tau = static_cast<float>(-3.0 + 2 * modMATH::kPi);
  block.EdgeNormal[2] = {-std::sin(tau), 0, std::cos(tau)};
  Fill(modTracks::TrackBlock, {block});
  modMain::Randomize(7);
  auto left_share = [&](float heading) {
    r.cOrientation = heading;
    int left = 0;
    for (int i = 0; i < 4000; ++i) {
      r.Thrust = kFalse;
      RA::Steer(r);
      EXPECT_EQ(std::tuple(r.SteerLeft != r.SteerRight, r.Thrust, r.Brake), std::tuple(true, kTrue, kFalse));
      left += r.SteerLeft == kTrue;
    }
    return left / 4000.0;
  };
  EXPECT_NEAR(left_share(3.0f), 0.89, 0.02);          // gap 6.0 > pi: left, unless forced right
  EXPECT_NEAR(left_share(-2.5f), 0.89 * 0.11, 0.02);  // target to the right: only weaving goes left
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

struct Collisions : ::testing::Test {
  clsHumanPlayer& r = Make_Players(2);
  void SetUp() override { Fill(modTracks::TrackBlock, {Block(-5, 5, 0, 20)}); }
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
    EXPECT_PRED3(testenv::Between, grip, 749.99f, 850.01f);
  }
}

TEST_F(Collisions, SideWallsAreTestedAgainstTheBlockACornerStartsTheFrameOn) {
  // Block 1 turns right: its left edge runs from (-5, 10) to (-3, 20), in from block 0's line.
  auto bend = Block(-5, 5, 10, 20);
  bend.Corner[2] = {7, 0, 20}, bend.Corner[3] = {-3, 0, 20};
  bend.EdgeNormal[0] = {0.98058f, 0, -0.19612f}, bend.EdgeNormal[1] = {-0.98058f, 0, 0.19612f};
  Fill(modTracks::TrackBlock, {Block(-5, 5, 0, 10), bend});
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
  Fill(modTracks::TrackBlock, {Block(-5, 5, 0, 20, 3)});
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

  Fill(modTracks::TrackBlock, {Block(0, 0, 0, 0, 4)});  // a block shrunk to a point
  Place(0, 0, 0);
  r.Get_Track_Height();
  EXPECT_FLOAT_EQ(RA::Shadow(r)[0].y, 4 + 1.5f);
}

// Blocks 0 and 1 run on from the line at z 0; the last, 2, lies behind it: its front edge is the line.
struct Progress : ::testing::Test {
  clsHumanPlayer& r = Make_Players(3);
  void SetUp() override {
    Fill(modTracks::TrackBlock, {Block(-5, 5, 0, 10), Block(-5, 5, 10, 20), Block(-5, 5, -10, 0)});
    RA::WallGrip(r) = 0.8f;
  }
  void Cross_Line(i32 clock) {
    RA::Set_Blocks(r, 2);
    Place(0, 0, -4);
    modMain::GameClock = clock;
    Move(0, 0, -1);
  }
};

TEST_F(Progress, LapTimesAndRaceTimeFromTheClockAtEachCrossingAndPositionByLapsThenBlockThenDistance) {
  const auto state = [this] {
    return std::array<int, 4>{r.cOnLap, r.cFinishedRace, r.cRaceTime, r.cCurrentTrackBlock()};
  };
  // Laps after the finish change no time.
  for (const auto& [clock, lap, done, time] :
       {std::array{300, 2, 0, 0}, {650, 3, 0, 0}, {990, 4, 1, 990}, {1400, 5, 1, 990}}) {
    Cross_Line(clock);
    EXPECT_EQ(state(), (std::array{lap, done, time, 0})) << clock;
  }
  EXPECT_EQ((std::array{r.cLapTime(1), r.cLapTime(2), r.cLapTime(3)}), (std::array<i32, 3>{300, 350, 340}));

  clsHumanPlayer &a = r, &b = P(1), &c = P(2);
  auto put = [](clsHumanPlayer& q, i16 lap, i16 block, float x, float z) {
    q.cOnLap = lap, q.PositionX = x, q.PositionZ = z;
    RA::Set_Blocks(q, block);
  };
  auto position = [](clsHumanPlayer& q) {
    q.Get_Race_Position();
    return q.cRace_Position;
  };
  put(a, 1, 1, 0, 12);
  put(b, 2, 0, 0, 5);
  put(c, 1, 0, 0, 5);
  EXPECT_EQ(position(a), 2);  // behind the lap leader, ahead of a lower block
  b.cCheatMinusLaps = -1;     // lap 2 that owes a reverse crossing counts as lap 1
  EXPECT_EQ(position(a), 1);
  put(c, 1, 1, 0, 15);  // same block, nearer its front edge (z 20)
  EXPECT_EQ(position(a), 2);
  put(a, 1, 1, 1, 15);  // same distance from the midpoint: a tie counts for neither
  put(c, 1, 1, -1, 15);
  EXPECT_EQ(std::pair(position(a), position(c)), std::pair(i16(1), i16(1)));
  modMain::NumOpponents = 0;
  b.cCheatMinusLaps = 0;
  EXPECT_EQ(position(a), 1);
}

TEST_F(Progress, ReversingOverTheLineAndBackCountsNoLapAndASteepStepStopsIt) {
  const auto state = [this] { return std::array<int, 3>{r.cCheatMinusLaps, r.cWRONGWAY, r.cCurrentTrackBlock()}; };
  Place(0, 0, 3);
  Move(0, 0, -1.5f);  // only the rear corners are over the line
  EXPECT_EQ(state(), (std::array{0, int{kTrue}, 0}));
  Move(0, 0, -3);
  EXPECT_EQ(state(), (std::array{-1, int{kTrue}, 2}));
  Move(0, 0, 3);
  EXPECT_EQ(state(), (std::array{0, int{kFalse}, 0}));
  EXPECT_EQ(std::pair(int(r.cOnLap), int(r.cLapTime(1))), std::pair(1, 0));

  auto& behind = modTracks::TrackBlock(2);
  behind.Corner[0].y = behind.Corner[1].y = 8.5f;  // a steep step up behind the line throws the racer forward
  Place(0, 0, 2.5f);
  Move(0, 0, 1);  // the rear corners go from z 0.5 to -1, into block 2
  EXPECT_EQ(std::pair(RA::Corners(r)[2].z, r.PositionZ), std::pair(0.0f, 2.0f));
  EXPECT_GT(r.VelocityZ, 0);
  EXPECT_EQ(r.cWRONGWAY, kTrue);
}

// A flat two-triangle mesh spanning the box +-hw, +-0.5, +-2.
std::string Box_Mesh(int hw) {
  const std::string w = std::to_string(hw);
  return "xof 0303txt 0032\nMesh { 4; -" + w + ";-0.5;-2;, " + w + ";-0.5;-2;, " + w + ";0.5;2;, -" + w +
         ";0.5;2;; 2; 3;0,1,2;, 3;0,2,3;; }\n";
}

// Ship k: base name "S<k>", half-width k + 1, mass 10 (k + 1), inertia 5.
std::string Catalogue(int ships, const std::string& first_line) {
  std::string text = first_line + "\r\n";
  for (int k = 0; k < ships; ++k) {
    text += "Ship " + std::to_string(k) + "\r\nS" + std::to_string(k) + "\r\n" + std::to_string(10 * (k + 1)) +
            "\r\n5\r\n1.5\r\n2\r\n3\r\n";
  }
  return text;
}

struct Ships : ::testing::Test {
  testenv::ScratchAppDir dir;
  clsHumanPlayer& r = Make_Players(1);
  void SetUp() override {
    for (int k = 0; k < 3; ++k) Write("Objects/S" + std::to_string(k) + ".x", Box_Mesh(k + 1));
    Write("Data/Ships.Dat", Catalogue(3, "3 ships, more text"));
    Fill(modTracks::TrackBlock, {Block(-4, 6, 0, 10), Block(-4, 6, 10, 20)});
    modMain::Difficulty = 1;
  }
  void Write(const std::string& rel, const std::string& bytes) { testenv::Write_File(dir.path() + "/" + rel, bytes); }
};

TEST_F(Ships, GridSlotsWallGripAFreshRaceRecordAndThePlayersShipAndSkinRequestsWrapping) {
  // x, z and block of each slot; the back rows wrap round to the last block.
  const float want[7][3] = {{2.6f, 5.4f, 0}, {-0.6f, 5, 0},     {2.6f, 4.6f, 0}, {-0.6f, 4.2f, 0},
                            {2.6f, 3.8f, 0}, {-0.6f, 19.2f, 1}, {2.6f, 18, 1}};
  modMain::Randomize(11);
  for (i16 slot = 0; slot < 7; ++slot) {
    SCOPED_TRACE(slot);
    r.cOnLap = 4, r.cFinishedRace = 1, r.cLapTime(2) = 77, r.cRaceTime = 900;
    r.cCurrentlySelectedShip = 1, r.cCurrentlySelectedSkin = 9;
    ASSERT_TRUE(r.Reset_Car_Attributes(slot));
    EXPECT_NEAR(std::hypot(r.PositionX - want[slot][0], r.PositionZ - want[slot][1]), 0, 1e-5);
    EXPECT_EQ(r.cCurrentTrackBlock(), want[slot][2]);
    EXPECT_FLOAT_EQ(RA::WallGrip(r), slot / 40.0f + 0.8f);
    // A fresh race record; the computer's random ship pick is not stored.
    EXPECT_EQ(
        std::tuple(r.cOrientation, r.cOnLap, r.cFinishedRace, r.cLapTime(2), r.cRaceTime, r.cCurrentlySelectedShip),
        std::tuple(0.0f, 1, 0, 0, 0, 1));
    EXPECT_PRED3(testenv::Between, r.cCurrentlySelectedSkin, 1, 3);
  }
  r.PositionX = 42;
  r.Reset_Car_Attributes(7);  // no such slot
  EXPECT_EQ(r.PositionX, 42);

  // Grip by difficulty; one out of range is taken as 1.
  for (const auto& [level, base] : {std::pair<u8, float>{0, 0.76f}, {1, 0.8f}, {2, 0.84f}, {3, 0.88f}, {7, 0.8f}}) {
    modMain::Difficulty = level;
    r.Reset_Car_Attributes(4);
    EXPECT_FLOAT_EQ(RA::WallGrip(r), 4 / 40.0f + base) << int(level);
    EXPECT_EQ(modMain::Difficulty, level > 3 ? 1 : level);
  }

  r.RacerKind = 1;
  for (const auto& [ship, skin, want_ship, want_skin] : {std::array<i16, 4>{3, 4, 0, 1}, {-1, 0, 2, 3}, {1, 2, 1, 2}}) {
    r.cCurrentlySelectedShip = ship, r.cCurrentlySelectedSkin = skin;
    ASSERT_TRUE(r.Reset_Car_Attributes(0));
    EXPECT_EQ(std::pair(r.cCurrentlySelectedShip, r.cCurrentlySelectedSkin), std::pair(want_ship, want_skin));
    EXPECT_FLOAT_EQ(RA::HalfWidth(r), want_ship + 1.0f);
    EXPECT_FLOAT_EQ(RA::InvMass(r), 1.0f / (10 * (want_ship + 1)));
  }
  EXPECT_EQ(std::tuple(RA::HalfLength(r), r.HalfHeight, RA::InvInertia(r)), std::tuple(2.0f, 0.5f, 0.2f));
  EXPECT_FLOAT_EQ(RA::WallGrip(r), 0.8f);
  EXPECT_FLOAT_EQ(r.PositionY, 0 + 0.5f + 1.9f);  // the mesh's lowest point 1.9 over the road
}

// Catalogue 3 with ship 1's mass blank, ship 2's inertia not a number, and a count of 4.
std::string Damaged_Catalogue() {
  std::string text = Catalogue(3, "4 ships");
  text.replace(text.find("\r\n20\r\n"), 6, "\r\n\r\n");
  text.replace(text.rfind("\r\n5\r\n"), 5, "\r\nheavy\r\n");
  return text;
}

TEST_F(Ships, TheCatalogueReadsLineByLineAndShipsWithoutAUsableMassOrInertiaRaceWithoutFaultsAndAreLogged) {
  const shipsdat::Catalogue cat = shipsdat::Parse(Damaged_Catalogue());
  ASSERT_EQ(std::tuple(cat.Count, cat.Ships.size()), std::tuple(4, 4u));
  EXPECT_EQ(std::tuple(cat.Ships[1].BaseName, cat.Ships[1].Mass, cat.Ships[1].Inertia), std::tuple("S1", 0.0, 5.0));
  EXPECT_EQ(std::tuple(cat.Ships[2].Mass, cat.Ships[2].Inertia, cat.Ships[2].AngularDrag), std::tuple(30.0, 0.0, 3.0));
  // The fourth ship the count promises is all empty lines.
  EXPECT_EQ(std::tuple(cat.Ships[3].DisplayName, cat.Ships[3].BaseName, cat.Ships[3].Thrust), std::tuple("", "", 0.0));

  // Only three characters count; bare line ends do too; a number no float holds reads 0.
  EXPECT_EQ(shipsdat::Parse(Catalogue(123, "1234")).Count, 123);
  std::string lf = Catalogue(2, "2");
  std::erase(lf, '\r');
  lf.replace(lf.find("1.5"), 3, "1" + std::string(39, '0'));
  const shipsdat::Catalogue two = shipsdat::Parse(lf);
  EXPECT_EQ(std::tuple(two.Ships[1].BaseName, two.Ships[1].AngularDrag, two.Ships[0].Thrust),
            std::tuple("S1", 3.0, 0.0));

  // No count, or none at all: no ships, and every request reads the blank record.
  for (const char* text : {"ships\r\nShip 0\r\nS0\r\n", "", "-5"}) {
    const shipsdat::Catalogue none = shipsdat::Parse(text);
    EXPECT_LT(none.Count, 1) << text;
    EXPECT_TRUE(none.Ships.empty()) << text;
    i16 ship = 2, skin = 1;
    shipsdat::Resolve_Request(none.Count, 0, 0, ship, skin);
    EXPECT_EQ(none.Ship(ship).BaseName, "") << text;
  }
  // Reciprocals the racer can hold: none for 0 or an overflow.
  EXPECT_EQ(std::tuple(shipsdat::Reciprocal(0), shipsdat::Reciprocal(1e-300), shipsdat::Reciprocal(-4)),
            std::tuple(0.0f, 0.0f, -0.25f));

  Write("Data/Ships.Dat", Damaged_Catalogue());
  r.RacerKind = 1;
  modMain::FrameTime = 50;
  // Ship; loads (mesh and catalogue found); the log line it writes; moves under thrust; turns under steering.
  const std::tuple<i16, bool, const char*, bool, bool> cases[] = {
      {0, true, "", true, true},
      {1, true, "ship 1 (Ship 1) has no usable mass; it will not move", false, true},
      {2, true, "ship 2 (Ship 2) has no usable moment of inertia; it will not turn", true, false},
      {3, false, "ship 3 () has no usable mass", false, false},  // beyond the file: no files, no figures
      {-5, false, "Data\\Ships.Dat is missing", false, false},
  };
  for (const auto& [ship, loads, line, moves, turns] : cases) {
    SCOPED_TRACE(ship);
    modMain::Create_Log();
    if (ship < 0) std::remove((dir.path() + "/Data/Ships.Dat").c_str());
    r.cCurrentlySelectedShip = ship;
    EXPECT_EQ(r.Reset_Car_Attributes(0), loads);
    const std::string log = testenv::Read_File(modMain::Log_Path());
    EXPECT_NE(log.find(line), std::string::npos) << log;
    r.Thrust = r.SteerLeft = kTrue;
    r.VelocityX = 0.5f;  // a little speed, so steering has something to turn
    const float heading = r.cOrientation;
    for (int i = 0; i < 20; ++i) {
      r.ComputeForces();
      r.Check_Wall_Collisions();
      r.ApplyForces();
      r.Calculate_Vertices(0);
      r.Get_Track_Height();
    }
    for (const float v : {r.PositionX, r.PositionY, r.PositionZ, r.VelocityX, r.VelocityZ, r.cOrientation})
      EXPECT_TRUE(std::isfinite(v)) << v;
    EXPECT_EQ(r.VelocityZ != 0, moves) << "thrust";
    EXPECT_EQ(r.cOrientation != heading, turns) << "steering";
  }
}

}  // namespace
