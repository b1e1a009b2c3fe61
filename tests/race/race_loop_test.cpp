// Whole races on the generated track, driven by the manual clock and scripted keys.
#include <cmath>

#include "race_fixture.h"

using namespace race_test;

namespace {

std::vector<std::string> Race_Log_Lines(int textures) {
  std::vector<std::string> lines{"",
                                 "Initialising Race...",
                                 "LightSurface Made",
                                 "Grey2x2Surf Made",
                                 "CarThrustSurf Made",
                                 "SkySurf Made",
                                 "MiniMapSurf Made",
                                 "MiniMapShipsSurf Made",
                                 "StatsBGSurf Made",
                                 "   Loading Track...",
                                 "   ...Done",
                                 "...Done",
                                 "",
                                 "Destroying Race Objects..."};
  for (int i = 0; i < textures; ++i) lines.push_back("TrackTexture(" + std::to_string(i) + ").Texture = Nothing");
  for (const char* s :
       {"StatsBGSurf", "MiniMapShipsSurf", "MiniMapSurf", "CarThrustSurf", "Grey2x2Surf", "LightSurface"})
    lines.push_back(std::string(s) + " = Nothing");
  for (const char* s : {"Track", "TrackWalls", "Grass", "TrackTexture", "TrackBlock", "TrackSector", "...Done", ""})
    lines.push_back(s);
  return lines;
}

void Expect_Torn_Down() {
  using namespace modGameLoop;
  for (const Surface* s : {&LightSurface, &Grey2x2Surf, &CarThrustSurf, &MiniMapSurf, &MiniMapShipsSurf, &StatsBGSurf})
    EXPECT_FALSE(*s);
  using namespace modTracks;
  EXPECT_TRUE(Track.Count() == 1 && Track(0).Vertices.Items().empty() && TrackWalls(0).Vertices.Items().empty());
  EXPECT_TRUE(TrackTexture.Count() == 1 && !TrackTexture(0).Texture && TrackBlock.Count() == 1);
}

// A point 8 pixels right of a lamp's centre in the start lights (at 293, 50).
int Lamp(int lamp, int shift) { return int(testenv::At(327, 70 + lamp * 36) >> shift & 0xFF); }
bool Red(int lamp) { return Lamp(lamp, 16) > 200 && Lamp(lamp, 8) < 120; }
bool Green(int lamp) { return Lamp(lamp, 8) > 200 && Lamp(lamp, 16) < 150; }

TEST_F(RaceTest, QuitFromThePauseMenuLogsSetUpAndTeardownInOrderAndLeavesNothing) {
  int textures = 0;
  Run_Race(0, [&](i32 t) {
    textures = modTracks::TrackTexture.Count();
    Keys(t, {{3200, kEscape}, {3216, -kEscape}, {3300, kDown}, {3400, -kDown}, {3500, kEnter}});
  });
  EXPECT_EQ(modMain::GameState, modMain::kStateMainMenu);
  ASSERT_GT(textures, 0);
  const auto log = testenv::Read_Lines_CRLF(modMain::Log_Path());
  const auto race = std::find(log.begin(), log.end(), "Initialising Race...");
  ASSERT_NE(race, log.end());
  EXPECT_EQ(std::vector<std::string>(race - 1, log.end()), Race_Log_Lines(textures));
  Expect_Torn_Down();
  // The racers stay for the next screen; the sky waits to be replaced by the next race.
  ASSERT_EQ(modMain::Players.size(), 1u);
  EXPECT_TRUE(modGameLoop::SkySurf);
}

TEST_F(RaceTest, AnUnreadableTrackIsToldToThePlayerAndReturnsToTheMenu) {
  std::vector<std::string> shown;
  platform::Set_Message_Box_Hook([&](const std::string& text) { shown.push_back(text); });
  for (std::string bytes : {"", "\x01\x01\x01\x01\x01\x01\x01"}) {  // missing, truncated
    SCOPED_TRACE(bytes.size());
    shown.clear();
    modMain::Create_Log();
    const std::string track = dir_.path() + "/Tracks/test.MXT";
    std::remove(track.c_str());
    if (!bytes.empty()) testenv::Write_File(track, bytes);
    modMain::GameState = modMain::kStateRace;
    Run_Race(4, [](i32) { FAIL() << "no race frame may run"; });
    EXPECT_EQ(modMain::GameState, modMain::kStateMainMenu);
    const auto log = testenv::Read_Lines_CRLF(modMain::Log_Path());
    const auto at = std::find(log.begin(), log.end(), "   Loading Track...");
    ASSERT_LT(at + 2, log.end());
    EXPECT_TRUE(at[1].rfind("   Track file ", 0) == 0 && at[1].find("test.MXT") != std::string::npos) << at[1];
    // The player reads the same: which file, and what is wrong with it.
    EXPECT_EQ(shown, std::vector<std::string>{"The race cannot start. " + at[1].substr(3)});
    EXPECT_EQ(at[2], "Destroying Race Objects...");
    EXPECT_EQ(log[log.size() - 2], "...Done");
    Expect_Torn_Down();
    EXPECT_EQ(modMain::Players.size(), 5u);
  }
  platform::Set_Message_Box_Hook(nullptr);
}

TEST_F(RaceTest, CountdownHoldsTheRacersAndTheClockThenTheClockStartsAtTheSignal) {
  std::vector<float> grid_z;
  i32 lights_ok = 0, clock_after_start = -1;
  Run_Race(4, [&](i32 t) {
    const i32 drawn = t - kFrameMs;  // the elapsed time of the frame just drawn
    for (int i = int(grid_z.size()); i <= 4; ++i) grid_z.push_back(Player(i).PositionZ);
    if (drawn < modGameLoop::kCountdownMs) {
      EXPECT_EQ(modMain::GameClock, 0) << drawn;
      for (int i = 0; i <= 4; ++i)
        EXPECT_EQ(Player(i).PositionZ, grid_z[size_t(i)]) << "racer " << i << " at " << drawn;
    }
    // The signal frame resets the clock after its timer step; the next frame counts 16.
    if (drawn >= modGameLoop::kCountdownMs && clock_after_start < 0) {
      EXPECT_EQ(modMain::GameClock, 0);
      clock_after_start = 0;
    } else if (clock_after_start == 0) {
      clock_after_start = modMain::GameClock;
    }
    if (drawn == 1008) std::printf("countdown: %s\n", Save_Png("race_countdown").c_str());
    lights_ok += (drawn == 992 && Red(0) && !Red(1)) + (drawn == 1008 && Red(1) && !Red(2)) +
                 (drawn == 3008 && Green(0) && Green(2)) + (drawn == 4016 && !Green(0) && !Red(0));
    if (Reached(t, 6000)) {
      EXPECT_GT(modMain::GameClock, 2800);
      for (int i = 1; i <= 4; ++i) EXPECT_NE(Player(i).PositionZ, grid_z[size_t(i)]) << "racer " << i << " drives off";
    }
    Keys(t, {{6000, kEscape}, {6016, -kEscape}, {6032, kDown}, {6048, -kDown}, {6064, kEnter}});
  });
  EXPECT_EQ(clock_after_start, kFrameMs);
  EXPECT_EQ(lights_ok, 4);
}

TEST_F(RaceTest, PauseMenuBlinksFreezesTheRaceAndRemembersTheSelection) {
  int resume_lit = 0, quit_lit = 0, blink_frames = 0;
  i32 paused_clock = -1;
  bool escape_in_countdown_ignored = false, resumed = false, selection_kept = false;
  Run_Race(4, [&](i32 t) {
    if (Reached(t, 3600)) escape_in_countdown_ignored = !Is_Set(modGameLoop::Paused);
    // The frame that pauses draws no menu yet (the keys come after the HUD).
    if (Is_Set(modGameLoop::Paused) && paused_clock < 0) {
      paused_clock = modMain::GameClock;
    } else if (Is_Set(modGameLoop::Paused) && t <= 4400) {
      EXPECT_EQ(modMain::GameClock, paused_clock) << "the race clock stands still while paused";
      if (blink_frames == 3) std::printf("paused: %s\n", Save_Png("race_paused").c_str());
      if (blink_frames++ < 22) {
        resume_lit += Shows_Text(260, 220, 0, "Resume");
        quit_lit += Shows_Text(230, 250, 0, "Quit Race");
      }
    }
    if (Reached(t, 4600)) resumed = !Is_Set(modGameLoop::Paused) && modMain::GameClock > paused_clock;
    if (Reached(t, 4650)) selection_kept = modGameLoop::PauseSelection == 1;
    // Escape in the countdown; pause, Down, Up, Resume; pause again, Down, Enter quits.
    Keys(t, {{1000, kEscape},
             {1500, -kEscape},
             {3904, kEscape},
             {3920, -kEscape},
             {4400, kDown},
             {4448, -kDown},
             {4464, kUp},
             {4480, -kUp},
             {4496, kEnter},
             {4512, -kEnter},
             {4600, kEscape},
             {4600, kDown},
             {4616, -kEscape},
             {4650, -kDown},
             {4650, kEnter}});
  });
  EXPECT_TRUE(escape_in_countdown_ignored && resumed && selection_kept);
  EXPECT_EQ(modMain::GameState, modMain::kStateMainMenu);
  // Selection 0: "Resume" lit 6 of every 11 frames, "Quit Race" always.
  EXPECT_GE(blink_frames, 22);
  EXPECT_EQ(resume_lit, 12);
  EXPECT_EQ(quit_lit, 22);
}

TEST_F(RaceTest, ShipsWithBlankOrNonNumericFiguresRaceWithoutFaults) {
  // The generated catalogue with ship 0's mass blank, ship 1's inertia not a number and a
  // count one past its records: every racer gets one of the damaged ships or none at all.
  auto lines = testenv::Read_Lines_CRLF(testenv::Game_Dir() + "/Data/Ships.Dat");
  lines[3] = "", lines[7 + 4] = "heavy";
  std::string text = "3\r\n";
  for (size_t i = 1; i <= 14; ++i) text += lines[i] + "\r\n";
  testenv::Write_File(dir_.path() + "/Data/Ships.Dat", text);
  int missing_meshes = 0, faults = 0;
  platform::Set_Message_Box_Hook([&](const std::string&) { ++missing_meshes; });
  modMain::Create_Racers(4);
  constexpr int kLeft = 37;
  for (const i16 ship : {0, 1, 2}) {
    SCOPED_TRACE(ship);
    Player().cCurrentlySelectedShip = ship;
    frames = 0;  // each race's script starts from its own time 0
    Run_Race(4, [&](i32 t) {
      for (int i = 0; i <= 4; ++i)
        for (const float v : {Player(i).PositionX, Player(i).PositionY, Player(i).PositionZ, Player(i).cOrientation})
          faults += !std::isfinite(v);
      // Thrust and a turn, both let go for the pause menu's "Quit Race".
      Keys(t, {{3100, kUp},
               {3400, kLeft},
               {4200, -kUp},
               {4200, -kLeft},
               {4300, kEscape},
               {4316, -kEscape},
               {4332, kDown},
               {4348, -kDown},
               {4364, kEnter}});
    });
    EXPECT_EQ(modMain::GameState, modMain::kStateMainMenu);
    Key_Up(kEnter);
  }
  platform::Set_Message_Box_Hook(nullptr);
  EXPECT_EQ(faults, 0);
  EXPECT_GE(missing_meshes, 1) << "the player's ship 2 has no mesh";
}

TEST_F(RaceTest, FinishShowsTheResultsAndEnterGoesToTheHiScoresWithTheRacersKept) {
  bool results_shown = false, escape_ignored = false;
  Run_Race(4, [&](i32 t) {
    if (Reached(t, 5000)) {  // the third lap is over, as the racer's lap counting leaves it
      clsHumanPlayer& p = Player();
      p.cFinishedRace = 1;
      p.cLapTime(1) = 61230, p.cLapTime(2) = 59995, p.cLapTime(3) = 58004;
      p.cRaceTime = 179229, p.cTopSpeed = 187;
    }
    if (Reached(t, 5032)) {
      escape_ignored = !Is_Set(modGameLoop::Paused);
      std::printf("results: %s\n", Save_Png("race_results").c_str());
      results_shown = Shows_Text(215, 205, 2, "Race Time 02:59:23") && Shows_Text(215, 240, 2, "Lap 2     00:60:00") &&
                      Shows_Text(218, 280, 2, "Top Speed 187 MPH");
    }
    Keys(t, {{5000, kEscape}, {5100, kEnter}});
  });
  EXPECT_TRUE(escape_ignored && results_shown);
  EXPECT_EQ(modMain::GameState, modMain::kStateHiScore);
  ASSERT_EQ(modMain::Players.size(), 5u);
  EXPECT_EQ(Player().cRaceTime, 179229);
  EXPECT_FALSE(frmMain::Pressed(frmMain::Press::Enter));
}

}  // namespace
