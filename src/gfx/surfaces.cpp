// Surfaces, textures and the 2D routines.
#include <algorithm>
#include <cctype>
#include <filesystem>

#include "core/numbers.h"
#include "core/settings.h"
#include "gfx/mod3Denhance.h"

namespace mod3Denhance {
namespace {
std::string Local_Path(std::string path) {
  std::replace(path.begin(), path.end(), '\\', '/');
  return path;
}

void Apply_Color_Key(platform::Image& image, i16 mode) {
  if (mode == kKeyBlack) image.Set_Color_Key(0);
  if (mode == kKeyMagenta) image.Set_Color_Key(0x00FF00FFu);
}

// Pictures for screens above 640 x 480 are also drawn twice as fine, in a "2x" folder
// beside the picture; a larger screen scales that one instead of enlarging the small one.
std::string Finer_Picture(const std::string& path) {
  if (modMain::ScaleX <= 1.0f && modMain::ScaleY <= 1.0f) return path;
  const size_t slash = path.find_last_of('/');
  const std::string finer =
      slash == std::string::npos ? "2x/" + path : path.substr(0, slash + 1) + "2x/" + path.substr(slash + 1);
  std::error_code ec;
  return std::filesystem::is_regular_file(finer, ec) ? finer : path;
}

// The key colour a mode will set, as the loader needs it to scale around it.
std::optional<uint32_t> Key_Argb(i16 mode) {
  if (mode == kKeyBlack) return 0xFF000000u;
  if (mode == kKeyMagenta) return 0xFFFF00FFu;
  return std::nullopt;
}

bool Ends_With_Dds(const std::string& file) {
  if (file.size() < 4) return false;
  std::string tail = file.substr(file.size() - 4);
  for (char& c : tail) c = char(std::tolower(static_cast<unsigned char>(c)));
  return tail == ".dds";
}
}  // namespace

bool Create_Surface(Surface& surface, double width, double height, const std::string& file, i16 color_key_mode,
                    Bool16 in_system_memory) {
  surface.reset();
  i32 w = 0, h = 0;
  if (!numbers::Convert_Round(width, w) || !numbers::Convert_Round(height, h)) return false;
  // Where the pixels live is the layer's business: every surface keeps a CPU copy and
  // a texture made on first use, so the memory flag changes nothing.
  (void)in_system_memory;
  const auto format = platform::PixelFormat::X8R8G8B8;
  surface = file.empty() ? platform::Image::Create(w, h, format)
                         : platform::Load_BMP(Finer_Picture(Local_Path(file)), w, h, format, Key_Argb(color_key_mode));
  if (!surface) return false;
  Apply_Color_Key(*surface, color_key_mode);
  return true;
}

Surface Create_Texture(const std::string& file, i32 width, i32 height, i16 color_key_mode) {
  if (Ends_With_Dds(file)) return Load_DDS(file);
  const bool sized = width != 0 && height != 0;
  const auto format = platform::PixelFormat::A8R8G8B8;
  Surface texture;
  if (file.empty()) {
    texture = sized ? platform::Image::Create(width, height, format) : nullptr;
  } else {
    texture =
        platform::Load_BMP(Local_Path(file), sized ? width : 0, sized ? height : 0, format, Key_Argb(color_key_mode));
  }
  if (texture) Apply_Color_Key(*texture, color_key_mode);
  return texture;
}

void Clear_Screen() {
  if (D3DDevice == nullptr) return;
  D3DDevice->Clear(&ScreenRect, 1, platform::kClearTarget | platform::kClearZBuffer, 0x00000066u, 1.0f, 0);
}

void Blit_Clipped(const Surface& destination, const Surface& source, Rect& src_rect, i16& x, i16& y, u8 transparent) {
  const int screen_w = modMain::ScreenWidth, screen_h = modMain::ScreenHeight;
  const int w = i16(src_rect.right - src_rect.left), h = i16(src_rect.bottom - src_rect.top);
  if (!(x + w >= 0 && x <= screen_w && y + h >= 0 && y <= screen_h)) return;
  if (x < 0) {
    src_rect.left -= x;
    x = 0;
  }
  if (y < 0) {
    src_rect.top -= y;
    y = 0;
  }
  if (x + w > screen_w) src_rect.right -= x + w - screen_w;
  if (y + h > screen_h) src_rect.bottom -= y + h - screen_h;
  if (src_rect.right <= src_rect.left || src_rect.bottom <= src_rect.top) return;
  if (transparent > 1 || !destination || !source) return;
  platform::Blit(*destination, *source, src_rect, x, y, transparent == 1);
}

void Fill_Rect(const Surface& surface, i16 left, i16 top, i16 right, i16 bottom, u32 colour) {
  if (surface) platform::Fill_Rect(*surface, Rect{left, top, right, bottom}, colour);
}

Rect Make_Rect(i16 left, i16 top, i16 right, i16 bottom) { return Rect{left, top, right, bottom}; }

Bool16 Point_In_Rect(const Rect& rect, i16 x, i16 y) {
  return To_Bool16(x >= rect.left && x < rect.right && y >= rect.top && y < rect.bottom);
}

}  // namespace mod3Denhance
