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
  // The first `records` generated ships under a count of n, some file lines replaced (line 2 + 7 x ship + k
  // holds field k of that ship, from 0: 2 the mass, 3 the inertia).
  void Write_Catalogue(int n, int records, const std::vector<std::pair<int, std::string>>& replaced = {}) {
    auto lines = testenv::Read_Lines_CRLF(testenv::Game_Dir() + "/Data/Ships.Dat");
    for (const auto& [line, text] : replaced) lines[size_t(line - 1)] = text;
    std::string out = std::to_string(n) + "\r\n";
    for (int i = 1; i <= 7 * records; ++i) out += lines[size_t(i)] + "\r\n";
    testenv::Write_File(dir_.path() + "/Data/Ships.Dat", out);
  }
  static Step Press_Button(int button, std::function<bool()> until = slid_in) {
    static const char* const kNames[] = {"back", "start", "previous skin", "next skin", "previous ship", "next ship"};
    return Click(std::string("click ") + kNames[button], kButton[button][0], kButton[button][1], std::move(until));
  }
  // Waits for the choice the last click makes.
  static Step Choice_Is(Choice c) {
    return {"ship " + std::to_string(c.first) + " skin " + std::to_string(c.second), [c] { return Current() == c; }};
  }
  // Columns [first, last] in rows [top, bottom) whose pixels differ from the clear colour.
  static std::pair<int, int> Drawn_Columns(int left, int top, int right, int bottom) {
    const std::vector<uint32_t> px = Read(left, top, right, bottom);
    int first = -1, last = -1;
    for (int x = 0; x < right - left; ++x)
      for (int y = 0; y < bottom - top; ++y)
        if (px[size_t(y * (right - left) + x)] != kClear) {
          if (first < 0) first = left + x;
          last = left + x;
        }
    return {first, last};
  }
  static bool slid_in() { return modShipSelection::Button_Slide() == 0; }
  static Choice Current() {
    return {modMain::Players[0]->cCurrentlySelectedShip, modMain::Players[0]->cCurrentlySelectedSkin};
  }
};

TEST_F(ShipSelectionTest, SlidingButtonsIgnoreClicksThenShipsAndSkinsWrapBothWaysAndStartKeepsTheRacers) {
  Write_Catalogue(3, 3);
  // The first click comes while the buttons slide in (about 600 ms).
  Play({Press_Button(kPrevShip, [] { return !slid_in(); }),
        {"slid in", slid_in, [] { EXPECT_EQ(Current(), Choice(0, 1)) << "a click while sliding does nothing"; }},
        Press_Button(kPrevShip),
        Choice_Is({2, 1}),
        Press_Button(kNextShip),
        Choice_Is({0, 1}),
        Press_Button(kPrevSkin),
        Choice_Is({0, 3}),
        Press_Button(kNextSkin),
        Choice_Is({0, 1}),
        Press_Button(kPrevSkin),
        Choice_Is({0, 3}),
        Press_Button(kNextShip),
        Choice_Is({1, 3}),
        {"screenshot", nullptr, [] { Screenshot("ship_selection"); }},
        Press_Button(kStart)},
       modShipSelection::Init_Ship_Selection);
  EXPECT_EQ(modMain::GameState, modMain::kStateRace);
  ASSERT_EQ(modMain::Players.size(), 5u);
  for (size_t i = 0; i < 5; ++i) EXPECT_EQ(modMain::Players[i] ? modMain::Players[i]->RacerKind : -1, i == 0 ? 1 : 2);
  EXPECT_EQ(Current(), Choice(1, 3));
  EXPECT_EQ(std::make_pair(modGameLoop::RacerBox.Lower(), modGameLoop::RacerBox.Upper()), std::make_pair(0, 4));
  EXPECT_FALSE(modShipSelection::Preview());
}

// A count one past the records, ship 0's mass blank and ship 1's inertia not a number: the
// screen shows what each record holds, and the missing mesh of the ship past the end is
// told once a visit, however often the player comes back to it. Every visit starts at the
// first ship and skin, whatever the last one left; back releases the racers.
TEST_F(ShipSelectionTest, ADamagedCatalogueShowsWhatItHoldsTellsAMissingMeshOnceAndBackReleasesTheRacers) {
  Write_Catalogue(3, 2, {{2 + 2, ""}, {2 + 7 + 3, "heavy"}});
  std::vector<std::string> shown;
  platform::Set_Message_Box_Hook([&](const std::string& m) { shown.push_back(m); });
  const auto look = [] {
    const int ship = Current().first;
    SCOPED_TRACE(ship);
    EXPECT_EQ(Is_Set(modShipSelection::Preview()->Loaded), ship != 2);
    EXPECT_EQ(modShipSelection::Ship_Name().empty(), ship == 2);
    EXPECT_EQ(modShipSelection::Bar_Target(2) == -150, ship != 1) << "a blank mass reads 0";
    EXPECT_EQ(modShipSelection::Bar_Target(1) == -400, ship != 0) << "an inertia that is no number reads 0";
  };
  std::vector<Step> visit = {{"at entry: the first ship and skin", [] { return Current() == Choice(0, 1); }, look, 1}};
  for (const auto& [button, ship] :
       {std::pair{kNextShip, 1}, {kNextShip, 2}, {kNextShip, 0}, {kPrevShip, 2}, {kNextShip, 0}, {kNextShip, 1}}) {
    visit.push_back(Press_Button(button));
    visit.push_back(Choice_Is({ship, 1}));
    visit.back().act = look;
  }
  visit.push_back(Press_Button(kNextSkin));
  visit.push_back(Choice_Is({1, 2}));
  visit.push_back(Press_Button(kBack));
  Play(visit, modShipSelection::Init_Ship_Selection);
  EXPECT_EQ(modMain::GameState, modMain::kStateMainMenu);
  ASSERT_EQ(modMain::Players.size(), 5u);
  EXPECT_FALSE(modMain::Players[0]);
  EXPECT_FALSE(modMain::Players[4]);
  modMain::NumOpponents = 0;
  Play(visit, modShipSelection::Init_Ship_Selection);
  EXPECT_EQ(modMain::Players.size(), 1u);
  platform::Set_Message_Box_Hook(nullptr);
  EXPECT_EQ(shown, (std::vector<std::string>{"error loading xfile", "error loading xfile"})) << "once a visit";
}

