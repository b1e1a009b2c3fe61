// The racer's set-up for a race: its record cleared, its ship loaded from the catalogue,
// its place on the starting grid.
#include <cmath>
#include <iterator>
#include <string>

#include "core/log.h"
#include "core/modMain.h"
#include "core/settings.h"
#include "gfx/XFileClass.h"
#include "mathmesh/modMATH.h"
#include "platform/platform.h"
#include "vehicle/racer_internal.h"
#include "vehicle/ships_dat.h"

using vehicle_detail::Block_At;

namespace {

constexpr float kPlayerWallGrip = 0.8f;
constexpr float kStartHeight = -10.0f;
constexpr float kQuadAlpha = 0.7f;

// Grid slots: block, then the factors applied to (corner 0 + corner 3) in z and x. Two
// columns, staggered back from the line, the last two on the second block.
struct GridSlotPlace {
  int block;
  float fz, fx;
};
constexpr GridSlotPlace kGrid[] = {
    {0, 0.54f, 1.3f}, {0, 0.5f, -0.3f},  {0, 0.46f, 1.3f}, {0, 0.42f, -0.3f},
    {0, 0.38f, 1.3f}, {1, 0.64f, -0.3f}, {1, 0.6f, 1.3f},
};

// Computer racers grip harder on higher difficulties and further back on the grid.
float Computer_Wall_Grip(i16 slot) {
  float base = 0.8f;
  switch (modMain::Difficulty) {
    case 0:
      base = 0.76f;
      break;
    case 1:
      base = 0.8f;
      break;
    case 2:
      base = 0.84f;
      break;
    case 3:
      base = 0.88f;
      break;
    default:
      modMain::Difficulty = 1;
      break;
  }
  return static_cast<float>(slot) / 40.0f + base;
}

}  // namespace

clsHumanPlayer::clsHumanPlayer() = default;

clsHumanPlayer::~clsHumanPlayer() {
  ShipMesh.reset();
  ShadowTexture.reset();
}

void clsHumanPlayer::Clear_Ship_Numbers() {
  ShipBaseName.clear();
  InvMass = 0;
  InvInertia = 0;
  ThrustForce = 0;
  LinearDrag = 0;
  AngularDrag = 0;
}

bool clsHumanPlayer::Reset_Car_Attributes(i16 slot) {
  ShipMesh = std::make_unique<XFileClass>();

  cTopSpeed = 0;
  cLapTime.Resize(1, 3);
  cRaceTime = 0;
  cCheatMinusLaps = 0;
  cOnLap = 1;
  cFinishedRace = 0;
  GridSlot = slot;

  bool loaded = true;
  if (RacerKind == 1) {
    WallGrip = kPlayerWallGrip;
    loaded = Load_Ship(cCurrentlySelectedShip);
  } else if (RacerKind == 2) {
    WallGrip = Computer_Wall_Grip(slot);
    i16 ship = shipsdat::kRandomShip;  // the computer's pick is not kept in the record
    loaded = Load_Ship(ship);
  } else {
    Clear_Ship_Numbers();
  }

  for (i16& b : BlockOfCorner) b = 0;
  if (slot >= 0 && slot < static_cast<i16>(std::size(kGrid))) {
    const GridSlotPlace& place = kGrid[slot];
    if (const auto* block = Block_At(place.block)) {
      PositionX = (block->Corner[0].x + block->Corner[3].x) * place.fx;
      PositionY = kStartHeight;
      PositionZ = (block->Corner[0].z + block->Corner[3].z) * place.fz;
      for (i16& b : BlockOfCorner) b = static_cast<i16>(place.block);
    }
  }

  Init_Ship_State();
  // Start with corners that have not moved, so the first swept wall test sees nothing of
  // wherever this object stood before.
  Footprint_Corners();
  for (int i = 0; i < 4; ++i) PrevShipCorners[i] = ShipCorners[i];
  return loaded;
}

