#include <SDL.h>

#include <bitset>
#include <deque>

#include "platform/journal_internal.h"
#include "platform/platform.h"
#include "platform/sdl_internal.h"
#include "platform/testing.h"

namespace platform {
namespace {
InputHandlers g_handlers;
std::deque<InputEvent> g_queue;
std::function<void(uint64_t)> g_hook;
uint64_t g_pump_count = 0;
bool g_was_minimised = false;

int16_t Button_Of(uint8_t sdl_button) {
  switch (sdl_button) {
    case SDL_BUTTON_LEFT:
      return 1;
    case SDL_BUTTON_RIGHT:
      return 2;
    case SDL_BUTTON_MIDDLE:
      return 4;
    default:
      return 0;
  }
}

void Collect_SDL_Events() {
  if (!SDL_WasInit(SDL_INIT_EVENTS)) return;
  SDL_Event e;
  while (SDL_PollEvent(&e)) {
    InputEvent out;
    switch (e.type) {
      case SDL_KEYDOWN:
      case SDL_KEYUP:
        // Key repeats arrive as further key-downs, as the window system sends them.
        out.kind = e.type == SDL_KEYDOWN ? EventKind::KeyDown : EventKind::KeyUp;
        out.key = detail::Virtual_Key(e.key.keysym.sym);
        if (out.key == 0) continue;
        out.shift = detail::Shift_Bits(e.key.keysym.mod);
        break;
      case SDL_MOUSEBUTTONDOWN:
      case SDL_MOUSEBUTTONUP:
        out.kind = e.type == SDL_MOUSEBUTTONDOWN ? EventKind::MouseDown : EventKind::MouseUp;
        out.button = Button_Of(e.button.button);
        out.shift = detail::Shift_Bits(SDL_GetModState());
        detail::Window_To_Backbuffer(static_cast<float>(e.button.x), static_cast<float>(e.button.y), out.x, out.y);
        break;
      case SDL_MOUSEMOTION:
        out.kind = EventKind::MouseMove;
        out.shift = detail::Shift_Bits(SDL_GetModState());
        detail::Window_To_Backbuffer(static_cast<float>(e.motion.x), static_cast<float>(e.motion.y), out.x, out.y);
        break;
      case SDL_QUIT:
        out.kind = EventKind::Quit;
        break;
      case SDL_WINDOWEVENT:
        if (e.window.event != SDL_WINDOWEVENT_FOCUS_LOST && e.window.event != SDL_WINDOWEVENT_MINIMIZED) continue;
        out.kind = EventKind::FocusLost;
        break;
      default:
        detail::Pad_Event(e);  // queues its own events
        continue;
    }
    g_queue.push_back(out);
  }
}

void Dispatch(const InputEvent& e) {
  detail::Journal_Dispatched(e);
  switch (e.kind) {
    case EventKind::KeyDown:
      if (g_handlers.key_down) g_handlers.key_down(e.key, e.shift);
      break;
    case EventKind::KeyUp:
      if (g_handlers.key_up) g_handlers.key_up(e.key, e.shift);
      break;
    case EventKind::MouseDown:
      if (g_handlers.mouse_down) g_handlers.mouse_down(e.button, e.shift, e.x, e.y);
      break;
    case EventKind::MouseUp:
      if (g_handlers.mouse_up) g_handlers.mouse_up(e.button, e.shift, e.x, e.y);
      break;
    case EventKind::MouseMove:
      if (g_handlers.mouse_move) g_handlers.mouse_move(e.button, e.shift, e.x, e.y);
      break;
    case EventKind::Quit:
      if (g_handlers.quit) g_handlers.quit();
      break;
    case EventKind::PadDown:
      if (g_handlers.pad_down) g_handlers.pad_down(e.key);
      break;
    case EventKind::PadUp:
      if (g_handlers.pad_up) g_handlers.pad_up(e.key);
      break;
    case EventKind::PadPlug:
      if (g_handlers.pad_plug) g_handlers.pad_plug(e.key != 0);
      break;
    case EventKind::PadStick:
      if (g_handlers.pad_stick) g_handlers.pad_stick(e.x, e.y);
      break;
    case EventKind::FocusLost:
      if (g_handlers.focus_lost) g_handlers.focus_lost();
      break;
  }
}

bool Minimised() {
  SDL_Window* window = detail::Window();
  return window != nullptr && (SDL_GetWindowFlags(window) & SDL_WINDOW_MINIMIZED) != 0;
}

bool Quit_Queued() {
  for (const InputEvent& e : g_queue)
    if (e.kind == EventKind::Quit) return true;
  return false;
}

// A minimised game waits here on the window system, gathering what arrives, until the
// window is back or the game is told to close. Scripted runs on the manual clock never wait.
void Wait_While_Minimised() {
  if (Manual_Clock() || !SDL_WasInit(SDL_INIT_EVENTS)) return;
  while (Minimised() && !Quit_Queued()) {
    SDL_WaitEventTimeout(nullptr, 250);
    Collect_SDL_Events();
  }
}
}  // namespace

void Set_Input_Handlers(const InputHandlers& handlers) { g_handlers = handlers; }
void Post_Event(const InputEvent& e) { g_queue.push_back(e); }
void Set_Pump_Hook(std::function<void(uint64_t)> hook) {
  g_hook = std::move(hook);
  g_pump_count = 0;
}

void Pump_Messages() {
  if (g_hook) g_hook(g_pump_count);
  ++g_pump_count;
  // A replayed run hears only its journal; the capacity kept here spares each pump an allocation.
  static std::vector<InputEvent> replayed;
  if (detail::Journal_Replay_Pump(replayed)) {
    Collect_SDL_Events();
    g_queue.clear();
    for (const InputEvent& e : replayed) Dispatch(e);
    return;
  }
  // Waits only when the window was already minimised at the last pump: the frame after the
  // minimising still runs, so the race has seen the lost focus and paused.
  if (g_was_minimised) Wait_While_Minimised();
  detail::Journal_Pump_Begins();
  Collect_SDL_Events();
  g_was_minimised = Minimised();
  // The screens poll held flags once a frame, so a press released within the same pump
  // would never be seen (a quick click on a slow frame). Such a release waits, with
  // everything behind it, for the next pump.
  std::bitset<256> keys_down, pad_down;
  uint8_t buttons_down = 0;
  while (!g_queue.empty()) {
    const InputEvent e = g_queue.front();
    const uint8_t key = static_cast<uint8_t>(e.key), button = static_cast<uint8_t>(e.button);
    if (e.kind == EventKind::KeyUp && keys_down.test(key)) break;
    if (e.kind == EventKind::MouseUp && (buttons_down & button) != 0) break;
    if (e.kind == EventKind::PadUp && pad_down.test(key)) break;
    if (e.kind == EventKind::KeyDown) keys_down.set(key);
    if (e.kind == EventKind::MouseDown) buttons_down |= button;
    if (e.kind == EventKind::PadDown) pad_down.set(key);
    g_queue.pop_front();
    Dispatch(e);
  }
  // The stick is a position, not an event: it is read once a pump while it is held off
  // centre, and goes through Dispatch so that a recorded run keeps it.
  InputEvent stick{EventKind::PadStick};
  if (detail::Pad_Stick(stick.x, stick.y)) Dispatch(stick);
}

}  // namespace platform
