#pragma once
// The progress log "Brindlex Log File.txt" and the counted strings of the binary files.
#include <istream>
#include <ostream>
#include <string>

namespace modMain {

// Truncates the log and writes "Program Started" and " ".
void Create_Log();
// Appends one line (CR LF), opening and closing the file each time.
void Write_Log(const std::string& text);
std::string Log_Path();

// 16-bit little-endian length, then one byte per character.
void Write_String(std::ostream& out, const std::string& text);
// Reads a counted string; a length of 0 or less gives "". False when the data ends early
// (out then holds what was read).
bool Read_String(std::istream& in, std::string& out);

}  // namespace modMain
