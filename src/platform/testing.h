#pragma once
// Controls for tests and benchmarks only: the game never calls these. They replace the
// clock, the application folder and the window system's input with scripted ones.
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "platform/audio.h"
#include "platform/render.h"

namespace platform {

// Points the application folder elsewhere (a scratch folder of a test).
void Set_App_Dir(const std::string& dir);

// A manual clock replaces the real one while enabled; the flip never sleeps on it.
void Use_Manual_Clock(bool enabled);
bool Manual_Clock();
void Advance_Manual_Clock(int32_t ms);
void Set_Manual_Clock(int32_t ms);

// PadStick: the left stick held off centre this pump (x, y in -1..1).
enum class EventKind : uint8_t {
  KeyDown, KeyUp, MouseDown, MouseUp, MouseMove, Quit, PadDown, PadUp, PadPlug, PadStick, FocusLost };
struct InputEvent {
  EventKind kind = EventKind::KeyDown;
  int16_t key = 0;     // key events; the control of pad events; 1 plugged in, 0 out
  int16_t button = 0;  // mouse events: 1 left, 2 right, 4 middle
  int16_t shift = 0;   // 1 Shift, 2 Ctrl, 4 Alt, as held when the event happened
  float x = 0, y = 0;  // mouse events, back-buffer pixels
};
// Queues an event behind those already waiting (scripted or recorded input).
void Post_Event(const InputEvent& e);
// Called at the start of every Pump_Messages with the number of pumps since the hook was
// set (0 on the first); a script posts its events and advances the manual clock from here.
void Set_Pump_Hook(std::function<void(uint64_t pump)> hook);

// --- a virtual gamepad -----------------------------------------------------------
// Plugs in SDL's virtual joystick as a game controller with every standard control, as if
// a pad named `name` had been plugged in (the next pump sees it arrive). False when SDL
// cannot make one. One at a time.
bool Attach_Virtual_Pad(const std::string& name);
// Unplugs it (the next pump sees it go).
void Detach_Virtual_Pad();
// Moves one control of the virtual pad: a button is held while amount >= 0.5; a stick
// direction pushes its axis that way by amount (0 centres it); a trigger is pulled by amount.
void Set_Virtual_Pad(int16_t control, float amount);

// --- recorded runs ---------------------------------------------------------------
// Everything outside the game's own code that decides a run: the time of day it seeds
// from, and for every pump the tick count the frame then reads and the events dispatched.
struct JournalPump {
  int32_t tick = 0;
  std::vector<InputEvent> events;
};
struct Journal {
  uint32_t time_of_day = 0;
  int32_t start_tick = 0;  // the clock when recording began
  std::vector<JournalPump> pumps;
};
// Records from now on (the time of day read next, each pump after its hook has run).
void Start_Journal();
// Stops recording and returns what was recorded.
Journal Stop_Journal();
// Plays a journal back in place of the clock, the time of day and all input: pump n sets
// the manual clock to the recorded tick and dispatches exactly the recorded events, whatever
// the window system or Post_Event would have given. Past its end every pump asks the game to
// quit. An empty journal stops a replay.
void Replay_Journal(Journal journal);
bool Replaying();
// The journal as text, one line a pump, and back; false with a reason on a malformed text.
std::string Journal_Text(const Journal& journal);
bool Parse_Journal(const std::string& text, Journal& journal, std::string& error);

// Pretends the display refreshes at hz (0: the display's own rate again).
void Set_Refresh_Rate(int hz);

// While set, Message_Box hands its text here instead of showing it (or printing it).
void Set_Message_Box_Hook(std::function<void(const std::string& text)> hook);

// GL objects alive in the current context, as GL itself answers for every name below the
// next one it would hand out. All 0 without a context.
struct GlObjectCount {
  int textures = 0, buffers = 0, vertex_arrays = 0, samplers = 0, framebuffers = 0, renderbuffers = 0;
  int programs = 0, shaders = 0;
  int Total() const {
    return textures + buffers + vertex_arrays + samplers + framebuffers + renderbuffers + programs + shaders;
  }
  bool operator==(const GlObjectCount&) const = default;
};
GlObjectCount Live_Gl_Objects();

// --- the setup dialog ------------------------------------------------------------
struct DialogPointer {
  float x = 0, y = 0;  // window pixels
  bool down = false;   // left button
  bool close = false;  // asks the window to close, as its close button does
};
// While set, runs at the start of every frame with its number and may move the pointer
// and press the left button for that frame (what ImGui sees, as if the mouse did it).
// Returns false to leave the pointer to the mouse.
void Set_Dialog_Script(std::function<bool(uint64_t frame, DialogPointer& pointer)> script);
// Keeps a copy of each rendered frame; Dialog_Frame gives the last one as 0xAARRGGBB,
// rows top to bottom (empty before the first frame).
void Keep_Dialog_Frames(bool keep);
const std::vector<uint32_t>& Dialog_Frame(int& width, int& height);

// --- what the display, the device and the sound hold ---------------------------------
// Reads back-buffer pixels as 0xAARRGGBB, rows top to bottom; false without a display
// or when the rectangle is not inside the back buffer.
bool Read_Backbuffer(const Rect& rect, uint32_t* argb_out);
// An image's pixel bytes, rows top to bottom, unpadded (null for the back buffer).
const uint8_t* Image_Bytes(const Image& image);
// The identifier a device of Open_Display/Create_Device gets for the one asked for.
std::string Resolve_Device(const std::string& identifier);
// The identifier the GL device was created for, and a render state's value on it ("" and 0
// for any other device).
std::string Device_Identifier(const Device3D& device);
uint32_t Render_State(const Device3D& device, uint32_t state);
// Triangles the GL device has handed to GL so far, kept and immediate.
uint64_t Triangles_Sent();
// The notifications of the current stream (empty without one), and whether it plays.
std::vector<StreamNotification> Stream_Notification_List();
bool Stream_Playing();
// Whether the setup dialog's window is open.
bool Dialog_Open();
// Whether the game window is an ordinary window (Set_Windowed's last word).
bool Windowed();

}  // namespace platform
