// Whole races on the generated track, driven by the manual clock and scripted keys.
#include <algorithm>
#include <cstdio>

#include "race_fixture.h"

using namespace race_test;

namespace {

std::vector<std::string> Set_Up_Lines() {
  return {"", "Initialising Race...", "LightSurface Made", "Grey2x2Surf Made", "CarThrustSurf Made", "SkySurf Made",
          "MiniMapSurf Made", "MiniMapShipsSurf Made", "StatsBGSurf Made", "   Loading Track...", "   ...Done",
          "...Done", ""};
}

std::vector<std::string> Teardown_Lines(int textures) {
  std::vector<std::string> lines{"Destroying Race Objects..."};
  for (int i = 0; i < textures; ++i) lines.push_back("TrackTexture(" + std::to_string(i) + ").Texture = Nothing");
  for (const char* s : {"StatsBGSurf", "MiniMapShipsSurf", "MiniMapSurf", "CarThrustSurf", "Grey2x2Surf", "LightSurface"})
    lines.push_back(std::string(s) + " = Nothing");
  for (const char* s : {"Track", "TrackWalls", "Grass", "TrackTexture", "TrackBlock", "TrackSector"}) lines.push_back(s);
  lines.push_back("...Done");
  lines.push_back("");
  return lines;
}

void Expect_Torn_Down() {
  using namespace modGameLoop;
  for (const Surface* s : {&LightSurface, &Grey2x2Surf, &CarThrustSurf, &MiniMapSurf, &MiniMapShipsSurf, &StatsBGSurf})
    EXPECT_FALSE(*s);
  EXPECT_EQ(modTracks::Track.Count(), 1);
  EXPECT_TRUE(modTracks::Track(0).Vertices.Items().empty());
  EXPECT_TRUE(modTracks::TrackWalls(0).Vertices.Items().empty());
  EXPECT_EQ(modTracks::TrackTexture.Count(), 1);
  EXPECT_FALSE(modTracks::TrackTexture(0).Texture);
  EXPECT_EQ(modTracks::TrackBlock.Count(), 1);
}

// A point 8 pixels right of a lamp's centre in the start lights (at 293, 50): red or green while lit.
int Lamp_Channel(int lamp, int shift) { return int(testenv::At(293 + 26 + 8, 50 + 20 + lamp * 36) >> shift & 0xFF); }
bool Lamp_Red(int lamp) { return Lamp_Channel(lamp, 16) > 200 && Lamp_Channel(lamp, 8) < 120; }
bool Lamp_Green(int lamp) { return Lamp_Channel(lamp, 8) > 200 && Lamp_Channel(lamp, 16) < 150; }

TEST_F(RaceTest, QuitFromThePauseMenuLogsSetUpAndTeardownInOrderAndLeavesNothing) {
  int textures = 0;
  Run_Race(0, [&](i32 t) {
    textures = modTracks::TrackTexture.Count();
    if (Reached(t, 3104)) {
      // A single racer: position 1 of 1, and only the player's marker on the map.
      i16 x = 0, y = 0;
      ASSERT_TRUE(modGameLoop::Marker_Position(0, x, y));
      EXPECT_EQ(At(x + 5, y + 5), modGameLoop::MiniMapShipsSurf->Argb(5, 15) & 0xFFFFFF);
      EXPECT_TRUE(Shows_Text(13, 53, 0, "Pos 1/1"));
      EXPECT_TRUE(Shows_Text(490, 440, 0, "000 MPH"));
    }
    if (Reached(t, 3200)) Key_Down(kEscape);
    if (Reached(t, 3216)) Key_Up(kEscape);
    if (Reached(t, 3300)) Key_Down(kDown);
    if (Reached(t, 3400)) Key_Up(kDown);
    if (Reached(t, 3500)) Key_Down(kEnter);
  });
  EXPECT_EQ(modMain::GameState, modMain::kStateMainMenu);
  EXPECT_EQ(modGameLoop::PauseSelection, 1);
  ASSERT_GT(textures, 0);
  std::vector<std::string> expected = Set_Up_Lines();
  for (const auto& l : Teardown_Lines(textures)) expected.push_back(l);
  const auto log = Log();
  const auto race = std::find(log.begin(), log.end(), "Initialising Race...");
  ASSERT_NE(race, log.end());
  EXPECT_EQ(std::vector<std::string>(race - 1, log.end()), expected);
  Expect_Torn_Down();
  // The racers stay for the next screen; the sky waits to be replaced by the next race.
  ASSERT_EQ(modMain::Players.size(), 1u);
  EXPECT_TRUE(modGameLoop::SkySurf);
}

TEST_F(RaceTest, AnUnreadableTrackReturnsToTheMenuWithTheReadersMessage) {
  struct Case {
    const char* name;
    std::string bytes;  // empty: no file at all
  };
  for (const Case& c : {Case{"missing", ""}, Case{"truncated", std::string(7, '\x01')}}) {
    SCOPED_TRACE(c.name);
    modMain::Create_Log();
    const std::string track = dir_.path() + "/Tracks/test.MXT";
    std::remove(track.c_str());
    if (!c.bytes.empty()) testenv::Write_File(track, c.bytes);
    modMain::GameState = modMain::kStateRace;
    Run_Race(4, [](i32) { FAIL() << "no race frame may run"; });
    EXPECT_EQ(modMain::GameState, modMain::kStateMainMenu);
    const auto log = Log();
    const auto at = std::find(log.begin(), log.end(), "   Loading Track...");
    ASSERT_NE(at, log.end());
    ASSERT_LT(at + 2, log.end());
    EXPECT_EQ(at[1].rfind("   Track file ", 0), 0u) << at[1];
    EXPECT_NE(at[1].find("test.MXT"), std::string::npos) << at[1];
    EXPECT_EQ(at[2], "Destroying Race Objects...");
    EXPECT_EQ(log[log.size() - 2], "...Done");
    Expect_Torn_Down();
    EXPECT_EQ(modMain::Players.size(), 5u);
  }
}

TEST_F(RaceTest, CountdownHoldsTheRacersAndTheClockThenTheClockStartsAtTheSignal) {
  std::vector<float> grid_z;
  bool lights_checked[4] = {};
  i32 clock_after_start = -1;
  Run_Race(4, [&](i32 t) {
    const i32 drawn = t - kFrameMs;  // the elapsed time of the frame just drawn
    if (grid_z.empty())
      for (int i = 0; i <= 4; ++i) grid_z.push_back(Player(i).PositionZ);
    if (drawn < modGameLoop::kCountdownMs) {
      EXPECT_EQ(modMain::GameClock, 0) << drawn;
      for (int i = 0; i <= 4; ++i) EXPECT_EQ(Player(i).PositionZ, grid_z[size_t(i)]) << "racer " << i << " at " << drawn;
    }
    // The signal frame resets the clock after its timer step; the next frame counts 16.
    if (drawn >= modGameLoop::kCountdownMs && clock_after_start < 0) {
      EXPECT_EQ(modMain::GameClock, 0);
      clock_after_start = 0;
    } else if (clock_after_start == 0) {
      clock_after_start = modMain::GameClock;
    }
    if (drawn == 992) lights_checked[0] = Lamp_Red(0) && !Lamp_Red(1);  // frame 0 up to 1000
    if (drawn == 1008) {
      lights_checked[1] = Lamp_Red(0) && Lamp_Red(1) && !Lamp_Red(2);
      std::printf("countdown: %s\n", Save_Png("race_countdown").c_str());
    }
    if (drawn == 3008) lights_checked[2] = Lamp_Green(0) && Lamp_Green(2);
    if (drawn == 4016) lights_checked[3] = !Lamp_Green(0) && !Lamp_Red(0);
    if (Reached(t, 6000)) {
      EXPECT_GT(modMain::GameClock, 2800);
      EXPECT_LE(modMain::GameClock, 6000 - modGameLoop::kCountdownMs);
      int moved = 0;
      for (int i = 1; i <= 4; ++i) moved += Player(i).PositionZ != grid_z[size_t(i)];
      EXPECT_EQ(moved, 4) << "the computer racers drive off at the signal";
      Key_Down(kEscape);
    }
    if (Reached(t, 6016)) Key_Up(kEscape);
    if (Reached(t, 6032)) Key_Down(kDown);
    if (Reached(t, 6048)) Key_Up(kDown);
    if (Reached(t, 6064)) Key_Down(kEnter);
  });
  EXPECT_EQ(clock_after_start, kFrameMs);
  for (int i = 0; i < 4; ++i) EXPECT_TRUE(lights_checked[i]) << "light check " << i;
}

TEST_F(RaceTest, PauseMenuBlinksFreezesTheRaceAndRemembersTheSelection) {
  std::vector<bool> resume_lit, quit_lit;
  i32 paused_clock = -1;
  bool escape_in_countdown_ignored = false, wrong_way_hidden = true;
  int wrong_way_frames = 0;
  Run_Race(4, [&](i32 t) {
    // Escape held through part of the countdown does nothing.
    if (Reached(t, 1000)) Key_Down(kEscape);
    if (Reached(t, 1500)) Key_Up(kEscape);
    if (Reached(t, 3600)) escape_in_countdown_ignored = !Is_Set(modGameLoop::Paused);
    if (Reached(t, 3904)) Key_Down(kEscape);
    if (Reached(t, 3920)) Key_Up(kEscape);
    // The frame that pauses draws no menu yet (the keys come after the HUD).
    if (Is_Set(modGameLoop::Paused) && paused_clock < 0) {
      paused_clock = modMain::GameClock;
    } else if (Is_Set(modGameLoop::Paused) && t <= 4400) {
      EXPECT_EQ(modMain::GameClock, paused_clock) << "the race clock stands still while paused";
      if (resume_lit.size() == 3) std::printf("paused: %s\n", Save_Png("race_paused").c_str());
      // The warning (set from the first paused frame on) overlaps "Resume": it gets frames
      // of its own once 22 blink frames are in.
      if (resume_lit.size() < 22) {
        resume_lit.push_back(Shows_Text(260, 220, 0, "Resume"));
        quit_lit.push_back(Shows_Text(230, 250, 0, "Quit Race"));
      } else {
        wrong_way_hidden = wrong_way_hidden && !Shows_Text(230, 200, 1, "Wrong Way");
        ++wrong_way_frames;
      }
      Player().cWRONGWAY = kTrue;
    }
    if (Reached(t, 4400)) Key_Down(kDown);  // to "Quit Race", then resume with it highlighted
    if (Reached(t, 4448)) Key_Up(kDown);
    if (Reached(t, 4464)) Key_Down(kUp);
    if (Reached(t, 4480)) Key_Up(kUp);
    if (Reached(t, 4496)) Key_Down(kEnter);  // Resume
    if (Reached(t, 4512)) Key_Up(kEnter);
    if (Reached(t, 4600)) {
      EXPECT_FALSE(Is_Set(modGameLoop::Paused));
      EXPECT_GT(modMain::GameClock, paused_clock);
      Key_Down(kEscape);
      Key_Down(kDown);
    }
    if (Reached(t, 4616)) Key_Up(kEscape);
    if (Reached(t, 4650)) {
      EXPECT_EQ(modGameLoop::PauseSelection, 1);
      Key_Up(kDown);
      Key_Down(kEnter);  // Quit Race
    }
  });
  EXPECT_TRUE(escape_in_countdown_ignored);
  EXPECT_TRUE(wrong_way_hidden);
  EXPECT_GE(wrong_way_frames, 3);
  EXPECT_EQ(modMain::GameState, modMain::kStateMainMenu);
  // Selection 0: "Resume" lit 6 of every 11 frames, "Quit Race" always.
  ASSERT_EQ(resume_lit.size(), 22u);
  const auto lit = std::count(resume_lit.begin(), resume_lit.begin() + 22, true);
  EXPECT_EQ(lit, 12);
  EXPECT_EQ(std::count(quit_lit.begin(), quit_lit.begin() + 22, true), 22);
}

TEST_F(RaceTest, FinishShowsTheResultsAndEnterGoesToTheHiScoresWithTheRacersKept) {
  bool results_shown = false, escape_ignored = false;
  Run_Race(4, [&](i32 t) {
    if (Reached(t, 5000)) {
      // The third lap is over (as the racer's lap counting leaves it).
      Player().cFinishedRace = 1;
      Player().cLapTime(1) = 61230;
      Player().cLapTime(2) = 59995;
      Player().cLapTime(3) = 58004;
      Player().cRaceTime = 179229;
      Player().cTopSpeed = 187;
      Key_Down(kEscape);
    }
    if (Reached(t, 5032)) {
      escape_ignored = !Is_Set(modGameLoop::Paused);
      std::printf("results: %s\n", Save_Png("race_results").c_str());
      results_shown = Shows_Text(215, 205, 2, "Race Time 02:59:23") && Shows_Text(215, 240, 2, "Lap 2     00:60:00") &&
                      Shows_Text(218, 280, 2, "Top Speed 187 MPH");
    }
    if (Reached(t, 5100)) Key_Down(kEnter);
  });
  EXPECT_TRUE(escape_ignored);
  EXPECT_TRUE(results_shown);
  EXPECT_EQ(modMain::GameState, modMain::kStateHiScore);
  ASSERT_EQ(modMain::Players.size(), 5u);
  EXPECT_EQ(Player().cRaceTime, 179229);
  EXPECT_FALSE(Is_Set(frmMain::EnterPressed));
}

}  // namespace
