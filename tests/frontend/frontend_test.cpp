#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>

#include "app/startup.h"
#include "frontend/frmSetup.h"
#include "frontend/modIntro.h"
#include "frontend/modMainScr.h"
#include "mathmesh/modMATH.h"
#include "support/screen_fixture.h"

using namespace modMain;

namespace {

using modMainScr::Button_Slide;

class Menu : public ScreenTest {
 protected:
  explicit Menu(int w = 640, int h = 480) : ScreenTest(w, h) {}
  // Runs the menu under the script; returns the frame the slide first read 0 after, and sets ended_at.
  int Run(std::vector<Step> script) {
    int over = -1;
    ended_at = 0;
    on_frame = [&](int f) {
      if (Button_Slide() == 0 && over < 0) over = f;
      if (!modMainScr::Running() && ended_at == 0) ended_at = f;
    };
    GameState = kStateMainMenu;
    Play(std::move(script), modMainScr::Main_Menu);
    return over;
  }
  // A press away from any button once the slide is over, then a press at (x, y) that leaves.
  std::vector<Step> Miss_Then_Hit(float miss_x, float miss_y, float x, float y) {
    return {{"slid in", [] { return Button_Slide() == 0; }, [=] { Move(miss_x, miss_y), Press(), Release(); }},
            {"the miss let go", nullptr, nullptr},
            {"press", nullptr, [=, this] { Move(x, y), Press(), pressed_at = frames; }}};
  }
  int ended_at = 0, pressed_at = 0;
};

struct Menu800 : Menu {
  Menu800() : Menu(800, 600) {}
};

TEST_F(Menu, ClicksDuringTheSlideDoNothingEachButtonChoosesItsStateAndButtonsSlideInAndLightUp) {
  NumOpponents = -1;
  const auto sliding = [] { return Button_Slide() > 0; };
  const int over = Run({Click("click button 1 while sliding", 300, 220, sliding),
                        {"the click let go", nullptr, nullptr},
                        {"press held from the slide", sliding, Press}});
  // 416 pixels at 0.4 per ms: 1040 ms of 16 ms frames, plus the first frame's zero step.
  EXPECT_NEAR(over, 67, 1);
  EXPECT_EQ(std::tuple(ended_at - over, int(NumOpponents), int(GameState)), std::tuple(1, 4, int(kStateShipSelection)));
  EXPECT_FALSE(frmMain::Pressed(frmMain::Press::LeftClick)) << "one press acts once";
  const int buttons[][5] = {{226, 150, 3, 0, 1}, {415, 238, 3, 4, 1}, {320, 270, 4, -1, 1}, {320, 338, 0, -1, 0}};
  for (const auto& [x, y, state, opponents, running] : buttons) {
    NumOpponents = -1;
    Running = kTrue;
    Run(Miss_Then_Hit(320, 194, float(x), float(y)));  // the miss between buttons 0 and 1
    EXPECT_EQ(ended_at, pressed_at + 1) << y;
    EXPECT_EQ(std::tuple(int(GameState), int(NumOpponents), int(Is_Set(Running))),
              std::tuple(state, opponents, running))
        << "the button at y " << y;
  }
  EXPECT_FALSE(modMainScr::Surfaces_Held()) << "surfaces are released on leaving";
  const auto pic = platform::Load_BMP(dir_.path() + "/Gfx/Buttons.bmp", 382, 156, platform::PixelFormat::X8R8G8B8);
  ASSERT_TRUE(pic);
  // Column 100 of each button, 30 rows down its row; lit on the left half, plain on the right.
  auto lit = [&](int i) { return pic->Pixel(100, 39 * i + 30) & 0xFFFFFF; };
  auto plain = [&](int i) { return pic->Pixel(291, 39 * i + 30) & 0xFFFFFF; };
  ASSERT_NE(lit(0), plain(0));
  Run({{"pointer over button 0, near its bottom right", nullptr, [] { Move(400, 187); }},
       {"half way in", [] { return Button_Slide() < 240; },
        [&] {
          const float drawn = Button_Slide() + 6.4f;  // the slide before this frame's step
          EXPECT_EQ(At(int(std::lround(225 - drawn)) + 100, 180), lit(0)) << "button 0 from the left";
          EXPECT_EQ(At(int(std::lround(225 + drawn)) + 100, 230), lit(1)) << "button 1 from the right";
        }},
       {"slid in", [] { return Button_Slide() == 0; }},
       {"a frame drawn in place", nullptr,
        [&] {
          EXPECT_EQ(At(325, 180), lit(0));
          EXPECT_EQ(At(400, 187), 0x18203Au) << "the pointer's hot spot is its top-left pixel";
          Screenshot("main_menu");
          Move(636, 476);
        }},
       {"the pointer in the corner", nullptr, [&] {
          EXPECT_EQ(At(325, 180), plain(0));
          EXPECT_EQ(At(636, 476), 0x18203Au) << "the pointer is clipped at the corner, not dropped";
          platform::Post_Event({platform::EventKind::Quit});
        }}});
}

TEST_F(Menu800, ButtonRectanglesAreScaledAndRoundedHalfToEven) {
  const int over = Run(Miss_Then_Hit(280, 188, 281, 188));  // one pixel left of button 0, then its top-left pixel
  const Rect r = modMainScr::Button_Rect(0), r3 = modMainScr::Button_Rect(3);
  EXPECT_EQ((std::array<int, 4>{r.left, r.top, r.right, r.bottom}), (std::array<int, 4>{281, 188, 520, 236}));
  EXPECT_EQ((std::array<int, 4>{r3.left, r3.top, r3.right, r3.bottom}), (std::array<int, 4>{281, 375, 520, 424}));
  EXPECT_EQ(std::pair(ended_at - pressed_at, int(NumOpponents)), std::pair(1, 0));
  EXPECT_NEAR(over * 16, 1300 + 32, 16) << "520 pixels at 0.4 per ms";
}

class Intro : public ScreenTest {
 protected:
  // Runs the intro under the script; returns per frame the page shown and the ms since the start.
  std::vector<std::pair<int, int32_t>> Run(std::vector<Step> script) {
    std::vector<std::pair<int, int32_t>> seen;
    const int32_t start = platform::Tick_Count();
    on_frame = [&](int) { seen.push_back({modIntro::Page(), platform::Tick_Count() - start}); };
    GameState = kStateIntro;
    Play(std::move(script), modIntro::Intro);
    return seen;
  }
  // The first frame showing page 2 (one past the end if none).
  static int First_Page_2(const std::vector<std::pair<int, int32_t>>& seen) {
    return int(std::find_if(seen.begin(), seen.end(), [](const auto& s) { return s.first == 2; }) - seen.begin()) + 1;
  }
  std::function<bool()> Shows(const char* file) const {
    return [this, file] {
      const auto pic =
          platform::Load_BMP(dir_.path() + "/Gfx/" + file, width_, height_, platform::PixelFormat::X8R8G8B8);
      return pic && (pic->Pixel(320, 240) & 0xFFFFFF) == At(320, 240);
    };
  }
};

TEST_F(Intro, WithoutInputEachPageStaysFourSecondsAClickOrEnterSkipsAPageAndAHeldPressSkipsBoth) {
  auto seen = Run({{"Intro1.bmp shown", Shows("Intro1.bmp"), [] { Screenshot("intro1"); }},
                   {"page 2", [] { return modIntro::Page() == 2; }},
                   {"Intro2.bmp shown", Shows("Intro2.bmp"), [] { Screenshot("intro2"); }}});
  int first2 = First_Page_2(seen);
  ASSERT_GT(first2, 1);
  EXPECT_LT(std::abs(seen[size_t(first2) - 2].second - 4000), 16) << "page 2 on the first frame after 4 s";
  EXPECT_NEAR(seen.back().second, 8000 + 24, 24) << "from 8000 to 8048 ms";
  EXPECT_EQ(GameState, kStateMainMenu);
  EXPECT_FALSE(modIntro::Picture_Held()) << "the picture is released on leaving";

  int at = 0;
  seen = Run({{"click on page 1", nullptr, [&] { Press(), Release(), at = frames; }}});
  first2 = First_Page_2(seen);
  EXPECT_EQ(first2, at + 1) << "the click is seen on the frame after it";
  EXPECT_GE(seen.back().second - seen[size_t(first2) - 1].second, 4000 - 16) << "page 2 then runs its full time";

  seen = Run({{"press on page 1, never let go", nullptr, [&] { Press(), at = frames; }}});
  EXPECT_EQ(First_Page_2(seen), at + 1);
  EXPECT_EQ(int(seen.size()), at + 2) << "still held on the next frame: page 2 ends too";
  EXPECT_FALSE(frmMain::Pressed(frmMain::Press::LeftClick)) << "the menu does not see the press";

  seen = Run({{"page 2; Enter held", [] { return modIntro::Page() == 2; }, [&] { Key_Down(13), at = frames; }}});
  ASSERT_GT(at, 240);
  EXPECT_EQ(std::pair(int(seen.size()) - at, int(GameState)), std::pair(1, int(kStateMainMenu)));
  EXPECT_FALSE(frmMain::Pressed(frmMain::Press::Enter));
  seen = Run({{"close", nullptr, [&] { platform::Post_Event({platform::EventKind::Quit}), at = frames; }}});
  EXPECT_EQ(int(seen.size()), at) << "closing the window leaves at once";
  EXPECT_TRUE(QuitRequested);
}

using namespace modMouseParticles;

using Particles = DisplayTest;

void Rest_At(i16 x, i16 y) {
  frmMain::MouseX = x, frmMain::MouseY = y;
  ASSERT_TRUE(Init_Particles());
}
void Frame(int frame_ms) {
  FrameTime = frame_ms;
  mod3Denhance::Clear_Screen();
  Update_Particles();
}
std::pair<float, float> VX_Range() {
  const auto [lo, hi] = std::minmax_element(modMouseParticles::Particles.begin(), modMouseParticles::Particles.end(),
                                            [](const Particle& a, const Particle& b) { return a.VX < b.VX; });
  return {lo->VX, hi->VX};
}

TEST_F(Particles, BirthMotionFadingRebirthThePointersPullAndClippedSprites) {
  frmMain::Reset_Input();
  Randomize(3);
  Rest_At(300, 200);
  Frame(16);
  for (const Particle& p : modMouseParticles::Particles)
    EXPECT_EQ((std::array{p.Life, p.X, p.Y}), (std::array{1.0f, 300.0f, 200.0f})) << "life, x, y";
  EXPECT_EQ(At(300, 200), kClear) << "nothing is drawn on the birth frame";
  const auto [lo, hi] = VX_Range();
  // At rest newborns spread both ways.
  EXPECT_GT(lo, -0.2f);
  EXPECT_LT(lo, 0);
  EXPECT_GT(hi, 0);
  EXPECT_LE(hi, 0.15f);
  const auto born = modMouseParticles::Particles;
  Frame(16);
  for (size_t i = 0; i < born.size(); ++i) {
    const Particle& p = modMouseParticles::Particles[i];
    EXPECT_FLOAT_EQ(p.Life, 1.0f - born[i].Fade * 16);
    EXPECT_FLOAT_EQ(p.X, 300 + born[i].VX * 16);
    EXPECT_FLOAT_EQ(p.VY, born[i].VY + 0.002f * 16);
  }
  // Nearly opaque yellow-white sprites pile up on the pointer; blending is off again.
  const uint32_t centre = At(300, 200);
  EXPECT_GT(testenv::Red(centre), 0xC0) << "red";
  EXPECT_GT(testenv::Green(centre), 0x80) << "green";
  EXPECT_LT(testenv::Blue(centre), 0x40) << "blue";
  EXPECT_EQ(At(300, 100), kClear) << "the sprite is 20 x 20, unscaled";
  EXPECT_EQ(platform::Render_State(*mod3Denhance::D3DDevice, platform::rs::AlphaBlendEnable), 0u);
  Rest_At(100, 100);
  Frame(16);
  Particle& first = modMouseParticles::Particles[0];
  first.Fade = 0.0051f;
  Frame(50);
  EXPECT_NEAR(first.Life, 1.0f - 0.255f, 1e-6) << "a long frame fades by Fade x 50";
  first.Life = 0.1f;
  Frame(50);
  EXPECT_EQ(first.Colour, modMATH::Create_Color_RGBA(1, 0, 0, 0)) << "a life below 0 draws clamped to clear";
  frmMain::MouseX = 400;
  Frame(50);
  EXPECT_EQ(std::pair(first.Life, first.X), std::pair(1.0f, 400.0f)) << "then reborn at the pointer";
  Rest_At(539, 240);
  Frame(16);
  for (Particle& p : modMouseParticles::Particles) p.Life = 0;
  frmMain::MouseX = 639;  // 100 pixels to the right since the last update
  Frame(16);
  const auto [pulled_lo, pulled_hi] = VX_Range();  // the pointer's move pulls newborns right
  EXPECT_GE(pulled_lo, 0.15f);
  EXPECT_GT(pulled_hi, 2.0f);
  EXPECT_LT(pulled_hi, 4.8f);
  for (Particle& p : modMouseParticles::Particles) p.VX = p.VY = 0, p.Fade = 0.0001f, p.X = 639, p.Y = 240;
  Frame(16);
  EXPECT_NE(At(636, 240), kClear) << "a sprite at the edge is clipped, not dropped";
  EXPECT_EQ(At(620, 240), kClear);
}

const platform::DeviceInfo kRgb{platform::kSoftwareDevice, "llvmpipe - Mesa software rasteriser", true};
const platform::DeviceInfo kHal{platform::kHardwareDevice, "GPU - hardware rasterisation", false};
const platform::DeviceInfo kTnl{platform::kTnLHardwareDevice, "GPU - hardware transform and lighting", false};

frmSetup::SetupForm Loaded(std::vector<platform::DeviceInfo> devices,
                           std::vector<platform::SoundDeviceInfo> sounds = {{"Speakers", "Speakers"},
                                                                            {"Headphones", "Headphones"}}) {
  frmSetup::SetupForm f;
  f.Form_Load(std::move(devices), std::move(sounds));
  return f;
}

class SetupDialog : public testing::Test {
 protected:
  void SetUp() override { Default_Settings(); }
  void TearDown() override {
    platform::Set_Dialog_Script(nullptr);
    platform::Keep_Dialog_Frames(false);
    frmSetup::Set_Frame_Hook(nullptr);
  }
  testenv::ScratchAppDir dir;
};

TEST_F(SetupDialog, TheFormPreselectsFromSettingsAndDevicesOffersModesUpToTheDesktopAndStartWritesTheChoices) {
  frmSetup::SetupForm f = Loaded({kRgb, kHal, kTnl});
  EXPECT_EQ(f.lblRes + "/" + f.lblBPP, "640x480/16");
  EXPECT_EQ(std::pair(f.cmb3DDevice, f.cmbSoundDriver), std::pair(2, 0)) << "device, sound";
  // Without the transform-and-lighting device the hardware one, else the first listed.
  EXPECT_EQ((std::array{Loaded({kRgb, kHal}).cmb3DDevice, Loaded({kRgb}).cmb3DDevice, Loaded({}, {}).cmb3DDevice}),
            (std::array{1, 0, -1}));
  // Stored choices are preselected; ones that are gone fall back.
  D3DDeviceGuid = platform::kSoftwareDevice;
  SoundDeviceGuid = "Headphones";
  EXPECT_EQ(std::pair(Loaded({kTnl, kHal, kRgb}).cmb3DDevice, Loaded({kTnl, kHal, kRgb}).cmbSoundDriver),
            std::pair(2, 1));
  D3DDeviceGuid = platform::kHardwareDevice;  // the machine has lost its GPU driver
  SoundDeviceGuid = "USB headset";
  EXPECT_EQ(std::pair(Loaded({kRgb, kTnl}).cmb3DDevice, Loaded({kRgb, kTnl}).cmbSoundDriver), std::pair(1, 0));
  for (const auto& [height, bpp, shown] : {std::tuple{240, 24, "320x240/24"}, std::tuple{400, 32, "640x400/32"},
                                           std::tuple{600, 16, "800x600/16"}, std::tuple{768, 8, "640x480/16"}}) {
    ScreenHeight = i16(height);
    ScreenBPP = u8(bpp);
    const frmSetup::SetupForm loaded = Loaded({kRgb});
    EXPECT_EQ(loaded.lblRes + "/" + loaded.lblBPP, shown);
  }
  Difficulty = 3;  // untouched by the dialog, kept in the file
  f = Loaded({kTnl, kRgb});
  f.HScrollRes = 3, f.HScrollRes_Scroll();
  f.HScrollBPP = 2, f.HScrollBPP_Change();
  EXPECT_EQ(f.lblRes + "/" + f.lblBPP, "800x600/32");
  f.cmb3DDevice = f.cmbSoundDriver = 1;
  f.Label1_Click();
  f.lblStart_Click();
  const std::string rest = "\r\n3\r\n\r\n0\r\n38\r\n40\r\n37\r\n39\r\n";
  EXPECT_EQ(testenv::Read_File(Settings_Path()),
            "1\r\n800\r\n600\r\n32\r\n" + std::string(platform::kSoftwareDevice) + "\r\nHeadphones" + rest);
  EXPECT_FLOAT_EQ(ScaleX, 1.25f);
  Loaded({}, {}).lblStart_Click();  // empty lists store "<none>"
  EXPECT_EQ(testenv::Read_File(Settings_Path()), "0\r\n800\r\n600\r\n32\r\n<none>\r\n<none>" + rest);
  auto captions = [](int desktop_w, int desktop_h) {
    std::string all;
    for (const auto& m : frmSetup::Offered_Resolutions(desktop_w, desktop_h)) all += std::string(m.caption) + " ";
    return all;
  };
  EXPECT_EQ(captions(0, 0), "320x240 640x400 640x480 800x600 ");
  EXPECT_EQ(captions(1920, 1080), "320x240 640x400 640x480 800x600 1024x768 1152x864 1280x960 1400x1050 1440x1080 ");
  // A desktop narrower than 4:3 drops what is too wide for it.
  EXPECT_EQ(frmSetup::Offered_Resolutions(1280, 1024).back().height, 960);
  EXPECT_EQ(frmSetup::Offered_Resolutions(3840, 2160).back().height, 2160);

  Default_Settings();
  ScreenWidth = 1440, ScreenHeight = 1080;
  f = frmSetup::SetupForm{};
  f.Modes = frmSetup::Offered_Resolutions(1920, 1080);
  f.Form_Load({kTnl}, {});
  EXPECT_EQ(std::pair(f.HScrollRes, f.lblRes), std::pair(8, std::string("1440x1080")));
  f.HScrollRes = 7, f.HScrollRes_Scroll();
  EXPECT_EQ(f.lblRes, "1400x1050");
  f.lblStart_Click();
  const auto lines = testenv::Read_Lines_CRLF(Settings_Path());
  EXPECT_EQ(lines.at(1) + "x" + lines.at(2), "1400x1050");
  EXPECT_FLOAT_EQ(ScaleY, 1050.0f / 480.0f);
}

struct Step {
  const char* control;  // whose centre the pointer goes to
  float dx = 0;         // and this far right of it (a drag's end)
  bool down = false;
};

// A step every two frames from frame 2 (ImGui sees each press and release); 60 frames past the last, the dialog closes.
void Script(std::vector<Step> steps) {
  platform::Set_Dialog_Script([steps](uint64_t frame, platform::DialogPointer& p) {
    if (frame < 2) return false;
    p.close = frame > 2 * steps.size() + 60;
    const Step& s = steps[std::min<size_t>((frame - 2) / 2, steps.size() - 1)];
    const Rect r = frmSetup::Control_Rect(s.control);
    p.x = float(r.left + r.right) / 2 + s.dx;
    p.y = float(r.top + r.bottom) / 2;
    p.down = s.down;
    return true;
  });
}

TEST_F(SetupDialog, DraggingClickingAndStartGoThroughTheWindow) {
  // Drag the resolution thumb from the left end to the right end of its bar, check the box, Start.
  std::vector<Step> steps = {{"HScrollRes", -90}};
  for (const float dx : {-90, -30, 30, 95}) steps.push_back({"HScrollRes", dx, true});
  steps.push_back({"HScrollRes", 95});
  for (const char* c : {"Label1", "lblStart"}) steps.insert(steps.end(), {{c}, {c, 0, true}, {c}});  // a click
  Script(steps);
  std::vector<std::string> captions;
  frmSetup::Set_Frame_Hook([&](const frmSetup::SetupForm& f, int) {
    if (captions.empty() || captions.back() != f.lblRes) captions.push_back(f.lblRes);
  });
  EXPECT_TRUE(frmSetup::Show());
  // The bar ends at the largest mode the desktop holds; the caption follows the thumb up to it.
  int desk_w = 0, desk_h = 0;
  ASSERT_TRUE(platform::Desktop_Size(desk_w, desk_h));
  const frmSetup::Resolution last = frmSetup::Offered_Resolutions(desk_w, desk_h).back();
  ASSERT_GE(captions.size(), 4u);
  EXPECT_EQ(captions[0] + " " + captions[1] + " " + captions[2], "640x480 320x240 640x400") << "follows the drag";
  EXPECT_EQ(captions.back(), last.caption);
  const auto lines = testenv::Read_Lines_CRLF(Settings_Path());
  ASSERT_EQ(lines.size(), 13u);
  EXPECT_EQ(std::vector<std::string>(lines.begin(), lines.begin() + 5),
            (std::vector<std::string>{"1", std::to_string(last.width), std::to_string(last.height), "16",
                                      platform::Device_List().front().identifier}));
}

TEST_F(SetupDialog, ShowsTheWindowExitWritesNothingAndAfterStartWithTheBoxCheckedTheNextStartSkipsTheDialog) {
  dir.Copy_From_Game("Gfx");
  Script({{"lblRes"}, {"lblRes"}, {"lblExit"}, {"lblExit", 0, true}, {"lblExit"}});  // two quiet frames for the picture
  platform::Keep_Dialog_Frames(true);
  std::vector<uint32_t> picture;
  int w = 0, h = 0;
  frmSetup::Set_Frame_Hook([&](const frmSetup::SetupForm&, int frame) {
    if (frame == 3) picture = platform::Dialog_Frame(w, h);
  });
  EXPECT_FALSE(frmSetup::Show());
  EXPECT_FALSE(std::filesystem::exists(Settings_Path()));
  EXPECT_FALSE(platform::Dialog_Open());
  ASSERT_GT(w, 300);
  ASSERT_EQ(picture.size(), size_t(w) * size_t(h));
  const Rect start = frmSetup::Control_Rect("lblStart");
  const uint32_t px = picture[size_t(start.top + 4) * size_t(w) + size_t(start.left + 4)];
  const int off_orange =
      std::abs(testenv::Red(px) - 0xE8) + std::abs(testenv::Green(px) - 0x7A) + std::abs(testenv::Blue(px) - 0x18);
  EXPECT_LT(off_orange, 30) << "Start in the accent orange";
  testenv::Write_Png(testenv::Game_Dir() + "/../setup_dialog.png", w, h, picture);

  Script({{"Label1"}, {"Label1", 0, true}, {"Label1"}, {"lblStart"}, {"lblStart", 0, true}, {"lblStart"}});
  int frames = 0;
  frmSetup::Set_Frame_Hook([&](const frmSetup::SetupForm&, int) { ++frames; });
  platform::Use_Manual_Clock(true);
  platform::Set_Pump_Hook([](uint64_t pump) {
    platform::Advance_Manual_Clock(16);
    if (pump % 4 == 3) platform::Post_Event({platform::EventKind::Quit});  // each game run ends at once
  });
  Main();
  EXPECT_GT(frames, 0);
  EXPECT_EQ(testenv::Read_Lines_CRLF(Settings_Path()).at(0), "1");
  frames = 0;
  Default_Settings();
  Main();
  platform::Set_Pump_Hook(nullptr);
  platform::Use_Manual_Clock(false);
  EXPECT_EQ(frames, 0);
  EXPECT_EQ(testenv::Read_Lines_CRLF(Log_Path()).back(), "Bye Bye");
}

}  // namespace
