// Whole races on the generated track (scripted keys, focus, virtual gamepad), what a race frame shows, and the ghost.
#include <cstring>

#include "core/extras.h"
#include "race/modGameLoop.h"
#include "support/screen_fixture.h"
#include "vehicle/create_racers.h"
#include "vehicle/ghost.h"
#include "vehicle/racer_fixture.h"

using namespace vehicle_test;

namespace {

// A headless race on the generated files, a manual clock moving 16 ms a race frame, and a script.
constexpr i32 kFrameMs = 16;
constexpr int16_t kEnter = 13, kEscape = 27, kLeft = 37, kUp = 38, kDown = 40;

// True on the first frame whose elapsed time t has reached ms.
bool Reached(i32 t, i32 ms) { return t >= ms && t - kFrameMs < ms; }

class RaceTest : public ScreenTest {
 public:
  void SetUp() override {
    for (const char* folder : {"Textures", "Tracks", "Objects", "Data"}) dir_.Copy_From_Game(folder);
    ScreenTest::SetUp();
    if (HasFatalFailure()) return;
    modMain::GameState = modMain::kStateRace;
    modGameLoop::PauseSelection = 0;
    platform::Set_Pump_Hook([this](uint64_t) {
      if (!modGameLoop::Race_Running()) return;
      const i32 elapsed = ++frames * kFrameMs;  // the time the coming frame will read
      if (script_) script_(elapsed);
      if (frames == 4000) {  // a script that never ends its race is stopped here
        ADD_FAILURE() << "the race did not end";
        platform::Post_Event({platform::EventKind::Quit});
      }
      platform::Advance_Manual_Clock(kFrameMs);
    });
  }

  // script(t) runs after each drawn frame with the next one's time; a timed check runs only if the race gets there.
  void Run_Race(int opponents, std::function<void(i32)> script) {
    modMain::NumOpponents = static_cast<i16>(opponents);
    if (modMain::Players.empty()) modMain::Create_Racers(modMain::NumOpponents);
    script_ = std::move(script);
    modGameLoop::Init_Race();
  }

  // Runs check() on the frame t that reaches ms: gtest's checks want braces under an if.
  static void When(i32 t, i32 ms, const std::function<void()>& check) {
    if (Reached(t, ms)) check();
  }
  // Presses (key > 0) and releases (key < 0) keys when the countdown time t reaches each time.
  static void Keys(i32 t, const std::vector<std::pair<i32, int>>& script) {
    for (const auto& [at, key] : script)
      if (Reached(t, at)) key > 0 ? Key_Down(int16_t(key)) : Key_Up(int16_t(-key));
  }

