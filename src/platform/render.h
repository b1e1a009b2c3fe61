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
// X8R8G8B8: 2D surfaces (the top byte is not part of the colour; shown opaque).
// A8R8G8B8: textures. A4R4G4B4: the game's .dds textures, kept as the file holds them.
enum class PixelFormat : uint8_t { X8R8G8B8, A8R8G8B8, A4R4G4B4 };

struct PixelMasks {
  uint32_t red, green, blue, alpha;
  int bytes;  // per pixel
};
PixelMasks Masks_Of(PixelFormat format);
// A raw pixel value of the format as 0xAARRGGBB (X8R8G8B8 reads as opaque), and back.
uint32_t To_Argb(PixelFormat format, uint32_t raw);
uint32_t From_Argb(PixelFormat format, uint32_t argb);

// What an image stands for: plain memory, or one of the display's own buffers.
enum class ImageKind : uint8_t { Memory, Primary, BackBuffer, DepthBuffer };

class Image;
using ImageRef = std::shared_ptr<Image>;
namespace detail {
struct GpuState;
GpuState& Gpu_Of(Image& image);
}  // namespace detail

// One picture: a CPU copy of its pixels and a GL texture uploaded on demand, so images
// can be made, filled and inspected with no display at all. The display's buffers are
// images without CPU pixels; 2D operations on them go to the GPU.
class Image {
 public:
  // Zero-filled; null when a side is not in 1..16384.
  static ImageRef Create(int width, int height, PixelFormat format);
  // The display's buffers (made by the display layer).
  static ImageRef Create_Display_Buffer(ImageKind kind, int width, int height);
  ~Image();
  Image(const Image&) = delete;
  Image& operator=(const Image&) = delete;

  int Width() const { return width_; }
  int Height() const { return height_; }
  PixelFormat Format() const { return format_; }
  ImageKind Kind() const { return kind_; }
  bool Has_Pixels() const { return kind_ == ImageKind::Memory; }
  int Pitch() const { return width_ * Masks_Of(format_).bytes; }

  // Raw access to the pixel bytes (rows top to bottom, unpadded). Writing through Lock
  // must end with Unlock, which marks the GPU copy stale. Null for display buffers.
  uint8_t* Lock();
  void Unlock();
  const uint8_t* Bytes() const { return pixels_.empty() ? nullptr : pixels_.data(); }

  // Pixel values in the image's own format; out-of-range reads give 0, writes do nothing.
  uint32_t Pixel(int x, int y) const;
  void Set_Pixel(int x, int y, uint32_t raw);
  uint32_t Argb(int x, int y) const { return To_Argb(format_, Pixel(x, y)); }

  // Source colour key: pixels whose colour bits equal it are transparent in keyed blits
  // and carry alpha 0 in the texture.
  void Set_Color_Key(uint32_t raw_key);
  void Clear_Color_Key();
  bool Has_Color_Key() const { return has_key_; }
  uint32_t Color_Key() const { return key_; }
  bool Is_Key_Pixel(uint32_t raw) const;

 private:
  Image(int width, int height, PixelFormat format, ImageKind kind);
  int width_, height_;
  PixelFormat format_;
  ImageKind kind_;
  std::vector<uint8_t> pixels_;
  bool has_key_ = false;
  uint32_t key_ = 0;
  // The GL side's bookkeeping, known only inside the platform layer.
  friend detail::GpuState& detail::Gpu_Of(Image& image);
  std::unique_ptr<detail::GpuState> gpu_;
};

// Loads a .bmp file into a new image of the format at width x height (0 for either: the
// file's own size, copied exactly). A different size is filtered (linear enlarging, area
// shrinking); key_argb, the colour the image will be keyed on, keeps its pixels where a
// pixel-by-pixel scaling puts them and out of every other pixel's colour. Null when the
// file cannot be read.
ImageRef Load_BMP(const std::string& path, int width, int height, PixelFormat format,
                  std::optional<uint32_t> key_argb = std::nullopt);

// Copies src_rect of src to (x, y) of dst without scaling, texel i to pixel x + i; keyed
// skips source pixels equal to src's colour key (an unkeyed source copies everything).
// The rectangle is cut to both images. Works between memory images, from memory to the
// back buffer (GPU) and from the back buffer to memory (read-back). False when nothing
// could be done (no display for a display buffer, empty rectangle, no pixels).
bool Blit(Image& dst, const Image& src, const Rect& src_rect, int x, int y, bool keyed);
// Fills a rectangle (cut to the image) with a raw pixel value of dst's format; the back
// buffer takes the value as X8R8G8B8.
bool Fill_Rect(Image& dst, const Rect& rect, uint32_t raw);
// Reads back-buffer pixels as 0xAARRGGBB, rows top to bottom; false without a display
// or when the rectangle is not inside the back buffer.
bool Read_Backbuffer(const Rect& rect, uint32_t* argb_out);

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
// The identifier itself when offered, otherwise the best device there is ("" if none).
std::string Resolve_Device(const std::string& identifier);

// Creates the GL 3.3 core context on the game window for the device (resolved as above).
// False, with a reason for the player, when no context can be made.
bool Open_Display(const std::string& device_identifier, std::string& error);
bool Display_Open();
// The renderer GL reports ("" without a display).
std::string Renderer_Name();
// The off-screen back buffer of exactly width x height (colour target) and its depth
// buffer; each returns the image that stands for it, null on failure.
ImageRef Create_Primary(int width, int height);
ImageRef Create_Backbuffer(int width, int height);
ImageRef Create_Depth_Buffer();
void Release_Depth_Buffer();
void Release_Backbuffer();
// Leaves full screen (the window stays until the game closes it).
void Restore_Display_Mode();
// Destroys the context and every GL object; images keep their CPU pixels.
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

