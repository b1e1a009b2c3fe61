#pragma once
// The log lines every run of the game writes at start-up (after the settings are read),
// around a race, and at shutdown.
#include <string>
#include <vector>

namespace {

// The lines of text, separated by '|'.
inline std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines(1);
  for (char c : text) c == '|' ? lines.emplace_back() : lines.back() += c;
  return lines;
}

// A new player's start-up with the default settings.
inline const std::vector<std::string> kStartUpLines = Lines(
    "Program Started| |Reading Quorval.ini...|...Done|Initialising DDraw...|DX and DDraw objects created|"
    "Exclusive mode set, at 640x480x16|Primary Surface Created|Backbuffer Created|...DDraw Initialized||"
    "Initializing D3D...|D3D object created|Device found - <none>|Z-buffer created|Z-buffer Attached to backbuffer|"
    "Device Created|...D3D initialized||Making Fonts...|Loading Font0.bmp...|...Done|Loading Font1.bmp...|...Done|"
    "Loading Font2.bmp...|...Done|Fonts created|Initialising Sound and Music...|...Sound and Music Ready|"
    "Initialising Menu Particles...|...Menu Particles Ready|Starting Main loop");

inline const std::vector<std::string> kShutdownLines = Lines(
    "Ending Program|Cooperative level set back to normal|DSound Killed|Z-buffer Killed|3D Device Killed|D3D Killed|"
    "Backbuffer Killed|Primary Killed|DD Killed|DX Killed|Everything was killed successfully|Bye Bye");

// A race from its set-up to its teardown, on a track of `textures` textures.
inline std::vector<std::string> Race_Log_Lines(int textures) {
  std::string text =
      "|Initialising Race...|LightSurface Made|Grey2x2Surf Made|CarThrustSurf Made|SkySurf Made|MiniMapSurf Made|"
      "MiniMapShipsSurf Made|StatsBGSurf Made|   Loading Track...|   ...Done|...Done||Destroying Race Objects...|";
  for (int i = 0; i < textures; ++i) text += "TrackTexture(" + std::to_string(i) + ").Texture = Nothing|";
  return Lines(text +
               "StatsBGSurf = Nothing|MiniMapShipsSurf = Nothing|MiniMapSurf = Nothing|CarThrustSurf = Nothing|"
               "Grey2x2Surf = Nothing|LightSurface = Nothing|Track|TrackWalls|Grass|TrackTexture|TrackBlock|"
               "TrackSector|...Done|");
}

}  // namespace
