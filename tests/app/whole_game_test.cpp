// The whole game played by a script on the manual clock: both intro pages, the main menu,
// ship selection, a race against four computer ships with the player on an autopilot that
// presses the bound keys, the hi-score table, the options screen and quit. The log, the
// settings file and the hi-score file it leaves are checked byte for byte.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "core/extras.h"
#include "core/modMain.h"
#include "frontend/modIntro.h"
#include "frontend/modMainScr.h"
#include "game_script.h"
#include "run_log.h"
#include "screens/modHiScore.h"
#include "screens/modOptions.h"
#include "screens/modShipSelection.h"
#include "vehicle/players.h"

namespace {

// Little-endian figures and length-prefixed names, as the hi-score file holds them.
template <class T>
void Append(std::string& out, T v, const std::string& name) {
  out.append(reinterpret_cast<const char*>(&v), sizeof v);
  const auto size = static_cast<int16_t>(name.size());
  out.append(reinterpret_cast<const char*>(&size), 2) += name;
}

TEST(WholeGame, IntroMenuShipsRaceHiScoresOptionsAndQuit) {
  testenv::ScratchAppDir dir;
  New_Player(dir);
  // The generated track's texture count decides the teardown's release lines.
  std::string error;
  ASSERT_TRUE(modTracks::Load_Track(&error)) << error;
  const int track_textures = modTracks::TrackTexture.Upper() + 1;
  modTracks::Clear_Track();

  Script script;
  Autopilot autopilot;
  std::vector<uint8_t> states;
  std::vector<int16_t> intro_pages;
  int menu_visits = 0, ship_seen = -1, skin_seen = -1;
  bool ships_changed = false, shipsel_done = false, race_over = false, hiscore_done = false, options_done = false;
  int16_t top_speed = 0;
  int32_t laps[3] = {}, race = 0;
  std::string name_typed;
  Run_Main([&](uint64_t pump) {
    platform::Advance_Manual_Clock(16);
    ASSERT_LT(pump, 40000u) << "the script is stuck in state " << int(modMain::GameState);
    const uint8_t state = modMain::GameState;
    if (states.empty() || state != states.back()) {
      states.push_back(state);
      menu_visits += state == modMain::kStateMainMenu;
    }
    if (state == modMain::kStateHiScore) name_typed = modHiScore::Entered_Name();
    if (script.Busy()) return script.Step();
    if (state == modMain::kStateIntro && (intro_pages.empty() || intro_pages.back() != modIntro::Page())) {
      intro_pages.push_back(modIntro::Page());  // one Enter a page, after it has been seen a while
      script.Wait(10);
      script.Tap(13);
    } else if (state == modMain::kStateMainMenu && modMainScr::Button_Slide() == 0.0f) {
      script.Click(modMainScr::Button_Rect(std::min(menu_visits, 3)));  // race four ships, options, quit
      script.Wait(5);
    } else if (state == modMain::kStateShipSelection && !shipsel_done && modShipSelection::Button_Slide() == 0.0f) {
      if (!ships_changed) {
        script.Click(modShipSelection::Button_Rect(5));  // next ship
        script.Click(modShipSelection::Button_Rect(3));  // next skin
        script.Wait(30);                                 // the bars move
        ships_changed = true;
      } else {
        ship_seen = modMain::Players[0]->cCurrentlySelectedShip;
        skin_seen = modMain::Players[0]->cCurrentlySelectedSkin;
        script.Click(modShipSelection::Button_Rect(1));  // start
        shipsel_done = true;
      }
    } else if (state == modMain::kStateRace && !race_over && !modMain::Players.empty() &&
               modTracks::TrackBlock.Count() >= 3) {
      const clsHumanPlayer& p = *modMain::Players[0];
      if (p.cFinishedRace == 0) return autopilot.Drive(p);
      top_speed = p.cTopSpeed, race = p.cRaceTime;
      for (int lap = 0; lap < 3; ++lap) laps[lap] = p.cLapTime(lap + 1);
      for (int16_t k : {modMain::KeyUp, modMain::KeyLeft, modMain::KeyRight})
        platform::Post_Event({EventKind::KeyUp, k});
      script.Wait(20);  // the results
      script.Tap(13);
      race_over = true;
    } else if (state == modMain::kStateHiScore && !hiscore_done) {
      script.Wait(3);
      script.Key(16, true, 1);  // Shift held for a capital
      script.Key(65, true, 1);
      script.Key(65, false, 1);
      script.Key(16, false);
      script.Tap(67);
      script.Tap(69);
      script.Wait(3);
      script.Tap(13);  // save
      script.Wait(10);
      script.Tap(13);  // back to the menu
      hiscore_done = true;
    } else if (state == modMain::kStateOptions && !options_done) {
      script.Wait(3);
      script.Click(modOptions::Button_Rect(5));  // rebind thrust
      script.Tap(87);                              // to W
      script.Click(modOptions::Button_Rect(1));  // difficulty up
      script.Click(modOptions::Button_Rect(3));  // store and leave
      options_done = true;
    }
  });

  EXPECT_EQ(intro_pages, (std::vector<int16_t>{1, 2}));
  EXPECT_EQ(states, (std::vector<uint8_t>{5, 0, 3, 1, 2, 0, 4, 0}));
  EXPECT_EQ(ship_seen, 1);
  EXPECT_EQ(skin_seen, 2);
  EXPECT_TRUE(race_over);
  EXPECT_EQ(name_typed, "Ace");
  for (const auto& racer : modMain::Players) EXPECT_FALSE(racer);  // released on leaving the table
  EXPECT_GT(top_speed, 100);
  EXPECT_EQ(race, laps[0] + laps[1] + laps[2]);
  // The table: the first race beats an empty one on all three records.
  std::string table;
  Append(table, top_speed, "Ace");
  Append(table, std::min({laps[0], laps[1], laps[2]}), "Ace");
  Append(table, race, "Ace");
  EXPECT_EQ(testenv::Read_File(dir.path() + "/Data/Hiscores.Dat"), table);
  // Thrust rebound to W, difficulty one up, the name kept.
  EXPECT_EQ(testenv::Read_File(modMain::Settings_Path()),
            "1\r\n640\r\n480\r\n16\r\n<none>\r\n<none>\r\n2\r\nAce\r\n0\r\n87\r\n40\r\n37\r\n39\r\n");
  EXPECT_FALSE(std::filesystem::exists(extras::Path())) << "nothing of the additions changed: no Quorval.cfg";

  std::vector<std::string> expected = Lines("Program Started| |Reading Quorval.ini...|...Done");
  for (const auto& part : {Start_Up_Lines("<none>"), Race_Log_Lines(track_textures),
                           Lines("Initialising HiScores...|   Loading Surfaces...|   ...Surfaces Loaded||"
                                 "   Reading Scores...|   ...Done"),
                           kShutdownLines})
    expected.insert(expected.end(), part.begin(), part.end());
  EXPECT_EQ(testenv::Read_Lines_CRLF(modMain::Log_Path()), expected);
}

}  // namespace