bool clsHumanPlayer::Load_Ship(i16& ship) {
  // A missing catalogue reads as an empty one: no ship files, every figure 0.
  shipsdat::Catalogue catalogue;
  std::string error;
  bool ok = shipsdat::Load(shipsdat::Path(), catalogue, error);
  if (!ok) modMain::Write_Log(error);

  float u = 0, v = 0;
  if (ship == shipsdat::kRandomShip) {
    u = modMain::Rnd();
    v = modMain::Rnd();
  }
  shipsdat::Resolve_Request(catalogue.Count, u, v, ship, cCurrentlySelectedSkin);
  const shipsdat::ShipRecord& record = catalogue.Ship(ship);
  const std::string& base = record.BaseName;
  ShipBaseName = base;

  const std::string mesh_path = platform::Game_Path("\\Objects\\" + base + ".x");
  if (!ShipMesh->Load(mesh_path)) {
    modMain::Write_Log("Ship " + std::to_string(ship) + ": mesh " + mesh_path + " could not be loaded");
    ok = false;
  }
  // A skin or shadow that cannot be made leaves the ship drawn without it.
  const mod3Denhance::Surface skin = mod3Denhance::Create_Texture(
      platform::Game_Path("\\Textures\\" + base + std::to_string(cCurrentlySelectedSkin) + ".bmp"), 0, 0, 0);
  if (skin) ShipMesh->SetXTexture(skin);
  ShadowTexture = mod3Denhance::Create_Texture(platform::Game_Path("\\Textures\\" + base + "shadow.dds"), 0, 0, 0);

  // A mass or inertia of 0 is never divided by: the ship then is not pushed, or not turned.
  InvMass = shipsdat::Reciprocal(record.Mass);
  InvInertia = shipsdat::Reciprocal(record.Inertia);
  const std::string who = "Data\\Ships.Dat: ship " + std::to_string(ship) + " (" + record.DisplayName + ")";
  if (InvMass == 0) modMain::Write_Log(who + " has no usable mass; it will not move");
  if (InvInertia == 0) modMain::Write_Log(who + " has no usable moment of inertia; it will not turn");
  ThrustForce = static_cast<float>(record.Thrust);
  LinearDrag = static_cast<float>(record.LinearDrag);
  AngularDrag = static_cast<float>(record.AngularDrag);
  return ok;
}

void clsHumanPlayer::Init_Ship_State() {
  float min_x = 0, min_y = 0, min_z = 0, max_x = 0, max_y = 0, max_z = 0;
  if (ShipMesh) {
    ShipMesh->AdjustScale(1, 1, 1);
    ShipMesh->SetPosition(0, 0, 0);
    ShipMesh->GetMinExtent(min_x, min_y, min_z);
    ShipMesh->GetMaxExtent(max_x, max_y, max_z);
  }
  Restitution = 0.1f;
  HalfLength = (max_z - min_z) / 2;
  HalfWidth = (max_x - min_x) / 2;
  HalfHeight = (max_y - min_y) / 2;
  cWRONGWAY = kFalse;

  const uint32_t shadow_colour = modMATH::Create_Color_RGBA(1, 1, 1, kQuadAlpha);
  const uint32_t flame_colour = modMATH::Create_Color_RGBA(0, 0, 1, kQuadAlpha);
  static constexpr float kTu[4] = {0, 0, 1, 1};
  static constexpr float kTv[4] = {1, 0, 1, 0};
  for (int i = 0; i < 4; ++i) {
    ShadowVertices[i] = LitVertex{0, 0, 0, 0, shadow_colour, 1, kTu[i], kTv[i]};
    ThrustVertices[i] = LitVertex{0, 0, 0, 0, flame_colour, 1, kTu[i], kTv[i]};
  }

  // Face forward along the road: against the outward normal of the block's back edge.
  if (const auto* block = Block_At(BlockOfCorner[2])) {
    const Vector3& n3 = block->EdgeNormal[3];
    cOrientation = modMATH::Vector_Angle(n3.x, -n3.z);
  }

  VelocityX = VelocityY = VelocityZ = 0;
  AngularVelocity = 0;
  Force = Vector3{};
  Torque = 0;

  Get_Track_Height();
}
