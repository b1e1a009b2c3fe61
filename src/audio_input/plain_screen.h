#pragma once
// A plain screen with a title, for the screens still to come: Enter goes to the main
// menu, Escape ends the game. Keeps the screen contract (own loop, timer, flip, pump).
#include <string>

namespace modMain {
void Run_Plain_Screen(const std::string& title);
}
