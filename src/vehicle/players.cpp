#include "vehicle/players.h"

namespace modMain {
std::vector<std::unique_ptr<clsHumanPlayer>> Players;
}  // namespace modMain
