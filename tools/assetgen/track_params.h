#pragma once
// The numbers the generated circuit is built from, in one place: the generator uses them
// and the track tests reason from them (they include this header directly).
namespace trackgen {

// Road cross-section. The start straight runs toward +z with its centre line kCentreX off
// x = 0: the grid's two columns land at 2.6 * kCentreX and -0.6 * kCentreX, both
// kHalfWidth - 1.6 * kCentreX in from their road edge.
inline constexpr double kHalfWidth = 25.0;
inline constexpr double kCentreX = 10.0;

// Blocks 0 and 1 hold the starting grid: five slots at 0.38..0.54 of block 0 and two at
// 0.6 and 0.64 of (2 * block 0 + block 1), so both are long.
inline constexpr double kGridBlockLength = 150.0;

// Longest block elsewhere: short on curves so a racer steering by block heading turns
// smoothly, a little longer on straights.
inline constexpr double kCurveStep = 18.0;
inline constexpr double kStraightStep = 28.0;
// Road strips hold at most this many blocks.
inline constexpr int kBlocksPerStrip = 16;

// Steepest road grade the height profile may have (rise per unit along the road).
inline constexpr double kMaxGrade = 0.12;
// A racer reversing into a block whose back edge is more than this above its front edge is
// thrown forward again; no block of ours comes near it.
inline constexpr double kStepGuard = 8.0;

// Scenery.
inline constexpr double kWallHeight = 5.0;
inline constexpr double kGrassWidth = 120.0;  // embankment from the road edge outward
inline constexpr double kGroundBelow = 3.0;   // flat ground this far below the lowest road
inline constexpr double kGroundMargin = 3000.0;

// Texture tiles in world units.
inline constexpr double kRoadTile = 75.0;   // Road.bmp / RoadKerb.bmp, 256 px long
inline constexpr double kGrassTile = 60.0;  // planar, in x and z
inline constexpr double kWallTile = 10.0;   // one wall texture across 10 units of length

// Texture table, in file order.
enum TextureId { kTexRoadStart, kTexRoad, kTexRoadKerb, kTexGrass, kTexWallConcrete, kTexWallGlass, kTexCount };
inline constexpr const char* kTextureNames[kTexCount] = {"RoadStart.bmp", "Road.bmp",         "RoadKerb.bmp",
                                                         "Grass.bmp",     "WallConcrete.bmp", "WallGlass.dds"};

inline constexpr const char* kTrackHeader = "Brindlex Quorval circuit: Quorval Ring";

}  // namespace trackgen
