#include <filesystem>
#include <set>

#include "core/extras.h"
#include "gfx/XFileClass.h"
#include "screens/modDInput.h"
#include "screens/modHiScore.h"
#include "screens/modOptions.h"
#include "screens/modShipSelection.h"
#include "support/screen_fixture.h"
#include "vehicle/create_racers.h"
#include "vehicle/racer_box.h"

using namespace modMain;
namespace fs = std::filesystem;

namespace modHiScore {
// Failures print the six fields.
void PrintTo(const HiScoreTable& t, std::ostream* os) {
  *os << t.BestTopSpeed << " \"" << t.BestTopSpeedName << "\" " << t.BestLap << " \"" << t.BestLapName << "\" "
      << t.BestRace << " \"" << t.BestRaceName << "\"";
}
}  // namespace modHiScore

namespace {

using modHiScore::HiScoreTable;

HiScoreTable Decode(const std::string& bytes, int& fields) {
  HiScoreTable t;
  fields = modHiScore::Decode_HiScores(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size(), t);
  return t;
}

const HiScoreTable kLong{212, "Commander Long-Name", 41230, "Second Holder", 131070, "Third"};
const HiScoreTable kShort{230, "Al", 40000, "", 125000, "Bo"};

TEST(HiScores, FileIsSixFieldsCutFilesReadAsFarAsTheyHoldSavesSurviveKillsTiesNeverCountAndTimesRoundToEven) {
  const std::string expected = std::string("\x5F\x00\x03\x00", 4) + "Ann" +
                               std::string("\x40\x9C\x00\x00\x00\x00\x88\x59\xF9\xFF\x02\x00", 12) + "Bo";
  const HiScoreTable t{95, "Ann", 40000, "", -435832, "Bo"};
  EXPECT_EQ(modHiScore::Encode_HiScores(t), expected);
  int fields = 0;
  EXPECT_EQ(std::pair(Decode(expected, fields), fields), std::pair(t, 6));

  const std::string whole = modHiScore::Encode_HiScores(kLong);
  // Every cut of a valid file: the fields it holds whole, nothing after them.
  for (size_t cut = 0; cut <= whole.size(); ++cut) {
    const HiScoreTable got = Decode(whole.substr(0, cut), fields);
    const HiScoreTable want{i16(fields >= 1 ? kLong.BestTopSpeed : 0), fields >= 2 ? kLong.BestTopSpeedName : "",
                            fields >= 3 ? kLong.BestLap : 0,           fields >= 4 ? kLong.BestLapName : "",
                            fields >= 5 ? kLong.BestRace : 0,          fields >= 6 ? kLong.BestRaceName : ""};
    EXPECT_EQ(got, want) << cut;
    EXPECT_EQ(fields == 6, cut == whole.size()) << cut;
  }
  // A negative name count is an empty name and reading goes on; a count past the end stops it.
  const std::string negative("\x10\x00\xFF\xFF\x20\x00\x00\x00\x00\x80\x80\x07\x00\x00\x01\x00Z", 17);
  EXPECT_EQ(std::pair(Decode(negative, fields), fields), std::pair(HiScoreTable{16, "", 32, "", 1920, "Z"}, 6));
  const std::string past("\x10\x00\xFF\x7Fwxyz", 8);
  EXPECT_EQ(std::pair(Decode(past, fields), fields), std::pair(HiScoreTable{16, "", 0, "", 0, ""}, 1));

  testenv::ScratchAppDir dir;
  const std::string path = dir.path() + "/Hiscores.Dat", fresh = modHiScore::Encode_HiScores(kShort);
  ASSERT_TRUE(modHiScore::Write_HiScore_File(path, kLong));
  const std::string long_bytes = testenv::Read_File(path);
  ASSERT_TRUE(modHiScore::Write_HiScore_File(path, kShort));
  EXPECT_EQ(testenv::Read_File(path), fresh + long_bytes.substr(fresh.size()));
  EXPECT_EQ(modHiScore::Read_HiScore_File(path), kShort);
  EXPECT_FALSE(fs::exists(path + ".new"));
  // Only a truly absent file is created; an unreadable one (a folder, a link to itself: root reads mode 000) is kept.
  fs::remove(path);
  EXPECT_EQ(modHiScore::Read_HiScore_File(path), HiScoreTable{});
  EXPECT_EQ(testenv::Read_File(path), "") << "created empty when absent";
  EXPECT_TRUE(fs::is_regular_file(path));

  for (const bool folder : {true, false}) {
    SCOPED_TRACE(folder ? "a folder" : "a link to itself");
    fs::remove_all(path);
    Create_Log();
    if (folder) {
      fs::create_directories(path + "/inside");
    } else {
      fs::create_symlink("Hiscores.Dat", path);
    }
    EXPECT_EQ(modHiScore::Read_HiScore_File(path), HiScoreTable{});
    EXPECT_FALSE(modHiScore::Write_HiScore_File(path, kShort));
    EXPECT_EQ(!folder, fs::is_symlink(path));
    std::error_code loop;
    EXPECT_EQ(folder, fs::exists(path + "/inside", loop));
    EXPECT_FALSE(fs::exists(fs::symlink_status(path + ".new")));
    const auto log = testenv::Read_Lines_CRLF(Log_Path());
    ASSERT_EQ(log.size(), 4u);  // the start of the log, then one line each
    EXPECT_EQ(log[2].rfind("Data\\Hiscores.Dat cannot be read (", 0), 0u) << log[2];
    EXPECT_NE(log[3].find("the new records are not saved"), std::string::npos) << log[3];
  }
  // Saves killed at random leave one whole table or the other; a 256 KiB tail makes kills land inside writes.
  fs::remove_all(path);
  const std::string old_bytes = modHiScore::Encode_HiScores(kLong) + std::string(256 * 1024, '\x5A');
  const std::string new_bytes = fresh + old_bytes.substr(fresh.size());

  int interrupted_writes = 0, ended_new = 0;
  const int kills = testenv::Kill_While_Saving(
      [&] { testenv::Write_File(path, old_bytes), fs::remove(path + ".new"); },
      [&] { modHiScore::Write_HiScore_File(path, kShort), modHiScore::Write_HiScore_File(path, kLong); },
      [&](int round) {
        if (fs::exists(path + ".new")) ++interrupted_writes;
        const std::string now = testenv::Read_File(path);
        EXPECT_TRUE(now == old_bytes || now == new_bytes) << "round " << round << ": " << now.size() << " bytes";
        ended_new += now == new_bytes;
      });
  EXPECT_EQ(kills, 200);
  // Kills must catch copies part-way and both tables in place, or the test proves nothing.
  EXPECT_GT(interrupted_writes, 0);
  EXPECT_PRED3(testenv::Between, ended_new, 1, kills - 1);

  for (const auto& [ms, text] :
       {std::pair{83456, "01:23:46"}, {59996, "00:60:00"}, {60000, "01:00:00"}, {6000000, "100:00:00"}})
    EXPECT_EQ(modHiScore::Time_Text(ms), text) << ms;
  const HiScoreTable held{150, "Old", 40000, "Old", 125000, "Old"};
  modHiScore::RaceFigures same{150, {40000, 40500, 41000}, 125000};  // ties on all three
  EXPECT_FALSE(modHiScore::Is_New_Record(held, same));
  HiScoreTable after = held;
  modHiScore::Merge_Race(after, same, "New");
  EXPECT_EQ(after, held);

  auto faster = same;
  faster.LapTime[2] = 39999;
  EXPECT_TRUE(modHiScore::Is_New_Record(held, faster));
  modHiScore::Merge_Race(after, faster, "New");
  EXPECT_EQ(after, (HiScoreTable{150, "Old", 39999, "New", 125000, "Old"}));

  modHiScore::RaceFigures first{0, {41000, 40000, 40000}, 121000};
  EXPECT_TRUE(modHiScore::Is_New_Record(HiScoreTable{}, first));
  EXPECT_EQ(modHiScore::Fastest_Lap(first), 2);  // the first of the fastest
  HiScoreTable blank;
  modHiScore::Merge_Race(blank, first, "Ann");
  // A top speed of 0 is no record: that holder stays empty.
  EXPECT_EQ(blank, (HiScoreTable{0, "", 40000, "Ann", 121000, "Ann"}));
}

class HiScoreScreenTest : public ScreenTest {
 protected:
  void SetUp() override {
    ScreenTest::SetUp();
    fs::create_directories(dir_.path() + "/Data");
    GameState = kStateHiScore;
    Create_Racers(0);
    clsHumanPlayer& p = *Players[0];
    p.cTopSpeed = 212, p.cRaceTime = 121000;
    p.cLapTime(1) = 41000, p.cLapTime(2) = 40000, p.cLapTime(3) = 40000;
  }
  std::string Path() const { return dir_.path() + "/Data/Hiscores.Dat"; }
};

TEST_F(HiScoreScreenTest, TypedNameIsSavedOnTheFirstEnterAndTheSecondLeaves) {
  // One key a frame: Backspace on nothing, Shift A, A, Shift keypad 1, F12, keypad 0 (nothing),
  // 5, Space, Backspace; then B up to 23 characters. The name is read the frame after each key.
  const std::vector<std::pair<int, int16_t>> keys = {
      {-1, 8},  {1, 65},  {0, 65},  {1, 97}, {0, 123},
      {-1, 96}, {-1, 53}, {-1, 32}, {-1, 8}};  // shift: held, up, as it was
  std::vector<std::string> names;
  std::string saved_bytes;
  const auto read_name = [&] { names.push_back(modHiScore::Entered_Name()); };
  std::vector<Step> script;
  for (size_t i = 0; i < keys.size(); ++i)
    script.push_back({"type " + std::to_string(keys[i].second), nullptr, [&, i] {
                        if (i > 0) read_name();
                        if (keys[i].first >= 0) keys[i].first ? Key_Down(16) : Key_Up(16);
                        Key(keys[i].second);
                      }});
  script.push_back({"read", nullptr, read_name});
  for (int b = 0; b < 18; ++b) script.push_back({"type B", nullptr, [] { Key(66); }});
  script.push_back({"read", nullptr, read_name});
  script.push_back({"read, no key: cut to 22", nullptr, read_name});
  script.push_back({"Screenshot, Enter", nullptr, [] { Screenshot("hiscores"), Key(13); }});
  script.push_back({"saved", [] { return !modHiScore::Entering_Name(); },
                    [&] {
                      saved_bytes = testenv::Read_File(Path());
                      Key(13);
                    }});
  Play(script, modHiScore::Init_HiScore_Screen);
  const std::string name = "Aaa{5bbbbbbbbbbbbbbbbb";
  EXPECT_EQ(names, (std::vector<std::string>{"", "A", "Aa", "Aaa", "Aaa{", "Aaa{", "Aaa{5", "Aaa{5 ", "Aaa{5",
                                             name + "b", name}));
  EXPECT_EQ(modHiScore::Race_Fastest_Lap(), 2);
  EXPECT_EQ(saved_bytes, modHiScore::Encode_HiScores({212, name, 40000, name, 121000, name}));
  EXPECT_EQ(testenv::Read_Lines_CRLF(Settings_Path())[7], name);
  // The second Enter left; leaving saved the same table again and released the racer.
  EXPECT_EQ(std::pair(int(GameState), testenv::Read_File(Path())), std::pair(int(kStateMainMenu), saved_bytes));
  ASSERT_EQ(Players.size(), 1u);
  EXPECT_FALSE(Players[0]);
}

TEST_F(HiScoreScreenTest, WithoutARecordTheFirstEnterLeavesAndTiesKeepTheHolders) {
  const HiScoreTable held{212, "Old", 40000, "Old", 121000, "Old"};
  const std::string before = modHiScore::Encode_HiScores(held) + "tail";
  testenv::Write_File(Path(), before);
  PlayerName = "Pilot";
  frmMain::Form_KeyDown(13, 0);  // the Enter that ended the race, still held, counts for nothing
  int enter_at = 0;
  Play({{"type into nothing", nullptr, [] { Key(65); }}, {"Enter", nullptr, [&] { Key(13), enter_at = frames; }}},
       modHiScore::Init_HiScore_Screen);
  // Enter ends the loop on the next frame; saving on the way out pumps once more.
  EXPECT_EQ(std::pair(frames - enter_at, int(GameState)), std::pair(2, int(kStateMainMenu)));
  EXPECT_EQ(modHiScore::Entered_Name(), "Pilot");
  EXPECT_EQ(modHiScore::Table(), held);
  EXPECT_EQ(testenv::Read_File(Path()), before);
}

TEST_F(HiScoreScreenTest, ShortOrCorruptFilesNeverStopTheScreen) {
  // A top speed of 300, then a name said to be 30000 bytes long in a 7-byte file.
  testenv::Write_File(Path(), std::string("\x2C\x01\x30\x75", 4) + "abc");
  PlayerName = "Kit";
  Play({{"the table read as far as it holds", nullptr,
         [] {
           EXPECT_EQ(modHiScore::Table(), (HiScoreTable{300, "", 0, "", 0, ""}));
           EXPECT_TRUE(modHiScore::Entering_Name());
           Key(13);
         }},
        {"saved", [] { return !modHiScore::Entering_Name(); }, [] { Key(13); }}},
       modHiScore::Init_HiScore_Screen);
  EXPECT_EQ(modHiScore::Table(), (HiScoreTable{300, "", 40000, "Kit", 121000, "Kit"}));
  EXPECT_EQ(modHiScore::Read_HiScore_File(Path()), modHiScore::Table());
  // No file and no racers at all: the empty table, zero figures, no crash.
  fs::remove(Path());
  Players.clear();
  GameState = kStateHiScore;
  Play({{"Enter", nullptr, [] { Key(13); }}, {"saved", [] { return !modHiScore::Entering_Name(); }, [] { Key(13); }}},
       modHiScore::Init_HiScore_Screen);
  EXPECT_EQ(std::pair(int(GameState), fs::exists(Path())), std::pair(int(kStateMainMenu), true)) << "left, file made";
}

// Centres of the clickable areas at 640 x 480: easier, harder, tick, store, defaults, the four key rows.
constexpr float kArea[9][2] = {{337, 136}, {437, 136}, {300, 162}, {440, 420}, {230, 420},
                               {300, 286}, {300, 310}, {300, 334}, {300, 358}};
enum { kEasier, kHarder, kTick, kStore, kDefaults, kRowUp, kRowDown, kRowLeft, kRowRight };

class Options : public ScreenTest {
 protected:
  // A click, after which the pointer leaves so the rows are not under the fountain.
  static Step Click_At(std::string what, float x, float y, std::function<bool()> until = nullptr) {
    return {std::move(what), std::move(until), [x, y] { Move(x, y), Press(), Release(), Move(620, 20); }};
  }
  static Step Click(int area, std::function<bool()> until = nullptr) {
    static const char* const kNames[] = {"easier", "harder",   "tick",     "store",    "defaults",
                                         "Up row", "Down row", "Left row", "Right row"};
    return Click_At(std::string("click ") + kNames[area], kArea[area][0], kArea[area][1], std::move(until));
  }
  static std::function<bool()> Capturing(int slot) {
    return [slot] { return modOptions::Capture_Slot() == slot; };
  }
  static std::function<bool()> Showing(int x, int y, const std::string& text) {
    return [=] { return Shows_Text(x, y, 2, text); };
  }
  void Run(std::vector<Step> script) {
    GameState = kStateOptions;
    Play(std::move(script), modOptions::Init_Options_Screen);
  }
  static std::string Saved() { return testenv::Read_File(Settings_Path()); }
  uint32_t Sheet_Pixel(int x, int y) const {
    const auto pic =
        platform::Load_BMP(dir_.path() + "/Gfx/OptionScr_buttons.bmp", 115, 97, platform::PixelFormat::X8R8G8B8);
    return pic ? pic->Pixel(x, y) & 0xFFFFFF : 0xFFFFFFFF;
  }
};

TEST_F(Options, EscapeCancelsTheLowestHeldCodeDecidesAndUnnamedCodesLeaveTheRowWaiting) {
  Run({Click(kRowDown),
       {"capture of the Down row", Capturing(2), [] { Key(27); }},  // Escape: cancels, the old key stays
       {"Escape ends the capture", Capturing(0), [] { EXPECT_EQ(KeyDown, 40); }},
       Click(kRowLeft),
       {"capture of the Left row", Capturing(3),
        [] { Key_Down(68), Key_Down(65), Key_Up(65), Key_Up(68); }},  // D and A in one frame: A has the lower code
       {"D and A end the capture", Capturing(0), [] { EXPECT_EQ(KeyLeft, 65); }},
       Click(kRowRight),
       {"capture of the Right row", Capturing(4), [] { Key_Down(186); }},  // no name (124 and up): still waiting
       Click(kHarder),                                                     // ignored while a key is awaited
       {"a frame after the click", nullptr,
        [] {
          EXPECT_EQ(std::pair(int(modOptions::Capture_Slot()), int(Difficulty)), std::pair(4, 1))
              << "capture, difficulty";
          EXPECT_TRUE(Shows_Text(295, 351, 2, "-----")) << "the Right row still waits";
          Move(300, 200);
        }},
       {"screenshot", nullptr, [] { Screenshot("options_capture"); }},
       {"close", nullptr, [] { Key_Down(27), platform::Post_Event({platform::EventKind::Quit}); }}});
  EXPECT_EQ(KeyRight, 39);
  EXPECT_EQ(Saved(), "") << "closing the window stores nothing";
}

TEST_F(Options, DifficultyStaysInRangeTheTickTogglesDefaultsAreStoredThenAClickedRowTakesWAndAnUnnamedKeyItsDefault) {
  Difficulty = 3, SkipSetup = 5;
  KeyUp = 87, KeyDown = 83, KeyLeft = 65, KeyRight = 68;
  PlayerName = "Vex";
  // The level word and the tick come from the button sheet.
  Run({Click(kHarder),
       Click(kEasier),
       {"difficulty 2", [] { return Difficulty == 2; },
        [&] {
          EXPECT_EQ(At(372, 136), Sheet_Pixel(30, 33)) << "hard";
          EXPECT_EQ(At(387, 134), Sheet_Pixel(45, 31)) << "hard";
          EXPECT_NE(At(454, 165), Sheet_Pixel(47, 93)) << "no tick";
        }},
       Click(kEasier),
       Click(kEasier),
       Click(kEasier),
       {"difficulty 0", [] { return Difficulty == 0; },
        [&] { EXPECT_EQ(At(372, 136), Sheet_Pixel(30, 61)) << "easy"; }},
       Click(kTick),  // any value but 0 becomes 0
       {"the tick cleared", [] { return SkipSetup == 0; },
        [&] {
          EXPECT_EQ(At(455, 165), Sheet_Pixel(47, 93)) << "tick";
          Move(230, 420);
        }},
       {"the pointer on defaults", nullptr,
        [&] {
          EXPECT_EQ(At(174, 418), Sheet_Pixel(3, 71)) << "the defaults button lights under the pointer";
          EXPECT_NE(At(424, 418), Sheet_Pixel(3, 85)) << "the store button does not";
          Screenshot("options_defaults_lit");
        }},
       Click(kDefaults),
       Click(kStore)});
  EXPECT_EQ(Saved(), "0\r\n640\r\n480\r\n16\r\n<none>\r\n<none>\r\n1\r\nVex\r\n0\r\n38\r\n40\r\n37\r\n39\r\n");

  testenv::Write_File(Settings_Path(),
                      "1\r\n640\r\n480\r\n16\r\n<none>\r\n<none>\r\n2\r\nAce\r\n0\r\n38\r\n40\r\n37\r\n27\r\n");
  Read_Settings();
  ASSERT_EQ(KeyRight, 27);
  int clicked_at = 0;
  Run({{"Right Arrow in the Right row", Showing(295, 351, "Right Arrow")},
       Click(kRowUp, Showing(295, 279, "Up Arrow")),
       {"capture of the Up row", Capturing(1)},
       {"----- in the Up row", Showing(295, 279, "-----"), [] { Key(87); }},
       {"W ends the capture", Capturing(0), [] { EXPECT_EQ(KeyUp, 87); }},
       {"W in the Up row", Showing(295, 279, "W"), [] { EXPECT_FALSE(Shows_Text(295, 279, 2, "-----")); }},
       {"click store", nullptr, [&] { Click(kStore).act(), clicked_at = frames; }}});
  // Seen the frame after the click, acted on at once: the save pumps once between write and read.
  EXPECT_EQ(frames, clicked_at + 2) << "the store button leaves on the frame it is clicked";
  EXPECT_EQ(GameState, kStateMainMenu);
  EXPECT_EQ(Saved(), "1\r\n640\r\n480\r\n16\r\n<none>\r\n<none>\r\n2\r\nAce\r\n0\r\n87\r\n40\r\n37\r\n39\r\n")
      << "W stored for Up, the unnamed key as Right Arrow";
  EXPECT_EQ(std::pair(KeyUp, KeyRight), (std::pair<i16, i16>(87, 39))) << "read back after the write";
}

TEST_F(Options, ThePadsStickAndAChooseItItsControlsBindAndTheVolumeIsStoredBesideTheSettings) {
  using platform::Set_Virtual_Pad;
  ASSERT_TRUE(platform::Attach_Virtual_Pad("Test Pad"));
  const auto volume_left = [] { return Click_At("click the volume's left arrow", 233, 193); };
  // Looked at once the particles left on the way have died.
  const auto settled = [] {
    for (const auto& p : modMouseParticles::Particles)
      if (p.Life > 0 && p.X < 500 && p.Y > 130 && p.Y < 310) return false;
    return true;
  };
  Run({{"Keyboard in the device row", Showing(171, 254, "Keyboard")},
       volume_left(),
       volume_left(),
       volume_left(),
       // The stick carries the pointer from the top right corner onto the device row; A clicks there.
       {"stick", nullptr,
        [] { Set_Virtual_Pad(platform::kPadLeftStickLeft, 1), Set_Virtual_Pad(platform::kPadLeftStickDown, 1); }},
       {"the stick moves the pointer onto the device row", [] { return frmMain::MouseY >= 256; },
        [] {
          Set_Virtual_Pad(platform::kPadLeftStickLeft, 0), Set_Virtual_Pad(platform::kPadLeftStickDown, 0);
          Set_Virtual_Pad(platform::kPadA, 1);
        }},
       {"A chooses the pad", [] { return ControlDevice == 1; },
        [] { Set_Virtual_Pad(platform::kPadA, 0), Move(620, 20); }},
       Click_At("click the ghost switch, beside the volume", 400, 193),
       {"the fountain gone from the rows", settled,
        [] {
          Screenshot("options_pad");
          EXPECT_TRUE(Shows_Text(171, 254, 2, "Test Pad")) << "the pad's name";
          EXPECT_TRUE(Shows_Text(295, 279, 2, "Right Trigger")) << "the default thrust";
          // Bars 1 to 7 of the volume wedge lit, the eighth not.
          EXPECT_EQ(At(244 + 6 * 6 + 1, 198), 0x38D8F0u);
          EXPECT_NE(At(244 + 6 * 7 + 1, 198), 0x38D8F0u);
          EXPECT_GT(At(458, 192) & 0xFF, 150u) << "the ghost switch ticked";
          EXPECT_EQ(At(458, 192), At(458, 161)) << "with the setup row's tick";
        }},
       Click(kRowUp),
       {"capture of the Up row", Capturing(1), [] { Set_Virtual_Pad(platform::kPadX, 1); }},
       {"X let go", nullptr, [] { Set_Virtual_Pad(platform::kPadX, 0); }},
       {"X ends the capture", Capturing(0),
        [] {
          EXPECT_EQ(frmMain::PadBinding[0], platform::kPadX);
          EXPECT_TRUE(Shows_Text(295, 279, 2, "X"));
        }},
       Click(kRowDown),
       {"capture of the Down row", Capturing(2), [] { Set_Virtual_Pad(platform::kPadStart, 1); }},
       {"Start let go", nullptr, [] { Set_Virtual_Pad(platform::kPadStart, 0); }},
       {"Start cancels the capture", Capturing(0),
        [] {
          EXPECT_EQ(frmMain::PadBinding[1], platform::kPadLeftTrigger);
          platform::Detach_Virtual_Pad();
        }},
       {"no pad in the device row", Showing(171, 254, "no gamepad connected"), [] { Screenshot("options_no_pad"); }},
       Click(kStore)});
  EXPECT_EQ(Saved(), "0\r\n640\r\n480\r\n16\r\n<none>\r\n<none>\r\n1\r\n\r\n1\r\n38\r\n40\r\n37\r\n39\r\n")
      << "ControlDevice 1, the keys kept";
  EXPECT_EQ(testenv::Read_File(extras::Path()), "ghost=1\npad_thrust=2\nvolume=7\n");
}

TEST(KeyNames, NamedCodesAndFiftyTwoUniqueNamesAllBelow124) {
  std::string shown;
  for (int code : {13, 32, 37, 39, 40, 48, 65, 86, 90, 96, 105})
    shown += std::to_string(code) + "=" + modDInput::Get_Key_Name(static_cast<i16>(code)) + " ";
  EXPECT_EQ(shown,
            "13=Enter 32=Spacebar 37=Left Arrow 39=Right Arrow 40=Down Arrow 48=0 65=A 86=V 90=Z 96=Numpad 0 "
            "105=Numpad 9 ");
  // The 51 of the table plus V; every other code (Escape, Shift, punctuation, each range's neighbours) is "<invalid>".
  std::vector<std::string> names;
  for (int code = -32768; code <= 32767; ++code) {
    const std::string n = modDInput::Get_Key_Name(static_cast<i16>(code));
    if (n == "<invalid>") continue;
    EXPECT_PRED3(testenv::Between, code, 0, 123) << code << " is named " << n;
    names.push_back(n);
  }
  EXPECT_EQ(std::pair(names.size(), std::set(names.begin(), names.end()).size()), std::pair(size_t{52}, size_t{52}))
      << "named codes, different names";
}

// Centres of the six buttons: back, start, previous/next skin, previous/next ship.
constexpr float kButton[6][2] = {{145, 370}, {145, 420}, {152, 130}, {152, 187}, {128, 159}, {176, 159}};
enum { kBack, kStart, kPrevSkin, kNextSkin, kPrevShip, kNextShip };
using Choice = std::pair<int, int>;

class ShipSelectionTest : public ScreenTest {
 protected:
  void SetUp() override {
    ScreenTest::SetUp();
    for (const char* d : {"Data", "Objects", "Textures"}) dir_.Copy_From_Game(d);
    NumOpponents = 4, GameState = kStateShipSelection;
  }
  // The first `records` generated ships under a count of n; line 2 + 7 ship + k is field k (2 mass, 3 inertia).
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
  // Columns [first, last] in rows [top, bottom) whose pixels differ from the clear colour; none: (right, -1).
  static std::pair<int, int> Drawn_Columns(int left, int top, int right, int bottom) {
    const std::vector<uint32_t> px = Read(left, top, right, bottom);
    std::pair<int, int> drawn{right, -1};
    for (size_t i = 0; i < px.size(); ++i) {
      const int x = left + int(i) % (right - left);
      if (px[i] != kClear) drawn = {std::min(drawn.first, x), std::max(drawn.second, x)};
    }
    return drawn;
  }
  static bool slid_in() { return modShipSelection::Button_Slide() == 0; }
  static Choice Current() { return {Players[0]->cCurrentlySelectedShip, Players[0]->cCurrentlySelectedSkin}; }
};

TEST_F(ShipSelectionTest, SlidingButtonsIgnoreClicksThenShipsAndSkinsWrapBothWaysAndStartKeepsTheRacers) {
  Write_Catalogue(3, 3);
  // The first click comes while the buttons slide in (about 600 ms).
  std::vector<Step> script = {
      Press_Button(kPrevShip, [] { return !slid_in(); }),
      {"slid in", slid_in, [] { EXPECT_EQ(Current(), Choice(0, 1)) << "a click while sliding does nothing"; }}};
  const int clicks[][3] = {{kPrevShip, 2, 1}, {kNextShip, 0, 1}, {kPrevSkin, 0, 3},
                           {kNextSkin, 0, 1}, {kPrevSkin, 0, 3}, {kNextShip, 1, 3}};
  for (const auto& [button, ship, skin] : clicks)
    script.insert(script.end(), {Press_Button(button), Choice_Is({ship, skin})});
  script.insert(script.end(), {{"screenshot", nullptr, [] { Screenshot("ship_selection"); }}, Press_Button(kStart)});
  Play(script, modShipSelection::Init_Ship_Selection);
  EXPECT_EQ(GameState, kStateRace);
  ASSERT_EQ(Players.size(), 5u);
  for (size_t i = 0; i < 5; ++i) EXPECT_EQ(Players[i] ? Players[i]->RacerKind : -1, i == 0 ? 1 : 2);
  EXPECT_EQ(Current(), Choice(1, 3));
  EXPECT_EQ(std::make_pair(modGameLoop::RacerBox.Lower(), modGameLoop::RacerBox.Upper()), std::make_pair(0, 4));
  EXPECT_FALSE(modShipSelection::Preview());
}

// A count past the records, ship 0's mass blank, ship 1's inertia no number; each visit starts at ship 0, skin 1.
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
  EXPECT_EQ(GameState, kStateMainMenu);
  ASSERT_EQ(Players.size(), 5u);
  EXPECT_EQ(std::pair(Players[0] == nullptr, Players[4] == nullptr), std::pair(true, true))
      << "racers 0 and 4 released";
  NumOpponents = 0;
  Play(visit, modShipSelection::Init_Ship_Selection);
  EXPECT_EQ(Players.size(), 1u);
  platform::Set_Message_Box_Hook(nullptr);
  EXPECT_EQ(shown, (std::vector<std::string>{"error loading xfile", "error loading xfile"})) << "once a visit";
}

