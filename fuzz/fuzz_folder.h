#pragma once
// The fuzz targets that write player files give the game a private folder, in memory when
// there is one, removed again when the fuzzer exits.
#include <unistd.h>

#include <filesystem>
#include <string>

#include "platform/testing.h"

inline void Use_Fuzz_Folder(const char* target) {
  struct Guard {
    std::string dir;
    explicit Guard(const char* name) {
      const std::string base = std::filesystem::exists("/dev/shm") ? "/dev/shm" : "/tmp";
      dir = base + "/quorval-fuzz-" + name + "-" + std::to_string(::getpid());
      std::filesystem::create_directories(dir);
      platform::Set_App_Dir(dir);
    }
    ~Guard() {
      std::error_code ec;
      std::filesystem::remove_all(dir, ec);
    }
  };
  static Guard guard(target);
}
