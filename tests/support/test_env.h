#pragma once
// Shared test helpers: a scratch application folder and file helpers.
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace testenv {

// A fresh empty folder under the system temp dir, removed by the destructor; while it
// lives the game's application folder points at it.
class ScratchAppDir {
 public:
  ScratchAppDir();
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
// The generated game folder.
std::string Game_Dir();
// Runs save() over and over in a child process and kills it (SIGKILL) 0 to 4 ms in, 200
// times: prepare() runs before each round, check(round) after each kill. Returns the kills.
int Kill_While_Saving(const std::function<void()>& prepare, const std::function<void()>& save,
                      const std::function<void(int round)>& check);
// Writes 0xRRGGBB pixels, rows top to bottom, as an RGB PNG at path (folders made); returns path.
std::string Write_Png(const std::string& path, int width, int height, const std::vector<uint32_t>& rgb);

}  // namespace testenv
