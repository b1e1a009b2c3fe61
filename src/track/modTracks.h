#pragma once
// The track model: road, grass and wall strips, sectors, textures, and the road blocks
// derived from the road. Filled by race set-up, read-only during a race, emptied after it.
#include <array>
#include <string>
#include <string_view>
#include <vector>

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

// The strip sets a race draws.
enum class StripSet : uint8_t { Road, Ground, Walls };
// Draws Track(i), Grass(i) or TrackWalls(i) as one triangle strip (nothing for fewer than
// three vertices). Load_Track keeps the strips on the device, so a frame sends nothing and
// a kept strip wholly out of the device's view is skipped; strips loaded otherwise, or
// changed since, are sent as they are.
void Draw_Strip(platform::Device3D& device, StripSet set, int i);

// Rebuilds TrackBlock from Track (blocks numbered across strips in file order). Run after
// a load and before any racer is placed.
void Build_Track_Blocks();

// Race teardown: releases the textures and resizes every array to the single index 0,
// writing the teardown's log lines. Safe to call on an empty model.
void Clear_Track();
// Clear_Track's two halves, which race teardown runs with the surfaces released between.
void Release_Track_Textures();
void Empty_Track_Arrays();
// The sectors of the track loaded last (only the track keeps them).
const IndexedArray<SectorRecord>& Sectors();

// --- the mini-map (minimap.cpp) ---
// The map is this many pixels across and down (x to columns, z to rows, z down).
inline constexpr int kMiniMapSide = 127;
// Map column and row (0..127) of a world point; false, leaving both untouched, when the
// road has no extent along x or z (then there is no map and no marker).
bool MiniMap_Point(float x, float z, float& column, float& row);
// The road's silhouette as one triangle strip of screen vertices (opaque white, depth 0):
// each strip but its last rung, then the first rung again. Empty without a map.
std::vector<ScreenVertex> MiniMap_Outline();
// Sets the bounds from Track and draws the silhouette, white on black, into the top-left
// 127 x 127 of target (a 128 x 128 texture) through the back buffer; target is filled
// black first, and stays black for a degenerate road. Leaves lighting off, no texture on
// stage 0 and culling counter-clockwise. Call after Load_Track, before the next frame.
void Build_MiniMap(const mod3Denhance::Surface& target);
// The road's horizontal bounds as the last Build_MiniMap found them: min x, max x, min z,
// max z (all 0 for a road with no vertex).
std::array<float, 4> Map_Bounds();

}  // namespace modTracks
