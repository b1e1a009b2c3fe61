#pragma once
// The circuit's textures (road, start grid, kerbs, grass, walls), written into Textures/.
#include <string>

#include "assetgen.h"

namespace trackgen {

// Each picture tiles seamlessly in the directions the track repeats it.
assetgen::Picture Road_Picture(bool kerbs);
assetgen::Picture Start_Picture();
assetgen::Picture Grass_Picture();
assetgen::Picture Concrete_Wall_Picture();
assetgen::Picture Glass_Wall_Picture();

bool Write_Track_Textures(const std::string& game_dir);

}  // namespace trackgen
