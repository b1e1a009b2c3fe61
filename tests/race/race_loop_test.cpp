// Whole races on the generated track, driven by the manual clock, scripted keys, the
// window's focus and the virtual gamepad.
#include <cmath>
#include <tuple>

#include "core/extras.h"
#include "platform/testing.h"
#include "race_fixture.h"

using namespace race_test;

namespace {

void Expect_Torn_Down() {
  using namespace modGameLoop;
  for (const Surface* s : {&LightSurface, &Grey2x2Surf, &CarThrustSurf, &MiniMapSurf, &MiniMapShipsSurf, &StatsBGSurf})
    EXPECT_FALSE(*s);
  using namespace modTracks;
  EXPECT_EQ(std::tuple(Track.Count(), TrackTexture.Count(), TrackBlock.Count()), std::tuple(1, 1, 1)) << "one each";
  EXPECT_TRUE(Track(0).Vertices.Items().empty()) << "road";
  EXPECT_TRUE(TrackWalls(0).Vertices.Items().empty()) << "walls";
  EXPECT_FALSE(TrackTexture(0).Texture) << "textures";
}

// A point 8 pixels right of a lamp's centre in the start lights (at 293, 50).
int Lamp(int lamp, int shift) { return int(testenv::At(327, 70 + lamp * 36) >> shift & 0xFF); }
bool Red(int lamp) { return Lamp(lamp, 16) > 200 && Lamp(lamp, 8) < 120; }
bool Green(int lamp) { return Lamp(lamp, 8) > 200 && Lamp(lamp, 16) < 150; }

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
    EXPECT_EQ(at[1].rfind("   Track file ", 0), 0u) << at[1];
    EXPECT_NE(at[1].find("test.MXT"), std::string::npos) << at[1];
    // The player reads the same: which file, and what is wrong with it.
    EXPECT_EQ(shown, std::vector<std::string>{"The race cannot start. " + at[1].substr(3)});
    EXPECT_EQ(at[2], "Destroying Race Objects...");
    EXPECT_EQ(log[log.size() - 2], "...Done");
    Expect_Torn_Down();
    EXPECT_EQ(modMain::Players.size(), 5u);
  }
  platform::Set_Message_Box_Hook(nullptr);
}