TEST_F(ShipSelectionTest, ABarStillMovingJumpsToItsOldTargetAndAFrameDrawsCentredNameBarsHighlightAndALitShip) {
  // Ship 0's inertia bar heads for 100 (20 x 25 - 400), ship 1's for 40 (17.6 x 25 - 400).
  Write_Catalogue(2, 2, {{2 + 3, "20"}, {2 + 7 + 3, "17.6"}});
  // Without the background only what the screen draws itself differs from the clear colour.
  fs::remove(dir_.path() + "/Gfx/ShipSelection_bg.bmp");
  std::vector<int> shown;
  int clicked_at = -1;
  on_frame = [&](int) { shown.push_back(modShipSelection::Bar_Shown(1)); };
  std::pair<int, int> name, bar1, bar3;
  uint32_t lit_button = 0, plain_button = 0;
  std::vector<uint32_t> ship_a, ship_b;
  int read_at = 0;
  using modShipSelection::Bar_Shown, modShipSelection::Bar_Target;
  const auto bars_settled = [] {
    return Bar_Shown(0) == Bar_Target(0) && Bar_Shown(1) == Bar_Target(1) && Bar_Shown(2) == Bar_Target(2);
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
  EXPECT_NEAR(name.first, 411.5, 1.5) << "from 410 to 413";
  EXPECT_NEAR(name.second, 524.5, 4.5) << "from 520 to 529";
  // Thrust 0.25 -> 100 units, drawn 98 pixels wide; mass 8.5 -> 62 (62.5 to even) -> 60.
  EXPECT_EQ(std::make_pair(bar1, bar3), std::make_pair(std::make_pair(415, 512), std::make_pair(415, 474)));
  // Highlighted cells are orange, normal ones steel blue.
  EXPECT_GT(testenv::Red(lit_button), testenv::Blue(lit_button));
  EXPECT_LT(testenv::Red(plain_button), testenv::Blue(plain_button));
  // The ship: shaded by the light (not one flat colour).
  int lo = 255, hi = 0;
  for (uint32_t p : ship_a)
    if (p != kClear) lo = std::min(lo, testenv::Green(p)), hi = std::max(hi, testenv::Green(p));
  EXPECT_GT(hi - lo, 60);
  EXPECT_NE(ship_a, ship_b) << "the ship turns: 16 frames later it looks different";
}

}  // namespace