// Render states by the game's numbers, and the values it passes.
namespace rs {
inline constexpr uint32_t ZEnable = 7, ShadeMode = 9, ZWriteEnable = 14, AlphaTestEnable = 15, SrcBlend = 19,
                          DestBlend = 20, CullMode = 22, ZFunc = 23, AlphaRef = 24, AlphaFunc = 25,
                          AlphaBlendEnable = 27, SpecularEnable = 29, ColorKeyEnable = 41, Lighting = 137,
                          Ambient = 139, NormalizeNormals = 143;
}
namespace blend {
inline constexpr uint32_t Zero = 1, One = 2, SrcColor = 3, InvSrcColor = 4, SrcAlpha = 5, InvSrcAlpha = 6,
                          DestAlpha = 7, InvDestAlpha = 8, DestColor = 9, InvDestColor = 10;
}
namespace cull {
inline constexpr uint32_t None = 1, Clockwise = 2, CounterClockwise = 3;
}
// Comparison functions (z and alpha tests).
namespace cmp {
inline constexpr uint32_t Never = 1, Less = 2, Equal = 3, LessEqual = 4, Greater = 5, NotEqual = 6, GreaterEqual = 7,
                          Always = 8;
}
// Texture stage states and their values.
namespace tss {
inline constexpr uint32_t ColorOp = 1, ColorArg1 = 2, ColorArg2 = 3, AlphaOp = 4, AlphaArg1 = 5, AlphaArg2 = 6,
                          Address = 12, AddressU = 13, AddressV = 14, MagFilter = 16, MinFilter = 17;
inline constexpr uint32_t OpDisable = 1, OpSelectArg1 = 2, OpSelectArg2 = 3, OpModulate = 4, OpModulate2x = 5,
                          OpModulate4x = 6, OpAdd = 7;
inline constexpr uint32_t ArgDiffuse = 0, ArgCurrent = 1, ArgTexture = 2;
inline constexpr uint32_t Wrap = 1, Mirror = 2, Clamp = 3;
inline constexpr uint32_t Point = 1, Linear = 2;
}  // namespace tss
// Clear flags.
inline constexpr uint32_t kClearTarget = 1, kClearZBuffer = 2;

enum class Primitive : int { TriangleList = 4, TriangleStrip = 5, TriangleFan = 6 };

struct Viewport {
  int32_t x = 0, y = 0, width = 0, height = 0;
  float min_z = 0, max_z = 1;
};

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
  virtual std::string Identifier() const = 0;
  virtual void SetTransform(TransformKind kind, const Matrix4& m) = 0;
  virtual Matrix4 GetTransform(TransformKind kind) const = 0;
  virtual void SetMaterial(const D3DMaterial& material) = 0;
  virtual D3DMaterial GetMaterial() const = 0;
  // nullptr: no texture on that stage (sampled as opaque white). Only stage 0 draws.
  virtual void SetTexture(int stage, const ImageRef& texture) = 0;
  virtual void SetRenderState(uint32_t state, uint32_t value) = 0;
  virtual uint32_t GetRenderState(uint32_t state) const = 0;
  virtual void SetTextureStageState(int stage, uint32_t state, uint32_t value) = 0;
  virtual void SetViewport(const Viewport& viewport) = 0;
  virtual Viewport GetViewport() const = 0;
  virtual void SetLight(int index, const D3DLight& light) = 0;
  virtual void LightEnable(int index, bool enable) = 0;
  // Clears the rectangles (all of the viewport when count is 0) of the target and/or depth.
  virtual void Clear(const Rect* rects, int count, uint32_t flags, uint32_t argb, float z, uint32_t stencil) = 0;
  virtual void BeginScene() = 0;
  virtual void EndScene() = 0;
  // Pre-transformed vertices (format 452), pre-lit vertices (482), mesh vertices (274).
  virtual void DrawPrimitive(Primitive type, const ScreenVertex* vertices, int count) = 0;
  virtual void DrawPrimitive(Primitive type, const LitVertex* vertices, int count) = 0;
  virtual void DrawPrimitive(Primitive type, const MeshVertex* vertices, int count) = 0;
  // Indexed triangle list of mesh vertices (format 274).
  virtual void DrawIndexedMesh(const MeshVertex* vertices, int vertex_count, const uint16_t* indices,
                               int index_count) = 0;
  // Kept geometry: triangle strips of pre-lit vertices laid end to end (part i is strip i,
  // lengths[i] vertices), or one indexed mesh (one part). Drawn as DrawPrimitive and
  // DrawIndexedMesh would draw the same vertices, parts first .. first + count - 1.
  virtual GeometryRef MakeGeometry(const LitVertex* vertices, const int* lengths, int strips);
  virtual GeometryRef MakeGeometry(const MeshVertex* vertices, int vertex_count, const uint16_t* indices,
                                   int index_count);
  virtual void DrawGeometry(const Geometry& geometry, int first, int count);
};

// Creates the device on the open display (null without one). The identifier is kept as
// given; the renderer is the display's.
std::unique_ptr<Device3D> Create_Device(const std::string& identifier);

}  // namespace platform
