// What a race frame shows, read back from the back buffer: sky, road, ships, the mini-map,
// and the HUD's panels, texts and markers at their places.
#include <cstdio>

#include "core/numbers.h"
#include "race_fixture.h"

using namespace race_test;

namespace {

int R(uint32_t p) { return int(p >> 16 & 0xFF); }
int B(uint32_t p) { return int(p & 0xFF); }

std::string Clock_Text(i32 ms) {
  char s[64];
  const long h = std::lround((ms % 60000) / 10.0);  // never a half: ms is a multiple of 16 here
  std::snprintf(s, sizeof s, "%02d:%02ld:%02ld", ms / 60000, h / 100, h % 100);
  return s;
}

// The whole frame, redrawn now from the current state (scene only, no HUD).
std::vector<uint32_t> Scene() {
  modGameLoop::Render_Race_Frame();
  mod3Denhance::D3DDevice->EndScene();
  return testenv::Read(0, 0, 640, 480);
}

TEST_F(RaceTest, MidRaceFrameShowsSkyRoadShipsMapAndTheHud) {
  bool checked = false;
  Run_Race(4, [&](i32 t) {
    if (Reached(t, 40)) Player().RacerKind = 2;  // the player's ship drives itself
    if (!Reached(t, 12000)) {
      if (Reached(t, 12400)) Key_Down(kEscape);
      if (Reached(t, 12432)) Key_Down(kDown);
      if (Reached(t, 12464)) Key_Up(kDown);
      if (Reached(t, 12496)) Key_Down(kEnter);
      return;
    }
    checked = true;
    // Back to the player's own keys for the pause menu below.
    struct Hand_Back {
      ~Hand_Back() {
        Player().RacerKind = 1;
        Player().Thrust = Player().Brake = Player().SteerLeft = Player().SteerRight = kFalse;
      }
    } hand_back;
    std::printf("mid-race: %s\n", Save_Png("race_mid").c_str());
    const clsHumanPlayer& p = Player();
    ASSERT_GT(p.cVelocityMag, 1.0f) << "the player is racing";

    // HUD texts at their places, in their formats.
    const std::string speed = numbers::Format(p.cVelocityMag * 60.0, "000") + " MPH";
    const std::string pos = "Pos " + std::to_string(p.cRace_Position) + "/5";
    const std::string time = "Race Time " + Clock_Text(modMain::GameClock);
    // The panels beside the texts, and the markers, before the text checks draw over them.
    const auto panel = Read(155, 5, 156, 129), bar = Read(402, 3, 640, 4);
    std::vector<uint32_t> marker_centre;
    for (int i = 0; i <= 4; ++i) {
      i16 x = 0, y = 0;
      ASSERT_TRUE(modGameLoop::Marker_Position(i, x, y));
      EXPECT_GE(x, 495);
      EXPECT_LE(x, 495 + 127);
      EXPECT_GE(y, 423 - 127);
      EXPECT_LE(y, 423);
      if (i == 0) marker_centre = Read(x + 5, y + 5, x + 6, y + 6);
    }
    EXPECT_TRUE(Shows_Text(490, 440, 0, speed)) << speed;
    EXPECT_TRUE(Shows_Text(13, 20, 0, "Lap 1/3"));
    EXPECT_TRUE(Shows_Text(13, 53, 0, pos)) << pos;
    EXPECT_TRUE(Shows_Text(415, 12, 2, time)) << time;
    const auto& stats = *modGameLoop::StatsBGSurf;
    int panel_pixels = 0;
    for (int y = 0; y < 124; ++y) {
      const uint32_t art = stats.Argb(155, 33 + y) & 0xFFFFFF;
      if (art == 0) continue;  // keyed out: the scene shows
      ++panel_pixels;
      EXPECT_EQ(panel[size_t(y)], art) << "lap panel row " << y;
    }
    EXPECT_GT(panel_pixels, 60);
    for (int x = 0; x < 234; ++x) {
      const uint32_t art = stats.Argb(x, 3) & 0xFFFFFF;
      if (art != 0) {
        EXPECT_EQ(bar[size_t(x)], art) << "bar " << x;
      }
    }
    EXPECT_EQ(marker_centre[0], modGameLoop::MiniMapShipsSurf->Argb(5, 15) & 0xFFFFFF) << "the player's marker on top";

    // The scene: sky above, road under the ship, the map's white road at its place.
    const auto frame = Scene();
    const uint32_t sky = frame[2 * 640 + 320];
    EXPECT_GT(B(sky), R(sky) + 30) << std::hex << sky;
    const uint32_t road = frame[470 * 640 + 320];
    EXPECT_LT(std::abs(R(road) - B(road)), 40) << std::hex << road;
    EXPECT_LT(R(road), 160);
    int map_white = 0;
    for (int y = 300; y < 428; ++y)
      for (int x = 500; x < 628; ++x) map_white += R(frame[size_t(y) * 640 + x]) > 235 && B(frame[size_t(y) * 640 + x]) > 235;
    EXPECT_GT(map_white, 300);
    EXPECT_LT(map_white, 128 * 128 / 2);
    // The ships: the same view without them differs around the player's ship.
    const float distance = modGameLoop::CameraDistance;
    modGameLoop::CameraDistance = distance + 0.05f;  // the redraw steps it back to `distance`
    const auto with = Scene();
    modGameLoop::CameraDistance = distance + 0.05f;
    modMain::NumOpponents = -1;
    const auto without = Scene();
    modMain::NumOpponents = 4;
    int ship_pixels = 0;
    for (int y = 240; y < 480; ++y)
      for (int x = 200; x < 440; ++x) ship_pixels += with[size_t(y) * 640 + x] != without[size_t(y) * 640 + x];
    EXPECT_GT(ship_pixels, 2000);
  });
  EXPECT_TRUE(checked);
  EXPECT_EQ(modMain::GameState, modMain::kStateMainMenu);
}

}  // namespace

