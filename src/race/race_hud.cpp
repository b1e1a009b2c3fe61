// The race's head-up display: the racing panel, the results of a finished race, the
// wrong-way warning, the mini-map markers and the blinking pause menu.
#include <string>

#include "core/modMain.h"
#include "core/numbers.h"
#include "core/settings.h"
#include "gfx/modText.h"
#include "mathmesh/modMATH.h"
#include "race/modGameLoop.h"
#include "track/modTracks.h"
#include "vehicle/clsHumanPlayer.h"
#include "vehicle/players.h"

namespace modGameLoop {

namespace {
i16 PauseBlink = 0;  // 0..10, kept between calls

constexpr int kLargeFont = 0, kWarningFont = 1, kSmallFont = 2;
constexpr i16 kBlinkPeriod = 10, kBlinkShown = 5;
constexpr u8 kKeyed = 1;

// Rounds half to even to a 16-bit screen coordinate; out-of-range values give 0.
i16 Px(double v) {
  i16 out = 0;
  numbers::Convert_Round(v, out);
  return out;
}

void Blit(const Surface& source, Rect src, i16 x, i16 y) {
  mod3Denhance::Blit_Clipped(mod3Denhance::BackBuffer, source, src, x, y, kKeyed);
}

void Text(i16 x, i16 y, int font, const std::string& text) { modText::Draw_Text(x, y, static_cast<u8>(font), text); }

// HUD lines are built here: once it has grown to the longest line, no frame allocates.
std::string& Line() {
  static std::string line;
  line.clear();
  return line;
}

void Draw_Racing(const clsHumanPlayer& p) {
  const i16 w = modMain::ScreenWidth, h = modMain::ScreenHeight;
  Blit(StatsBGSurf, Rect{0, 33, 164, 157}, 0, 5);
  Blit(StatsBGSurf, Rect{0, 0, 234, 33}, static_cast<i16>(w - 238), 0);
  Text(static_cast<i16>(w - 150), static_cast<i16>(h - 40), kLargeFont,
       Line().append(numbers::Format(p.cVelocityMag * 60.0, "000")).append(" MPH"));
  Text(13, 20, kLargeFont,
       Line().append("Lap ").append(std::to_string(p.cOnLap)).append("/").append(std::to_string(kLaps)));
  Text(13, 53, kLargeFont,
       Line()
           .append("Pos ")
           .append(std::to_string(p.cRace_Position))
           .append("/")
           .append(std::to_string(modMain::NumOpponents + 1)));
  Text(static_cast<i16>(w - 225), 12, kSmallFont, Line().append("Race Time ").append(Time_Text(modMain::GameClock)));
}

void Draw_Results(const clsHumanPlayer& p) {
  const double sy = modMain::ScaleY;
  const i16 left = static_cast<i16>(modMain::ScreenWidth / 2 - 105);
  for (int lap = 1; lap <= kLaps; ++lap)
    Text(left, Px((lap * 16 + 208) * sy), kSmallFont,
         Line().append("Lap ").append(std::to_string(lap)).append("     ").append(Time_Text(p.cLapTime(lap))));
  Text(left, Px(205 * sy), kSmallFont, Line().append("Race Time ").append(Time_Text(p.cRaceTime)));
  Text(static_cast<i16>(modMain::ScreenWidth / 2 - 102), Px(280 * sy), kSmallFont,
       Line().append("Top Speed ").append(numbers::Format(p.cTopSpeed, "000")).append(" MPH"));
}

}  // namespace

bool Marker_Position(int racer, i16& x, i16& y) {
  if (racer < 0 || static_cast<size_t>(racer) >= modMain::Players.size() || !modMain::Players[size_t(racer)])
    return false;
  const clsHumanPlayer& r = *modMain::Players[static_cast<size_t>(racer)];
  float column = 0, row = 0;
  if (!modTracks::MiniMap_Point(r.PositionX, r.PositionZ, column, row)) return false;
  return numbers::Convert_Round((495.0 + column) * modMain::ScaleX, x) &&
         numbers::Convert_Round((423.0 - row) * modMain::ScaleY, y);
}

void Draw_Dim_Panel() {
  platform::Device3D* device = mod3Denhance::D3DDevice;
  if (device == nullptr) return;
  device->SetTexture(0, nullptr);
  device->SetRenderState(platform::rs::AlphaBlendEnable, 1);
  const u32 colour = modMATH::Create_Color_RGBA(0.5f, 0, 0, 0.7f);
  const float sx = modMain::ScaleX, sy = modMain::ScaleY;
  const float at[4][2] = {{210 * sx, 300 * sy}, {210 * sx, 200 * sy}, {430 * sx, 300 * sy}, {430 * sx, 200 * sy}};
  ScreenVertex quad[4];
  for (int i = 0; i < 4; ++i) quad[i] = ScreenVertex{at[i][0], at[i][1], 0, 1, colour, 1, 0, 0};
  device->DrawPrimitive(platform::Primitive::TriangleStrip, quad, 4);
  device->SetRenderState(platform::rs::AlphaBlendEnable, 0);
}

void Draw_HUD() {
  if (modMain::Players.empty() || !modMain::Players[0]) return;
  const clsHumanPlayer& p = *modMain::Players[0];
  if ((p.cFinishedRace & 0xFF) == 0)
    Draw_Racing(p);
  else
    Draw_Results(p);
  Draw_Splits();

  if (Is_Set(p.cWRONGWAY) && !Is_Set(Paused))
    Text(static_cast<i16>(modMain::ScreenWidth / 2 - 90), Px(200 * modMain::ScaleY), kWarningFont, "Wrong Way");

  // Computer markers first, the player's last so it lies on top.
  i16 x = 0, y = 0;
  const int last = static_cast<int>(modMain::Players.size()) - 1;
  for (int i = 1; i <= last; ++i)
    if (Marker_Position(i, x, y)) Blit(MiniMapShipsSurf, Rect{0, 0, 10, 10}, x, y);
  Draw_Ghost_Marker();
  if (Marker_Position(0, x, y)) Blit(MiniMapShipsSurf, Rect{0, 10, 10, 20}, x, y);
}

void Draw_Pause_Menu() {
  for (i32 step = 0; step < modMain::DesignSteps; ++step)
    if (++PauseBlink > kBlinkPeriod) PauseBlink = 0;
  const bool lit = PauseBlink <= kBlinkShown;
  if (PauseSelection != 0 && PauseSelection != 1) return;
  const double half = modMain::ScreenWidth / 2.0, sy = modMain::ScaleY;
  if (PauseSelection != 0 || lit) Text(Px(half - 60), Px(220 * sy), kLargeFont, "Resume");
  if (PauseSelection != 1 || lit) Text(Px(half - 90), Px(250 * sy), kLargeFont, "Quit Race");
}

bool Pause_Highlight_Shown() { return PauseBlink <= kBlinkShown; }

}  // namespace modGameLoop
