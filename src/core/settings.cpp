#include "core/settings.h"

#include <filesystem>
#include <fstream>
#include <vector>

#include "core/files.h"
#include "core/log.h"
#include "core/numbers.h"
#include "platform/platform.h"

namespace modMain {

u8 SkipSetup = 0;
i16 ScreenWidth = 640;
i16 ScreenHeight = 480;
u8 ScreenBPP = 16;
std::string D3DDeviceGuid = "<none>";
std::string SoundDeviceGuid = "<none>";
u8 Difficulty = 1;
std::string PlayerName;
u8 ControlDevice = 0;
i16 KeyUp = 38;
i16 KeyDown = 40;
i16 KeyLeft = 37;
i16 KeyRight = 39;
float ScaleX = 1.0f;
float ScaleY = 1.0f;

namespace {
// A numeric line: its leading number rounded into the setting, or the setting unchanged
// when the line is missing or the value does not fit.
template <class T>
void Read_Number(const std::vector<std::string>& lines, size_t index, T& setting) {
  if (index >= lines.size()) return;
  numbers::Convert_Round(numbers::Leading_Number(lines[index]), setting);
}

void Read_Text(const std::vector<std::string>& lines, size_t index, std::string& setting) {
  if (index < lines.size()) setting = lines[index];
}

void Compute_Scale() {
  ScaleX = static_cast<float>(ScreenWidth) / 640.0f;
  ScaleY = static_cast<float>(ScreenHeight) / 480.0f;
}
}  // namespace

std::string Settings_Path() { return platform::Player_Path("\\Quorval.ini"); }

void Default_Settings() {
  SkipSetup = 0;
  ScreenWidth = 640;
  ScreenHeight = 480;
  ScreenBPP = 16;
  ScaleX = 1.0f;
  ScaleY = 1.0f;
  D3DDeviceGuid = "<none>";
  SoundDeviceGuid = "<none>";
  Difficulty = 1;
  PlayerName.clear();
  ControlDevice = 0;
  KeyUp = 38;
  KeyDown = 40;
  KeyLeft = 37;
  KeyRight = 39;
}

void Read_Settings() {
  std::error_code ec;
  if (!std::filesystem::exists(Settings_Path(), ec)) {
    Write_Log("Quorval.ini not found, Using Default Settings");
    Default_Settings();
    return;
  }
  std::ifstream in(Settings_Path(), std::ios::binary);
  std::vector<std::string> lines;
  std::string line;
  while (lines.size() < 13 && std::getline(in, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    lines.push_back(line);
  }
  Read_Number(lines, 0, SkipSetup);
  Read_Number(lines, 1, ScreenWidth);
  Read_Number(lines, 2, ScreenHeight);
  Read_Number(lines, 3, ScreenBPP);
  Read_Text(lines, 4, D3DDeviceGuid);
  Read_Text(lines, 5, SoundDeviceGuid);
  Read_Number(lines, 6, Difficulty);
  Read_Text(lines, 7, PlayerName);
  Read_Number(lines, 8, ControlDevice);
  Read_Number(lines, 9, KeyUp);
  Read_Number(lines, 10, KeyDown);
  Read_Number(lines, 11, KeyLeft);
  Read_Number(lines, 12, KeyRight);
  Compute_Scale();
}

void Write_Settings() {
  std::string bytes;
  auto line = [&bytes](const std::string& s) { bytes += s + "\r\n"; };
  line(std::to_string(SkipSetup));
  line(std::to_string(ScreenWidth));
  line(std::to_string(ScreenHeight));
  line(std::to_string(ScreenBPP));
  line(D3DDeviceGuid);
  line(SoundDeviceGuid);
  line(std::to_string(Difficulty));
  line(PlayerName);
  line(std::to_string(ControlDevice));
  line(std::to_string(KeyUp));
  line(std::to_string(KeyDown));
  line(std::to_string(KeyLeft));
  line(std::to_string(KeyRight));
  // A crash or kill at any moment leaves either the whole old file or the whole new one.
  Replace_File(Settings_Path(), bytes);
}

i16 Screen_X(double design) {
  i16 out = 0;
  numbers::Convert_Round(design * ScaleX, out);
  return out;
}

i16 Screen_Y(double design) {
  i16 out = 0;
  numbers::Convert_Round(design * ScaleY, out);
  return out;
}

}  // namespace modMain
