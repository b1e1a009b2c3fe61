#include "vehicle/create_racers.h"

#include <memory>

#include "core/modMain.h"
#include "vehicle/clsHumanPlayer.h"
#include "vehicle/players.h"
#include "vehicle/racer_box.h"

namespace modMain {

void Create_Racers(i16 num_opponents) {
  const int last = num_opponents < 0 ? 0 : num_opponents;
  Players.clear();
  modGameLoop::RacerBox.Resize(0, last);
  for (int i = 0; i <= last; ++i) {
    auto racer = std::make_unique<clsHumanPlayer>();
    racer->RacerKind = i == 0 ? 1 : 2;
    Players.push_back(std::move(racer));
  }
  Players[0]->cCurrentlySelectedShip = 0;
  Players[0]->cCurrentlySelectedSkin = 1;
}

}  // namespace modMain
