// The platform layer's own rules that the game relies on: the key table, Shift carried by
// each event, the pump hook's count, pointer positions inside the back buffer, and the
// gamepad's events.
#include "platform/platform.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "platform/sdl_internal.h"
#include "platform/testing.h"

namespace {

TEST(VirtualKeys, TableCoversTheGameKeys) {
  const std::pair<SDL_Keycode, int16_t> cases[] = {
      {SDLK_a, 65},       {SDLK_z, 90},     {SDLK_0, 48},        {SDLK_9, 57},          {SDLK_RETURN, 13},
      {SDLK_ESCAPE, 27},  {SDLK_SPACE, 32}, {SDLK_BACKSPACE, 8}, {SDLK_SEMICOLON, 186}, {SDLK_QUOTE, 222},
      {SDLK_LEFT, 37},    {SDLK_UP, 38},    {SDLK_RIGHT, 39},    {SDLK_DOWN, 40},       {SDLK_F1, 112},
      {SDLK_F12, 123},    {SDLK_KP_0, 96},  {SDLK_KP_9, 105},    {SDLK_LSHIFT, 16},     {SDLK_RSHIFT, 16},
      {SDLK_KP_ENTER, 13}};
  for (const auto& [sdl, vk] : cases) EXPECT_EQ(platform::detail::Virtual_Key(sdl), vk) << sdl;
  EXPECT_EQ(platform::detail::Shift_Bits(KMOD_RSHIFT), 1);
  EXPECT_EQ(platform::detail::Shift_Bits(KMOD_LCTRL | KMOD_LSHIFT), 3);
  EXPECT_EQ(platform::detail::Shift_Bits(KMOD_RALT), 4);
  EXPECT_EQ(platform::detail::Shift_Bits(KMOD_NUM), 0);
}

struct Seen {
  int16_t key, shift;
  float x, y;
};

TEST(Pump, EventsKeepTheirShiftAndTheHookCountsFromItsOwnStart) {
  std::vector<Seen> seen;
  platform::InputHandlers h;
  h.key_down = [&](int16_t key, int16_t shift) { seen.push_back({key, shift, 0, 0}); };
  h.mouse_move = [&](int16_t, int16_t shift, float x, float y) { seen.push_back({-1, shift, x, y}); };
  platform::Set_Input_Handlers(h);
  platform::Pump_Messages();  // pumps before the hook is set do not count for it
  platform::Pump_Messages();

  std::vector<uint64_t> counts;
  platform::Set_Pump_Hook([&](uint64_t pump) {
    counts.push_back(pump);
    if (pump == 0) {
      platform::InputEvent shifted{platform::EventKind::KeyDown, 65};
      shifted.shift = 1;
      platform::Post_Event(shifted);
      platform::Post_Event({platform::EventKind::KeyDown, 65});
      platform::InputEvent move{platform::EventKind::MouseMove};
      move.x = 12.5f;
      move.y = 40;
      platform::Post_Event(move);
    }
  });
  platform::Pump_Messages();
  platform::Pump_Messages();
  platform::Set_Pump_Hook(nullptr);
  platform::Set_Input_Handlers({});

  EXPECT_EQ(counts, (std::vector<uint64_t>{0, 1}));
  ASSERT_EQ(seen.size(), 3u);
  EXPECT_EQ(seen[0].key, 65);
  EXPECT_EQ(seen[0].shift, 1);  // Shift A: a capital
  EXPECT_EQ(seen[1].shift, 0);
  EXPECT_EQ(seen[2].x, 12.5f);
  EXPECT_EQ(seen[2].y, 40.0f);
}

TEST(Pump, APressReleasedWithinOnePumpIsSeenForOneFrame) {
  std::vector<std::string> seen;
  platform::InputHandlers h;
  h.key_down = [&](int16_t key, int16_t) { seen.push_back("down " + std::to_string(key)); };
  h.key_up = [&](int16_t key, int16_t) { seen.push_back("up " + std::to_string(key)); };
  h.mouse_down = [&](int16_t b, int16_t, float, float) { seen.push_back("press " + std::to_string(b)); };
  h.mouse_up = [&](int16_t b, int16_t, float, float) { seen.push_back("release " + std::to_string(b)); };
  platform::Set_Input_Handlers(h);
  for (auto kind : {platform::EventKind::KeyDown, platform::EventKind::KeyUp}) platform::Post_Event({kind, 13});
  platform::Post_Event({platform::EventKind::KeyDown, 27});  // behind the release: waits too
  platform::InputEvent click{platform::EventKind::MouseDown};
  click.button = 1;
  platform::Pump_Messages();
  EXPECT_EQ(seen, (std::vector<std::string>{"down 13"}));
  platform::Post_Event(click);
  click.kind = platform::EventKind::MouseUp;
  platform::Post_Event(click);
  platform::Pump_Messages();
  EXPECT_EQ(seen, (std::vector<std::string>{"down 13", "up 13", "down 27", "press 1"}));
  platform::Pump_Messages();
  EXPECT_EQ(seen.back(), "release 1");
  platform::Set_Input_Handlers({});
}

TEST(Letterbox, PointerOverTheBordersLandsOnTheBackBufferEdge) {
  ASSERT_TRUE(platform::Open_Window("letterbox"));
  int ww = 0, wh = 0;
  SDL_GetWindowSize(platform::detail::Window(), &ww, &wh);
  ASSERT_GT(ww, 0);
  // A back buffer twice as wide for its height as the window: bands above and below.
  const int bw = ww, bh = wh / 4;
  platform::detail::Set_Backbuffer_Size(bw, bh);
  const platform::detail::Letterbox& lb = platform::detail::Current_Letterbox();
  EXPECT_EQ(lb.width, bw);
  EXPECT_EQ(lb.height, bh);
  EXPECT_EQ(lb.y0, (wh - bh) / 2);

  float bx = 0, by = 0;
  platform::detail::Window_To_Backbuffer(ww / 2.0f, wh / 2.0f, bx, by);
  EXPECT_NEAR(bx, bw / 2.0f, 1.0f);
  EXPECT_NEAR(by, bh / 2.0f, 1.0f);
  platform::detail::Window_To_Backbuffer(-30, 2, bx, by);  // top band, left of the window
  EXPECT_EQ(bx, 0.0f);
  EXPECT_EQ(by, 0.0f);
  platform::detail::Window_To_Backbuffer(float(ww + 10), float(wh - 1), bx, by);  // bottom band
  EXPECT_EQ(bx, float(bw - 1));
  EXPECT_EQ(by, float(bh - 1));

  // A new back-buffer size is seen at once.
  platform::detail::Set_Backbuffer_Size(ww / 2, wh / 2);
  EXPECT_EQ(platform::detail::Current_Letterbox().width, ww);
  platform::detail::Set_Backbuffer_Size(0, 0);
  platform::Close_Window();
}

TEST(Gamepad, PlugPressesPastDeadZonesAndUnplugLetsGoOfEverything) {
  ASSERT_TRUE(platform::Open_Window("pad"));
  std::vector<std::string> seen;
  float stick_x = 0, stick_y = 0;
  platform::InputHandlers h;
  h.pad_down = [&](int16_t c) { seen.push_back("down " + std::to_string(c)); };
  h.pad_up = [&](int16_t c) { seen.push_back("up " + std::to_string(c)); };
  h.pad_plug = [&](bool in) { seen.push_back(in ? "plug" : "unplug"); };
  h.pad_stick = [&](float x, float y) { stick_x = x, stick_y = y; };
  platform::Set_Input_Handlers(h);
  const auto step = [&] {
    seen.clear();
    platform::Pump_Messages();
    return seen;
  };
  using V = std::vector<std::string>;
  EXPECT_TRUE(platform::Pad_Name().empty());
  ASSERT_TRUE(platform::Attach_Virtual_Pad("Test Pad"));
  EXPECT_EQ(step(), V{"plug"});
  EXPECT_FALSE(platform::Pad_Name().empty());
  EXPECT_EQ(platform::Pad_Name(), "Test Pad");

  platform::Set_Virtual_Pad(platform::kPadX, 1);
  platform::Set_Virtual_Pad(platform::kPadRightTrigger, 0.2f);  // inside the trigger's dead zone
  EXPECT_EQ(step(), V{"down 2"});
  platform::Set_Virtual_Pad(platform::kPadRightTrigger, 0.4f);
  EXPECT_EQ(step(), V{"down 24"});
  platform::Set_Virtual_Pad(platform::kPadRightTrigger, 0.25f);  // eased off, but not let go
  EXPECT_EQ(step(), V{}) << "a trigger lets go lower than it presses";
  platform::Set_Virtual_Pad(platform::kPadRightTrigger, 0.1f);
  EXPECT_EQ(step(), V{"up 24"});

  // The stick: a press past half way, and the pointer's reading from the dead zone's edge.
  platform::Set_Virtual_Pad(platform::kPadLeftStickUp, 0.2f);
  EXPECT_EQ(step(), V{});
  EXPECT_EQ(stick_y, 0.0f) << "inside the pointer's dead zone";
  platform::Set_Virtual_Pad(platform::kPadLeftStickLeft, 1);
  platform::Set_Virtual_Pad(platform::kPadLeftStickUp, 0);
  EXPECT_EQ(step(), V{"down 15"});
  EXPECT_NEAR(stick_x, -1.0f, 1e-3);
  EXPECT_NEAR(stick_y, 0.0f, 1e-3);
  platform::Set_Virtual_Pad(platform::kPadLeftStickLeft, 0.625f);
  step();
  EXPECT_NEAR(stick_x, -0.5f, 1e-3) << "(0.625 - 0.25) / 0.75";

  platform::Detach_Virtual_Pad();
  V gone = step();
  ASSERT_EQ(gone.size(), 3u);
  EXPECT_EQ(gone.back(), "unplug") << "after letting go of what it held";
  std::sort(gone.begin(), gone.end() - 1);
  EXPECT_EQ(gone, (V{"up 15", "up 2", "unplug"}));
  EXPECT_TRUE(platform::Pad_Name().empty());
  EXPECT_EQ(platform::Pad_Name(), "");
  ASSERT_TRUE(platform::Attach_Virtual_Pad("Second Pad"));
  EXPECT_EQ(step(), V{"plug"});
  EXPECT_EQ(platform::Pad_Name(), "Second Pad");
  platform::Detach_Virtual_Pad();
  platform::Set_Input_Handlers({});
  platform::Close_Window();
}

}  // namespace
