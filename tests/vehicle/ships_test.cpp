// Ship catalogue, ship loading and the starting grid.
#include <cmath>
#include <string>

#include "core/log.h"
#include "core/settings.h"
#include "racer_fixture.h"
#include "support/test_env.h"
#include "vehicle/ships_dat.h"

using namespace vehicle_test;

namespace {

// A flat two-triangle mesh spanning the box +-hw, +-hh, +-hl.
std::string Box_Mesh(float hw, float hh, float hl) {
  auto v = [](float x, float y, float z) {
    return std::to_string(x) + ";" + std::to_string(y) + ";" + std::to_string(z) + ";";
  };
  return "xof 0303txt 0032\nMesh {\n 4;\n " + v(-hw, -hh, -hl) + ",\n " + v(hw, -hh, -hl) + ",\n " +
         v(hw, hh, hl) + ",\n " + v(-hw, hh, hl) + ";\n 2;\n 3;0,1,2;,\n 3;0,2,3;;\n}\n";
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
  void SetUp() override {
    for (int k = 0; k < 3; ++k) Write("Objects/S" + std::to_string(k) + ".x", Box_Mesh(k + 1.0f, 0.5f, 2));
    Write("Data/Ships.Dat", Catalogue(3, "3 ships, more text"));
    // Block 0: x -4..6, z 0..10; block 1 continues to z 20.
    Set_Track({Block(-4, 6, 0, 10), Block(-4, 6, 10, 20)});
    Make_Players(1);
    modMain::Difficulty = 1;
  }
  void Write(const std::string& rel, const std::string& bytes) { testenv::Write_File(dir.path() + "/" + rel, bytes); }
};

TEST_F(Ships, PlayerShipAndSkinRequestsWrapAndLoadTheirNumbers) {
  clsHumanPlayer& r = P(0);
  r.RacerKind = 1;
  struct Case {
    i16 ship, skin, want_ship, want_skin;
  };
  for (const Case c : {Case{3, 4, 0, 1}, Case{-1, 0, 2, 3}, Case{1, 2, 1, 2}}) {
    r.cCurrentlySelectedShip = c.ship;
    r.cCurrentlySelectedSkin = c.skin;
    ASSERT_TRUE(r.Reset_Car_Attributes(0));
    EXPECT_EQ(r.cCurrentlySelectedShip, c.want_ship);
    EXPECT_EQ(r.cCurrentlySelectedSkin, c.want_skin);
    EXPECT_FLOAT_EQ(RA::HalfWidth(r), c.want_ship + 1.0f);
    EXPECT_FLOAT_EQ(RA::InvMass(r), 1.0f / (10 * (c.want_ship + 1)));
  }
  EXPECT_FLOAT_EQ(RA::HalfLength(r), 2);
  EXPECT_FLOAT_EQ(r.HalfHeight, 0.5f);
  EXPECT_FLOAT_EQ(RA::InvInertia(r), 0.2f);
  EXPECT_FLOAT_EQ(RA::WallGrip(r), 0.8f);
  EXPECT_FLOAT_EQ(r.PositionY, 0 + 0.5f + 1.9f);  // the mesh's lowest point 1.9 over the road
}

TEST_F(Ships, GridSlotsWallGripAndAFreshRaceRecord) {
  clsHumanPlayer& r = P(0);
  const float want[7][3] = {{2.6f, 5.4f, 0}, {-0.6f, 5, 0},    {2.6f, 4.6f, 0},  {-0.6f, 4.2f, 0},
                            {2.6f, 3.8f, 0}, {-0.6f, 19.2f, 1}, {2.6f, 18, 1}};
  modMain::Randomize(11);
  for (i16 slot = 0; slot < 7; ++slot) {
    r.cOnLap = 4;
    r.cFinishedRace = 1;
    r.cLapTime(2) = 77;
    r.cCurrentlySelectedShip = 1;
    r.cCurrentlySelectedSkin = 9;
    ASSERT_TRUE(r.Reset_Car_Attributes(slot));
    EXPECT_NEAR(r.PositionX, want[slot][0], 1e-5) << slot;
    EXPECT_NEAR(r.PositionZ, want[slot][1], 1e-5) << slot;
    EXPECT_EQ(r.cCurrentTrackBlock(), want[slot][2]) << slot;
    EXPECT_EQ(r.cOrientation, 0);
    EXPECT_EQ(r.cOnLap, 1);
    EXPECT_EQ(r.cFinishedRace, 0);
    EXPECT_EQ(r.cLapTime(2), 0);
    EXPECT_EQ(r.cCurrentlySelectedShip, 1);  // the computer's random pick is not stored
    EXPECT_GE(r.cCurrentlySelectedSkin, 1);
    EXPECT_LE(r.cCurrentlySelectedSkin, 3);
  }
  r.PositionX = 42;
  r.Reset_Car_Attributes(7);
  EXPECT_EQ(r.PositionX, 42);

  const float base[4] = {0.76f, 0.8f, 0.84f, 0.88f};
  for (u8 d = 0; d < 4; ++d) {
    modMain::Difficulty = d;
    r.Reset_Car_Attributes(4);
    EXPECT_FLOAT_EQ(RA::WallGrip(r), 4 / 40.0f + base[d]);
  }
  modMain::Difficulty = 7;
  r.Reset_Car_Attributes(2);
  EXPECT_EQ(modMain::Difficulty, 1);
  EXPECT_FLOAT_EQ(RA::WallGrip(r), 2 / 40.0f + 0.8f);
}

TEST_F(Ships, BrokenCataloguesAreReportedAndLeaveAnInertRacer) {
  const std::string good = Catalogue(3, "3");
  std::string zero_mass = good, zero_inertia = good;
  zero_mass.replace(zero_mass.find("\r\n20\r\n"), 6, "\r\n0 kg\r\n");
  zero_inertia.replace(zero_inertia.rfind("\r\n5\r\n"), 5, "\r\nnone\r\n");
  struct Case {
    const char* what;
    std::string text;
    const char* log;
  };
  const Case cases[] = {
      {"zero mass", zero_mass, "line 11: ship 1 (Ship 1) has a mass of '0 kg'"},
      {"zero inertia", zero_inertia, "line 19: ship 2 (Ship 2) has a moment of inertia of 'none'"},
      {"short", good.substr(0, good.size() - 4), "promises 3 ships (22 lines) but has only 21"},
      {"no count", "ships\r\n" + good, "the ship count 'shi'"},
      {"missing", "", "Data\\Ships.Dat is missing"},
  };
  clsHumanPlayer& r = P(0);
  r.RacerKind = 1;
  for (const Case& c : cases) {
    modMain::Create_Log();
    if (c.text.empty()) {
      std::remove((dir.path() + "/Data/Ships.Dat").c_str());
    } else {
      Write("Data/Ships.Dat", c.text);
    }
    EXPECT_FALSE(r.Reset_Car_Attributes(0)) << c.what;
    EXPECT_NE(testenv::Read_File(modMain::Log_Path()).find(c.log), std::string::npos) << c.what;
    r.Thrust = r.SteerLeft = kTrue;
    r.VelocityX = 1;
    modMain::FrameTime = 50;
    for (int i = 0; i < 20; ++i) {
      r.ComputeForces();
      r.Check_Wall_Collisions();
      r.ApplyForces();
      r.Calculate_Vertices(0);
      r.Get_Track_Height();
    }
    EXPECT_TRUE(std::isfinite(r.PositionX) && std::isfinite(r.VelocityX) && std::isfinite(r.cOrientation)) << c.what;
    EXPECT_EQ(r.VelocityZ, 0) << c.what;  // no thrust from a refused ship
  }
}

TEST(ShipsDat, CountComesFromTheFirstThreeCharacters) {
  shipsdat::Catalogue cat;
  std::string error;
  ASSERT_TRUE(shipsdat::Parse(Catalogue(123, "1234"), cat, error)) << error;
  EXPECT_EQ(cat.Count, 123);
  std::string lf = Catalogue(2, "2");
  std::erase(lf, '\r');
  ASSERT_TRUE(shipsdat::Parse(lf, cat, error)) << error;
  EXPECT_EQ(cat.Ships[1].BaseName, "S1");
  EXPECT_EQ(cat.Ships[1].AngularDrag, 3);
}

}  // namespace
