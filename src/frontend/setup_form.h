#pragma once
// The setup dialog's controls and handlers, apart from their drawing: the lists, the
// preselection from the settings, the captions and what Start stores.
#include <string>
#include <vector>

#include "core/types.h"
#include "platform/audio.h"
#include "platform/render.h"

namespace frmSetup {

struct Resolution {
  i16 width, height;
  const char* caption;
};
inline constexpr Resolution kResolutions[4] = {
    {320, 240, "320x240"}, {640, 400, "640x400"}, {640, 480, "640x480"}, {800, 600, "800x600"}};
// Offered after those four when the desktop holds them: larger 4:3 modes.
inline constexpr Resolution kLargeResolutions[] = {
    {1024, 768, "1024x768"},   {1152, 864, "1152x864"},   {1280, 960, "1280x960"},   {1400, 1050, "1400x1050"},
    {1440, 1080, "1440x1080"}, {1600, 1200, "1600x1200"}, {1920, 1440, "1920x1440"}, {2048, 1536, "2048x1536"},
    {2560, 1920, "2560x1920"}, {2880, 2160, "2880x2160"}, {3200, 2400, "3200x2400"}};
// The modes the resolution bar offers on a desktop of that size (0 x 0: none known): the
// four above, then every larger mode that fits on it.
std::vector<Resolution> Offered_Resolutions(int desktop_width, int desktop_height);
inline constexpr u8 kDepths[3] = {16, 24, 32};
inline constexpr const char* kDepthCaptions[3] = {"16", "24", "32"};

struct SetupForm {
  std::vector<Resolution> Modes = Offered_Resolutions(0, 0);
  int HScrollRes = 2;  // an index of Modes
  std::string lblRes = "640x480";
  int HScrollBPP = 0;  // 0..2, an index of kDepths
  std::string lblBPP = "16";
  // The enumerations, kept while the dialog is open; list index i is entry i + 1.
  std::vector<platform::DeviceInfo> Devices;
  std::vector<platform::SoundDeviceInfo> SoundDevices;
  int cmb3DDevice = -1;  // selected list index, -1 while the list is empty
  int cmbSoundDriver = -1;
  bool chkShowAgain = false;

  // Fills the lists and preselects everything from the settings in memory.
  void Form_Load(std::vector<platform::DeviceInfo> devices, std::vector<platform::SoundDeviceInfo> sounds);
  void Fill_Device_List(std::vector<platform::DeviceInfo> devices);
  void Select_Default_Device();
  void Fill_Sound_List(std::vector<platform::SoundDeviceInfo> sounds);
  // The scroll bars' value has been set; the captions follow it (also while dragging).
  void HScrollRes_Change();
  void HScrollRes_Scroll() { HScrollRes_Change(); }
  void HScrollBPP_Change();
  void HScrollBPP_Scroll() { HScrollBPP_Change(); }
  void Label1_Click() { chkShowAgain = !chkShowAgain; }
  // Stores the choices in the settings, writes "Quorval.ini", pumps messages, re-reads it.
  void lblStart_Click();
  // The 3D device description shown in the closed list ("Renderer" when none).
  std::string Device_Caption() const;
  std::string Sound_Caption() const;
};

}  // namespace frmSetup
