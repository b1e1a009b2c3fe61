// Race set-up and teardown: the scene light, the seven race surfaces, the track with its
// road blocks and mini-map, the racers on their grid slots, and the release of it all.
#include <string>

#include "core/log.h"
#include "core/modMain.h"
#include "mathmesh/modMATH.h"
#include "platform/platform.h"
#include "race/modGameLoop.h"
#include "track/modTracks.h"
#include "vehicle/clsHumanPlayer.h"
#include "vehicle/players.h"

namespace modGameLoop {

Surface LightSurface, Grey2x2Surf, CarThrustSurf, SkySurf, MiniMapSurf, MiniMapShipsSurf, StatsBGSurf;
float CameraDistance = 20;
IndexedArray<i16> TransparentWalls{0, 0};

namespace {

using modMain::Write_Log;

constexpr float kStartCameraDistance = 20;

void Set_Scene_Light() {
  platform::Device3D* device = mod3Denhance::D3DDevice;
  if (device == nullptr) return;
  mod3Denhance::Set_Scene_Light(ColorValue{1, 1, 1, 0}, Vector3{0.4f, -1, 0});
  // The track is drawn in world coordinates; a screen before the race (the ship preview)
  // may have left its mesh's world transform.
  Matrix4 identity;
  modMATH::Identity_Matrix(identity);
  device->SetTransform(platform::TransformKind::World, identity);
}

std::string Game_File(const char* relative) { return platform::Game_Path(relative); }

// Every racer the loop will touch exists: Players(0..NumOpponents), none empty.
bool Racers_Ready() {
  if (modMain::NumOpponents < 0 || modMain::Players.size() < static_cast<size_t>(modMain::NumOpponents) + 1)
    return false;
  for (int i = 0; i <= modMain::NumOpponents; ++i)
    if (!modMain::Players[static_cast<size_t>(i)]) return false;
  return true;
}

void Release(Surface& surface, const char* name) {
  surface.reset();
  Write_Log(std::string(name) + " = Nothing");
}

}  // namespace

void Init_Race() {
  if (Set_Up_Race()) Race_Loop();
}

bool Set_Up_Race() {
  Write_Log("");
  Write_Log("Initialising Race...");
  if (!Racers_Ready()) {
    // Nothing is made yet, so there is nothing to release.
    Write_Log("   No racers to place: back to the main menu");
    modMain::GameState = modMain::kStateMainMenu;
    return false;
  }
  Set_Scene_Light();

  mod3Denhance::Create_Surface(LightSurface, 212, 113, Game_File("\\Gfx\\Lights.bmp"), mod3Denhance::kKeyMagenta,
                               kFalse);
  Write_Log("LightSurface Made");
  Grey2x2Surf = mod3Denhance::Create_Texture("", 2, 2, mod3Denhance::kKeyNone);
  mod3Denhance::Fill_Rect(Grey2x2Surf, 0, 0, 2, 2, modMATH::Create_Color_RGBA(0.5f, 0.5f, 0.5f, 0.5f));
  Write_Log("Grey2x2Surf Made");
  CarThrustSurf = mod3Denhance::Create_Texture(Game_File("\\Textures\\CarThrust.dds"), 0, 0, mod3Denhance::kKeyNone);
  Write_Log("CarThrustSurf Made");
  platform::Pump_Messages();
  SkySurf = mod3Denhance::Create_Texture(Game_File("\\Textures\\sky1.bmp"), 256, 256, mod3Denhance::kKeyNone);
  Write_Log("SkySurf Made");
  MiniMapSurf = mod3Denhance::Create_Texture("", 128, 128, mod3Denhance::kKeyNone);
  Write_Log("MiniMapSurf Made");
  mod3Denhance::Fill_Rect(MiniMapSurf, 0, 0, 128, 128, modMATH::Create_Color_RGBA(0, 0, 0, 0));
  mod3Denhance::Create_Surface(MiniMapShipsSurf, 10, 20, Game_File("\\Gfx\\MiniMapShips.bmp"), mod3Denhance::kKeyBlack,
                               kFalse);
  Write_Log("MiniMapShipsSurf Made");
  mod3Denhance::Create_Surface(StatsBGSurf, 234, 157, Game_File("\\Gfx\\Stats1.bmp"), mod3Denhance::kKeyBlack, kFalse);
  Write_Log("StatsBGSurf Made");

  TransparentWalls.Resize(0, 0);
  CameraDistance = kStartCameraDistance;

  Write_Log("   Loading Track...");
  std::string error;
  if (!modTracks::Load_Track(&error)) {
    // The reader's own line says which file and what is wrong with it; the player is told
    // too, then finds the main menu.
    Write_Log("   " + error);
    platform::Message_Box("The race cannot start. " + error);
    modMain::GameState = modMain::kStateMainMenu;
    Destroy_Race();
    return false;
  }
  Write_Log("   ...Done");
  modTracks::Build_Track_Blocks();
  modTracks::Build_MiniMap(MiniMapSurf);

  for (i16 i = 0; i <= modMain::NumOpponents; ++i) modMain::Players[static_cast<size_t>(i)]->Reset_Car_Attributes(i);
  Set_Up_Ghost();

  Write_Log("...Done");
  Write_Log("");
  modMain::Reset_Game_Clock();
  return true;
}

void Destroy_Race() {
  Write_Log("Destroying Race Objects...");
  Release_Ghost();
  modTracks::Release_Track_Textures();
  Release(StatsBGSurf, "StatsBGSurf");
  Release(MiniMapShipsSurf, "MiniMapShipsSurf");
  Release(MiniMapSurf, "MiniMapSurf");
  Release(CarThrustSurf, "CarThrustSurf");
  Release(Grey2x2Surf, "Grey2x2Surf");
  Release(LightSurface, "LightSurface");
  platform::Pump_Messages();
  modTracks::Empty_Track_Arrays();
  Write_Log("...Done");
  Write_Log("");
}

}  // namespace modGameLoop
