// Ship selection run through its real loop: sliding buttons, ship and skin wrap, bars,
// start and back, and what a frame draws.
#include <filesystem>
#include <utility>
#include <vector>

#include "support/screen_fixture.h"
#include "screens/modShipSelection.h"
#include "support/test_env.h"
#include "vehicle/players.h"
#include "vehicle/racer_box.h"

namespace {

// Centres of the six buttons: back, start, previous/next skin, previous/next ship.
constexpr float kButton[6][2] = {{145, 370}, {145, 420}, {152, 130}, {152, 187}, {128, 159}, {176, 159}};

class ShipSelectionTest : public ScreenTest {
 protected:
  void SetUp() override {
    ScreenTest::SetUp();
    for (const char* d : {"Data", "Objects", "Textures"}) dir_.Copy_From_Game(d);
    modMain::NumOpponents = 4;
    modMain::GameState = modMain::kStateShipSelection;
  }
  // The first n generated ships, with the inertia line (record line 4) of some replaced.
  void Write_Catalogue(int n, const std::vector<std::pair<int, std::string>>& inertia = {}) {
    auto lines = testenv::Read_Lines_CRLF(testenv::Game_Dir() + "/Data/Ships.Dat");
    for (const auto& [ship, text] : inertia) lines[size_t(1 + 7 * ship + 3)] = text;
    std::string out = std::to_string(n) + "\r\n";
    for (int i = 1; i <= 7 * n; ++i) out += lines[size_t(i)] + "\r\n";
    testenv::Write_File(dir_.path() + "/Data/Ships.Dat", out);
  }
  static void Press(int button) {
    Move(kButton[button][0], kButton[button][1]);
    ScreenTest::Press();
  }
  static std::pair<int, int> Current() {
    return {modMain::Players[0]->cCurrentlySelectedShip, modMain::Players[0]->cCurrentlySelectedSkin};
  }
};

using Choice = std::pair<int, int>;

TEST_F(ShipSelectionTest, SlidingButtonsIgnoreClicksThenShipsAndSkinsWrapBothWays) {
  Write_Catalogue(3);
  std::vector<Choice> seen;
  // Each step: press a button, release it next frame, look two frames later.
  const std::vector<std::pair<int, int>> script = {{4, 10}, {4, 60}, {5, 64}, {2, 68},
                                                   {3, 72}, {2, 76}, {5, 80}, {1, 150}};
  on_frame = [&](int f) {
    for (const auto& [button, at] : script) {
      if (f == at) Press(button);
      if (f == at + 1) Release();
      if (f == at + 2 && button != 1) seen.push_back(Current());
    }
    if (f == 148) Screenshot("ship_selection");
  };
  modShipSelection::Init_Ship_Selection();
  // The first press came while the buttons were sliding in (they need about 600 ms).
  EXPECT_EQ(seen, (std::vector<Choice>{{0, 1}, {2, 1}, {0, 1}, {0, 3}, {0, 1}, {0, 3}, {1, 3}}));
  EXPECT_EQ(modMain::GameState, modMain::kStateRace);
  ASSERT_EQ(modMain::Players.size(), 5u);
  for (size_t i = 0; i < 5; ++i) EXPECT_EQ(modMain::Players[i] ? modMain::Players[i]->RacerKind : -1, i == 0 ? 1 : 2);
  EXPECT_EQ(Current(), Choice(1, 3));
  EXPECT_EQ(modGameLoop::RacerBox.Lower(), 0);
  EXPECT_EQ(modGameLoop::RacerBox.Upper(), 4);
  EXPECT_FALSE(modShipSelection::PreviewMesh);
}

TEST_F(ShipSelectionTest, BackReleasesTheRacersAndEveryVisitStartsAtTheFirstShip) {
  std::vector<Choice> at_entry;
  on_frame = [&](int f) {
    if (f == 2) at_entry.push_back(Current());
    if (f == 60) Press(5);
    if (f == 61) Release();
    if (f == 62) Press(3);
    if (f == 63) Release();
    if (f == 65) Press(0);
    if (f == 66) Release();
  };
  modShipSelection::Init_Ship_Selection();
  EXPECT_EQ(modMain::GameState, modMain::kStateMainMenu);
  ASSERT_EQ(modMain::Players.size(), 5u);
  for (const auto& racer : modMain::Players) EXPECT_FALSE(racer);

  frames = 0;
  on_frame = [&](int f) {
    if (f == 2) at_entry.push_back(Current());
    if (f == 60) Press(0);
    if (f == 61) Release();
  };
  modMain::NumOpponents = 0;
  modShipSelection::Init_Ship_Selection();
  EXPECT_EQ(at_entry, (std::vector<Choice>{{0, 1}, {0, 1}}));
  EXPECT_EQ(modMain::Players.size(), 1u);
}

TEST_F(ShipSelectionTest, ABarStillMovingJumpsToItsOldTargetThenMovesOneUnitAFrame) {
  // Ship 0's inertia bar heads for 100 (20 x 25 - 400), ship 1's for 40 (17.6 x 25 - 400).
  Write_Catalogue(2, {{0, "20"}, {1, "17.6"}});
  std::vector<int> shown;
  int clicked_at = -1;
  on_frame = [&](int f) {
    shown.push_back(modShipSelection::StatShown[1]);
    if (clicked_at < 0 && modShipSelection::StatShown[1] == 70) {
      clicked_at = f;
      Press(5);
    }
    if (f == clicked_at + 1) Release();
    if (clicked_at > 0 && f == clicked_at + 80) Press(0);
    if (clicked_at > 0 && f == clicked_at + 81) Release();
  };
  modShipSelection::Init_Ship_Selection();
  ASSERT_GT(clicked_at, 40);  // after the slide
  // Grew from 0 one unit a frame, then 100 at the click's frame less the frame's step.
  EXPECT_EQ(shown[size_t(clicked_at - 1)], 70);
  EXPECT_EQ(shown[size_t(clicked_at - 2)], 69);
  for (int k = 0; k < 75; ++k) EXPECT_EQ(shown[size_t(clicked_at + k)], std::max(40, 99 - k)) << k;
  EXPECT_EQ(modShipSelection::StatTarget[1], 40);
}

TEST_F(ShipSelectionTest, AFrameDrawsCentredNameBarsHighlightAndALitSpinningShip) {
  // Without the background only what the screen draws itself differs from the clear colour.
  std::filesystem::remove(dir_.path() + "/Gfx/ShipSelection_bg.bmp");
  std::pair<int, int> name, bar1, bar3;
  uint32_t lit_button = 0, plain_button = 0;
  std::vector<uint32_t> ship_a, ship_b;
  on_frame = [&](int f) {
    if (f == 60) Press(5);  // "Kestrel GT": 10 characters
    if (f == 61) Release();
    if (f == 200) Move(145, 370);
    if (f == 202) {
      lit_button = At(100, 352);
      Move(600, 20);
    }
    if (f == 204) {
      plain_button = At(100, 352);
      name = Drawn_Columns(380, 120, 560, 135);
      bar1 = Drawn_Columns(400, 321, 640, 339);
      bar3 = Drawn_Columns(400, 381, 640, 399);
      ship_a = Read(330, 150, 570, 310);
    }
    if (f == 220) ship_b = Read(330, 150, 570, 310);
    if (f == 221) Press(1);
    if (f == 222) Release();
  };
  modShipSelection::Init_Ship_Selection();
  EXPECT_EQ(modShipSelection::ShipName, "Kestrel GT");
  EXPECT_TRUE(name.first >= 410 && name.first <= 413 && name.second >= 520 && name.second < 530)
      << name.first << ".." << name.second << ": centred";
  // Thrust 0.25 -> 100 units, drawn 98 pixels wide; mass 8.5 -> 62 (62.5 to even) -> 60.
  EXPECT_EQ(bar1, std::make_pair(415, 512));
  EXPECT_EQ(bar3, std::make_pair(415, 474));
  // Highlighted cells are orange, normal ones steel blue.
  EXPECT_GT(lit_button >> 16 & 0xFF, lit_button & 0xFF);
  EXPECT_LT(plain_button >> 16 & 0xFF, plain_button & 0xFF);
  // The ship: plenty of pixels, shaded by the light (not one flat colour), and turning.
  int drawn = 0, lo = 255, hi = 0;
  for (uint32_t p : ship_a) {
    if (p == kClear) continue;
    ++drawn;
    const int g = int(p >> 8 & 0xFF);
    lo = std::min(lo, g);
    hi = std::max(hi, g);
  }
  EXPECT_GT(drawn, 1500);
  EXPECT_GT(hi - lo, 60);
  EXPECT_NE(ship_a, ship_b);
}

}  // namespace
