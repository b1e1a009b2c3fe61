#pragma once
// The race: set-up and teardown, the frame loop with its countdown and keys, the HUD with
// results and pause menu, and the 3D rendering of a race frame. Runs on the game's thread.
#include <string>

#include "core/numbers.h"
#include "core/types.h"
#include "core/vbarray.h"
#include "gfx/mod3Denhance.h"

namespace modGameLoop {

using mod3Denhance::Surface;

// --- race surfaces: made by Init_Race, released by Destroy_Race (SkySurf by the next race) ---
extern Surface LightSurface;      // 212 x 113: four start-light frames, 53 pixels each
extern Surface Grey2x2Surf;       // 2 x 2 mid grey
extern Surface CarThrustSurf;     // engine flame
extern Surface SkySurf;           // 256 x 256, wraps left to right
extern Surface MiniMapSurf;       // 128 x 128, the road silhouette
extern Surface MiniMapShipsSurf;  // 10 x 20: computer marker on top, player marker below
extern Surface StatsBGSurf;       // 234 x 157 HUD artwork

extern float CameraDistance;                // smoothed chase distance, 20 at the start
extern IndexedArray<i16> TransparentWalls;  // wall entries deferred to the see-through pass
extern Bool16 Paused;
extern i16 PauseSelection;  // 0 "Resume", 1 "Quit Race"; kept between pauses and races

// Racers stand still this long after the loop starts; then the race keys work too.
inline constexpr i32 kCountdownMs = 3050;
// The start lights show until this long after the loop starts.
inline constexpr i32 kLightsMs = 4000;
inline constexpr int kLaps = 3;
// The longest physics step: one 60 Hz frame and a little.
inline constexpr i32 kMaxStepMs = 17;

// --- set-up and teardown (race_setup.cpp) ---
// Game state 1: loads the race surfaces, the track and its mini-map, places the racers
// (Players(0..NumOpponents), made by ship selection) and runs Race_Loop. A track that cannot
// be read (also told in a message box naming the file and the fault), or no racer to
// place, logs why, tears down and sets the main menu state.
void Init_Race();
// Init_Race without the loop: everything a race frame needs (a benchmark's race). False,
// with everything released and the main menu state set, when the race cannot run.
bool Set_Up_Race();
// Releases the race surfaces (not SkySurf) and empties the track model, logging each step.
void Destroy_Race();

// --- loop (race_loop.cpp) ---
// The frame loop; returns after Destroy_Race with GameState 2 (finished, Enter) or 0 (quit).
// Leaves early, also through Destroy_Race, when the window system asks the game to close.
void Race_Loop();
// The physics of one frame, every racer in index order: ComputeForces, Check_Wall_Collisions,
// Check_Car_Collisions, ApplyForces once elapsed (ms since the loop began, real time) has
// reached the end of the countdown, Calculate_Vertices, Get_Track_Height. A FrameTime above
// kMaxStepMs runs as that many equal steps of at most kMaxStepMs each. The game clock is
// held at 0 while first_go is set; the first racer to move clears it.
void Update_Racers(i32 elapsed, bool& first_go);
// Copies the start-light frame of elapsed ms (after 1000, 2000, 3000 the next) to the screen.
void Draw_Start_Lights(i32& elapsed);
// The left edge of the light frame shown after elapsed ms: 0, 53, 106 or 159.
int Start_Light_Left(i32 elapsed);
// Enter after the finish; Escape pauses; in the pause, up/down move the selection and
// Enter resumes or quits.
void Race_Keys();
// Whether Race_Loop is running its frames (not during set-up or teardown).
bool Race_Running();

// --- HUD (race_hud.cpp) ---
// The HUD's times: minutes and hundredths, and "mm:ss:hh".
using numbers::Split_Time;
using numbers::Time_Text;
// The dark red box behind the pause menu and results; inside the 3D scene.
void Draw_Dim_Panel();
// Racing display or results, "Wrong Way", and the mini-map markers; after the scene.
void Draw_HUD();
// The pause items; the highlighted one blinks.
void Draw_Pause_Menu();
// Whether the blink shows the highlighted pause item in the phase the last menu drew.
bool Pause_Highlight_Shown();
// Screen position of the top-left of racer i's map marker; false (no marker) when the
// racer does not exist, the map has no extent or the position does not fit.
bool Marker_Position(int racer, i16& x, i16& y);

// --- rendering (race_render.cpp) ---
// Chase camera, sky, road, ground, walls, shadows, flames, bodies, see-through walls and
// the mini-map quad. Opens the 3D scene and leaves it open.
void Render_Race_Frame();

// --- the ghost of the best race (race_ghost.cpp); all do nothing while it is switched off ---
// Race set-up: loads the ghost of this track with its ship and starts recording the player.
void Set_Up_Ghost();
void Release_Ghost();
// Each frame the race clock runs, after the racers moved.
void Record_Ghost_Frame();
// The see-through ship at the race clock's place; inside the scene, after the bodies.
void Draw_Ghost();
// With the map markers, under the player's.
void Draw_Ghost_Marker();
// The last split against the ghost and, at a lap line, the lap against the best lap; shown
// for three seconds of race clock.
void Draw_Splits();
// "-00:01:23" (ahead) or "+00:00:45" (behind).
std::string Split_Text(i32 diff);

}  // namespace modGameLoop
