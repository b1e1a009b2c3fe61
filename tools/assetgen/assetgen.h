#pragma once
// The asset generator: every data file the game reads, written deterministically.
// Each group of assets registers one generator; main runs them all in name order.
#include <cstdint>
#include <string>
#include <vector>

namespace assetgen {

using GeneratorFn = bool (*)(const std::string& game_dir);

// Registers a generator at static-initialisation time; returns true.
bool Register(const char* name, GeneratorFn fn);

// Writes the desktop icons into folder/hicolor/<n>x<n>/apps (not game data: the install
// puts them under share/icons).
bool Generate_Icons(const std::string& folder);

// 32-bit pixels, 0xAARRGGBB, rows top to bottom. A picture drawn at a scale holds
// scale x scale pixels for each pixel of its layout: the art toolkit takes layout
// coordinates and sizes and draws them that much finer (pictures for large screens).
struct Picture {
  int width = 0, height = 0;
  std::vector<uint32_t> pixels;
  int scale = 1;
  Picture() = default;
  Picture(int w, int h, uint32_t fill = 0xFF000000u, int k = 1)
      : width(w * k), height(h * k), pixels(size_t(w * k) * size_t(h * k), fill), scale(k) {}
  uint32_t& at(int x, int y) { return pixels[size_t(y) * width + x]; }
  uint32_t at(int x, int y) const { return pixels[size_t(y) * width + x]; }
};

// Creates the folders of path as needed.
bool Make_Parent_Dirs(const std::string& path);
// Uncompressed 24-bit BMP (alpha dropped).
bool Write_BMP(const std::string& path, const Picture& p);
// .dds with one 16-bit 4-4-4-4 (A R G B) image, rows unpadded.
bool Write_DDS4444(const std::string& path, const Picture& p);
// 8-bit RGBA PNG (the desktop's icons), deflated with zlib.
bool Write_PNG(const std::string& path, const Picture& p);
// Writes bytes or text exactly as given.
bool Write_File(const std::string& path, const std::string& bytes);

}  // namespace assetgen
