#pragma once
// Internal to the platform layer: the GL side of images and 2D operations. Every
// function here is safe to call with no display (it then does nothing or fails).
#include <cstdint>
#include <vector>

#include "platform/render.h"

namespace platform::detail {

struct PixelMasks {
  uint32_t red, green, blue, alpha;
  int bytes;  // per pixel
};
PixelMasks Masks_Of(PixelFormat format);
// A raw pixel value of the format as 0xAARRGGBB (X8R8G8B8 reads as opaque), and back.
uint32_t To_Argb(PixelFormat format, uint32_t raw);
uint32_t From_Argb(PixelFormat format, uint32_t argb);

// An image's texture on the GPU.
struct GpuState {
  uint32_t texture = 0;     // GL name, 0 when none
  uint64_t generation = 0;  // the context it belongs to
  bool stale = true;        // CPU pixels changed since upload
};

// What only the platform sees of an image: its pixel bytes (rows top to bottom, unpadded;
// empty for the back buffer), its GPU side, and the back buffer's own image.
struct ImageAccess {
  static std::vector<uint8_t>& Pixels(Image& image) { return image.pixels_; }
  static const std::vector<uint8_t>& Pixels(const Image& image) { return image.pixels_; }
  static bool Is_Backbuffer(const Image& image) { return image.backbuffer_; }
  static GpuState& Gpu(Image& image) { return *image.gpu_; }
  // Pixel values as the format stores them, and whether one is the colour key.
  static uint32_t Raw(const Image& image, int x, int y) { return image.Raw(x, y); }
  static bool Is_Key(const Image& image, uint32_t raw) { return image.Is_Key(raw); }
  static ImageRef Backbuffer(int width, int height);
};

// True while a GL context is current.
bool Gl_Ready();
// Deletes the image's texture if it belongs to the live context.
void Forget_Texture(GpuState& gpu);
// Uploads the image when its texture is missing or stale; returns the GL name (0: none).
uint32_t Texture_Of(Image& image);

// 2D work on the back buffer (pending 3D batches are drawn first).
bool Gpu_Blit_To_Backbuffer(Image& src, const Rect& src_rect, int x, int y, bool keyed);
bool Gpu_Fill_Backbuffer(const Rect& rect, uint32_t argb);
bool Gpu_Read_Backbuffer(const Rect& rect, uint32_t* argb_out);
// Back-buffer size (0 without one).
int Backbuffer_Width();
int Backbuffer_Height();

// Frees the 2D program (the display calls it before the context goes).
void Release_Blit_Program();

// Draws whatever the 3D device and the 2D path have batched, in the order it was asked for
// (called before anything touches the target or a texture changes).
void Flush_Device();
// The 3D device's batch alone (with the blits queued before it), and the blits alone.
void Flush_3D();
void Flush_Blits();

}  // namespace platform::detail