namespace {

// A square ring of road, 100 units across and 20 wide, as four strips of two quads.
void Ring_Road() {
  const float o = 0, i = 20, f = 80, e = 100;  // outer, inner, far inner, far outer
  Set_Road({Strip({{o, o}, {i, i}, {e / 2, o}, {e / 2, i}, {e, o}, {f, i}}),
            Strip({{e, o}, {f, i}, {e, e / 2}, {f, e / 2}, {e, e}, {f, f}}),
            Strip({{e, e}, {f, f}, {e / 2, e}, {e / 2, f}, {o, e}, {i, f}}),
            Strip({{o, e}, {i, f}, {o, e / 2}, {i, e / 2}, {o, o}, {i, i}})});
}

TEST_F(RaceTest, MiniMapIsTheRoadWhiteOnBlackAndBlankWithoutExtent) {
  auto map = mod3Denhance::Create_Texture("", 128, 128, 0);
  ASSERT_TRUE(map);
  Ring_Road();
  modTracks::Build_MiniMap(map);
  auto white = [&](int x, int y) { return (map->Argb(x, y) & 0xFFFFFF) == 0xFFFFFF; };
  // Road 20 of 100 units wide: about 25 pixels of each edge of the 127-pixel square.
  for (const auto& [x, y] : std::vector<std::pair<int, int>>{{5, 5}, {10, 64}, {64, 10}, {120, 64}, {64, 120}, {121, 121}})
    EXPECT_TRUE(white(x, y)) << x << ", " << y;
  for (const auto& [x, y] : std::vector<std::pair<int, int>>{{64, 64}, {40, 40}, {90, 90}, {127, 127}, {127, 0}})
    EXPECT_EQ(map->Argb(x, y) & 0xFFFFFF, 0u) << x << ", " << y;

  // All road on one z: no map, and what was there is gone.
  for (int s = 0; s < 4; ++s)
    for (auto& v : modTracks::Track(s).Vertices.Items()) v.z = 3;
  modTracks::Build_MiniMap(map);
  for (int y = 0; y < 128; ++y)
    for (int x = 0; x < 128; ++x) ASSERT_EQ(map->Argb(x, y) & 0xFFFFFF, 0u) << x << ", " << y;
  // The device is left as the race expects it.
  EXPECT_EQ(mod3Denhance::D3DDevice->GetRenderState(platform::rs::Lighting), 0u);
  EXPECT_EQ(mod3Denhance::D3DDevice->GetRenderState(platform::rs::CullMode), platform::cull::CounterClockwise);
}

}  // namespace
