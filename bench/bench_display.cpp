#include "bench_display.h"

#include <string>

#include "core/settings.h"
#include "gfx/mod3Denhance.h"
#include "gfx/modText.h"
#include "platform/platform.h"
#include "platform/testing.h"

namespace benchdisplay {
namespace {

bool g_settings_made = false;

void Close() {
  modText::Release_Fonts();  // their textures go with the device
  mod3Denhance::Release_D3DDevice();
  mod3Denhance::Release_D3D();
  mod3Denhance::Release_BackBuffer();
  mod3Denhance::Release_DD();
  mod3Denhance::Release_DX();
}

}  // namespace

bool Open(int width, int height) {
  if (!g_settings_made) {
    platform::Set_App_Dir(QUORVAL_GAME_DIR);
    modMain::Default_Settings();
    g_settings_made = true;
  }
  if (mod3Denhance::D3DDevice != nullptr && modMain::ScreenWidth == width && modMain::ScreenHeight == height)
    return true;
  Close();
  modMain::ScreenWidth = static_cast<i16>(width);
  modMain::ScreenHeight = static_cast<i16>(height);
  modMain::ScaleX = float(width) / 640.0f;
  modMain::ScaleY = float(height) / 480.0f;
  if (!platform::Open_Window("bench")) return false;
  if (!mod3Denhance::Init_DDraw(modMain::ScreenWidth, modMain::ScreenHeight, modMain::ScreenBPP)) return false;
  std::string missing;
  return modText::Load_Fonts(missing);
}

}  // namespace benchdisplay
