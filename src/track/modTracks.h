#pragma once
// The track model: road, grass and wall strips, sectors, textures, and the road blocks
// derived from the road. Filled by race set-up, read-only during a race, emptied after it.
#include <string>
#include <string_view>

#include "core/types.h"
#include "core/vbarray.h"
#include "gfx/mod3Denhance.h"
#include "platform/records.h"

namespace modTracks {

struct TrackStrip {
  IndexedArray<LitVertex> Vertices;
  i16 TextureIndex = 0;
};

struct TextureEntry {
  mod3Denhance::Surface Texture;
  std::string TextureName;
};

// Kept only so the file position is right; nothing reads its fields.
struct SectorRecord {
  u8 Fixed[16] = {};
  IndexedArray<i16> Lists[3];
};

// A quad of the road: corners 0, 1 its first rung (right, left), 2, 3 its second.
// Edge normals point out of the block: 0 right, 1 left, 2 forward, 3 backward.
struct TrackBlockRecord {
  Vector3 Corner[4];
  Vector3 EdgeNormal[4];
  u8 MinXCorner = 0, MinZCorner = 0, MaxXCorner = 0, MaxZCorner = 0;
};

extern IndexedArray<TrackStrip> Track;
extern IndexedArray<TrackStrip> Grass;
extern IndexedArray<TrackStrip> TrackWalls;  // the single index -1 when there are no walls
extern IndexedArray<SectorRecord> TrackSector;
extern IndexedArray<TextureEntry> TrackTexture;
extern IndexedArray<TrackBlockRecord> TrackBlock;  // 0 .. blocks - 1, at least index 0

// The game path of the race's track file.
inline constexpr const char* kTrackFile = "\\Tracks\\test.MXT";
// Files beyond this size are refused before anything is read.
inline constexpr long long kMaxTrackFileBytes = 64ll << 20;
// Racers hold block numbers in 16 bits.
inline constexpr int kMaxTrackBlocks = 32767;

// Loads the race's track file (application folder + kTrackFile) and creates every
// texture. On any fault the model is left as Clear_Track leaves it, false is returned and
// *error (when given) holds one line naming the file and the fault. Yields to the message
// loop between sections.
bool Load_Track(std::string* error = nullptr);
// The same from any file path (the path names the file in the message).
bool Load_Track_From_Path(const std::string& path, std::string* error = nullptr);
// Parses a whole track file image into the model without creating textures (every
// Texture stays empty); name is used in the message. No file or message loop is touched.
bool Load_Track_From_Bytes(std::string_view bytes, const std::string& name, std::string* error = nullptr);
// Creates TrackTexture(i).Texture from "Textures\" + TextureName for every entry; a
// texture that cannot be created stays empty (its strips are drawn untextured).
void Load_Track_Textures();

// Rebuilds TrackBlock from Track (blocks numbered across strips in file order). Run after
// a load and before any racer is placed.
void Build_Track_Blocks();

// Race teardown: releases the textures and resizes every array to the single index 0,
// writing the teardown's log lines. Safe to call on an empty model.
void Clear_Track();

}  // namespace modTracks