TEST_F(ShipSelectionTest, ABarStillMovingJumpsToItsOldTargetAndAFrameDrawsCentredNameBarsHighlightAndALitShip) {
  // Ship 0's inertia bar heads for 100 (20 x 25 - 400), ship 1's for 40 (17.6 x 25 - 400).
  Write_Catalogue(2, 2, {{2 + 3, "20"}, {2 + 7 + 3, "17.6"}});
  // Without the background only what the screen draws itself differs from the clear colour.
  std::filesystem::remove(dir_.path() + "/Gfx/ShipSelection_bg.bmp");
  std::vector<int> shown;
  int clicked_at = -1;
  on_frame = [&](int) { shown.push_back(modShipSelection::Bar_Shown(1)); };
  std::pair<int, int> name, bar1, bar3;
  uint32_t lit_button = 0, plain_button = 0;
  std::vector<uint32_t> ship_a, ship_b;
  int read_at = 0;
  const auto bars_settled = [] {
    for (int i = 0; i < 3; ++i)
      if (modShipSelection::Bar_Shown(i) != modShipSelection::Bar_Target(i)) return false;
    return true;
  };
  Play({{"the inertia bar at 70", [&] { return shown.back() == 70; },
         [&] { clicked_at = frames, Press_Button(kNextShip).act(); }},
        {"75 frames after the click", [&] { return int(shown.size()) > clicked_at + 75; }},
        Choice_Is({1, 1}),  // "Kestrel GT": 10 characters
        {"the bars at their marks", bars_settled, [] { Move(145, 370); }},
        {"the pointer on back", nullptr, [&] { lit_button = At(100, 352), Move(600, 20); }},
        {"the pointer gone", nullptr,
         [&] {
           plain_button = At(100, 352);
           name = Drawn_Columns(380, 120, 560, 135);
           bar1 = Drawn_Columns(400, 321, 640, 339);
           bar3 = Drawn_Columns(400, 381, 640, 399);
           ship_a = Read(330, 150, 570, 310), read_at = frames;
         }},
        {"16 frames on", [&] { return frames >= read_at + 16; }, [&] { ship_b = Read(330, 150, 570, 310); }},
        Press_Button(kStart)},
       modShipSelection::Init_Ship_Selection);
  ASSERT_GT(clicked_at, 40);  // after the slide
  // Grew one unit a frame, then 100 at the click's frame less the frame's step, down to 40.
  std::vector<int> want{69, 70};
  for (int k = 0; k < 75; ++k) want.push_back(std::max(40, 99 - k));
  EXPECT_EQ(std::vector<int>(shown.begin() + clicked_at - 2, shown.begin() + clicked_at + 75), want);
  EXPECT_EQ(modShipSelection::Ship_Name(), "Kestrel GT");
  EXPECT_GE(name.first, 410);
  EXPECT_LE(name.first, 413);
  EXPECT_GE(name.second, 520);
  EXPECT_LT(name.second, 530);
  // Thrust 0.25 -> 100 units, drawn 98 pixels wide; mass 8.5 -> 62 (62.5 to even) -> 60.
  EXPECT_EQ(std::make_pair(bar1, bar3), std::make_pair(std::make_pair(415, 512), std::make_pair(415, 474)));
  // Highlighted cells are orange, normal ones steel blue.
  EXPECT_GT(lit_button >> 16 & 0xFF, lit_button & 0xFF);
  EXPECT_LT(plain_button >> 16 & 0xFF, plain_button & 0xFF);
  // The ship: shaded by the light (not one flat colour).
  int lo = 255, hi = 0;
  for (uint32_t p : ship_a)
    if (p != kClear) lo = std::min(lo, int(p >> 8 & 0xFF)), hi = std::max(hi, int(p >> 8 & 0xFF));
  EXPECT_GT(hi - lo, 60);
  EXPECT_NE(ship_a, ship_b) << "the ship turns: 16 frames later it looks different";
}

}  // namespace
