#pragma once
// An ordinary window drawn with Dear ImGui (the setup dialog). Between Begin and End of a
// frame the caller issues ImGui calls; the window system's events reach ImGui here.
#include <cstdint>
#include <functional>
#include <string>

namespace platform {

// Opens the window (width x height, centred, not resizable) with its own GL context and
// ImGui. `font` (a TrueType file) is used when it can be read, ImGui's own otherwise;
// `title_font` likewise for the larger heading font (ImGui::GetIO().Fonts->Fonts[1]).
// False when no window can be made.
bool Open_Dialog(const char* caption, int width, int height, const std::string& font, const std::string& title_font);
// One frame: collects events, runs `draw` (the frame's ImGui calls), renders and shows it.
// False, with nothing drawn, when the window has been asked to close.
bool Dialog_Frame(const std::function<void()>& draw);
void Close_Dialog();

}  // namespace platform
