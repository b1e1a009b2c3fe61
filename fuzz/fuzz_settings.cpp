// Any bytes as "Quorval.ini": the reader must never read out of bounds or trip on a
// conversion, the scale factors must follow the screen size it read, and what it read
// must survive a write and a second read unchanged.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>

#include "core/settings.h"
#include "platform/platform.h"
#include "platform/testing.h"
#include "fuzz_folder.h"

namespace {
struct Snapshot {
  int skip, width, height, bpp, difficulty, device, up, down, left, right;
  std::string d3d, sound, name;
  bool operator==(const Snapshot&) const = default;
};
Snapshot Take() {
  using namespace modMain;
  return {SkipSetup, ScreenWidth, ScreenHeight, ScreenBPP,     Difficulty,      ControlDevice, KeyUp,
          KeyDown,   KeyLeft,     KeyRight,     D3DDeviceGuid, SoundDeviceGuid, PlayerName};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Use_Fuzz_Folder("settings");
  if (std::FILE* f = std::fopen(modMain::Settings_Path().c_str(), "wb")) {
    std::fwrite(data, 1, size, f);
    std::fclose(f);
  }
  modMain::Default_Settings();
  modMain::Read_Settings();
  if (modMain::ScaleX != static_cast<float>(modMain::ScreenWidth) / 640.0f ||
      modMain::ScaleY != static_cast<float>(modMain::ScreenHeight) / 480.0f)
    __builtin_trap();
  const Snapshot first = Take();
  modMain::Write_Settings();
  modMain::Default_Settings();
  modMain::Read_Settings();
  if (!(Take() == first)) __builtin_trap();
  return 0;
}
