#pragma once
// The log lines every run of the game writes at start-up (after the settings are read)
// and at shutdown.
#include <string>
#include <vector>

namespace {

std::vector<std::string> Start_Up_Lines(const std::string& device) {
  return {"Initialising DDraw...",
          "DX and DDraw objects created",
          "Exclusive mode set, at 640x480x16",
          "Primary Surface Created",
          "Backbuffer Created",
          "...DDraw Initialized",
          "",
          "Initializing D3D...",
          "D3D object created",
          "Device found - " + device,
          "Z-buffer created",
          "Z-buffer Attached to backbuffer",
          "Device Created",
          "...D3D initialized",
          "",
          "Making Fonts...",
          "Loading Font0.bmp...",
          "...Done",
          "Loading Font1.bmp...",
          "...Done",
          "Loading Font2.bmp...",
          "...Done",
          "Fonts created",
          "Initialising Sound and Music...",
          "...Sound and Music Ready",
          "Initialising Menu Particles...",
          "...Menu Particles Ready",
          "Starting Main loop"};
}

inline const std::vector<std::string> kShutdownLines = {"Ending Program",
                                                        "Cooperative level set back to normal",
                                                        "DSound Killed",
                                                        "Z-buffer Killed",
                                                        "3D Device Killed",
                                                        "D3D Killed",
                                                        "Backbuffer Killed",
                                                        "Primary Killed",
                                                        "DD Killed",
                                                        "DX Killed",
                                                        "Everything was killed successfully",
                                                        "Bye Bye"};

}  // namespace
