#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <random>

#include "core/extras.h"
#include "platform/gl_internal.h"
#include "platform/pacer.h"
#include "platform/sdl_internal.h"
#include "support/screen_fixture.h"

namespace {

// Every handler call as text, in order.
struct Recorder {
  std::vector<std::string> seen;
  float stick_x = 0, stick_y = 0;
  Recorder() {
    platform::InputHandlers h;
    const auto add = [this](std::string what, int16_t v, int16_t shift) {
      seen.push_back(what + " " + std::to_string(v) + (shift ? " shift " + std::to_string(shift) : ""));
    };
    h.key_down = [add](int16_t key, int16_t shift) { add("down", key, shift); };
    h.key_up = [add](int16_t key, int16_t shift) { add("up", key, shift); };
    h.mouse_down = [add](int16_t b, int16_t shift, float, float) { add("press", b, shift); };
    h.mouse_up = [add](int16_t b, int16_t shift, float, float) { add("release", b, shift); };
    h.mouse_move = [this](int16_t, int16_t, float x, float y) {
      seen.push_back("move " + std::to_string(x) + "," + std::to_string(y));
    };
    h.pad_down = [add](int16_t c) { add("pad down", c, 0); };
    h.pad_up = [add](int16_t c) { add("pad up", c, 0); };
    h.pad_plug = [this](bool in) { seen.push_back(in ? "plug" : "unplug"); };
    h.pad_stick = [this](float x, float y) { stick_x = x, stick_y = y; };
    platform::Set_Input_Handlers(h);
  }
  ~Recorder() { platform::Set_Input_Handlers({}); }
};

TEST(Input, KeysMapKeepShiftAndShowAQuickPressOneFramePointersLandOnLetterboxEdgesPadsPressPastDeadZonesAndLetGo) {
  const std::pair<SDL_Keycode, int16_t> cases[] = {
      {SDLK_a, 65},       {SDLK_z, 90},     {SDLK_0, 48},        {SDLK_9, 57},          {SDLK_RETURN, 13},
      {SDLK_ESCAPE, 27},  {SDLK_SPACE, 32}, {SDLK_BACKSPACE, 8}, {SDLK_SEMICOLON, 186}, {SDLK_QUOTE, 222},
      {SDLK_LEFT, 37},    {SDLK_UP, 38},    {SDLK_RIGHT, 39},    {SDLK_DOWN, 40},       {SDLK_F1, 112},
      {SDLK_F12, 123},    {SDLK_KP_0, 96},  {SDLK_KP_9, 105},    {SDLK_LSHIFT, 16},     {SDLK_RSHIFT, 16},
      {SDLK_KP_ENTER, 13}};
  for (const auto& [sdl, vk] : cases) EXPECT_EQ(platform::detail::Virtual_Key(sdl), vk) << sdl;
  using platform::detail::Shift_Bits;
  EXPECT_EQ((std::array{Shift_Bits(KMOD_RSHIFT), Shift_Bits(KMOD_LCTRL | KMOD_LSHIFT), Shift_Bits(KMOD_RALT),
                        Shift_Bits(KMOD_NUM)}),
            (std::array<int16_t, 4>{1, 3, 4, 0}));

  Recorder r;
  platform::Pump_Messages();  // pumps before the hook is set do not count for it
  platform::Pump_Messages();
  std::vector<uint64_t> counts;
  platform::Set_Pump_Hook([&](uint64_t pump) {
    counts.push_back(pump);
    if (pump != 0) return;
    platform::Post_Event({platform::EventKind::KeyDown, 65, 0, 1});
    platform::Post_Event({platform::EventKind::KeyDown, 65});
    platform::Post_Event({platform::EventKind::MouseMove, 0, 0, 0, 12.5f, 40});
  });
  platform::Pump_Messages();
  platform::Pump_Messages();
  platform::Set_Pump_Hook(nullptr);
  EXPECT_EQ(counts, (std::vector<uint64_t>{0, 1}));
  EXPECT_EQ(r.seen, (std::vector<std::string>{"down 65 shift 1", "down 65", "move 12.500000,40.000000"}));

  r.seen.clear();
  for (auto kind : {platform::EventKind::KeyDown, platform::EventKind::KeyUp}) platform::Post_Event({kind, 13});
  platform::Post_Event({platform::EventKind::KeyDown, 27});  // behind the release: waits too
  platform::Pump_Messages();
  EXPECT_EQ(r.seen, (std::vector<std::string>{"down 13"}));
  for (auto kind : {platform::EventKind::MouseDown, platform::EventKind::MouseUp}) platform::Post_Event({kind, 0, 1});
  platform::Pump_Messages();
  EXPECT_EQ(r.seen, (std::vector<std::string>{"down 13", "up 13", "down 27", "press 1"}));
  platform::Pump_Messages();
  EXPECT_EQ(r.seen.back(), "release 1");

  ASSERT_TRUE(platform::Open_Window("letterbox"));
  int ww = 0, wh = 0;
  SDL_GetWindowSize(platform::detail::Window(), &ww, &wh);
  ASSERT_GT(ww, 0);
  // A back buffer twice as wide for its height as the window: bands above and below.
  const int bw = ww, bh = wh / 4;
  platform::detail::Set_Backbuffer_Size(bw, bh);
  const platform::detail::Letterbox& lb = platform::detail::Current_Letterbox();
  EXPECT_EQ((std::array{lb.width, lb.height, lb.y0}), (std::array{bw, bh, (wh - bh) / 2}));

  float bx = 0, by = 0;
  platform::detail::Window_To_Backbuffer(-30, 2, bx, by);  // top band, left of the window
  EXPECT_EQ(std::pair(bx, by), std::pair(0.0f, 0.0f));
  platform::detail::Window_To_Backbuffer(float(ww + 10), float(wh - 1), bx, by);  // bottom band
  EXPECT_EQ(std::pair(bx, by), std::pair(float(bw - 1), float(bh - 1)));

  platform::detail::Set_Backbuffer_Size(ww / 2, wh / 2);
  EXPECT_EQ(platform::detail::Current_Letterbox().width, ww);
  platform::detail::Set_Backbuffer_Size(0, 0);

  auto& [seen, stick_x, stick_y] = r;
  const auto step = [&] {
    seen.clear();
    platform::Pump_Messages();
    return seen;
  };
  using V = std::vector<std::string>;
  ASSERT_TRUE(platform::Attach_Virtual_Pad("Test Pad"));
  EXPECT_EQ(step(), V{"plug"});
  EXPECT_EQ(platform::Pad_Name(), "Test Pad");

  const auto set = [&](int16_t control, float amount) {
    platform::Set_Virtual_Pad(control, amount);
    return step();
  };
  platform::Set_Virtual_Pad(platform::kPadX, 1);
  EXPECT_EQ(set(platform::kPadRightTrigger, 0.2f), V{"pad down 2"}) << "the trigger inside its dead zone";
  EXPECT_EQ(set(platform::kPadRightTrigger, 0.4f), V{"pad down 24"});
  EXPECT_EQ(set(platform::kPadRightTrigger, 0.25f), V{}) << "a trigger eased off lets go lower than it presses";
  EXPECT_EQ(set(platform::kPadRightTrigger, 0.1f), V{"pad up 24"});

  // The stick: a press past half way, and the pointer's reading from the dead zone's edge.
  EXPECT_EQ(set(platform::kPadLeftStickUp, 0.2f), V{});
  EXPECT_EQ(stick_y, 0.0f) << "inside the pointer's dead zone";
  platform::Set_Virtual_Pad(platform::kPadLeftStickLeft, 1);
  EXPECT_EQ(set(platform::kPadLeftStickUp, 0), V{"pad down 15"});
  EXPECT_NEAR(std::hypot(stick_x + 1, stick_y), 0, 1e-3) << "full left";
  set(platform::kPadLeftStickLeft, 0.625f);
  EXPECT_NEAR(stick_x, -0.5f, 1e-3) << "(0.625 - 0.25) / 0.75";

  platform::Detach_Virtual_Pad();
  V gone = step();
  ASSERT_EQ(gone.size(), 3u);
  std::sort(gone.begin(), gone.end() - 1);
  EXPECT_EQ(gone, (V{"pad up 15", "pad up 2", "unplug"})) << "unplugged after letting go of what it held";
  EXPECT_EQ(platform::Pad_Name(), "") << "no pad, no name";
  ASSERT_TRUE(platform::Attach_Virtual_Pad("Second Pad"));
  EXPECT_EQ(step(), V{"plug"});
  EXPECT_EQ(platform::Pad_Name(), "Second Pad");
  // A pad can go without its driver letting go of the buttons first; we let go ourselves.
  EXPECT_EQ(set(platform::kPadX, 1), V{"pad down 2"});
  SDL_Event removed{};
  removed.cdevice = {SDL_CONTROLLERDEVICEREMOVED, 0, SDL_JoystickGetDeviceInstanceID(SDL_NumJoysticks() - 1)};
  SDL_PushEvent(&removed);
  EXPECT_EQ(step(), (V{"pad up 2", "unplug"})) << "removed while X was held";
  platform::Detach_Virtual_Pad();
  platform::Close_Window();
}

// A model display: swaps wait for the refresh (without vsync, return at once), work 40-75 % of one, sleeps wake late.
struct Paced {
  int missed = 0;      // refreshes that showed no new frame: the pacer's (sleeping to a deadline misses some)
  double mean_ms = 0;  // mean time between swaps
};

Paced Model(double hz, bool vsync) {
  const double period = 1000.0 / hz;
  const int frames = 600;
  platform::FramePacer pacer;
  std::mt19937 random(12345);
  std::uniform_real_distribution<double> work(0.40 * period, 0.75 * period), late(0.05, 0.15);
  double now = 0, first_swap = 0;
  long last_refresh = -1;
  Paced run;
  for (int f = 0; f < frames; ++f) {
    now += work(random);
    if (vsync) {
      const long refresh = long(std::ceil(now / period));
      now = refresh * period + 0.02;  // the swap returns just after the refresh it waited for
      if (last_refresh >= 0) run.missed += int(refresh - last_refresh - 1);
      last_refresh = refresh;
    }
    if (f == 0) first_swap = now;
    const double wait = pacer.After_Swap(now, period);
    if (wait > 0) now += wait + late(random);
  }
  run.mean_ms = (now - first_swap) / (frames - 1);
  return run;
}

TEST(Pacer, ABlockingSwapAloneSetsThePaceAndAnEarlySwapIsHeldToTheRefresh) {
  for (const double hz : {60.0, 144.0}) {
    EXPECT_EQ(Model(hz, true).missed, 0) << hz << " Hz with vsync: every refresh shows a new frame";
    const Paced early = Model(hz, false);
    EXPECT_NEAR(early.mean_ms, 1000.0 / hz, 0.01 * 1000.0 / hz) << hz << " Hz, swaps returning at once";
  }
}

class WindowTest : public ScreenTest {
 protected:
  void TearDown() override {
    platform::Set_Windowed(false);
    ScreenTest::TearDown();
  }
  static void Press_Window_Key(int16_t key, int16_t shift) {
    for (auto kind : {platform::EventKind::KeyDown, platform::EventKind::KeyUp}) {
      platform::Post_Event({kind, key, 0, shift});
      platform::Pump_Messages();
    }
  }
  std::vector<uint32_t> Draw_Buttons() {
    Rect all{0, 0, 382, 156};
    i16 x = 10, y = 20;
    mod3Denhance::Fill_Rect(mod3Denhance::BackBuffer, 0, 0, 640, 480, 0);
    mod3Denhance::Blit_Clipped(mod3Denhance::BackBuffer, buttons_, all, x, y, 1);
    return Read(10, 20, 392, 176);
  }
  mod3Denhance::Surface buttons_;
};

TEST_F(WindowTest, SwitchKeepsTexturesLetterboxesMapsThePointerAndIsRemembered) {
  SDL_Window* window = platform::detail::Window();
  int desk_w = 0, desk_h = 0;
  ASSERT_TRUE(platform::Desktop_Size(desk_w, desk_h));
  ASSERT_TRUE(mod3Denhance::Create_Surface(buttons_, 382, 156, platform::Game_Path("\\Gfx\\Buttons.bmp"),
                                           mod3Denhance::kKeyBlack, kFalse));
  const std::vector<uint32_t> before = Draw_Buttons();
  mod3Denhance::Flip();
  const platform::detail::GpuState gpu = platform::detail::ImageAccess::Gpu(*buttons_);
  ASSERT_NE(gpu.texture, 0u);
  EXPECT_NE(SDL_GetWindowFlags(window) & SDL_WINDOW_INPUT_GRABBED, 0u) << "full screen holds the pointer";

  Press_Window_Key(13, 4);  // Alt+Enter
  EXPECT_TRUE(platform::Windowed());
  EXPECT_EQ(SDL_GetWindowFlags(window) & SDL_WINDOW_FULLSCREEN, 0u);
  EXPECT_EQ(SDL_GetWindowFlags(window) & SDL_WINDOW_INPUT_GRABBED, 0u) << "a window lets the pointer go";
  int ww = 0, wh = 0;
  SDL_GetWindowSize(window, &ww, &wh);
  EXPECT_LT(wh, desk_h);
  EXPECT_EQ(ww * 3, wh * 4) << "a whole multiple of the back buffer";
  EXPECT_FALSE(frmMain::Pressed(frmMain::Press::Enter)) << "Alt+Enter is not Enter";
  EXPECT_EQ(testenv::Read_File(extras::Path()), "window=1\n");

  // The same texture draws the same pixels: nothing was lost or uploaded again.
  EXPECT_EQ(Draw_Buttons(), before);
  mod3Denhance::Flip();
  EXPECT_EQ(platform::detail::ImageAccess::Gpu(*buttons_).texture, gpu.texture);
  EXPECT_EQ(platform::detail::ImageAccess::Gpu(*buttons_).generation, gpu.generation) << "not uploaded again";

  // The player drags the window wide: bands left and right, the pointer mapped through them.
  SDL_SetWindowSize(window, 1000, 500);
  const platform::detail::Letterbox& lb = platform::detail::Current_Letterbox();
  EXPECT_EQ((std::array{lb.width, lb.height, lb.x0}), (std::array{667, 500, 166}));
  SDL_Event motion{};
  motion.motion = {SDL_MOUSEMOTION, 0, SDL_GetWindowID(window), 0, 0, 166 + 667 / 2, 125, 0, 0};
  SDL_PushEvent(&motion);
  platform::Pump_Messages();
  EXPECT_NEAR(frmMain::MouseX, 320, 1);
  EXPECT_EQ(frmMain::MouseY, 120);
  mod3Denhance::Flip();

  Press_Window_Key(122, 0);  // F11: back to full screen
  EXPECT_FALSE(platform::Windowed());
  EXPECT_EQ(SDL_GetWindowFlags(window) & SDL_WINDOW_FULLSCREEN_DESKTOP, SDL_WINDOW_FULLSCREEN_DESKTOP);
  EXPECT_NE(SDL_GetWindowFlags(window) & SDL_WINDOW_INPUT_GRABBED, 0u);
  EXPECT_EQ(frmMain::KeyState[122], kFalse) << "F11 belongs to the window, not the game";
  EXPECT_EQ(testenv::Read_File(extras::Path()), "window=0\n");
  EXPECT_EQ(Draw_Buttons(), before);
  EXPECT_FALSE(std::filesystem::exists(modMain::Settings_Path())) << "Quorval.ini is not written";

  testenv::Write_File(extras::Path(), "window=1\n");
  extras::Load();
  ASSERT_TRUE(frmMain::Show());
  EXPECT_TRUE(platform::Windowed());
}

}  // namespace