TEST_F(RaceTest, CountdownHoldsTheRaceThenThePauseMenuBlinksFreezesItAndQuitsLeavingNothing) {
  std::vector<float> grid_z;
  i32 clock_after_start = -1, paused_clock = -1;
  int resume_lit = 0, quit_lit = 0, blink_frames = 0;
  // Escape in the countdown; pause, Down, Up, Resume; pause again, Down, Enter quits.
  const std::vector<std::pair<i32, int>> keys = {{1000, kEscape},  {1500, -kEscape}, {6112, kEscape}, {6128, -kEscape},
                                                 {6608, kDown},    {6656, -kDown},   {6672, kUp},     {6688, -kUp},
                                                 {6704, kEnter},   {6720, -kEnter},  {6808, kEscape}, {6808, kDown},
                                                 {6824, -kEscape}, {6858, -kDown},   {6858, kEnter}};
  Run_Race(4, [&](i32 t) {
    const i32 drawn = t - kFrameMs;  // the elapsed time of the frame just drawn
    for (int i = int(grid_z.size()); i <= 4; ++i) grid_z.push_back(P(i).PositionZ);
    if (drawn < modGameLoop::kCountdownMs) {
      EXPECT_EQ(modMain::GameClock, 0) << drawn;
      for (int i = 0; i <= 4; ++i) EXPECT_EQ(P(i).PositionZ, grid_z[size_t(i)]) << "racer " << i << " at " << drawn;
    }
    // The signal frame resets the clock after its timer step; the next frame counts 16.
    if (drawn >= modGameLoop::kCountdownMs && clock_after_start < 0) {
      EXPECT_EQ(modMain::GameClock, 0);
      clock_after_start = 0;
    } else if (clock_after_start == 0) {
      clock_after_start = modMain::GameClock;
    }
    if (drawn == 1008) std::printf("countdown: %s\n", Save_Png("race_countdown").c_str());
    if (drawn == 992) {
      EXPECT_EQ(std::pair(Red(0), Red(1)), std::pair(true, false)) << "one red lamp";
    }
    if (drawn == 1008) {
      EXPECT_EQ(std::pair(Red(1), Red(2)), std::pair(true, false)) << "two red lamps";
    }
    if (drawn == 3008) {
      EXPECT_EQ(std::pair(Green(0), Green(2)), std::pair(true, true)) << "green at the signal";
    }
    if (drawn == 4016) {
      EXPECT_EQ(std::pair(Green(0), Red(0)), std::pair(false, false)) << "the lights are gone";
    }
    if (Reached(t, 3600)) {
      EXPECT_FALSE(Is_Set(modGameLoop::Paused)) << "Escape in the countdown is ignored";
    }
    if (Reached(t, 6000)) {
      EXPECT_GT(modMain::GameClock, 2800);
      for (int i = 1; i <= 4; ++i) EXPECT_NE(P(i).PositionZ, grid_z[size_t(i)]) << "racer " << i << " drives off";
    }
    // The frame that pauses draws no menu yet (the keys come after the HUD).
    if (Is_Set(modGameLoop::Paused) && paused_clock < 0) {
      paused_clock = modMain::GameClock;
    } else if (Is_Set(modGameLoop::Paused) && t <= 6608) {
      EXPECT_EQ(modMain::GameClock, paused_clock) << "the race clock stands still while paused";
      if (blink_frames == 3) std::printf("paused: %s\n", Save_Png("race_paused").c_str());
      if (blink_frames++ < 22) {
        resume_lit += Shows_Text(260, 220, 0, "Resume");
        quit_lit += Shows_Text(230, 250, 0, "Quit Race");
      }
    }
    if (Reached(t, 6808)) {
      EXPECT_FALSE(Is_Set(modGameLoop::Paused)) << "resumed";
      EXPECT_GT(modMain::GameClock, paused_clock) << "resumed";
    }
    if (Reached(t, 6858)) {
      EXPECT_EQ(modGameLoop::PauseSelection, 1) << "the selection is kept";
    }
    Keys(t, keys);
  });
  EXPECT_EQ(clock_after_start, kFrameMs);
  // Selection 0: "Resume" lit 6 of every 11 frames, "Quit Race" always.
  EXPECT_GE(blink_frames, 22);
  EXPECT_EQ(resume_lit, 12);
  EXPECT_EQ(quit_lit, 22);
  // Quit: nothing left but the racers (kept for the next screen) and the sky (kept until the
  // next race replaces it).
  EXPECT_EQ(modMain::GameState, modMain::kStateMainMenu);
  Expect_Torn_Down();
  EXPECT_EQ(modMain::Players.size(), 5u);
  EXPECT_TRUE(modGameLoop::SkySurf);
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
    P(0).cCurrentlySelectedShip = ship;
    frames = 0;  // each race's script starts from its own time 0
    Run_Race(4, [&](i32 t) {
      for (int i = 0; i <= 4; ++i)
        for (const float v : {P(i).PositionX, P(i).PositionY, P(i).PositionZ, P(i).cOrientation})
          faults += !std::isfinite(v);
      // Thrust and a turn, both let go for the pause menu's "Quit Race".
      Keys(t, {{3100, kUp}, {3400, kLeft}, {4200, -kUp}, {4200, -kLeft}});
      Quit_At(t, 4300);
    });
    EXPECT_EQ(modMain::GameState, modMain::kStateMainMenu);
    Key_Up(kEnter);
  }
  platform::Set_Message_Box_Hook(nullptr);
  EXPECT_EQ(faults, 0);
  EXPECT_GE(missing_meshes, 1) << "the player's ship 2 has no mesh";
}

// The window during a race: losing the focus pauses as Escape does (held back by the
// countdown), switching the window keeps the race going, and on a 144 Hz display the
// pause menu blinks at the rate it has at 60 Hz.
void Lose_Focus() { platform::Post_Event({platform::EventKind::FocusLost}); }

