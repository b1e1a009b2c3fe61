// Ship catalogue, ship loading and the starting grid.
#include <array>
#include <cmath>
#include <cstdio>
#include <string>
#include <tuple>

#include "core/log.h"
#include "core/settings.h"
#include "racer_fixture.h"
#include "support/test_env.h"
#include "vehicle/players.h"
#include "vehicle/ships_dat.h"

using namespace vehicle_test;

namespace {

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
    Set_Track({Block(-4, 6, 0, 10), Block(-4, 6, 10, 20)});
    modMain::Difficulty = 1;
  }
  void Write(const std::string& rel, const std::string& bytes) { testenv::Write_File(dir.path() + "/" + rel, bytes); }
};

TEST_F(Ships, PlayerShipAndSkinRequestsWrapAndLoadTheirNumbers) {
  r.RacerKind = 1;
  // Requested ship and skin, then the ones loaded.
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

TEST_F(Ships, GridSlotsWallGripAndAFreshRaceRecord) {
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
    EXPECT_PRED3(Between, r.cCurrentlySelectedSkin, 1, 3);
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
}

// Catalogue 3 with ship 1's mass blank, ship 2's inertia not a number, and a count of 4.
std::string Damaged_Catalogue() {
  std::string text = Catalogue(3, "4 ships");
  text.replace(text.find("\r\n20\r\n"), 6, "\r\n\r\n");
  text.replace(text.rfind("\r\n5\r\n"), 5, "\r\nheavy\r\n");
  return text;
}

TEST(ShipsDat, ReadLineByLineMissingLinesAreEmptyAndNonNumbersZero) {
  const shipsdat::Catalogue cat = shipsdat::Parse(Damaged_Catalogue());
  ASSERT_EQ(cat.Count, 4);
  ASSERT_EQ(cat.Ships.size(), 4u);
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
}

TEST_F(Ships, ShipsWithoutAUsableMassOrInertiaRaceWithoutFaultsAndAreLogged) {
  Write("Data/Ships.Dat", Damaged_Catalogue());
  r.RacerKind = 1;
  modMain::FrameTime = 50;
  struct Case {
    i16 ship;
    bool loads;         // mesh and catalogue found
    const char* log;    // a line the load must write ("" for none)
    bool moves, turns;  // under thrust and steering
  };
  const Case cases[] = {
      {0, true, "", true, true},
      {1, true, "ship 1 (Ship 1) has no usable mass; it will not move", false, true},
      {2, true, "ship 2 (Ship 2) has no usable moment of inertia; it will not turn", true, false},
      {3, false, "ship 3 () has no usable mass", false, false},  // beyond the file: no files, no figures
      {-5, false, "Data\\Ships.Dat is missing", false, false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.ship);
    modMain::Create_Log();
    if (c.ship < 0) std::remove((dir.path() + "/Data/Ships.Dat").c_str());
    r.cCurrentlySelectedShip = c.ship;
    EXPECT_EQ(r.Reset_Car_Attributes(0), c.loads);
    const std::string log = testenv::Read_File(modMain::Log_Path());
    EXPECT_NE(log.find(c.log), std::string::npos) << log;
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
    EXPECT_EQ(r.VelocityZ != 0, c.moves) << "thrust";
    EXPECT_EQ(r.cOrientation != heading, c.turns) << "steering";
  }
}

}  // namespace
