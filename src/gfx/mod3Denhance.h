#pragma once
// Display and 3D device set-up and teardown, surfaces, textures, .dds loading and the
// 2D routines. Everything here runs on the game's one thread.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "core/types.h"
#include "platform/records.h"
#include "platform/render.h"

namespace mod3Denhance {

// A 2D surface or a texture; empty when none.
using Surface = platform::ImageRef;

extern Surface BackBuffer;  // every screen draws here, depth-buffered; exactly ScreenWidth x ScreenHeight
// The 3D device of the run; null until Init_D3D has created it. Owned by this module.
extern platform::Device3D* D3DDevice;
extern Rect ScreenRect;       // 0, 0, ScreenWidth, ScreenHeight
extern D3DMaterial Material;  // the one material: diffuse and ambient white

// --- display and device, created once by Init_DDraw, released by Kill_Everything ---
// Opens the display (back buffer exactly width x height, with its z-buffer), then runs
// Init_D3D, logging each step. An unknown device identifier falls back to the best device
// there is. False, after telling the player why and releasing what was made, when the game
// cannot draw.
bool Init_DDraw(i16& width, i16& height, u8& bpp);
// The 3D set-up; called only by Init_DDraw. False when the device cannot be made.
bool Init_D3D();
// Shows the back buffer scaled to the window (aspect kept) and waits for the display.
void Flip();
// Teardown steps in the order Kill_Everything runs them (each safe to call twice). The
// display, its back buffer and z-buffer go with DD.
void Release_D3DDevice();
void Release_D3D();
void Release_BackBuffer();
void Release_DD();
void Release_DX();

// --- surfaces and textures -----------------------------------------------------
// Colour-key modes: 0 none, 1 black, 2 magenta (red mask + blue mask of the format);
// any other value sets no key.
inline constexpr i16 kKeyNone = 0, kKeyBlack = 1, kKeyMagenta = 2;

// Releases surface, then makes a 2D surface of width x height (rounded half to even) from
// a .bmp scaled to that size (0 x 0: the bitmap's own size), or blank when file is "".
// On a screen larger than 640 x 480 the same name in a "2x" folder beside the file, drawn
// twice as fine, is scaled instead when it exists. False, leaving surface empty, when the
// file cannot be read or the size is unusable. Paths may use either slash. Works without a
// display.
bool Create_Surface(Surface& surface, double width, double height, const std::string& file, i16 color_key_mode,
                    Bool16 in_system_memory);
// Creates a texture from a .bmp (scaled to width x height when both are non-zero) or a
// .dds file (case-insensitive extension), or blank when file is "". Returns null when the
// file is missing or unreadable (and for a .dds without its magic). Needs no display:
// pixels live on the CPU until first drawn.
Surface Create_Texture(const std::string& file, i32 width, i32 height, i16 color_key_mode);
// A .dds file of one uncompressed 16-bit image (read as 4-4-4-4, sides 1..4096); null when
// the file lacks "DDS " or its header does not describe such an image. Rows the file does
// not hold stay transparent black. Used by Create_Texture.
Surface Load_DDS(const std::string& file);
// The same from bytes in memory (the whole file, magic included).
Surface Decode_DDS(const uint8_t* data, size_t size);

// Light 0 as every lit scene of the game has it: directional, placed at (0, 10, 0) with
// range 5000 and constant attenuation 0.8, of the given diffuse colour and direction; then
// lighting on and an ambient grey of 150. Does nothing without a device.
void Set_Scene_Light(const ColorValue& diffuse, const Vector3& direction);

// Clears the back buffer to dark blue (0, 0, 0.4) and the depth buffer to 1.
void Clear_Screen();
// Copies src_rect of source to (x, y) of destination, clipped to the screen by moving the
// rectangle's edges and the position (the caller's values change). transparent 0 copies
// every pixel, 1 skips the source's colour key, anything else draws nothing.
void Blit_Clipped(const Surface& destination, const Surface& source, Rect& src_rect, i16& x, i16& y, u8 transparent);
// Fills a rectangle with a pixel value of the surface's format (textures: ARGB; 2D
// surfaces and the back buffer: XRGB).
void Fill_Rect(const Surface& surface, i16 left, i16 top, i16 right, i16 bottom, u32 colour);
Rect Make_Rect(i16 left, i16 top, i16 right, i16 bottom);
// True when left <= x < right and top <= y < bottom.
Bool16 Point_In_Rect(const Rect& rect, i16 x, i16 y);

}  // namespace mod3Denhance
