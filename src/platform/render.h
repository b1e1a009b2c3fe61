#pragma once
// The platform's display, images and fixed-function 3D device, over OpenGL.
// Game code reaches GL only through what is declared here; no GL types leak.
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/records.h"

namespace platform {

// --- pixels ----------------------------------------------------------------------
// How an image stores its pixels. X8R8G8B8: 2D surfaces (no alpha; shown opaque).
// A8R8G8B8: textures. A4R4G4B4: the game's .dds textures, 4 bits a channel as the file
// holds them. Every pixel value the game passes or reads is a colour as 0xAARRGGBB.
enum class PixelFormat : uint8_t { X8R8G8B8, A8R8G8B8, A4R4G4B4 };

class Image;
using ImageRef = std::shared_ptr<Image>;
namespace detail {
struct GpuState;
struct ImageAccess;
}  // namespace detail

// One picture: a CPU copy of its pixels and a GL texture uploaded on demand, so images
// can be made, filled and inspected with no display at all. The back buffer is an image
// without CPU pixels; 2D operations on it go to the GPU.
class Image {
 public:
  // Zero-filled; null when a side is not in 1..16384.
  static ImageRef Create(int width, int height, PixelFormat format);
  ~Image();
  Image(const Image&) = delete;
  Image& operator=(const Image&) = delete;

  int Width() const { return width_; }
  int Height() const { return height_; }
  PixelFormat Format() const { return format_; }

  // A pixel as the format holds it (X8R8G8B8 reads as opaque, A4R4G4B4 to the nearest
  // 4 bits a channel and back); out-of-range reads give 0, writes do nothing.
  uint32_t Pixel(int x, int y) const;
  void Set_Pixel(int x, int y, uint32_t argb);

  // Source colour key, held as the format holds it: pixels whose colour (alpha aside)
  // equals it are transparent in keyed blits and carry alpha 0 in the texture.
  void Set_Color_Key(uint32_t argb);
  std::optional<uint32_t> Color_Key() const;

