// Block tracking, laps, the wrong-way flag and race position.
#include <array>

#include "racer_fixture.h"
#include "vehicle/players.h"

using namespace vehicle_test;

namespace {

// Blocks 0 and 1 run on from the line at z 0; the last, 2, lies behind it: its front edge is the line.
struct Progress : ::testing::Test {
  clsHumanPlayer& r = Make_Players(3);
  void SetUp() override {
    Set_Track({Block(-5, 5, 0, 10), Block(-5, 5, 10, 20), Block(-5, 5, -10, 0)});
    RA::WallGrip(r) = 0.8f;
  }
  // Drives racer 0 from the last block over the line with GameClock at clock.
  void Cross_Line(i32 clock) {
    RA::Set_Blocks(r, 2);
    Place(0, 0, -4);
    modMain::GameClock = clock;
    Move(0, 0, -1);
  }
  std::array<i32, 3> Laps() const { return {r.cLapTime(1), r.cLapTime(2), r.cLapTime(3)}; }
};

TEST_F(Progress, LapTimesAndRaceTimeFromTheClockAtEachCrossing) {
  // Lap, finished flag, race time and block after each crossing.
  const auto state = [this] {
    return std::array<int, 4>{r.cOnLap, r.cFinishedRace, r.cRaceTime, r.cCurrentTrackBlock()};
  };
  // Laps after the finish change no time.
  for (const auto& [clock, lap, done, time] :
       {std::array{300, 2, 0, 0}, {650, 3, 0, 0}, {990, 4, 1, 990}, {1400, 5, 1, 990}}) {
    Cross_Line(clock);
    EXPECT_EQ(state(), (std::array{lap, done, time, 0})) << clock;
  }
  EXPECT_EQ(Laps(), (std::array<i32, 3>{300, 350, 340}));
}

TEST_F(Progress, ReversingOverTheLineAndBackCountsNoLapAndASteepStepStopsIt) {
  // Laps owed, wrong-way flag and block after each move.
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
  EXPECT_TRUE(r.VelocityZ > 0 && r.cWRONGWAY == kTrue);
}

TEST_F(Progress, RacePositionByLapsThenBlockThenDistance) {
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

}  // namespace
