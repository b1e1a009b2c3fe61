#include "screens/modHiScore.h"

#include <string_view>

#include "audio_input/frmMain.h"
#include "core/modMain.h"
#include "core/numbers.h"
#include "frontend/modMouseParticles.h"
#include "gfx/mod3Denhance.h"
#include "gfx/modText.h"
#include "platform/platform.h"
#include "vehicle/ghost.h"
#include "vehicle/players.h"

namespace modHiScore {

using modMain::Screen_X;
using modMain::Screen_Y;

namespace {
HiScoreTable Scores;  // the one table, as last read from the file
Bool16 HiScoreRunning = kFalse;
Bool16 NewHiScore = kFalse;  // a record fell and the name is still being entered
std::string EnteredName;
i16 RaceFastestLap = 1;  // 1..3

using mod3Denhance::Surface;

constexpr u8 kFont = 2;
constexpr size_t kNameLimit = 22;

Surface BackgroundSurf, EnterSurf, CursorSurf;
RaceFigures Race;
// The texts of a frame, rebuilt only when what they show changes: drawing allocates nothing.
std::string RecordLines[3], FigureLines[3], NameLine;

RaceFigures Player_Figures() {
  RaceFigures r;
  if (modMain::Players.empty() || !modMain::Players[0]) return r;
  const clsHumanPlayer& p = *modMain::Players[0];
  r.TopSpeed = p.cTopSpeed;
  for (int lap = 1; lap <= 3; ++lap) r.LapTime[lap - 1] = p.cLapTime.Contains(lap) ? p.cLapTime(lap) : 0;
  r.RaceTime = p.cRaceTime;
  return r;
}

void Build_Lines() {
  RecordLines[0] = "Top Speed " + numbers::Format(Scores.BestTopSpeed, "000") + " MPH   - " + Scores.BestTopSpeedName;
  RecordLines[1] = "Best Lap  " + Time_Text(Scores.BestLap) + "  - " + Scores.BestLapName;
  RecordLines[2] = "Best Race " + Time_Text(Scores.BestRace) + "  - " + Scores.BestRaceName;
  FigureLines[0] = numbers::Format(Race.TopSpeed, "000") + " MPH";
  FigureLines[1] = Time_Text(Race.LapTime[RaceFastestLap - 1]);
  FigureLines[2] = Time_Text(Race.RaceTime);
}

void Blit(const Surface& source, double left, double top, double right, double bottom, double x, double y,
          u8 transparent) {
  Rect r = mod3Denhance::Make_Rect(Screen_X(left), Screen_Y(top), Screen_X(right), Screen_Y(bottom));
  i16 px = Screen_X(x), py = Screen_Y(y);
  mod3Denhance::Blit_Clipped(mod3Denhance::BackBuffer, source, r, px, py, transparent);
}

void Take(std::string_view c) { EnteredName.append(c); }

}  // namespace

std::string HiScore_Path() { return platform::Player_Path("\\Data\\Hiscores.Dat"); }

void Load_HiScores() {
  Scores = Read_HiScore_File(HiScore_Path());
  Build_Lines();
}

void Save_HiScores() {
  // The ghost is kept by the same rule as the best race, before the table takes the new one.
  ghost::Save_If_Best(Scores.BestRace);
  Merge_Race(Scores, Race, EnteredName);
  Write_HiScore_File(HiScore_Path(), Scores);
  modMain::PlayerName = EnteredName;
  modMain::Write_Settings();
  platform::Pump_Messages();
  modMain::Read_Settings();
}

void Init_HiScore_Screen() {
  using modMain::Write_Log;
  Write_Log("Initialising HiScores...");
  Write_Log("   Loading Surfaces...");
  mod3Denhance::Create_Surface(CursorSurf, 11, 19, platform::Game_Path("\\Gfx\\Cursor.bmp"), mod3Denhance::kKeyBlack,
                               kFalse);
  mod3Denhance::Create_Surface(BackgroundSurf, modMain::ScreenWidth, modMain::ScreenHeight,
                               platform::Game_Path("\\Gfx\\HiScore_bg.bmp"), mod3Denhance::kKeyNone, kFalse);
  mod3Denhance::Create_Surface(EnterSurf, 326.0 * modMain::ScaleX, 65.0 * modMain::ScaleY,
                               platform::Game_Path("\\Gfx\\HiScore_enter.bmp"), mod3Denhance::kKeyNone, kFalse);
  Write_Log("   ...Surfaces Loaded");
  HiScoreRunning = kTrue;
  Write_Log("");
  Write_Log("   Reading Scores...");
  Race = Player_Figures();
  RaceFastestLap = Fastest_Lap(Race);
  Load_HiScores();
  Write_Log("   ...Done");
  NewHiScore = kFalse;
  // Keys held or pressed during the race type nothing here.
  for (Bool16& k : frmMain::KeyState) k = kFalse;
  EnteredName = modMain::PlayerName;
  NameLine.reserve(kNameLimit + 8);
  if (Is_New_Record(Scores, Race)) NewHiScore = kTrue;
  modMain::Reset_Game_Clock();
  HiScore_Screen_Loop();
}

void HiScore_Screen_Loop() {
  frmMain::Take(frmMain::Press::Enter);  // the Enter that ended the race
  while (Is_Set(HiScoreRunning) && !modMain::QuitRequested) {
    if (frmMain::Pressed(frmMain::Press::LeftClick) || frmMain::Pressed(frmMain::Press::Enter)) {
      if (Is_Set(NewHiScore)) {
        Save_HiScores();
        platform::Pump_Messages();
        Load_HiScores();
        NewHiScore = kFalse;
      } else {
        HiScoreRunning = kFalse;
        modMain::GameState = modMain::kStateMainMenu;
      }
      frmMain::Take(frmMain::Press::Enter);
      frmMain::Take(frmMain::Press::LeftClick);
    }
    Draw_HiScore_Screen();
    HiScore_Name_Entry();
    platform::Pump_Messages();
  }
  Exit_HiScore_Screen();
}

void Draw_HiScore_Screen() {
  mod3Denhance::Clear_Screen();
  Rect whole = mod3Denhance::ScreenRect;
  i16 zero_x = 0, zero_y = 0;
  mod3Denhance::Blit_Clipped(mod3Denhance::BackBuffer, BackgroundSurf, whole, zero_x, zero_y, 0);
  modMain::Update_Frame_Timer();
  if (Is_Set(NewHiScore)) {
    Blit(EnterSurf, 0, 0, 326, 65, 55, 228, 0);
    NameLine.assign(EnteredName);
    if (modMain::GameClock % 1000 > 500) NameLine.push_back('-');
    modText::Draw_Text(Screen_X(68), Screen_Y(265), kFont, NameLine);
  }
  const double record_y[3] = {335, 360, 385}, figure_y[3] = {95, 119, 142};
  for (int i = 0; i < 3; ++i) modText::Draw_Text(Screen_X(68), Screen_Y(record_y[i]), kFont, RecordLines[i]);
  for (int i = 0; i < 3; ++i) modText::Draw_Text(Screen_X(300), Screen_Y(figure_y[i]), kFont, FigureLines[i]);
  modMouseParticles::Draw_Particles_Scene();
  modMouseParticles::Draw_Pointer(CursorSurf);
  mod3Denhance::Flip();
}

void HiScore_Name_Entry() {
  if (!Is_Set(NewHiScore)) return;
  auto held = [](int code) {
    if (!Is_Set(frmMain::KeyState[code])) return false;
    frmMain::KeyState[code] = kFalse;
    return true;
  };
  char c[2] = {0, 0};
  for (int code = 65; code <= 90; ++code)
    if (held(code)) {
      c[0] = static_cast<char>(Is_Set(frmMain::ShiftPressed) ? code : code + 32);
      return Take(c);
    }
  // Keypad 1..9, its operators and F1..F12 type the character of their own code.
  for (int code = 97; code <= 123; ++code)
    if (held(code)) {
      c[0] = static_cast<char>(code);
      return Take(c);
    }
  for (int code = 48; code <= 57; ++code)
    if (held(code)) {
      c[0] = static_cast<char>(code);
      return Take(c);
    }
  if (held(8)) {
    if (!EnteredName.empty()) EnteredName.pop_back();
    return;
  }
  if (held(32)) return Take(" ");
  if (EnteredName.size() > kNameLimit) EnteredName.resize(kNameLimit);
}

void Exit_HiScore_Screen() {
  EnterSurf.reset();
  BackgroundSurf.reset();
  CursorSurf.reset();
  Save_HiScores();
  for (auto& racer : modMain::Players) racer.reset();
}

const HiScoreTable& Table() { return Scores; }
bool Running() { return Is_Set(HiScoreRunning); }
bool Entering_Name() { return Is_Set(NewHiScore); }
const std::string& Entered_Name() { return EnteredName; }
i16 Race_Fastest_Lap() { return RaceFastestLap; }

}  // namespace modHiScore