 private:
  friend struct detail::ImageAccess;
  Image(int width, int height, PixelFormat format, bool backbuffer);
  uint32_t Raw(int x, int y) const;
  void Set_Raw(int x, int y, uint32_t raw);
  bool Is_Key(uint32_t raw) const;
  int width_, height_;
  PixelFormat format_;
  bool backbuffer_;
  std::vector<uint8_t> pixels_;
  std::optional<uint32_t> key_;  // raw
  // The GL side's bookkeeping, known only inside the platform layer.
  std::unique_ptr<detail::GpuState> gpu_;
};

// Loads a .bmp file into a new image of the format at width x height (0 for either: the
// file's own size, copied exactly). A different size is filtered (linear enlarging, area
// shrinking); key, the 0xAARRGGBB colour the image will be keyed on, keeps its pixels where a
// pixel-by-pixel scaling puts them and out of every other pixel's colour. Null when the
// file cannot be read.
ImageRef Load_BMP(const std::string& path, int width, int height, PixelFormat format, std::optional<uint32_t> key = {});

// Copies src_rect of src to (x, y) of dst without scaling, texel i to pixel x + i; keyed
// skips source pixels equal to src's colour key (an unkeyed source copies everything).
// The rectangle is cut to both images. Works between memory images, from memory to the
// back buffer (GPU) and from the back buffer to memory (read-back). False when nothing
// could be done (no display for the back buffer, empty rectangle, no pixels).
bool Blit(Image& dst, const Image& src, const Rect& src_rect, int x, int y, bool keyed);
// Fills a rectangle (cut to the image) with a colour; the back buffer takes it opaque.
bool Fill_Rect(Image& dst, const Rect& rect, uint32_t argb);

// --- display ------------------------------------------------------------------
// The device identifiers the settings file stores.
inline constexpr const char* kTnLHardwareDevice = "IID_IDirect3DTnLHALDevice";
inline constexpr const char* kHardwareDevice = "IID_IDirect3DHALDevice";
inline constexpr const char* kSoftwareDevice = "IID_IDirect3DRGBDevice";

struct DeviceInfo {
  std::string identifier;   // as stored in the settings
  std::string description;  // for the setup dialog
  bool software = false;
};
// The 3D devices this machine offers, best first: the hardware GL driver when it is not
// itself a software renderer (as the transform-and-lighting device and as the plain
// hardware device, both on the GPU), then Mesa's software rasteriser. Each description
// names the renderer. Probes GL once (needs
// the video subsystem; opens a hidden window when the game window is not open yet).
std::vector<DeviceInfo> Device_List();

// Creates the GL 3.3 core context on the game window for the device (an identifier this
// machine does not offer gets the best device there is) and the off-screen back buffer of
// exactly width x height with its depth buffer. Returns the image that stands for the back
// buffer; null, with a reason for the player, when any of it cannot be made.
ImageRef Open_Display(const std::string& device_identifier, int width, int height, std::string& error);
// Destroys the context and every GL object; images keep their CPU pixels. The window (a
// desktop-sized one: the desktop's mode never changes) stays until the game closes it.
void Close_Display();
// Draws the back buffer scaled to the window (aspect kept, borders black) and swaps,
// waiting for the display's refresh where the driver allows; where the swap returns early
// it sleeps out the rest of the refresh period. Shows nothing while minimised.
void Present();
// How many 60 Hz steps one frame stands for: 60 / the display's refresh rate, at most 1
// (1 when the rate is unknown). What the game steps once a frame steps at this rate.
double Design_Steps_Per_Frame();

// --- 3D device -------------------------------------------------------------------
// Transform slots, numbered as the game passes them.
enum class TransformKind : int { World = 1, View = 2, Projection = 3 };

// Render states by the game's numbers, and the values it passes. Depth is compared
// less-or-equal; the device starts with z on and written, blending off (one, zero),
// counter-clockwise culling, point sampling, lighting on and no ambient. Colours are
// interpolated across a triangle, and a texel is multiplied by the colour, alpha included.
namespace rs {
inline constexpr uint32_t ZEnable = 7, ZWriteEnable = 14, TextureMag = 17, TextureMin = 18,
                          SrcBlend = 19, DestBlend = 20, CullMode = 22, AlphaBlendEnable = 27, Lighting = 137,
                          Ambient = 139;
}
namespace blend {
inline constexpr uint32_t Zero = 1, One = 2, SrcAlpha = 5, InvSrcAlpha = 6;
}
namespace cull {
inline constexpr uint32_t None = 1, Clockwise = 2, CounterClockwise = 3;
}
namespace filter {
inline constexpr uint32_t Point = 1, Linear = 2;
}
// Clear flags.
inline constexpr uint32_t kClearTarget = 1, kClearZBuffer = 2;

// Strips keep the game's winding: odd triangles reversed.
enum class Primitive : int { TriangleStrip = 5 };

// Light type 3 is directional, the only kind the game uses; others are lit as directional.
struct D3DLight {
  int32_t type = 3;
  ColorValue diffuse, specular, ambient;
  Vector3 position, direction;
  float range = 0, falloff = 0, attenuation0 = 0, attenuation1 = 0, attenuation2 = 0, theta = 0, phi = 0;
};

// Geometry the device keeps for drawing many times (the track's strips, a ship's mesh):
// made once, freed when its last owner lets go.
class Geometry;
using GeometryRef = std::shared_ptr<const Geometry>;

// The fixed-function 3D device the game draws with. Drawing is batched: calls return at
// once and the work reaches the back buffer before any read of it, blit or flip.
class Device3D {
 public:
  virtual ~Device3D() = default;
  virtual void SetTransform(TransformKind kind, const Matrix4& m) = 0;
  virtual void SetMaterial(const D3DMaterial& material) = 0;
  // nullptr: no texture on that stage (sampled as opaque white). Only stage 0 draws.
  virtual void SetTexture(int stage, const ImageRef& texture) = 0;
  virtual void SetRenderState(uint32_t state, uint32_t value) = 0;
  // Sets the light and switches it on (light 0 is the only one that lights).
  virtual void SetLight(int index, const D3DLight& light) = 0;
  // Clears the rectangles (all of the back buffer when count is 0) of the target and/or depth.
  virtual void Clear(const Rect* rects, int count, uint32_t flags, uint32_t argb, float z, uint32_t stencil) = 0;
  // Pre-transformed vertices (format 452), pre-lit vertices (482).
  virtual void DrawPrimitive(Primitive type, const ScreenVertex* vertices, int count) = 0;
  virtual void DrawPrimitive(Primitive type, const LitVertex* vertices, int count) = 0;
  // Kept geometry: triangle strips of pre-lit vertices laid end to end (part i is strip i,
  // lengths[i] vertices), or one indexed triangle list of mesh vertices (format 274; one
  // part). DrawGeometry draws parts first .. first + count - 1, strips as DrawPrimitive
  // would, skipping a part whose box lies wholly out of view; this base draws the strips
  // through DrawPrimitive and meshes not at all.
  virtual GeometryRef MakeGeometry(const LitVertex* vertices, const int* lengths, int strips);
  virtual GeometryRef MakeGeometry(const MeshVertex* vertices, int vertex_count, const uint16_t* indices, int count);
  virtual void DrawGeometry(const Geometry& geometry, int first, int count);
};

// Creates the device on the open display (null without one), for the identifier resolved
// as Open_Display does; the renderer is the display's.
std::unique_ptr<Device3D> Create_Device(const std::string& identifier);

}  // namespace platform
