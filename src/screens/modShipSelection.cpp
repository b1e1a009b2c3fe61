#include "screens/modShipSelection.h"

#include <memory>
#include <set>

#include "audio_input/frmMain.h"
#include "core/modMain.h"
#include "core/numbers.h"
#include "frontend/modMouseParticles.h"
#include "gfx/XFileClass.h"
#include "gfx/mod3Denhance.h"
#include "gfx/modText.h"
#include "mathmesh/modMATH.h"
#include "platform/platform.h"
#include "vehicle/create_racers.h"
#include "vehicle/players.h"
#include "vehicle/ships_dat.h"

namespace modShipSelection {

using modMain::Screen_X;
using modMain::Screen_Y;

namespace {
Bool16 ShipSelRunning = kFalse;
float SlideOffset = 0;  // pixels the buttons are still left of their place
Rect ShipButtons[6];    // back, start, previous/next skin, previous/next ship
std::string ShipName;
std::unique_ptr<XFileClass> PreviewMesh;
i16 StatTarget[3] = {0, 0, 0};  // bars 1..3 (thrust, inertia, mass) at [0..2], design units
i16 StatShown[3] = {0, 0, 0};

using mod3Denhance::Surface;

Surface BackgroundSurf, CursorSurf, StatsSurf, ButtonsSurf;

constexpr i16 kButtonArea[6][4] = {{50, 350, 241, 389},  {50, 400, 241, 439},  {104, 113, 200, 148},
                                   {104, 170, 200, 205}, {104, 148, 152, 170}, {152, 148, 200, 170}};
constexpr double kBarX = 415, kBarY[3] = {321, 351, 381};

i16 Target(double v) {
  i16 out = 0;
  if (!numbers::Convert_Round(v, out)) out = v < 0 ? INT16_MIN : INT16_MAX;
  return out;
}

void Set_Up_Light() { mod3Denhance::Set_Scene_Light(ColorValue{1, 1, 1, 1}, Vector3{-0.2f, -0.8f, 0.2f}); }

bool Clicked(int i) {
  return Is_Set(mod3Denhance::Point_In_Rect(ShipButtons[i], frmMain::MouseX, frmMain::MouseY)) &&
         frmMain::Pressed(frmMain::Press::LeftClick);
}

void Release_Racers() {
  for (auto& racer : modMain::Players) racer.reset();
}

clsHumanPlayer* Player() { return modMain::Players.empty() ? nullptr : modMain::Players[0].get(); }

// What has already been reported during this visit (a catalogue fault, a mesh path).
std::set<std::string> g_reported;
bool Once_This_Visit(const std::string& what) { return g_reported.insert(what).second; }

}  // namespace

void Stat_Targets(double mass, double inertia, double thrust, i16 (&target)[3]) {
  target[0] = Target(thrust * 5000 - 1150);
  target[1] = Target(inertia * 25 - 400);
  target[2] = Target(mass * 25 - 150);
}

void Load_Ship_Preview() {
  clsHumanPlayer* player = Player();
  if (player == nullptr) return;
  // A missing catalogue shows as an empty one: no name, every figure 0.
  shipsdat::Catalogue catalogue;
  std::string error;
  if (!shipsdat::Load(shipsdat::Path(), catalogue, error) && Once_This_Visit(error)) modMain::Write_Log(error);
  i16 ship = player->cCurrentlySelectedShip, skin = player->cCurrentlySelectedSkin;
  shipsdat::Resolve_Request(catalogue.Count, 0, 0, ship, skin);
  player->cCurrentlySelectedShip = ship;
  player->cCurrentlySelectedSkin = skin;

  const shipsdat::ShipRecord& record = catalogue.Ship(ship);
  ShipName = record.DisplayName;
  if (PreviewMesh) {
    // A mesh that cannot be loaded is told once a visit, not on every click back to it.
    const std::string mesh = platform::Game_Path("\\Objects\\" + record.BaseName + ".x");
    if (g_reported.contains(mesh)) {
      PreviewMesh->Load_Quiet(mesh);
    } else if (!PreviewMesh->Load(mesh)) {
      Once_This_Visit(mesh);
    }
    PreviewMesh->SetXTexture(mod3Denhance::Create_Texture(
        platform::Game_Path("\\Textures\\" + record.BaseName + std::to_string(skin) + ".bmp"), 0, 0, 0));
  }
  // A bar still moving jumps to where it was heading and moves on from there.
  for (int i = 0; i < 3; ++i) StatShown[i] = StatTarget[i];
  Stat_Targets(record.Mass, record.Inertia, record.Thrust, StatTarget);
}

void Init_Ship_Selection() {
  g_reported.clear();
  PreviewMesh = std::make_unique<XFileClass>();
  PreviewMesh->AdjustScale(1, 1, 1);
  PreviewMesh->SetPosition(-6, 1, 0);

  using mod3Denhance::Create_Surface;
  Create_Surface(CursorSurf, 11, 19, platform::Game_Path("\\Gfx\\Cursor.bmp"), mod3Denhance::kKeyBlack, kFalse);
  Create_Surface(BackgroundSurf, modMain::ScreenWidth, modMain::ScreenHeight,
                 platform::Game_Path("\\Gfx\\ShipSelection_bg.bmp"), mod3Denhance::kKeyNone, kFalse);
  Create_Surface(StatsSurf, 200.0 * modMain::ScaleX, 20.0 * modMain::ScaleY,
                 platform::Game_Path("\\Gfx\\ShipSelection_stats.bmp"), mod3Denhance::kKeyNone, kFalse);
  Create_Surface(ButtonsSurf, 382.0 * modMain::ScaleX, 234.0 * modMain::ScaleY,
                 platform::Game_Path("\\Gfx\\ShipSelection_buttons.bmp"), mod3Denhance::kKeyBlack, kFalse);

  modMain::Create_Racers(modMain::NumOpponents);
  ShipSelRunning = kTrue;
  Set_Up_Light();
  if (clsHumanPlayer* player = Player()) {
    player->cCurrentlySelectedShip = 0;
    player->cCurrentlySelectedSkin = 1;
  }
  for (int i = 0; i < 3; ++i) StatShown[i] = StatTarget[i] = 0;
  Load_Ship_Preview();
  for (int i = 0; i < 6; ++i)
    ShipButtons[i] = mod3Denhance::Make_Rect(Screen_X(kButtonArea[i][0]), Screen_Y(kButtonArea[i][1]),
                                             Screen_X(kButtonArea[i][2]), Screen_Y(kButtonArea[i][3]));
  SlideOffset = 241.0f * modMain::ScaleX;
  modMain::Reset_Game_Clock();
  Ship_Selection_Loop();
}

void Ship_Selection_Loop() {
  while (Is_Set(ShipSelRunning) && !modMain::QuitRequested) {
    if (SlideOffset == 0) {
      for (int i = 0; i < 6; ++i) {
        if (!Clicked(i)) continue;
        frmMain::Take(frmMain::Press::LeftClick);
        clsHumanPlayer* player = Player();
        switch (i) {
          case 0:
            ShipSelRunning = kFalse;
            Release_Racers();
            modMain::GameState = modMain::kStateMainMenu;
            break;
          case 1:  // the racers stay for the race
            ShipSelRunning = kFalse;
            modMain::GameState = modMain::kStateRace;
            break;
          case 2:
          case 3:
            if (player != nullptr)
              player->cCurrentlySelectedSkin = static_cast<i16>(player->cCurrentlySelectedSkin + (i == 2 ? -1 : 1));
            Load_Ship_Preview();
            break;
          default:
            if (player != nullptr)
              player->cCurrentlySelectedShip = static_cast<i16>(player->cCurrentlySelectedShip + (i == 4 ? -1 : 1));
            Load_Ship_Preview();
            break;
        }
      }
    }
    // One design unit per 60 Hz step, whatever the frame time.
    for (i32 step = 0; step < modMain::DesignSteps; ++step)
      for (int i = 0; i < 3; ++i) {
        if (StatShown[i] > StatTarget[i])
          --StatShown[i];
        else if (StatShown[i] < StatTarget[i])
          ++StatShown[i];
      }
    const float ft = static_cast<float>(modMain::FrameTime);
    if (PreviewMesh) PreviewMesh->Rotate(0, 0.002f * ft, 0.0008f * ft);
    Draw_Ship_Selection();
    if (SlideOffset > 0)
      SlideOffset -= 0.4f * static_cast<float>(modMain::FrameTime);
    else
      SlideOffset = 0;
    platform::Pump_Messages();
  }
  Exit_Ship_Selection();
}

void Draw_Ship_Selection() {
  platform::Device3D* device = mod3Denhance::D3DDevice;
  if (device != nullptr) {
    Matrix4 view;
    modMATH::View_Matrix(view, Vector3{0, 1, 15}, Vector3{0, 0, -1}, Vector3{0, 1, 0}, 0);
    device->SetTransform(platform::TransformKind::View, view);
  }
  mod3Denhance::Clear_Screen();
  Rect whole = mod3Denhance::ScreenRect;
  i16 zero_x = 0, zero_y = 0;
  mod3Denhance::Blit_Clipped(mod3Denhance::BackBuffer, BackgroundSurf, whole, zero_x, zero_y, 0);
  modMain::Update_Frame_Timer();

  for (int i = 0; i < 6; ++i) {
    const bool lit =
        SlideOffset == 0 && Is_Set(mod3Denhance::Point_In_Rect(ShipButtons[i], frmMain::MouseX, frmMain::MouseY));
    Rect cell = mod3Denhance::Make_Rect(Screen_X(lit ? 191 : 0), Screen_Y(39 * i), Screen_X(lit ? 382 : 191),
                                        Screen_Y(39 * i + 39));
    i16 x = 0, y = ShipButtons[i].top;
    numbers::Convert_Round(static_cast<double>(ShipButtons[i].left) - SlideOffset, x);
    mod3Denhance::Blit_Clipped(mod3Denhance::BackBuffer, ButtonsSurf, cell, x, y, 1);
  }

  modText::Draw_Text(Screen_X(470.0 - 6.0 * static_cast<double>(ShipName.size())), Screen_Y(120), 2, ShipName);

  for (int i = 0; i < 3; ++i) {
    Rect bar = mod3Denhance::Make_Rect(0, 0, Screen_X(StatShown[i] - 2), Screen_Y(18));
    i16 x = Screen_X(kBarX), y = Screen_Y(kBarY[i]);
    // Blit_Clipped refuses an empty or inverted rectangle: a bar of 2 or less draws nothing.
    mod3Denhance::Blit_Clipped(mod3Denhance::BackBuffer, StatsSurf, bar, x, y, 0);
  }

  if (device != nullptr) {
    if (PreviewMesh) PreviewMesh->Render(device);
    modMouseParticles::Update_Particles();
  }
  modMouseParticles::Draw_Pointer(CursorSurf);
  mod3Denhance::Flip();
}

void Exit_Ship_Selection() {
  BackgroundSurf.reset();
  CursorSurf.reset();
  StatsSurf.reset();
  ButtonsSurf.reset();
  PreviewMesh.reset();
}

float Button_Slide() { return SlideOffset; }
const Rect& Button_Rect(int i) { return ShipButtons[i]; }
const std::string& Ship_Name() { return ShipName; }
const XFileClass* Preview() { return PreviewMesh.get(); }
i16 Bar_Target(int bar) { return StatTarget[bar]; }
i16 Bar_Shown(int bar) { return StatShown[bar]; }

}  // namespace modShipSelection
