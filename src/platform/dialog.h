#pragma once
// An ordinary window drawn with Dear ImGui (the setup dialog). Between Begin and End of a
// frame the caller issues ImGui calls; the window system's events reach ImGui here.
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace platform {

// Opens the window (width x height, centred, not resizable) with its own GL context and
// ImGui. `font_file` (a TrueType file) is used when it can be read, ImGui's own otherwise;
// `title_font_file` likewise for the larger heading font (ImGui::GetIO().Fonts->Fonts[1]).
// False when no window can be made.
bool Open_Dialog(const char* caption, int width, int height, const std::string& font_file,
                 const std::string& title_font_file);
bool Dialog_Open();
// Collects events and starts an ImGui frame. False when the window has been asked to
// close (no frame is started then).
bool Begin_Dialog_Frame();
// Renders the frame and shows it.
void End_Dialog_Frame();
void Close_Dialog();

// --- test controls -------------------------------------------------------------------
struct DialogPointer {
  float x = 0, y = 0;  // window pixels
  bool down = false;   // left button
  bool close = false;  // asks the window to close, as its close button does
};
// While set, runs at the start of every frame with its number and may move the pointer
// and press the left button for that frame (what ImGui sees, as if the mouse did it).
// Returns false to leave the pointer to the mouse.
void Set_Dialog_Script(std::function<bool(uint64_t frame, DialogPointer& pointer)> script);
// Keeps a copy of each rendered frame; Dialog_Frame gives the last one as 0xAARRGGBB,
// rows top to bottom (empty before the first frame).
void Keep_Dialog_Frames(bool keep);
const std::vector<uint32_t>& Dialog_Frame(int& width, int& height);

}  // namespace platform
