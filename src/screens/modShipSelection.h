#pragma once
// The ship selection screen: creates the racers of the coming race, lets the player browse
// the ships of Ships.Dat and their three skins with a spinning lit preview, its name and
// three statistic bars, then starts the race (racers kept) or goes back (racers released).
// Mouse only: six buttons that slide in from the left.
#include <string>

#include "core/types.h"
#include "platform/records.h"

class XFileClass;

namespace modShipSelection {

// Game state 3: creates Players(0..NumOpponents), runs the screen, returns once it has
// been left (GameState 1 with the racers, or 0 without them) or the game is closing.
void Init_Ship_Selection();
void Ship_Selection_Loop();
void Draw_Ship_Selection();
// Wraps Players(0)'s ship and skin into range, reloads the preview and sets the bar targets
// (each bar first jumps to its old target).
void Load_Ship_Preview();
// Releases the four surfaces and the preview mesh.
void Exit_Ship_Selection();

// Bar targets from a ship's figures as written in Ships.Dat: thrust, inertia, mass.
void Stat_Targets(double mass, double inertia, double thrust, i16 (&target)[3]);

// What the screen shows: how many pixels the buttons are still left of their place (they
// take clicks only at exactly 0); button i's rectangle (back, start, previous/next skin,
// previous/next ship); the ship's name; its preview mesh (none once the screen is left);
// bar i's target and the length it is drawn at (0..2: thrust, inertia, mass; design units).
float Button_Slide();
const Rect& Button_Rect(int i);
const std::string& Ship_Name();
const XFileClass* Preview();
i16 Bar_Target(int bar);
i16 Bar_Shown(int bar);

}  // namespace modShipSelection
