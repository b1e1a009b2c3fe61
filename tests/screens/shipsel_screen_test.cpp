// Ship selection's real loop: sliding buttons, ship and skin wrap, bars, start, back, one frame.
#include <array>
#include <filesystem>

#include "gfx/XFileClass.h"
#include "screens/modShipSelection.h"
#include "support/screen_fixture.h"
#include "vehicle/racer_box.h"

namespace {

// Centres of the six buttons: back, start, previous/next skin, previous/next ship.
constexpr float kButton[6][2] = {{145, 370}, {145, 420}, {152, 130}, {152, 187}, {128, 159}, {176, 159}};
enum { kBack, kStart, kPrevSkin, kNextSkin, kPrevShip, kNextShip };
using Choice = std::pair<int, int>;

class ShipSelectionTest : public ScreenTest {
 protected:
  void SetUp() override {
    ScreenTest::SetUp();
    for (const char* d : {"Data", "Objects", "Textures"}) dir_.Copy_From_Game(d);
    modMain::NumOpponents = 4, modMain::GameState = modMain::kStateShipSelection;
  }
  // The first n generated ships, with the inertia line (record line 4) of some replaced.
  void Write_Catalogue(int n, const std::vector<std::pair<int, std::string>>& inertia = {}) {
    auto lines = testenv::Read_Lines_CRLF(testenv::Game_Dir() + "/Data/Ships.Dat");
    for (const auto& [ship, text] : inertia) lines[size_t(1 + 7 * ship + 3)] = text;
    std::string out = std::to_string(n) + "\r\n";
    for (int i = 1; i <= 7 * n; ++i) out += lines[size_t(i)] + "\r\n";
    testenv::Write_File(dir_.path() + "/Data/Ships.Dat", out);
  }
  // Clicks each button at its frame: pressed there, released the next.
  void Clicks(int f, std::initializer_list<std::pair<int, int>> script) {
    for (const auto& [button, at] : script) {
      if (f == at) Move(kButton[button][0], kButton[button][1]), Press();
      if (f == at + 1) Release();
    }
  }
  static Choice Current() {
    return {modMain::Players[0]->cCurrentlySelectedShip, modMain::Players[0]->cCurrentlySelectedSkin};
  }
};

TEST_F(ShipSelectionTest, SlidingButtonsIgnoreClicksThenShipsAndSkinsWrapBothWaysAndStartKeepsTheRacers) {
  Write_Catalogue(3);
  std::vector<Choice> seen;
  // The first click comes while the buttons slide in (about 600 ms); each choice is read two frames on.
  on_frame = [&](int f) {
    for (int at : {10, 60, 64, 68, 72, 76, 80})
      if (f == at + 2) seen.push_back(Current());
    Clicks(f, {{kPrevShip, 10},
               {kPrevShip, 60},
               {kNextShip, 64},
               {kPrevSkin, 68},
               {kNextSkin, 72},
               {kPrevSkin, 76},
               {kNextShip, 80},
               {kStart, 150}});
    if (f == 148) Screenshot("ship_selection");
  };
  modShipSelection::Init_Ship_Selection();
  EXPECT_EQ(seen, (std::vector<Choice>{{0, 1}, {2, 1}, {0, 1}, {0, 3}, {0, 1}, {0, 3}, {1, 3}}));
  EXPECT_EQ(modMain::GameState, modMain::kStateRace);
  ASSERT_EQ(modMain::Players.size(), 5u);
  for (size_t i = 0; i < 5; ++i) EXPECT_EQ(modMain::Players[i] ? modMain::Players[i]->RacerKind : -1, i == 0 ? 1 : 2);
  EXPECT_EQ(Current(), Choice(1, 3));
  EXPECT_EQ(std::make_pair(modGameLoop::RacerBox.Lower(), modGameLoop::RacerBox.Upper()), std::make_pair(0, 4));
  EXPECT_FALSE(modShipSelection::Preview());
}

TEST_F(ShipSelectionTest, BackReleasesTheRacersAndEveryVisitStartsAtTheFirstShip) {
  std::vector<Choice> at_entry;
  on_frame = [&](int f) {
    if (f == 2) at_entry.push_back(Current());
    Clicks(f, {{kNextShip, 60}, {kNextSkin, 62}, {kBack, 65}});
  };
  modShipSelection::Init_Ship_Selection();
  EXPECT_EQ(modMain::GameState, modMain::kStateMainMenu);
  EXPECT_TRUE(modMain::Players.size() == 5 && !modMain::Players[0] && !modMain::Players[4]);
  frames = 0;
  modMain::NumOpponents = 0;
  modShipSelection::Init_Ship_Selection();
  EXPECT_EQ(at_entry, (std::vector<Choice>{{0, 1}, {0, 1}}));
  EXPECT_EQ(modMain::Players.size(), 1u);
}

// A count one past the records, ship 0's mass blank and ship 1's inertia not a number: the
// screen shows what each record holds, and the missing mesh of the ship past the end is
// told once a visit, however often the player comes back to it.
TEST_F(ShipSelectionTest, ADamagedCatalogueShowsWhatItHoldsAndTellsAMissingMeshOnce) {
  auto lines = testenv::Read_Lines_CRLF(testenv::Game_Dir() + "/Data/Ships.Dat");
  lines[3] = "", lines[7 + 4] = "heavy";
  std::string text = "3\r\n";
  for (size_t i = 1; i <= 14; ++i) text += lines[i] + "\r\n";
  testenv::Write_File(dir_.path() + "/Data/Ships.Dat", text);
  std::vector<std::string> shown;
  platform::Set_Message_Box_Hook([&](const std::string& m) { shown.push_back(m); });
  struct Seen {
    Choice choice;
    std::string name;
    i16 mass_bar, inertia_bar;
    bool mesh;
  };
  std::vector<Seen> seen;
  on_frame = [&](int f) {
    for (int at : {2, 62, 66, 70, 74, 78})
      if (f == at)
        seen.push_back({Current(), modShipSelection::Ship_Name(), modShipSelection::Bar_Target(2),
                        modShipSelection::Bar_Target(1), Is_Set(modShipSelection::Preview()->Loaded)});
    Clicks(f, {{kNextShip, 60}, {kNextShip, 64}, {kNextShip, 68}, {kPrevShip, 72}, {kNextShip, 76}, {kBack, 80}});
  };
  for (int visit = 0; visit < 2; ++visit) {
    frames = 0;
    modShipSelection::Init_Ship_Selection();
  }
  platform::Set_Message_Box_Hook(nullptr);
  ASSERT_EQ(seen.size(), 12u);
  for (size_t i = 0; i < seen.size(); ++i) {
    // Ships 0, 1, 2, 0, 2, 0 in each visit.
    const int ship = std::array{0, 1, 2, 0, 2, 0}[i % 6];
    SCOPED_TRACE(i);
    EXPECT_EQ(seen[i].choice, Choice(ship, 1));
    EXPECT_EQ(seen[i].mesh, ship != 2);
    EXPECT_EQ(seen[i].name.empty(), ship == 2);
    EXPECT_EQ(seen[i].mass_bar == -150, ship != 1) << "a blank mass reads 0";
    EXPECT_EQ(seen[i].inertia_bar == -400, ship != 0) << "an inertia that is no number reads 0";
  }
  EXPECT_EQ(shown, (std::vector<std::string>{"error loading xfile", "error loading xfile"})) << "once a visit";
}

TEST_F(ShipSelectionTest, ABarStillMovingJumpsToItsOldTargetThenMovesOneUnitAFrame) {
  // Ship 0's inertia bar heads for 100 (20 x 25 - 400), ship 1's for 40 (17.6 x 25 - 400).
  Write_Catalogue(2, {{0, "20"}, {1, "17.6"}});
  std::vector<int> shown;
  int clicked_at = -1;
  on_frame = [&](int f) {
    shown.push_back(modShipSelection::Bar_Shown(1));
    if (clicked_at < 0 && shown.back() == 70) clicked_at = f;
    if (clicked_at > 0) Clicks(f, {{kNextShip, clicked_at}, {kBack, clicked_at + 80}});
  };
  modShipSelection::Init_Ship_Selection();
  ASSERT_GT(clicked_at, 40);  // after the slide
  // Grew one unit a frame, then 100 at the click's frame less the frame's step, down to 40.
  std::vector<int> want{69, 70};
  for (int k = 0; k < 75; ++k) want.push_back(std::max(40, 99 - k));
  EXPECT_EQ(std::vector<int>(shown.begin() + clicked_at - 2, shown.begin() + clicked_at + 75), want);
}

TEST_F(ShipSelectionTest, AFrameDrawsCentredNameBarsHighlightAndALitSpinningShip) {
  // Without the background only what the screen draws itself differs from the clear colour.
  std::filesystem::remove(dir_.path() + "/Gfx/ShipSelection_bg.bmp");
  std::pair<int, int> name, bar1, bar3;
  uint32_t lit_button = 0, plain_button = 0;
  std::vector<uint32_t> ship_a, ship_b;
  on_frame = [&](int f) {
    Clicks(f, {{kNextShip, 60}, {kStart, 221}});  // "Kestrel GT": 10 characters
    if (f == 200) Move(145, 370);
    if (f == 202) lit_button = At(100, 352), Move(600, 20);
    if (f == 204) {
      plain_button = At(100, 352);
      name = Drawn_Columns(380, 120, 560, 135);
      bar1 = Drawn_Columns(400, 321, 640, 339);
      bar3 = Drawn_Columns(400, 381, 640, 399);
      ship_a = Read(330, 150, 570, 310);
    }
    if (f == 220) ship_b = Read(330, 150, 570, 310);
  };
  modShipSelection::Init_Ship_Selection();
  EXPECT_EQ(modShipSelection::Ship_Name(), "Kestrel GT");
  EXPECT_TRUE(name.first >= 410 && name.first <= 413 && name.second >= 520 && name.second < 530)
      << name.first << ".." << name.second << ": centred";
  // Thrust 0.25 -> 100 units, drawn 98 pixels wide; mass 8.5 -> 62 (62.5 to even) -> 60.
  EXPECT_EQ(std::make_pair(bar1, bar3), std::make_pair(std::make_pair(415, 512), std::make_pair(415, 474)));
  // Highlighted cells are orange, normal ones steel blue.
  EXPECT_GT(lit_button >> 16 & 0xFF, lit_button & 0xFF);
  EXPECT_LT(plain_button >> 16 & 0xFF, plain_button & 0xFF);
  // The ship: shaded by the light (not one flat colour), and turning.
  int lo = 255, hi = 0;
  for (uint32_t p : ship_a)
    if (p != kClear) lo = std::min(lo, int(p >> 8 & 0xFF)), hi = std::max(hi, int(p >> 8 & 0xFF));
  EXPECT_GT(hi - lo, 60);
  EXPECT_NE(ship_a, ship_b);
}

}  // namespace