TEST_F(RaceTest, FocusLostPausesAsEscapeDoesTheClockWaitsAndAt144HzTheMenuBlinksAsAt60) {
  extras::Reset();
  platform::Set_Refresh_Rate(144);
  bool was_lit = false;
  int blink_changes = 0, paused_frames = 0;
  i32 paused_clock = -1, clock_after_switch = -1;
  const clsHumanPlayer* racer = nullptr;
  Run_Race(0, [&](i32 t) {
    if (Reached(t, 1000)) Lose_Focus();  // in the countdown: held back to the start signal
    if (Reached(t, 3040)) {
      EXPECT_FALSE(Is_Set(modGameLoop::Paused)) << "no pause before the start signal";
    }
    if (Reached(t, 3072)) {
      EXPECT_TRUE(Is_Set(modGameLoop::Paused)) << "the request held through the countdown pauses at the signal";
      paused_clock = modMain::GameClock;
    }
    if (t > 3072 && t <= 5200) {
      EXPECT_EQ(modMain::GameClock, paused_clock) << "the clock waits while away, t " << t;
      const bool lit = modGameLoop::Pause_Highlight_Shown();
      blink_changes += paused_frames++ > 0 && lit != was_lit;
      was_lit = lit;
    }
    Keys(t, {{5200, kEnter}, {5216, -kEnter}});  // Resume
    if (Reached(t, 5300)) {
      EXPECT_FALSE(Is_Set(modGameLoop::Paused)) << "resumed";
      racer = &P(0);
      platform::InputEvent alt_enter{platform::EventKind::KeyDown, kEnter};
      alt_enter.shift = 4;
      platform::Post_Event(alt_enter);
    }
    if (Reached(t, 5400)) {  // the switch neither pauses nor restarts the race
      EXPECT_TRUE(platform::Windowed());
      EXPECT_FALSE(Is_Set(modGameLoop::Paused)) << "after the switch";
      EXPECT_EQ(racer, &P(0)) << "the same race goes on";
      clock_after_switch = modMain::GameClock;
      Lose_Focus();
    }
    if (Reached(t, 5432)) {
      EXPECT_TRUE(Is_Set(modGameLoop::Paused)) << "focus lost mid-race";
      EXPECT_LE(modMain::GameClock, clock_after_switch + 2 * kFrameMs);
      modGameLoop::PauseSelection = 1;
    }
    Keys(t, {{5500, kEnter}});  // Quit Race
  });
  platform::Set_Refresh_Rate(0);
  platform::Set_Windowed(false);
  EXPECT_EQ(modMain::GameState, modMain::kStateMainMenu);
  EXPECT_FALSE(frmMain::PauseRequested);
  // 133 paused frames at 144 Hz are 55 steps of 60 Hz: five blinks of eleven steps, two
  // changes each (one step a frame would give 24).
  EXPECT_EQ(paused_frames, 133);
  EXPECT_NEAR(blink_changes, 10, 1);
}

TEST_F(RaceTest, ThePadDrivesStartPausesAnUnpluggedPadPausesAndWorksAgainOnceBack) {
  using platform::Set_Virtual_Pad;
  modMain::ControlDevice = 1;
  frmMain::PadBinding[0] = platform::kPadX;  // thrust on a button; brake stays on the left trigger
  ASSERT_TRUE(platform::Attach_Virtual_Pad("Test Pad"));
  // Thrust; Start pauses, A resumes; thrust, unplug; back: X drives again, A resumes; Start,
  // the brake moves the selection to "Quit Race", A quits.
  const int16_t x = platform::kPadX, a = platform::kPadA, start = platform::kPadStart,
                brake = platform::kPadLeftTrigger;
  const std::vector<std::tuple<i32, int16_t, float>> pad = {
      {3050, x, 1},     {3700, x, 0},     {3800, start, 1}, {3850, start, 0}, {3950, a, 1},
      {3970, a, 0},     {4350, x, 1},     {4450, x, 0},     {4500, a, 1},     {4520, a, 0},
      {4700, start, 1}, {4720, start, 0}, {4800, brake, 1}, {4820, brake, 0}, {4900, a, 1}};
  const std::vector<std::tuple<i32, bool, const char*>> pauses = {{3900, true, "Start pauses"},
                                                                  {4000, false, "A on Resume"},
                                                                  {4200, true, "unplugging pauses"},
                                                                  {4400, true, "until the player resumes"},
                                                                  {4600, false, "A resumes"}};
  float start_x = 0, start_z = 0;
  Run_Race(0, [&](i32 t) {
    const clsHumanPlayer& p = P(0);
    const bool paused = Is_Set(modGameLoop::Paused);
    if (Reached(t, 3050)) start_x = p.PositionX, start_z = p.PositionZ;
    if (Reached(t, 3800)) {
      EXPECT_GT(std::hypot(p.PositionX - start_x, p.PositionZ - start_z), 1.0f) << "the pad's X thrusts";
    }
    for (const auto& [at, want, what] : pauses)
      if (Reached(t, at)) {
        EXPECT_EQ(paused, want) << what;
      }
    if (Reached(t, 4100)) Set_Virtual_Pad(platform::kPadX, 1);
    if (Reached(t, 4150)) platform::Detach_Virtual_Pad();
    if (Reached(t, 4200)) {
      EXPECT_FALSE(Is_Set(p.Thrust)) << "an unplugged pad holds nothing";
    }
    if (Reached(t, 4300)) {
      EXPECT_TRUE(platform::Attach_Virtual_Pad("Test Pad"));
    }
    if (Reached(t, 4400)) {
      EXPECT_TRUE(Is_Set(p.Thrust)) << "the pad works again once plugged back in";
    }
    for (const auto& [at, control, amount] : pad)
      if (Reached(t, at)) Set_Virtual_Pad(control, amount);
  });
  platform::Detach_Virtual_Pad();
  EXPECT_EQ(modGameLoop::PauseSelection, 1) << "the brake moved the selection";
  EXPECT_EQ(modMain::GameState, modMain::kStateMainMenu) << "A on Quit Race";
}

}  // namespace
