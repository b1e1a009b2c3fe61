#pragma once
// The track model: road, grass and wall strips, sectors, textures, and the road blocks
// derived from the road. Filled by race set-up, read-only during a race, emptied after it.
#include <string>

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

}  // namespace modTracks
