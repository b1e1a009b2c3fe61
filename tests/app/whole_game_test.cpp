// The whole game played by a script on the manual clock: both intro pages, the main menu,
// ship selection, a race against four computer ships with the player on an autopilot that
// presses the bound keys, the hi-score table, the options screen and quit. The log, the
// settings file and the hi-score file it leaves are checked byte for byte.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "app/startup.h"
#include "audio_input/frmMain.h"
#include "core/extras.h"
#include "core/modMain.h"
#include "frontend/modIntro.h"
#include "frontend/modMainScr.h"
#include "platform/testing.h"
#include "race/modGameLoop.h"
#include "game_script.h"
#include "run_log.h"
#include "screens/modHiScore.h"
#include "screens/modOptions.h"
#include "screens/modShipSelection.h"
#include "support/test_env.h"
#include "track/modTracks.h"
#include "vehicle/players.h"

namespace {

using platform::EventKind;
constexpr int32_t kFrameMs = 16;

void Append_I16(std::string& out, int16_t v) { out.append(reinterpret_cast<const char*>(&v), 2); }
void Append_I32(std::string& out, int32_t v) { out.append(reinterpret_cast<const char*>(&v), 4); }
void Append_Name(std::string& out, const std::string& name) {
  Append_I16(out, static_cast<int16_t>(name.size()));
  out += name;
}

struct RaceFigures {
  int16_t top_speed = 0;
  int32_t laps[3] = {};
  int32_t race = 0;
};

TEST(WholeGame, IntroMenuShipsRaceHiScoresOptionsAndQuit) {
  testenv::ScratchAppDir dir;
  for (const char* folder : {"Gfx", "Textures", "Objects", "Tracks", "Data", "Sm"}) dir.Copy_From_Game(folder);
  std::filesystem::remove(dir.path() + "/Data/Hiscores.Dat");  // the first run of a new player
  testenv::Write_File(modMain::Settings_Path(),
                      "1\r\n640\r\n480\r\n16\r\n<none>\r\n<none>\r\n1\r\n\r\n0\r\n38\r\n40\r\n37\r\n39\r\n");

  // The generated track's texture count decides the teardown's release lines.
  std::string error;
  ASSERT_TRUE(modTracks::Load_Track(&error)) << error;
  const int track_textures = modTracks::TrackTexture.Upper() + 1;
  modTracks::Clear_Track();

  platform::Use_Manual_Clock(true);
  Script script;
  Autopilot autopilot;
  std::vector<uint8_t> states;
  std::vector<int16_t> intro_pages;
  int menu_visits = 0, ships_changed = 0;
  bool shipsel_done = false, race_over = false, hiscore_done = false, options_done = false;
  int ship_seen = -1, skin_seen = -1;
  RaceFigures figures;
  std::string name_typed;
  uint8_t last_state = 255;

  platform::Set_Pump_Hook([&](uint64_t pump) {
    platform::Advance_Manual_Clock(kFrameMs);
    ASSERT_LT(pump, 40000u) << "the script is stuck in state " << int(modMain::GameState);
    const uint8_t state = modMain::GameState;
    if (state != last_state) {
      states.push_back(state);
      if (state == modMain::kStateMainMenu) ++menu_visits;
      last_state = state;
    }
    if (state == modMain::kStateHiScore) name_typed = modHiScore::Entered_Name();
    if (script.Busy()) return script.Step();
    switch (state) {
      case modMain::kStateIntro:
        // One Enter tap per page, each after the page has been seen for a while.
        if (intro_pages.empty() || intro_pages.back() != modIntro::Page()) {
          intro_pages.push_back(modIntro::Page());
          script.Wait(10);
          script.Tap(13);
        }
        break;
      case modMain::kStateMainMenu:
        if (modMainScr::Button_Slide() != 0.0f) break;
        if (menu_visits == 1)
          script.Click(modMainScr::Button_Rect(1));  // race four ships
        else if (menu_visits == 2)
          script.Click(modMainScr::Button_Rect(2));  // options
        else
          script.Click(modMainScr::Button_Rect(3));  // quit
        script.Wait(5);
        break;
      case modMain::kStateShipSelection:
        if (shipsel_done || modShipSelection::Button_Slide() != 0.0f) break;
        if (ships_changed == 0) {
          script.Click(modShipSelection::Button_Rect(5));  // next ship
          script.Click(modShipSelection::Button_Rect(3));  // next skin
          script.Wait(30);                                 // the bars move
          ++ships_changed;
        } else {
          ship_seen = modMain::Players[0]->cCurrentlySelectedShip;
          skin_seen = modMain::Players[0]->cCurrentlySelectedSkin;
          script.Click(modShipSelection::Button_Rect(1));  // start
          shipsel_done = true;
        }
        break;
      case modMain::kStateRace:
        if (race_over || modMain::Players.empty() || modTracks::TrackBlock.Count() < 3) break;
        if (modMain::Players[0]->cFinishedRace != 0) {
          const clsHumanPlayer& p = *modMain::Players[0];
          figures = {p.cTopSpeed, {p.cLapTime(1), p.cLapTime(2), p.cLapTime(3)}, p.cRaceTime};
          for (int16_t k : {modMain::KeyUp, modMain::KeyLeft, modMain::KeyRight})
            platform::Post_Event({EventKind::KeyUp, k});
          script.Wait(20);  // the results
          script.Tap(13);
          race_over = true;
        } else {
          autopilot.Drive(*modMain::Players[0]);
        }
        break;
      case modMain::kStateHiScore:
        if (hiscore_done) break;
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
        break;
      case modMain::kStateOptions:
        if (options_done) break;
        script.Wait(3);
        script.Click(modOptions::Button_Rect(5));  // rebind thrust
        script.Tap(87);                              // to W
        script.Click(modOptions::Button_Rect(1));  // difficulty up
        script.Click(modOptions::Button_Rect(3));  // store and leave
        options_done = true;
        break;
      default:
        break;
    }
  });

  EXPECT_EQ(modMain::Main(), 0);
  platform::Set_Pump_Hook(nullptr);
  platform::Use_Manual_Clock(false);

  EXPECT_EQ(intro_pages, (std::vector<int16_t>{1, 2}));
  EXPECT_EQ(states, (std::vector<uint8_t>{5, 0, 3, 1, 2, 0, 4, 0}));
  EXPECT_EQ(ship_seen, 1);
  EXPECT_EQ(skin_seen, 2);
  EXPECT_TRUE(race_over);
  EXPECT_EQ(name_typed, "Ace");
  for (const auto& racer : modMain::Players) EXPECT_FALSE(racer);  // released on leaving the table
  EXPECT_GT(figures.top_speed, 100);
  EXPECT_EQ(figures.race, figures.laps[0] + figures.laps[1] + figures.laps[2]);

  // The table: the first race beats an empty one on all three records.
  std::string table;
  Append_I16(table, figures.top_speed);
  Append_Name(table, "Ace");
  Append_I32(table, std::min({figures.laps[0], figures.laps[1], figures.laps[2]}));
  Append_Name(table, "Ace");
  Append_I32(table, figures.race);
  Append_Name(table, "Ace");
  EXPECT_EQ(testenv::Read_File(dir.path() + "/Data/Hiscores.Dat"), table);

  // Thrust rebound to W, difficulty one up, the name kept.
  EXPECT_EQ(testenv::Read_File(modMain::Settings_Path()),
            "1\r\n640\r\n480\r\n16\r\n<none>\r\n<none>\r\n2\r\nAce\r\n0\r\n87\r\n40\r\n37\r\n39\r\n");
  EXPECT_FALSE(std::filesystem::exists(extras::Path())) << "nothing of the additions changed: no Quorval.cfg";

  std::vector<std::string> expected = {"Program Started", " ", "Reading Quorval.ini...", "...Done"};
  for (const auto& l : Start_Up_Lines("<none>")) expected.push_back(l);
  for (const char* l : {"", "Initialising Race...", "LightSurface Made", "Grey2x2Surf Made", "CarThrustSurf Made",
                        "SkySurf Made", "MiniMapSurf Made", "MiniMapShipsSurf Made", "StatsBGSurf Made",
                        "   Loading Track...", "   ...Done", "...Done", "", "Destroying Race Objects..."})
    expected.push_back(l);
  for (int i = 0; i < track_textures; ++i)
    expected.push_back("TrackTexture(" + std::to_string(i) + ").Texture = Nothing");
  for (const char* l : {"StatsBGSurf = Nothing",
                        "MiniMapShipsSurf = Nothing",
                        "MiniMapSurf = Nothing",
                        "CarThrustSurf = Nothing",
                        "Grey2x2Surf = Nothing",
                        "LightSurface = Nothing",
                        "Track",
                        "TrackWalls",
                        "Grass",
                        "TrackTexture",
                        "TrackBlock",
                        "TrackSector",
                        "...Done",
                        "",
                        "Initialising HiScores...",
                        "   Loading Surfaces...",
                        "   ...Surfaces Loaded",
                        "",
                        "   Reading Scores...",
                        "   ...Done"})
    expected.push_back(l);
  for (const auto& l : kShutdownLines) expected.push_back(l);
  EXPECT_EQ(testenv::Read_Lines_CRLF(modMain::Log_Path()), expected);
}

}  // namespace
