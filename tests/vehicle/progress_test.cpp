// Block tracking, laps, the wrong-way flag and race position.
#include "racer_fixture.h"

using namespace vehicle_test;

namespace {

// Blocks 0 and 1 run from the start line at z 0 toward +z; the last block, 2, lies
// behind the line, so its front edge is the start/finish line.
struct Progress : ::testing::Test {
  void SetUp() override {
    Set_Track({Block(-5, 5, 0, 10), Block(-5, 5, 10, 20), Block(-5, 5, -10, 0)});
    Make_Players(3);
    RA::WallGrip(P(0)) = 0.8f;
  }
  // Drives racer 0 from the last block over the line with GameClock at clock.
  void Cross_Line(i32 clock) {
    RA::Set_Blocks(P(0), 2);
    Place(0, 0, -4);
    modMain::GameClock = clock;
    Move(0, 0, -1);
  }
};

TEST_F(Progress, LapTimesAndRaceTimeFromTheClockAtEachCrossing) {
  clsHumanPlayer& r = P(0);
  Cross_Line(300);
  EXPECT_EQ(r.cOnLap, 2);  // corner 1 crossed too, silently
  EXPECT_EQ(r.cCurrentTrackBlock(), 0);
  Cross_Line(650);
  EXPECT_EQ(r.cFinishedRace, 0);
  Cross_Line(990);
  EXPECT_EQ(r.cLapTime(1), 300);
  EXPECT_EQ(r.cLapTime(2), 350);
  EXPECT_EQ(r.cLapTime(3), 340);
  EXPECT_EQ(r.cRaceTime, 990);
  EXPECT_EQ(r.cOnLap, 4);
  EXPECT_EQ(r.cFinishedRace, 1);
  Cross_Line(1400);  // laps after the finish change no time
  EXPECT_EQ(r.cOnLap, 5);
  EXPECT_EQ(r.cRaceTime, 990);
  EXPECT_EQ(r.cLapTime(3), 340);
}

TEST_F(Progress, ReversingOverTheLineAndBackCountsNoLap) {
  clsHumanPlayer& r = P(0);
  Place(0, 0, 3);
  Move(0, 0, -1.5f);  // only the rear corners are over the line
  EXPECT_EQ(r.cCheatMinusLaps, 0);
  EXPECT_EQ(r.cWRONGWAY, kTrue);
  Move(0, 0, -3);
  EXPECT_EQ(r.cCheatMinusLaps, -1);
  EXPECT_EQ(r.cCurrentTrackBlock(), 2);
  Move(0, 0, 3);
  EXPECT_EQ(r.cCheatMinusLaps, 0);
  EXPECT_EQ(r.cWRONGWAY, kFalse);
  EXPECT_EQ(r.cOnLap, 1);
  EXPECT_EQ(r.cLapTime(1), 0);
  EXPECT_EQ(r.cCurrentTrackBlock(), 0);
}

TEST_F(Progress, ReversingUpASteepStepThrowsTheRacerForward) {
  auto& behind = modTracks::TrackBlock(2);
  behind.Corner[0].y = behind.Corner[1].y = 8.5f;  // climbs 8.5 from the line backwards
  clsHumanPlayer& r = P(0);
  Place(0, 0, 2.5f);
  Move(0, 0, 1);  // the rear corners go from z 0.5 to -1, into block 2
  EXPECT_FLOAT_EQ(RA::Corners(r)[2].z, 0);
  EXPECT_FLOAT_EQ(r.PositionZ, 2);
  EXPECT_GT(r.VelocityZ, 0);
  EXPECT_EQ(r.cWRONGWAY, kTrue);
}

TEST_F(Progress, RacePositionByLapsThenBlockThenDistance) {
  clsHumanPlayer &a = P(0), &b = P(1), &c = P(2);
  auto put = [](clsHumanPlayer& r, i16 lap, i16 block, float x, float z) {
    r.cOnLap = lap;
    RA::Set_Blocks(r, block);
    r.PositionX = x;
    r.PositionZ = z;
  };
  put(a, 1, 1, 0, 12);
  put(b, 2, 0, 0, 5);
  put(c, 1, 0, 0, 5);
  a.Get_Race_Position();
  EXPECT_EQ(a.cRace_Position, 2);  // behind the lap leader, ahead of a lower block
  b.cCheatMinusLaps = -1;          // lap 2 that owes a reverse crossing counts as lap 1
  a.Get_Race_Position();
  EXPECT_EQ(a.cRace_Position, 1);

  put(c, 1, 1, 0, 15);  // same block, nearer its front edge (z 20)
  a.Get_Race_Position();
  EXPECT_EQ(a.cRace_Position, 2);
  put(a, 1, 1, 1, 15);  // same distance from the midpoint: a tie counts for neither
  put(c, 1, 1, -1, 15);
  a.Get_Race_Position();
  EXPECT_EQ(a.cRace_Position, 1);
  c.Get_Race_Position();
  EXPECT_EQ(c.cRace_Position, 1);

  modMain::NumOpponents = 0;
  b.cCheatMinusLaps = 0;
  a.Get_Race_Position();
  EXPECT_EQ(a.cRace_Position, 1);
}

}  // namespace
