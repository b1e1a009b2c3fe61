#pragma once
// Writing the player's files: every file the game writes goes through here.
#include <string>

namespace modMain {

// Replaces the file at path with bytes as one step: a synced side file (path + ".new")
// renamed over it, the folder synced after. A crash at any moment leaves the whole old
// file or the whole new one; on failure the old file is untouched and the side file gone.
bool Replace_File(const std::string& path, const std::string& bytes);

}  // namespace modMain
