// The ghost in the race: its see-through ship, its map marker and the split times against
// it. Everything it draws is made at race set-up; a frame only reads and draws.
#include <memory>
#include <string>

#include "core/hiscore_file.h"
#include "core/modMain.h"
#include "core/numbers.h"
#include "core/settings.h"
#include "gfx/XFileClass.h"
#include "gfx/modText.h"
#include "platform/platform.h"
#include "race/modGameLoop.h"
#include "track/modTracks.h"
#include "vehicle/clsHumanPlayer.h"
#include "vehicle/ghost.h"
#include "vehicle/players.h"

namespace modGameLoop {
namespace {

constexpr float kGhostAlpha = 0.4f;
constexpr i32 kSplitShownMs = 3000;
constexpr u32 kGoodColour = 0x40E060, kWarningColour = 0xFF5030;
constexpr u8 kSmallFont = 2;

std::unique_ptr<XFileClass> g_mesh;
Surface g_marker, g_good_font, g_warning_font;
i32 g_best_lap = 0;  // of the hi-score table when the race began; 0: none

// "+00:00:45" or "-00:01:23": the sign, then the time as the HUD prints times. Built in a
// buffer that keeps its size, so no frame allocates.
const std::string& Signed_Time(i32 diff) {
  static std::string text;
  text.assign(diff < 0 ? "-" : "+");
  text.append(numbers::Time_Text(diff < 0 ? -diff : diff));
  return text;
}

void Draw_Diff(i16 x, i16 y, const char* label, i32 diff) {
  modText::Draw_Text(x, y, kSmallFont, label);
  const Surface& glyphs = diff <= 0 ? g_good_font : g_warning_font;
  modText::Draw_Text_With(glyphs, static_cast<i16>(x + 12 * 9), y, kSmallFont, Signed_Time(diff));
}

}  // namespace

std::string Split_Text(i32 diff) { return Signed_Time(diff); }

void Set_Up_Ghost() {
  Release_Ghost();
  if (!ghost::Enabled() || modMain::Players.empty() || !modMain::Players[0]) return;
  uint32_t size = 0, checksum = 0;
  if (!ghost::File_Checksum(platform::Game_Path(modTracks::kTrackFile), size, checksum)) return;
  const clsHumanPlayer& player = *modMain::Players[0];
  const int blocks = modTracks::TrackBlock.Count();
  ghost::Begin_Race(player, player.ShipBaseName, size, checksum, blocks);

  g_best_lap = modHiScore::Peek_HiScore_File(platform::Player_Path("\\Data\\Hiscores.Dat")).BestLap;
  g_good_font = modText::Tinted_Font(kSmallFont, kGoodColour);
  g_warning_font = modText::Tinted_Font(kSmallFont, kWarningColour);

  const ghost::Recording* ghost = ghost::Racing();
  if (ghost == nullptr) return;
  g_mesh = std::make_unique<XFileClass>();
  if (!g_mesh->Load_Quiet(platform::Game_Path("\\Objects\\" + ghost->ship_name + ".x")).empty()) {
    g_mesh.reset();  // a ghost of a ship no longer there flies as a marker only
  } else {
    const Surface skin = mod3Denhance::Create_Texture(
        platform::Game_Path("\\Textures\\" + ghost->ship_name + std::to_string(ghost->skin) + ".bmp"), 0, 0, 0);
    if (skin) g_mesh->SetXTexture(skin);
    for (MeshPart& part : g_mesh->Parts) part.PartMaterial.diffuse.a = kGhostAlpha;
  }
  mod3Denhance::Create_Surface(g_marker, 10, 10, platform::Game_Path("\\Gfx\\MiniMapGhost.bmp"),
                               mod3Denhance::kKeyBlack, kFalse);
}

void Release_Ghost() {
  ghost::End_Race();
  g_mesh.reset();
  g_marker.reset();
  g_good_font.reset();
  g_warning_font.reset();
  g_best_lap = 0;
}

void Record_Ghost_Frame() {
  if (!modMain::Players.empty() && modMain::Players[0]) ghost::Record_Frame(*modMain::Players[0], modMain::GameClock);
}

void Draw_Ghost() {
  const ghost::Recording* ghost = ghost::Racing();
  platform::Device3D* device = mod3Denhance::D3DDevice;
  if (ghost == nullptr || !g_mesh || device == nullptr) return;
  const ghost::Sample at = ghost::Sample_At(ghost->samples, modMain::GameClock);
  g_mesh->SetPosition(at.x, at.y, at.z);
  g_mesh->SetRotation(0, at.heading, at.bank);
  // Seen through, and hiding nothing behind it.
  device->SetRenderState(platform::rs::AlphaBlendEnable, 1);
  device->SetRenderState(platform::rs::ZWriteEnable, 0);
  g_mesh->Render(device);
  device->SetRenderState(platform::rs::AlphaBlendEnable, 0);
  device->SetRenderState(platform::rs::ZWriteEnable, 1);
}

void Draw_Ghost_Marker() {
  const ghost::Recording* ghost = ghost::Racing();
  if (ghost == nullptr || !g_marker) return;
  const ghost::Sample at = ghost::Sample_At(ghost->samples, modMain::GameClock);
  float column = 0, row = 0;
  i16 x = 0, y = 0;
  if (!modTracks::MiniMap_Point(at.x, at.z, column, row) ||
      !numbers::Convert_Round((495.0 + column) * modMain::ScaleX, x) ||
      !numbers::Convert_Round((423.0 - row) * modMain::ScaleY, y))
    return;
  Rect src{0, 0, 10, 10};
  mod3Denhance::Blit_Clipped(mod3Denhance::BackBuffer, g_marker, src, x, y, 1);
}

void Draw_Splits() {
  const ghost::Split& split = ghost::Last_Split();
  if (split.line < 0 || modMain::GameClock - split.clock >= kSplitShownMs || modMain::Players.empty()) return;
  // Under the race-time bar, where the racing display leaves the top right free.
  const i16 x = static_cast<i16>(modMain::ScreenWidth - 225);
  if (split.has_ghost_diff) Draw_Diff(x, 40, "Ghost", split.ghost_diff);
  const int lap = split.line / 4 + 1;
  if (split.line % 4 == 3 && g_best_lap > 0)
    Draw_Diff(x, 58, "Best Lap", modMain::Players[0]->cLapTime(lap) - g_best_lap);
}

}  // namespace modGameLoop
