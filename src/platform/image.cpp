// Images on the CPU: pixel formats, colour keys, memory-to-memory blits and fills, and
// .bmp loading. Operations that involve the back buffer are handed to the GL side.
#include <SDL.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <optional>
#include <vector>

#include "platform/gl_internal.h"
#include "platform/render.h"
#include "platform/testing.h"

namespace platform {

namespace detail {
PixelMasks Masks_Of(PixelFormat format) {
  switch (format) {
    case PixelFormat::X8R8G8B8:
      return {0x00FF0000u, 0x0000FF00u, 0x000000FFu, 0, 4};
    case PixelFormat::A8R8G8B8:
      return {0x00FF0000u, 0x0000FF00u, 0x000000FFu, 0xFF000000u, 4};
    case PixelFormat::A4R4G4B4:
      return {0x0F00u, 0x00F0u, 0x000Fu, 0xF000u, 2};
  }
  return {0, 0, 0, 0, 4};
}

uint32_t To_Argb(PixelFormat format, uint32_t raw) {
  switch (format) {
    case PixelFormat::X8R8G8B8:
      return 0xFF000000u | (raw & 0x00FFFFFFu);
    case PixelFormat::A8R8G8B8:
      return raw;
    case PixelFormat::A4R4G4B4: {
      // Each nibble n widens to n * 17, so 0xF is full scale.
      uint32_t out = 0;
      for (int shift = 0; shift < 16; shift += 4) out |= ((raw >> shift) & 0xFu) * 17u << (shift * 2);
      return out;
    }
  }
  return raw;
}

uint32_t From_Argb(PixelFormat format, uint32_t argb) {
  switch (format) {
    case PixelFormat::X8R8G8B8:
      return argb & 0x00FFFFFFu;
    case PixelFormat::A8R8G8B8:
      return argb;
    case PixelFormat::A4R4G4B4: {
      uint32_t out = 0;
      for (int shift = 0; shift < 32; shift += 8) out |= (((argb >> shift) & 0xFFu) + 8) / 17 << (shift / 2);
      return out;
    }
  }
  return argb;
}
}  // namespace detail

using detail::From_Argb;
using detail::Masks_Of;
using detail::To_Argb;

Image::Image(int width, int height, PixelFormat format, bool backbuffer)
    : width_(width),
      height_(height),
      format_(format),
      backbuffer_(backbuffer),
      gpu_(std::make_unique<detail::GpuState>()) {
  if (!backbuffer) pixels_.assign(size_t(width) * size_t(height) * size_t(Masks_Of(format).bytes), 0);
}

Image::~Image() { detail::Forget_Texture(*gpu_); }

ImageRef Image::Create(int width, int height, PixelFormat format) {
  if (width < 1 || height < 1 || width > 16384 || height > 16384) return nullptr;
  return ImageRef(new Image(width, height, format, false));
}

ImageRef detail::ImageAccess::Backbuffer(int width, int height) {
  if (width < 1 || height < 1) return nullptr;
  return ImageRef(new Image(width, height, PixelFormat::X8R8G8B8, true));
}

uint32_t Image::Pixel(int x, int y) const {
  if (pixels_.empty() || x < 0 || y < 0 || x >= width_ || y >= height_) return 0;
  return To_Argb(format_, Raw(x, y));
}

void Image::Set_Pixel(int x, int y, uint32_t argb) { Set_Raw(x, y, From_Argb(format_, argb)); }

uint32_t Image::Raw(int x, int y) const {
  if (pixels_.empty() || x < 0 || y < 0 || x >= width_ || y >= height_) return 0;
  const uint8_t* p = pixels_.data() + (size_t(y) * size_t(width_) + size_t(x)) * size_t(Masks_Of(format_).bytes);
  if (format_ == PixelFormat::A4R4G4B4) return uint32_t(p[0]) | uint32_t(p[1]) << 8;
  uint32_t v;
  std::memcpy(&v, p, 4);
  return v;
}

void Image::Set_Raw(int x, int y, uint32_t raw) {
  if (pixels_.empty() || x < 0 || y < 0 || x >= width_ || y >= height_) return;
  detail::Flush_Device();
  uint8_t* p = pixels_.data() + (size_t(y) * size_t(width_) + size_t(x)) * size_t(Masks_Of(format_).bytes);
  if (format_ == PixelFormat::A4R4G4B4) {
    p[0] = uint8_t(raw);
    p[1] = uint8_t(raw >> 8);
  } else {
    std::memcpy(p, &raw, 4);
  }
  gpu_->stale = true;
}

void Image::Set_Color_Key(uint32_t argb) {
  key_ = From_Argb(format_, argb);
  gpu_->stale = true;
}

std::optional<uint32_t> Image::Color_Key() const {
  if (!key_) return std::nullopt;
  return To_Argb(format_, *key_);
}

const uint8_t* Image_Bytes(const Image& image) {
  const std::vector<uint8_t>& pixels = detail::ImageAccess::Pixels(image);
  return pixels.empty() ? nullptr : pixels.data();
}

bool Image::Is_Key(uint32_t raw) const {
  if (!key_) return false;
  // Only the colour bits take part: a key of black matches whatever the alpha byte holds.
  const detail::PixelMasks m = Masks_Of(format_);
  const uint32_t colour = m.red | m.green | m.blue;
  return (raw & colour) == (*key_ & colour);
}

namespace {
// Cuts the source rectangle to both images; false when nothing is left.
bool Cut(const Image& dst, const Image& src, Rect& r, int& x, int& y) {
  if (r.left < 0) {
    x -= r.left;
    r.left = 0;
  }
  if (r.top < 0) {
    y -= r.top;
    r.top = 0;
  }
  r.right = std::min(r.right, src.Width());
  r.bottom = std::min(r.bottom, src.Height());
  if (x < 0) {
    r.left -= x;
    x = 0;
  }
  if (y < 0) {
    r.top -= y;
    y = 0;
  }
  r.right = std::min<int32_t>(r.right, r.left + (dst.Width() - x));
  r.bottom = std::min<int32_t>(r.bottom, r.top + (dst.Height() - y));
  return r.right > r.left && r.bottom > r.top;
}

void Memory_Blit(Image& dst, const Image& src, const Rect& r, int x, int y, bool keyed) {
  keyed = keyed && src.Color_Key();
  const int w = r.right - r.left, h = r.bottom - r.top;
  if (dst.Format() != src.Format()) {
    for (int j = 0; j < h; ++j)
      for (int i = 0; i < w; ++i) {
        const uint32_t v = detail::ImageAccess::Raw(src, r.left + i, r.top + j);
        if (!(keyed && detail::ImageAccess::Is_Key(src, v))) dst.Set_Pixel(x + i, y + j, To_Argb(src.Format(), v));
      }
    return;
  }
  // Same format: whole rows at a time (memmove, as an image may be blitted onto itself).
  const size_t bytes = size_t(Masks_Of(src.Format()).bytes);
  const uint8_t* s = detail::ImageAccess::Pixels(src).data();
  uint8_t* d = detail::ImageAccess::Pixels(dst).data();
  for (int j = 0; j < h; ++j) {
    const uint8_t* srow = s + (size_t(r.top + j) * size_t(src.Width()) + size_t(r.left)) * bytes;
    uint8_t* drow = d + (size_t(y + j) * size_t(dst.Width()) + size_t(x)) * bytes;
    if (!keyed) {
      std::memmove(drow, srow, size_t(w) * bytes);
      continue;
    }
    for (int i = 0; i < w; ++i) {
      uint32_t v = 0;
      std::memcpy(&v, srow + size_t(i) * bytes, bytes);
      if (!detail::ImageAccess::Is_Key(src, v)) std::memcpy(drow + size_t(i) * bytes, &v, bytes);
    }
  }
  detail::ImageAccess::Gpu(dst).stale = true;
}

// Reads the back buffer into a memory image, converting to its format.
bool Read_Into(Image& dst, const Rect& r, int x, int y) {
  const int w = r.right - r.left, h = r.bottom - r.top;
  std::vector<uint32_t> rows(size_t(w) * size_t(h));
  if (!detail::Gpu_Read_Backbuffer(r, rows.data())) return false;
  for (int j = 0; j < h; ++j)
    for (int i = 0; i < w; ++i) dst.Set_Pixel(x + i, y + j, rows[size_t(j) * w + i]);
  return true;
}
}  // namespace

bool Blit(Image& dst, const Image& src, const Rect& src_rect, int x, int y, bool keyed) {
  Rect r = src_rect;
  if (!Cut(dst, src, r, x, y)) return false;
  using detail::ImageAccess;
  const bool to_screen = ImageAccess::Is_Backbuffer(dst), from_screen = ImageAccess::Is_Backbuffer(src);
  // Onto the back buffer the blit joins the queue behind what is batched already.
  if (to_screen && !from_screen) return detail::Gpu_Blit_To_Backbuffer(const_cast<Image&>(src), r, x, y, keyed);
  detail::Flush_Device();
  if (from_screen && !to_screen) return Read_Into(dst, r, x, y);
  if (to_screen || from_screen) return false;
  Memory_Blit(dst, src, r, x, y, keyed);
  return true;
}

bool Fill_Rect(Image& dst, const Rect& rect, uint32_t argb) {
  detail::Flush_Device();
  Rect r = rect;
  r.left = std::max(r.left, 0);
  r.top = std::max(r.top, 0);
  r.right = std::min(r.right, dst.Width());
  r.bottom = std::min(r.bottom, dst.Height());
  if (r.right <= r.left || r.bottom <= r.top) return false;
  if (detail::ImageAccess::Is_Backbuffer(dst))
    return detail::Gpu_Fill_Backbuffer(r, 0xFF000000u | argb);
  for (int y = r.top; y < r.bottom; ++y)
    for (int x = r.left; x < r.right; ++x) dst.Set_Pixel(x, y, argb);
  return true;
}

bool Read_Backbuffer(const Rect& rect, uint32_t* argb_out) {
  if (rect.left < 0 || rect.top < 0 || rect.right > detail::Backbuffer_Width() ||
      rect.bottom > detail::Backbuffer_Height() || rect.right <= rect.left || rect.bottom <= rect.top)
    return false;
  return detail::Gpu_Read_Backbuffer(rect, argb_out);
}

namespace {
// One axis of a resampling: for each target index, the source indices and their weights.
// Enlarging blends the two nearest source pixels (linear); shrinking averages the source
// pixels under the target pixel by how much of each it covers (area).
struct Taps {
  std::vector<int> first;  // per target index: where its taps start in index/weight
  std::vector<int> index;
  std::vector<double> weight;
};

Taps Axis_Taps(int source, int target) {
  Taps t;
  const double ratio = double(source) / target;
  for (int i = 0; i < target; ++i) {
    t.first.push_back(int(t.index.size()));
    if (ratio < 1) {
      const double u = (i + 0.5) * ratio - 0.5;
      const int a = int(std::floor(u));
      const double f = u - a;
      t.index.push_back(std::clamp(a, 0, source - 1));
      t.weight.push_back(1 - f);
      t.index.push_back(std::clamp(a + 1, 0, source - 1));
      t.weight.push_back(f);
    } else {
      const double lo = i * ratio, hi = (i + 1) * ratio;
      for (int s = int(lo); s < hi && s < source; ++s) {
        t.index.push_back(s);
        t.weight.push_back(std::min(hi, s + 1.0) - std::max(lo, double(s)));
      }
    }
  }
  t.first.push_back(int(t.index.size()));
  return t;
}

// Scales a picture to width x height. Which pixels are the colour key is decided by the
// nearest source pixel alone, so keyed shapes keep the edges a pixel-by-pixel enlargement
// gives them; the colour of every other pixel is filtered from its non-key neighbours only,
// so no key colour bleeds into an edge, and it never lands on the key by accident.
void Resample(const uint32_t* src, int sw, int sh, int pitch_px, Image& out, const std::optional<uint32_t>& key) {
  const int w = out.Width(), h = out.Height();
  const Taps tx = Axis_Taps(sw, w), ty = Axis_Taps(sh, h);
  auto at = [&](int x, int y) { return src[size_t(y) * size_t(pitch_px) + size_t(x)]; };
  auto is_key = [&](uint32_t argb) { return key && (argb & 0xFFFFFFu) == (*key & 0xFFFFFFu); };
  for (int y = 0; y < h; ++y) {
    const int ny = int(int64_t(y) * sh / h);
    for (int x = 0; x < w; ++x) {
      const uint32_t nearest = at(int(int64_t(x) * sw / w), ny);
      uint32_t result = nearest;
      if (!is_key(nearest)) {
        double sum[4] = {0, 0, 0, 0}, total = 0;
        for (int j = ty.first[size_t(y)]; j < ty.first[size_t(y) + 1]; ++j)
          for (int i = tx.first[size_t(x)]; i < tx.first[size_t(x) + 1]; ++i) {
            const uint32_t c = at(tx.index[size_t(i)], ty.index[size_t(j)]);
            const double wgt = tx.weight[size_t(i)] * ty.weight[size_t(j)];
            if (is_key(c) || wgt <= 0) continue;
            for (int k = 0; k < 4; ++k) sum[k] += wgt * double((c >> (8 * k)) & 0xFFu);
            total += wgt;
          }
        if (total > 0) {
          uint32_t c = 0;
          for (int k = 0; k < 4; ++k) c |= uint32_t(std::lround(sum[k] / total)) << (8 * k);
          if (!is_key(c)) result = c;
        }
      }
      out.Set_Pixel(x, y, result);
    }
  }
}
}  // namespace

ImageRef Load_BMP(const std::string& path, int width, int height, PixelFormat format, std::optional<uint32_t> key) {
  SDL_Surface* loaded = SDL_LoadBMP(path.c_str());
  if (loaded == nullptr) return nullptr;
  SDL_Surface* argb = SDL_ConvertSurfaceFormat(loaded, SDL_PIXELFORMAT_ARGB8888, 0);
  SDL_FreeSurface(loaded);
  if (argb == nullptr) return nullptr;
  if (width <= 0 || height <= 0) {
    width = argb->w;
    height = argb->h;
  }
  ImageRef image = Image::Create(width, height, format);
  if (image && SDL_LockSurface(argb) == 0) {
    const auto* base = static_cast<const uint8_t*>(argb->pixels);
    if (width == argb->w && height == argb->h) {
      for (int y = 0; y < height; ++y) {
        const auto* row = reinterpret_cast<const uint32_t*>(base + size_t(y) * size_t(argb->pitch));
        for (int x = 0; x < width; ++x) image->Set_Pixel(x, y, row[x]);
      }
    } else {
      Resample(reinterpret_cast<const uint32_t*>(base), argb->w, argb->h, argb->pitch / 4, *image, key);
    }
    SDL_UnlockSurface(argb);
  } else {
    image.reset();
  }
  SDL_FreeSurface(argb);
  return image;
}

}  // namespace platform
