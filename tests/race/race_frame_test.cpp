// What a race frame shows, read back from the back buffer: sky, road, ships, mini-map, HUD and results.
#include "core/numbers.h"
#include "race_fixture.h"
#include "vehicle/racer_fixture.h"

using namespace race_test;
using vehicle_test::Between;

namespace {

int R(uint32_t p) { return int(p >> 16 & 0xFF); }
int B(uint32_t p) { return int(p & 0xFF); }

// The scene alone (no HUD), redrawn now from the current state.
std::vector<uint32_t> Scene() {
  modGameLoop::Render_Race_Frame();
  return testenv::Read(0, 0, 640, 480);
}

// Then the finish: the results, and Enter goes to the hi-scores with the racers kept.
TEST_F(RaceTest, MidRaceFrameShowsSkyRoadShipsMapAndTheHudThenTheFinishItsResults) {
  bool checked = false, results_shown = false, escape_ignored = false;
  Run_Race(4, [&](i32 t) {
    if (Reached(t, 40)) P(0).RacerKind = 2;  // the player's ship drives itself
    if (Reached(t, 12032)) {
      escape_ignored = !Is_Set(modGameLoop::Paused);
      std::printf("results: %s\n", Save_Png("race_results").c_str());
      EXPECT_TRUE(Shows_Text(215, 205, 2, "Race Time 02:59:23"));
      EXPECT_TRUE(Shows_Text(215, 240, 2, "Lap 2     00:60:00"));
      EXPECT_TRUE(Shows_Text(218, 280, 2, "Top Speed 187 MPH"));
      results_shown = true;
    }
    Keys(t, {{12000, kEscape}, {12100, kEnter}});
    if (!Reached(t, 12000)) return;
    checked = true;
    std::printf("mid-race: %s\n", Save_Png("race_mid").c_str());
    clsHumanPlayer& p = P(0);
    ASSERT_GT(p.cVelocityMag, 1.0f) << "the player is racing";
    // Panel and marker pixels first: the text checks draw over them.
    const auto& stats = *modGameLoop::StatsBGSurf;  // panel: art row y + 28; bar: art x - 402
    ASSERT_NE(stats.Pixel(155, 98) & 0xFFFFFF, 0u);
    EXPECT_EQ(At(155, 70), stats.Pixel(155, 98) & 0xFFFFFF) << "lap panel";
    EXPECT_EQ(At(502, 3), stats.Pixel(100, 3) & 0xFFFFFF) << "clock bar";
    i16 x = 0, y = 0;
    ASSERT_TRUE(modGameLoop::Marker_Position(0, x, y));
    EXPECT_PRED3(Between, x, 495, 622);
    EXPECT_PRED3(Between, y, 296, 423);
    EXPECT_EQ(At(x + 5, y + 5), modGameLoop::MiniMapShipsSurf->Pixel(5, 15) & 0xFFFFFF) << "the player's marker on top";
    const std::string time = "Race Time " + modGameLoop::Time_Text(modMain::GameClock);
    EXPECT_TRUE(Shows_Text(490, 440, 0, numbers::Format(p.cVelocityMag * 60.0, "000") + " MPH"));
    EXPECT_TRUE(Shows_Text(13, 20, 0, "Lap 1/3"));
    EXPECT_TRUE(Shows_Text(13, 53, 0, "Pos " + std::to_string(p.cRace_Position) + "/5"));
    EXPECT_TRUE(Shows_Text(415, 12, 2, time)) << time;

    // Sky above, grey road under the ship, white map road in a black square.
    const auto frame = Scene();
    EXPECT_GT(B(frame[2 * 640 + 320]), R(frame[2 * 640 + 320]) + 30);
    const uint32_t road = frame[470 * 640 + 320];
    EXPECT_LT(std::abs(R(road) - B(road)), 40) << "grey road " << std::hex << road;
    EXPECT_LT(R(road), 160) << "dark road " << std::hex << road;
    int map_white = 0;
    for (int i = 0; i < 128 * 128; ++i) {
      const uint32_t m = frame[size_t(300 + i / 128) * 640 + 500 + i % 128];
      map_white += R(m) > 235 && B(m) > 235;
    }
    EXPECT_PRED3(Between, map_white, 301, 128 * 64 - 1);
    // The same view without the ships differs around the player's ship.
    // Each redraw steps the camera 0.05 in: start it 0.05 out so both see the same view.
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
  EXPECT_TRUE(checked);
  EXPECT_TRUE(escape_ignored);
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

}  // namespace
