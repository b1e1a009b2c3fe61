#include "support/test_env.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_IMAGE_WRITE_STATIC
#include <stb_image_write.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>

#include "platform/testing.h"

namespace fs = std::filesystem;

namespace testenv {

ScratchAppDir::ScratchAppDir() {
  static int counter = 0;
  path_ = (fs::temp_directory_path() / ("quorval-test-" + std::to_string(::getpid()) + "-" + std::to_string(counter++)))
              .string();
  fs::remove_all(path_);
  fs::create_directories(path_);
  platform::Set_App_Dir(path_);
}

ScratchAppDir::~ScratchAppDir() {
  std::error_code ec;
  fs::remove_all(path_, ec);
}

void ScratchAppDir::Copy_From_Game(const std::string& relative) const {
  const fs::path from = fs::path(Game_Dir()) / relative;
  const fs::path to = fs::path(path_) / relative;
  fs::create_directories(to.parent_path());
  fs::copy(from, to, fs::copy_options::recursive | fs::copy_options::overwrite_existing);
}

std::string Read_File(const std::string& path) {
  std::ifstream f(path, std::ios::binary);
  std::ostringstream s;
  s << f.rdbuf();
  return s.str();
}

void Write_File(const std::string& path, const std::string& bytes) {
  fs::create_directories(fs::path(path).parent_path());
  std::ofstream f(path, std::ios::binary | std::ios::trunc);
  f << bytes;
}

std::vector<std::string> Read_Lines_CRLF(const std::string& path) {
  const std::string all = Read_File(path);
  std::vector<std::string> lines;
  for (size_t start = 0, end; start < all.size(); start = end + 2) {
    end = std::min(all.find("\r\n", start), all.size());
    lines.push_back(all.substr(start, end - start));
  }
  return lines;
}

int Kill_While_Saving(const std::function<void()>& prepare, const std::function<void()>& save,
                      const std::function<void(int round)>& check) {
  std::mt19937 rng(20261123);
  int kills = 0;
  for (int round = 0; round < 200; ++round) {
    prepare();
    const pid_t child = fork();
    if (child < 0) break;
    if (child == 0)
      for (;;) save();
    usleep(std::uniform_int_distribution<useconds_t>(0, 4000)(rng));
    kill(child, SIGKILL);
    int status = 0;
    if (waitpid(child, &status, 0) != child || !WIFSIGNALED(status)) break;
    ++kills;
    check(round);
  }
  return kills;
}

std::string Game_Dir() { return QUORVAL_GAME_DIR; }
std::string Testdata_Dir() { return QUORVAL_TESTDATA_DIR; }

std::string Write_Png(const std::string& path, int width, int height, const std::vector<uint32_t>& rgb) {
  std::vector<uint8_t> bytes;
  for (uint32_t p : rgb) bytes.insert(bytes.end(), {uint8_t(p >> 16), uint8_t(p >> 8), uint8_t(p)});
  const auto folder = std::filesystem::path(path).parent_path();
  if (!folder.empty()) std::filesystem::create_directories(folder);
  EXPECT_NE(stbi_write_png(path.c_str(), width, height, 3, bytes.data(), width * 3), 0) << path;
  return path;
}

}  // namespace testenv