  std::function<void(i32)> script_;
};

void Expect_Torn_Down() {
  using namespace modGameLoop;
  for (const Surface* s : {&LightSurface, &Grey2x2Surf, &CarThrustSurf, &MiniMapSurf, &MiniMapShipsSurf, &StatsBGSurf})
    EXPECT_FALSE(*s);
  using namespace modTracks;
  EXPECT_EQ(std::tuple(Track.Count(), TrackTexture.Count(), TrackBlock.Count()), std::tuple(1, 1, 1)) << "one each";
  EXPECT_TRUE(Track(0).Vertices.Items().empty()) << "road";
  EXPECT_TRUE(TrackWalls(0).Vertices.Items().empty()) << "walls";
  EXPECT_FALSE(TrackTexture(0).Texture) << "textures";
  EXPECT_EQ(modMain::Players.size(), 5u) << "the racers are kept for the next screen";
}

// The start lamps, top down: R red, G green, - neither; each read 8 pixels right of its centre (319, 70 + 36 k).
std::string Lamps() {
  std::string lamps;
  for (int y = 70; y < 70 + 3 * 36; y += 36) {
    const uint32_t p = testenv::At(327, y);
    const int red = testenv::Red(p), green = testenv::Green(p);
    lamps += red > 200 && green < 120 ? 'R' : green > 200 && red < 150 ? 'G' : '-';
  }
  return lamps;
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
    EXPECT_EQ(at[1].rfind("   Track file " + track + ": ", 0), 0u) << at[1];
    EXPECT_EQ(shown, std::vector<std::string>{"The race cannot start. " + at[1].substr(3)});
    EXPECT_EQ(at[2], "Destroying Race Objects...");
    EXPECT_EQ(log[log.size() - 2], "...Done");
    Expect_Torn_Down();
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
    if (drawn == 1008) Screenshot("race_countdown");
    for (const auto& [at, lamps] : {std::pair{992, "R--"}, {1008, "RR-"}, {3008, "GGG"}, {4016, "---"}})
      When(drawn, at, [&] { EXPECT_EQ(Lamps(), lamps) << "at " << drawn; });
    When(t, 3600, [] { EXPECT_FALSE(Is_Set(modGameLoop::Paused)) << "Escape in the countdown is ignored"; });
    if (Reached(t, 6000)) {
      EXPECT_GT(modMain::GameClock, 2800);
      for (int i = 1; i <= 4; ++i) EXPECT_NE(P(i).PositionZ, grid_z[size_t(i)]) << "racer " << i << " drives off";
    }
    // The frame that pauses draws no menu yet (the keys come after the HUD).
    if (Is_Set(modGameLoop::Paused) && paused_clock < 0) {
      paused_clock = modMain::GameClock;
    } else if (Is_Set(modGameLoop::Paused) && t <= 6608) {
      EXPECT_EQ(modMain::GameClock, paused_clock) << "the race clock stands still while paused";
      if (blink_frames == 3) Screenshot("race_paused");
      if (blink_frames++ < 22) {
        resume_lit += Shows_Text(260, 220, 0, "Resume");
        quit_lit += Shows_Text(230, 250, 0, "Quit Race");
      }
    }
    if (Reached(t, 6808)) {
      EXPECT_FALSE(Is_Set(modGameLoop::Paused)) << "resumed";
      EXPECT_GT(modMain::GameClock, paused_clock) << "resumed";
    }
    When(t, 6858, [] { EXPECT_EQ(modGameLoop::PauseSelection, 1) << "the selection is kept"; });
    Keys(t, keys);
  });
  EXPECT_EQ(clock_after_start, kFrameMs);
  // Selection 0 over 22 paused frames: "Resume" lit 6 of every 11, "Quit Race" always.
  EXPECT_EQ(std::tuple(resume_lit, quit_lit), std::tuple(12, 22)) << "frames lit: Resume, Quit Race";
  // Quit: nothing left but the racers and the sky (until the next race).
  EXPECT_EQ(modMain::GameState, modMain::kStateMainMenu);
  Expect_Torn_Down();
  EXPECT_TRUE(modGameLoop::SkySurf);
}

TEST_F(RaceTest, ShipsWithBlankOrNonNumericFiguresRaceWithoutFaults) {
  // Ship 0's mass blank, ship 1's inertia no number, a count past the records: each racer gets a damaged ship or none.
  auto lines = testenv::Read_Lines_CRLF(testenv::Game_Dir() + "/Data/Ships.Dat");
  lines[3] = "", lines[7 + 4] = "heavy";
  std::string text = "3\r\n";
  for (size_t i = 1; i <= 14; ++i) text += lines[i] + "\r\n";
  testenv::Write_File(dir_.path() + "/Data/Ships.Dat", text);
  int missing_meshes = 0, faults = 0;
  // Thrust and a turn, both let go; then the pause menu: Escape, Down to "Quit Race", Enter.
  const std::vector<std::pair<i32, int>> keys = {{3100, kUp},    {3400, kLeft},   {4200, -kUp},
                                                 {4200, -kLeft}, {4300, kEscape}, {4316, -kEscape},
                                                 {4332, kDown},  {4348, -kDown},  {4364, kEnter}};
  platform::Set_Message_Box_Hook([&](const std::string&) { ++missing_meshes; });
  modMain::Create_Racers(4);
  for (const i16 ship : {0, 1, 2}) {
    SCOPED_TRACE(ship);
    P(0).cCurrentlySelectedShip = ship;
    frames = 0;  // each race's script starts from its own time 0
    Run_Race(4, [&](i32 t) {
      for (int i = 0; i <= 4; ++i)
        for (const float v : {P(i).PositionX, P(i).PositionY, P(i).PositionZ, P(i).cOrientation})
          faults += !std::isfinite(v);
      Keys(t, keys);
    });
    EXPECT_EQ(modMain::GameState, modMain::kStateMainMenu);
    Key_Up(kEnter);
  }
  platform::Set_Message_Box_Hook(nullptr);
  EXPECT_EQ(faults, 0);
  EXPECT_GE(missing_meshes, 1) << "the player's ship 2 has no mesh";
}

