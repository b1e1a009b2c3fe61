#pragma once
// An ordinary window drawn with Dear ImGui (the setup dialog). Between Begin and End of a
// frame the caller issues ImGui calls; the window system's events reach ImGui here.
#include <cstdint>
#include <string>

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

}  // namespace platform
