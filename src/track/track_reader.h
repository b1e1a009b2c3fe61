#pragma once
// Inside the track module: the file parser, kept apart from the model's globals so a
// failed load never touches them.
#include <string>
#include <string_view>

#include "track/modTracks.h"

namespace modTracks::detail {

struct ParsedTrack {
  IndexedArray<TrackStrip> Track, Grass, TrackWalls;
  IndexedArray<SectorRecord> TrackSector;
  IndexedArray<TextureEntry> TrackTexture;
};

// Parses a whole track file image. False with fault set (no file name) on the first
// problem found; yield, when given, runs after each section.
bool Parse_Track(std::string_view bytes, ParsedTrack& out, std::string& fault, void (*yield)());

}  // namespace modTracks::detail