TEST_F(RaceTest, FocusLostPausesAsEscapeDoesTheClockWaitsAndAt144HzTheMenuBlinksAsAt60) {
  extras::Reset();
  platform::Set_Refresh_Rate(144);
  bool was_lit = false;
  int blink_changes = 0, paused_frames = 0;
  i32 paused_clock = -1, clock_after_switch = -1;
  const clsHumanPlayer* racer = nullptr;
  Run_Race(0, [&](i32 t) {
    if (Reached(t, 1000)) platform::Post_Event({platform::EventKind::FocusLost});  // held back to the start signal
    When(t, 3040, [] { EXPECT_FALSE(Is_Set(modGameLoop::Paused)) << "no pause before the start signal"; });
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
      platform::Post_Event({.kind = platform::EventKind::KeyDown, .key = kEnter, .shift = 4});  // Alt+Enter
    }
    if (Reached(t, 5400)) {  // the switch neither pauses nor restarts the race
      EXPECT_TRUE(platform::Windowed());
      EXPECT_FALSE(Is_Set(modGameLoop::Paused)) << "after the switch";
      EXPECT_EQ(racer, &P(0)) << "the same race goes on";
      clock_after_switch = modMain::GameClock;
      platform::Post_Event({platform::EventKind::FocusLost});
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
  // 133 frames at 144 Hz are 55 steps of 60 Hz: five blinks of 11 steps, two changes each (a step a frame gives 24).
  EXPECT_EQ(paused_frames, 133);
  EXPECT_NEAR(blink_changes, 10, 1);
}

TEST_F(RaceTest, ThePadDrivesStartPausesAnUnpluggedPadPausesAndWorksAgainOnceBack) {
  modMain::ControlDevice = 1;
  frmMain::PadBinding[0] = platform::kPadX;  // thrust on a button; brake stays on the left trigger
  ASSERT_TRUE(platform::Attach_Virtual_Pad("Test Pad"));
  // Thrust; Start pauses, A resumes; thrust, unplug; back: X drives, A resumes; Start, brake to "Quit Race", A quits.
  const int16_t x = platform::kPadX, a = platform::kPadA, start = platform::kPadStart,
                brake = platform::kPadLeftTrigger;
  const std::vector<std::tuple<i32, int16_t, float>> pad = {
      {3050, x, 1},     {3700, x, 0},     {3800, start, 1}, {3850, start, 0}, {3950, a, 1},
      {3970, a, 0},     {4350, x, 1},     {4450, x, 0},     {4500, a, 1},     {4520, a, 0},
      {4700, start, 1}, {4720, start, 0}, {4800, brake, 1}, {4820, brake, 0}, {4900, a, 1}};
  const std::vector<std::tuple<i32, bool, bool, const char*>> checks = {
      {3900, true, false, "Start pauses"},
      {4000, false, false, "A on Resume"},
      {4200, true, false, "unplugging pauses, and an unplugged pad holds nothing"},
      {4400, true, true, "plugged back in the pad works again, paused until the player resumes"},
      {4600, false, false, "A resumes"}};
  float start_x = 0, start_z = 0;
  Run_Race(0, [&](i32 t) {
    const clsHumanPlayer& p = P(0);
    const bool paused = Is_Set(modGameLoop::Paused);
    if (Reached(t, 3050)) start_x = p.PositionX, start_z = p.PositionZ;
    When(t, 3800, [&] { EXPECT_GT(std::hypot(p.PositionX - start_x, p.PositionZ - start_z), 1.0f) << "X thrusts"; });
    for (const auto& [at, want_paused, want_thrust, what] : checks)
      if (Reached(t, at)) {
        EXPECT_EQ(paused, want_paused) << "paused: " << what;
        EXPECT_EQ(Is_Set(p.Thrust), want_thrust) << "thrust: " << what;
      }
    if (Reached(t, 4100)) platform::Set_Virtual_Pad(platform::kPadX, 1);
    if (Reached(t, 4150)) platform::Detach_Virtual_Pad();
    When(t, 4300, [] { EXPECT_TRUE(platform::Attach_Virtual_Pad("Test Pad")); });
    for (const auto& [at, control, amount] : pad)
      if (Reached(t, at)) platform::Set_Virtual_Pad(control, amount);
  });
  platform::Detach_Virtual_Pad();
  EXPECT_EQ(modGameLoop::PauseSelection, 1) << "the brake moved the selection";
  EXPECT_EQ(modMain::GameState, modMain::kStateMainMenu) << "A on Quit Race";
}

// The scene alone (no HUD), redrawn now from the current state.
std::vector<uint32_t> Scene() {
  modGameLoop::Render_Race_Frame();
  return testenv::Read(0, 0, 640, 480);
}

TEST_F(RaceTest, MidRaceFrameShowsSkyRoadShipsMapAndTheHudThenTheFinishItsResults) {
  bool results_shown = false;
  Run_Race(4, [&](i32 t) {
    if (Reached(t, 40)) P(0).RacerKind = 2;  // the player's ship drives itself
    if (Reached(t, 12032)) {
      EXPECT_FALSE(Is_Set(modGameLoop::Paused)) << "Escape on the results is ignored";
      Screenshot("race_results");
      EXPECT_TRUE(Shows_Text(215, 205, 2, "Race Time 02:59:23"));
      EXPECT_TRUE(Shows_Text(215, 240, 2, "Lap 2     00:60:00"));
      EXPECT_TRUE(Shows_Text(218, 280, 2, "Top Speed 187 MPH"));
      results_shown = true;
    }
    Keys(t, {{12000, kEscape}, {12100, kEnter}});
    if (!Reached(t, 12000)) return;
    Screenshot("race_mid");
    clsHumanPlayer& p = P(0);
    ASSERT_GT(p.cVelocityMag, 1.0f) << "the player is racing";
    // Panel and marker pixels first: the text checks draw over them.
    const auto& stats = *modGameLoop::StatsBGSurf;  // panel: art row y + 28; bar: art x - 402
    ASSERT_NE(stats.Pixel(155, 98) & 0xFFFFFF, 0u);
    EXPECT_EQ(At(155, 70), stats.Pixel(155, 98) & 0xFFFFFF) << "lap panel";
    EXPECT_EQ(At(502, 3), stats.Pixel(100, 3) & 0xFFFFFF) << "clock bar";
    i16 x = 0, y = 0;
    ASSERT_TRUE(modGameLoop::Marker_Position(0, x, y));
    EXPECT_PRED3(testenv::Between, x, 495, 622);
    EXPECT_PRED3(testenv::Between, y, 296, 423);
    EXPECT_EQ(At(x + 5, y + 5), modGameLoop::MiniMapShipsSurf->Pixel(5, 15) & 0xFFFFFF) << "the player's marker on top";
    const std::string time = "Race Time " + modGameLoop::Time_Text(modMain::GameClock);
    EXPECT_TRUE(Shows_Text(490, 440, 0, numbers::Format(p.cVelocityMag * 60.0, "000") + " MPH"));
    EXPECT_TRUE(Shows_Text(13, 20, 0, "Lap 1/3"));
    EXPECT_TRUE(Shows_Text(13, 53, 0, "Pos " + std::to_string(p.cRace_Position) + "/5"));
    EXPECT_TRUE(Shows_Text(415, 12, 2, time)) << time;

    // Sky above, grey road under the ship, white map road in a black square.
    const auto frame = Scene();
    EXPECT_GT(testenv::Blue(frame[2 * 640 + 320]), testenv::Red(frame[2 * 640 + 320]) + 30);
    const uint32_t road = frame[470 * 640 + 320];
    EXPECT_LT(std::abs(testenv::Red(road) - testenv::Blue(road)), 40) << "grey road " << std::hex << road;
    EXPECT_LT(testenv::Red(road), 160) << "dark road " << std::hex << road;
    int map_white = 0;
    // The scene's map square.
    for (const uint32_t m : Read(500, 300, 628, 428)) map_white += testenv::Red(m) > 235 && testenv::Blue(m) > 235;
    EXPECT_PRED3(testenv::Between, map_white, 301, 128 * 64 - 1);
    // Without the ships the view differs round the player's; each redraw steps the camera 0.05 in, so start 0.05 out.
    auto redraw = [d = modGameLoop::CameraDistance + 0.05f](i16 opponents) {
      modGameLoop::CameraDistance = d, modMain::NumOpponents = opponents;
      return Scene();
    };
    const auto with = redraw(4), without = redraw(-1);
    modMain::NumOpponents = 4;
    int ship_pixels = 0;
    for (size_t i = 240 * 640; i < with.size(); ++i) ship_pixels += with[i] != without[i];
    EXPECT_GT(ship_pixels, 2000);
    // Back on the player's own keys, the third lap over as the racer's lap counting leaves it.
    p.RacerKind = 1;
    p.Thrust = p.Brake = p.SteerLeft = p.SteerRight = kFalse;
    p.cFinishedRace = 1;
    p.cLapTime(1) = 61230, p.cLapTime(2) = 59995, p.cLapTime(3) = 58004;
    p.cRaceTime = 179229, p.cTopSpeed = 187;
  });
  EXPECT_TRUE(results_shown) << "the results were never drawn";
  EXPECT_EQ(modMain::GameState, modMain::kStateHiScore);
  ASSERT_EQ(modMain::Players.size(), 5u);
  EXPECT_EQ(P(0).cRaceTime, 179229);
  EXPECT_FALSE(frmMain::Pressed(frmMain::Press::Enter));
}

TEST_F(RaceTest, MiniMapMapsTheRoadsBoundsDrawsItWhiteOnBlackAndIsBlankWithoutExtent) {
  auto map = mod3Denhance::Create_Texture("", 128, 128, 0);
  ASSERT_TRUE(map);
  Fill(modTracks::Track, {Strip({{10, 0}, {20, 0}, {10, 30}, {20, 30}, {-5, 60}, {15, 70}}),
                          Strip({{-5, 60}, {15, 70}, {0, 90}, {40, 100}})});
  modTracks::Build_MiniMap(map);
  EXPECT_EQ(modTracks::Map_Bounds(), (std::array<float, 4>{-5, 40, 0, 100}));
  float c = -1, r = -1;
  ASSERT_TRUE(modTracks::MiniMap_Point(40, 100, c, r));
  EXPECT_EQ(std::make_pair(c, r), std::make_pair(127.0f, 127.0f));
  // Each strip without its last rung, then the first rung again.
  const auto outline = modTracks::MiniMap_Outline();
  ASSERT_EQ(outline.size(), 8u);
  EXPECT_FLOAT_EQ(outline[3].sx, 25 / 45.0f * 127);
  EXPECT_EQ(outline[4].sx, 0) << "the second strip starts at the left";
  EXPECT_EQ(outline[7].sy, outline[1].sy) << "the outline closes on the first rung";

  // A square ring of road, 100 units across and 20 wide, as four strips of two quads.
  const float o = 0, i = 20, f = 80, e = 100;
  Fill(modTracks::Track, {Strip({{o, o}, {i, i}, {e / 2, o}, {e / 2, i}, {e, o}, {f, i}}),
                          Strip({{e, o}, {f, i}, {e, e / 2}, {f, e / 2}, {e, e}, {f, f}}),
                          Strip({{e, e}, {f, f}, {e / 2, e}, {e / 2, f}, {o, e}, {i, f}}),
                          Strip({{o, e}, {i, f}, {o, e / 2}, {i, e / 2}, {o, o}, {i, i}})});
  modTracks::Build_MiniMap(map);
  auto pixel = [&](int x, int y) { return map->Pixel(x, y) & 0xFFFFFF; };
  // Road about 25 pixels of each edge of the 127-pixel square.
  for (const auto& [x, y] :
       std::vector<std::pair<int, int>>{{5, 5}, {10, 64}, {64, 10}, {120, 64}, {64, 120}, {121, 121}})
    EXPECT_EQ(pixel(x, y), 0xFFFFFFu) << x << ", " << y;
  for (const auto& [x, y] : std::vector<std::pair<int, int>>{{64, 64}, {40, 40}, {90, 90}, {127, 127}, {127, 0}})
    EXPECT_EQ(pixel(x, y), 0u) << x << ", " << y;
  // All road on one x, all on one z, or none: no map, and what was drawn is gone.
  using Road = std::vector<std::pair<float, float>>;
  for (const Road& road : {Road{{5, 0}, {5, 10}, {5, 20}, {5, 30}}, Road{{0, 7}, {10, 7}, {20, 7}, {30, 7}}, Road{}}) {
    Fill(modTracks::Track, {Strip(road)});
    modTracks::Build_MiniMap(map);
    EXPECT_FALSE(modTracks::MiniMap_Point(5, 7, c, r));
    EXPECT_TRUE(modTracks::MiniMap_Outline().empty());
    for (const auto& [x, y] : std::vector<std::pair<int, int>>{{5, 5}, {64, 10}, {121, 121}})
      EXPECT_EQ(pixel(x, y), 0u) << "still drawn at " << x << ", " << y;
    modMain::Create_Racers(0);
    i16 mx = 0, my = 0;
    EXPECT_FALSE(modGameLoop::Marker_Position(0, mx, my));
  }
  // The device is left as the race expects it.
  EXPECT_EQ(platform::Render_State(*mod3Denhance::D3DDevice, platform::rs::Lighting), 0u);
  EXPECT_EQ(platform::Render_State(*mod3Denhance::D3DDevice, platform::rs::CullMode), platform::cull::CounterClockwise);
}

bool Decode(const std::string& bytes, ghost::Recording& out, std::string& error) {
  return ghost::Decode(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size(), out, error);
}

TEST(Ghost, FileRoundTripsEveryDamagedFormIsRefusedAndItFliesBetweenItsSamples) {
  ghost::Recording r, back;
  r.track_size = 10, r.track_checksum = 0xABCD, r.ship = 1, r.skin = 2, r.ship_name = "Ship_1", r.race_time = 900;
  for (int i = 0; i < ghost::kSplits; ++i) r.splits[i] = 50 * (i + 1);
  r.samples = {{0, 0, 1, 0, 0, 0}, {100, 10, 3, -20, 2, 0.5f}};
  const std::string bytes = ghost::Encode(r);
  std::string error;
  ASSERT_TRUE(Decode(bytes, back, error)) << error;
  EXPECT_EQ(ghost::Encode(back), bytes);
  for (size_t n = 0; n <= bytes.size(); ++n)
    EXPECT_FALSE(Decode(n < bytes.size() ? bytes.substr(0, n) : bytes + '\0', back, error)) << n;
  const size_t samples = bytes.size() - 2 * 24;
  for (const auto& [what, at, value] : {std::tuple<const char*, size_t, uint8_t>{"version", 4, 2},
                                        {"skin", 16, 7},
                                        {"name", 19, '/'},
                                        {"count", samples - 4, 3},
                                        {"float", samples + 7, 0x7F},
                                        {"time order", samples + 24 + 3, 0xFF}}) {
    std::string bad = bytes;
    bad[at] = static_cast<char>(value);
    if (std::strcmp(what, "float") == 0) bad[at - 1] = static_cast<char>(0xC0);  // a NaN
    EXPECT_FALSE(Decode(bad, back, error)) << what;
  }
  const ghost::Sample mid = ghost::Sample_At(r.samples, 25);
  EXPECT_EQ((std::vector<float>{mid.x, mid.y, mid.z, mid.heading, mid.bank}),
            (std::vector<float>{2.5f, 1.5f, -5.0f, 0.5f, 0.125f}));
  EXPECT_EQ(std::pair(ghost::Sample_At(r.samples, -40).x, ghost::Sample_At(r.samples, 4000).x), std::pair(0.0f, 10.0f))
      << "held at the first and the last sample";
  EXPECT_EQ(std::tuple(ghost::Sector_Start(1, 334), ghost::Sector_Start(3, 334)), std::tuple(83, 250));
  EXPECT_EQ(modGameLoop::Split_Text(-8346) + " " + modGameLoop::Split_Text(4500), "-00:08:35 +00:04:50");
}

// One autopiloted player, alone, three laps; slow makes it lift off the throttle at times.
i32 Race(bool slow, const std::string& track, std::vector<ghost::Split>* splits) {
  clsHumanPlayer& p = Make_Players(1);
  p.RacerKind = 1;
  EXPECT_TRUE(p.Reset_Car_Attributes(0));
  uint32_t size = 0, sum = 0;
  EXPECT_TRUE(ghost::File_Checksum(track, size, sum));
  ghost::Begin_Race(p, p.ShipBaseName, size, sum, modTracks::TrackBlock.Count());
  modMain::FrameTime = kFrameMs, modMain::GameClock = 0;
  bool first_go = true;
  for (i32 elapsed = kFrameMs; p.cFinishedRace == 0 && elapsed < 400000; elapsed += kFrameMs) {
    modMain::GameClock += kFrameMs;
    Autopilot(p);
    if (slow && (elapsed / 1000) % 5 == 0) p.Thrust = kFalse;
    modGameLoop::Update_Racers(elapsed, first_go);
    if (!first_go) ghost::Record_Frame(p, modMain::GameClock);
    const ghost::Split& split = ghost::Last_Split();
    if (splits != nullptr && split.line != (splits->empty() ? -1 : splits->back().line)) splits->push_back(split);
  }
  EXPECT_EQ(p.cFinishedRace, 1);
  ghost::End_Race();
  return p.cRaceTime;
}

// Then a race on screen with the record's ghost: it flies see-through with its own marker, the split in its colour.
TEST_F(RaceTest, ARecordRaceIsKeptASlowerOneLeavesItTheNextSplitsAgainstItAndSeesItFly) {
  std::string error;
  ASSERT_TRUE(modTracks::Load_Track(&error)) << error;
  modTracks::Build_Track_Blocks();
  const std::string track = platform::Game_Path(modTracks::kTrackFile);
  extras::Load();
  ghost::Begin_Race(clsHumanPlayer{}, "Ship_1", 1, 1, 4);
  EXPECT_EQ(ghost::Racing(), nullptr) << "switched off: nothing loaded";
  ghost::Set_Enabled(true);

  const i32 fast = Race(false, track, nullptr);
  ghost::Save_If_Best(fast + 1);
  const std::string kept = testenv::Read_File(ghost::Path());
  ASSERT_FALSE(kept.empty()) << "a record race writes Ghost.Dat";
  ghost::Recording saved;
  ASSERT_TRUE(Decode(kept, saved, error)) << error;
  EXPECT_EQ(std::pair(saved.race_time, saved.splits[11]), std::pair(fast, fast)) << "the last split line is the finish";
  EXPECT_GT(saved.samples.size(), static_cast<size_t>(fast / kFrameMs) - 2) << "one sample a frame";

  std::vector<ghost::Split> splits;
  const i32 slow = Race(true, track, &splits);
  ASSERT_GT(slow, fast);
  std::printf("ghost race %d ms, slower race %d ms\n", fast, slow);
  ghost::Save_If_Best(fast);
  EXPECT_EQ(testenv::Read_File(ghost::Path()), kept) << "a slower race leaves the ghost";
  ASSERT_EQ(splits.size(), static_cast<size_t>(ghost::kSplits)) << "four lines a lap, each once";
  for (size_t i = 0; i < splits.size(); ++i) {
    EXPECT_EQ(splits[i].line, static_cast<int>(i));
    EXPECT_TRUE(splits[i].has_ghost_diff) << "line " << i;
    EXPECT_EQ(splits[i].ghost_diff, splits[i].clock - saved.splits[i]) << "line " << i;
  }
  EXPECT_GT(splits.back().ghost_diff, 0) << "behind the ghost at the finish";

  const std::string bytes = testenv::Read_File(track);
  testenv::Write_File(track, bytes + "x");
  Race(false, track, nullptr);
  EXPECT_EQ(testenv::Read_Lines_CRLF(modMain::Log_Path()).back(), "Ghost.Dat ignored: recorded on another track");
  testenv::Write_File(track, bytes);
  modMain::Players.clear();

  bool shown = false;
  int frames_after = -1;
  Run_Race(0, [&](i32 t) {
    if (Reached(t, 40)) P(0).RacerKind = 2;  // the player's ship drives itself
    if (ghost::Last_Split().line == 0 && ++frames_after == 20) {
      shown = true;
      Screenshot("race_ghost_split");
      const ghost::Split& split = ghost::Last_Split();
      ASSERT_TRUE(split.has_ghost_diff);
      EXPECT_TRUE(Shows_Text(415, 40, 2, "Ghost"));
      // The digits are drawn in green when ahead of the ghost, in red when behind.
      int green = 0, red = 0;
      for (const uint32_t p : Read(415 + 12 * 9, 40, 415 + 12 * 18, 55)) {
        green += testenv::Green(p) > 150 && testenv::Red(p) < 120;
        red += testenv::Red(p) > 150 && testenv::Green(p) < 120;
      }
      EXPECT_GT(split.ghost_diff <= 0 ? green : red, 20) << "diff " << split.ghost_diff;
      EXPECT_EQ(split.ghost_diff <= 0 ? red : green, 0);
      // The ghost just ahead a moment earlier, far off after its race: the scenes differ where it flies, only there.
      const i32 now = modMain::GameClock;
      auto scene = [&, camera = modGameLoop::CameraDistance](i32 clock) {
        modMain::GameClock = clock, modGameLoop::CameraDistance = camera;
        return Scene();
      };
      const auto ahead = scene(now - split.ghost_diff + 100);
      modGameLoop::Draw_HUD();  // the picture: the ghost ahead, the split under the race time
      Screenshot("race_ghost_ahead");
      const auto gone = scene(INT32_MAX / 2);
      modMain::GameClock = now;
      int changed = 0;
      for (size_t i = 0; i < ahead.size(); ++i) changed += ahead[i] != gone[i];
      EXPECT_GT(changed, 200) << "the ghost is drawn";
      EXPECT_LT(changed, 640 * 480 / 10) << "and nothing else changed";
      platform::Post_Event({platform::EventKind::Quit});
    }
  });
  EXPECT_TRUE(shown) << "the first sector line was never crossed";
  modMain::Players.clear();
  extras::Reset();
}

}  // namespace
