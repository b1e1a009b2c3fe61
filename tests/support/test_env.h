#pragma once
// Shared test helpers: a scratch application folder and file helpers.
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace testenv {

// A fresh temp folder holding the game folders given: the game's application folder while it lives, removed after.
class ScratchAppDir {
 public:
  explicit ScratchAppDir(std::initializer_list<const char*> game_folders = {});
  ~ScratchAppDir();
  ScratchAppDir(const ScratchAppDir&) = delete;
  ScratchAppDir& operator=(const ScratchAppDir&) = delete;
  const std::string& path() const { return path_; }
  // Copies a file or folder from the generated game folder (build/game) into this one.
  void Copy_From_Game(const std::string& relative) const;

 private:
  std::string path_;
};

std::string Read_File(const std::string& path);
void Write_File(const std::string& path, const std::string& bytes);
// The lines of a CR LF text file, without their terminators.
std::vector<std::string> Read_Lines_CRLF(const std::string& path);
std::string Game_Dir();
// 200 rounds of prepare(), save() looping in a child killed (SIGKILL) 0 to 4 ms in, check(round); returns the kills.
int Kill_While_Saving(const std::function<void()>& prepare, const std::function<void()>& save,
                      const std::function<void(int round)>& check);
// Writes 0xRRGGBB pixels, rows top to bottom, as an RGB PNG at path (folders made); returns path.
std::string Write_Png(const std::string& path, int width, int height, const std::vector<uint32_t>& rgb);
// Appends each value's low `bytes` bytes, least significant first.
inline void Put(std::string& s, std::initializer_list<uint32_t> values, int bytes = 4) {
  for (uint32_t v : values)
    for (int i = 0; i < bytes; ++i) s += char(v >> (8 * i));
}
inline bool Between(double v, double lo, double hi) { return v >= lo && v <= hi; }
// The channels of an 0xAARRGGBB pixel.
inline int Red(uint32_t p) { return int(p >> 16 & 0xFF); }
inline int Green(uint32_t p) { return int(p >> 8 & 0xFF); }
inline int Blue(uint32_t p) { return int(p & 0xFF); }

}  // namespace testenv
