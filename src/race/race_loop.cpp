// The race's frame loop: physics, rendering, HUD, start lights and the race keys, once per
// flip, with the countdown measured on real time from the loop's start.
#include "audio_input/frmMain.h"
#include "core/modMain.h"
#include "core/numbers.h"
#include "core/settings.h"
#include "platform/platform.h"
#include "race/modGameLoop.h"
#include "vehicle/clsHumanPlayer.h"
#include "vehicle/players.h"

namespace modGameLoop {

Bool16 Paused = kFalse;
i16 PauseSelection = 0;

namespace {

Bool16 RaceRunning = kFalse;

constexpr int kLightWidth = 53, kLightHeight = 113;

// Real milliseconds since start; the tick counter's wrap gives the right difference.
i32 Since(i32 start) { return static_cast<i32>(static_cast<u32>(platform::Tick_Count()) - static_cast<u32>(start)); }

clsHumanPlayer& Player() { return *modMain::Players[0]; }
bool Player_Finished() { return (Player().cFinishedRace & 0xFF) != 0; }

}  // namespace

void Update_Racers(i32 elapsed, bool& first_go) {
  // A slow frame runs as equal steps of at most kMaxStepMs, so racers move as they do at
  // 60 frames a second; a frame up to that long is the one step it has always been.
  const i32 frame = modMain::FrameTime;
  const int steps = frame > kMaxStepMs ? (frame + kMaxStepMs - 1) / kMaxStepMs : 1;
  const float step_ms = static_cast<float>(frame) / static_cast<float>(steps);
  const int count = static_cast<int>(modMain::Players.size());
  for (int step = 0; step < steps; ++step) {
    for (i16 i = 0; i <= modMain::NumOpponents && i < count; ++i) {
      clsHumanPlayer* racer = modMain::Players[static_cast<size_t>(i)].get();
      if (racer == nullptr) continue;
      racer->ComputeForces();
      racer->Check_Wall_Collisions();
      racer->Check_Car_Collisions(i);
      if (elapsed >= kCountdownMs) {
        racer->ApplyForces(step_ms);
        // The race time starts from 0 at the start signal.
        if (first_go) {
          modMain::Reset_Game_Clock();
          first_go = false;
        }
      } else if (first_go) {
        modMain::Reset_Game_Clock();
      }
      racer->Calculate_Vertices(i);
      racer->Get_Track_Height();
    }
  }
}

int Start_Light_Left(i32 elapsed) {
  if (elapsed <= 1000) return 0;
  if (elapsed <= 2000) return kLightWidth;
  if (elapsed <= 3000) return 2 * kLightWidth;
  return 3 * kLightWidth;
}

void Draw_Start_Lights(i32& elapsed) {
  const int left = Start_Light_Left(elapsed);
  Rect src{left, 0, left + kLightWidth, kLightHeight};
  i16 x = 0, y = 0;
  if (!numbers::Convert_Round(293.0 * modMain::ScaleX, x) || !numbers::Convert_Round(50.0 * modMain::ScaleY, y)) return;
  mod3Denhance::Blit_Clipped(mod3Denhance::BackBuffer, LightSurface, src, x, y, 1);
}

void Race_Keys() {
  if (Player_Finished()) {
    if (frmMain::Take(frmMain::Press::Enter)) {
      RaceRunning = kFalse;
      modMain::GameState = modMain::kStateHiScore;
    }
    frmMain::PauseRequested = false;  // a finished race has no pause to give
    return;
  }
  // A requested pause (a pad unplugged, the window losing focus) is taken as Escape is.
  if ((frmMain::Pressed(frmMain::Press::Escape) || frmMain::PauseRequested) && !Is_Set(Paused)) {
    frmMain::Take(frmMain::Press::Escape);
    Paused = kTrue;
  }
  frmMain::PauseRequested = false;
  if (!Is_Set(Paused)) return;
  if (Is_Set(Player().Thrust)) {
    if (--PauseSelection < 0) PauseSelection = 0;
  } else if (Is_Set(Player().Brake)) {
    if (++PauseSelection > 1) PauseSelection = 1;
  } else if (frmMain::Pressed(frmMain::Press::Enter)) {
    // Read, not taken: Enter stays down until the key is released, as every screen expects.
    if (PauseSelection == 0) {
      Paused = kFalse;
    } else if (PauseSelection == 1) {
      RaceRunning = kFalse;
      modMain::GameState = modMain::kStateMainMenu;
    }
  }
}

void Race_Loop() {
  bool first_go = true;
  const i32 race_start = platform::Tick_Count();
  Paused = kFalse;
  RaceRunning = kTrue;
  frmMain::PauseRequested = false;  // asked for before this race began
  while (Is_Set(RaceRunning) && !modMain::QuitRequested) {
    if (!Is_Set(Paused)) {
      modMain::Update_Frame_Timer();
      // One reading for every racer, so all of them start on the same frame.
      Update_Racers(Since(race_start), first_go);
      Player().Get_Race_Position();
      if (!first_go) Record_Ghost_Frame();
    }
    Render_Race_Frame();
    if (Player_Finished() || Is_Set(Paused)) Draw_Dim_Panel();
    Draw_HUD();
    if (Is_Set(Paused)) Draw_Pause_Menu();
    if (Since(race_start) <= kLightsMs) {
      i32 elapsed = Since(race_start);
      Draw_Start_Lights(elapsed);
    }
    if (Since(race_start) >= kCountdownMs) Race_Keys();
    mod3Denhance::Flip();
    platform::Pump_Messages();
  }
  RaceRunning = kFalse;  // also when the window closed the race
  Destroy_Race();
}

bool Race_Running() { return Is_Set(RaceRunning); }

}  // namespace modGameLoop
