#pragma once
// Display and 3D device set-up, surfaces, textures, .dds loading and the 2D routines.
// (The graphics layer completes this header; the declarations below are the contract
// other modules already rely on.)
#include <string>

#include "core/types.h"
#include "platform/records.h"
#include "platform/render.h"

namespace mod3Denhance {

// A 2D surface or a texture; empty when none.
using Surface = platform::ImageRef;

// The 3D device of the run; null until Init_D3D has created it.
extern platform::Device3D* D3DDevice;

// Creates a texture from a .bmp (scaled to width x height when both are non-zero) or a
// .dds file (case-insensitive extension), or blank when file is "". Colour-key mode 0 none,
// 1 black, 2 magenta. Returns null when the file is missing or unreadable (and for a
// .dds without its magic). Needs no display: pixels live on the CPU until first drawn.
Surface Create_Texture(const std::string& file, i32 width, i32 height, i16 color_key_mode);

// --- display and device, created once by Init_DDraw, released by Kill_Everything ---
// Opens the display (back buffer exactly width x height), then runs Init_D3D. Logs each step.
// False when the game cannot go on (no display, no 3D device at all, no z-buffer): the
// player has been told why, and the caller ends the program without the shutdown sequence.
bool Init_DDraw(i16& width, i16& height, u8& bpp);
bool Init_D3D();
// Shows the back buffer scaled to the window (aspect kept) and waits for the display.
void Flip();
// Teardown steps in the order Kill_Everything runs them (each safe to call twice).
void Restore_Display_Mode();  // also sets the cooperative level back to normal
void Release_ZBuffer();
void Release_D3DDevice();
void Release_D3D();
void Release_BackBuffer();
void Release_Primary();
void Release_DD();
void Release_DX();

// Clears the back buffer to dark blue (0, 0, 0.4) and the depth buffer to 1.
void Clear_Screen();

inline void Make_Vector(Vector3& v, float x, float y, float z) { v = Vector3{x, y, z}; }

}  // namespace mod3Denhance
