#include "frontend/setup_form.h"

#include <utility>

#include "core/modMain.h"
#include "platform/platform.h"

namespace frmSetup {

std::vector<Resolution> Offered_Resolutions(int desktop_width, int desktop_height) {
  std::vector<Resolution> modes(std::begin(kResolutions), std::end(kResolutions));
  for (const Resolution& r : kLargeResolutions)
    if (r.width <= desktop_width && r.height <= desktop_height) modes.push_back(r);
  return modes;
}

void SetupForm::Form_Load(std::vector<platform::DeviceInfo> devices, std::vector<platform::SoundDeviceInfo> sounds) {
  using namespace modMain;
  // Heights the dialog does not offer leave the scroll bar and caption as they are.
  for (size_t i = 0; i < Modes.size(); ++i)
    if (ScreenHeight == Modes[i].height) {
      HScrollRes = static_cast<int>(i);
      lblRes = Modes[i].caption;
    }
  for (int i = 0; i < 3; ++i)
    if (ScreenBPP == kDepths[i]) {
      HScrollBPP = i;
      lblBPP = kDepthCaptions[i];
    }
  Fill_Device_List(std::move(devices));
  Fill_Sound_List(std::move(sounds));
  bool found = false;
  if (D3DDeviceGuid != "<none>")
    for (size_t i = 0; i < Devices.size() && !found; ++i)
      if (Devices[i].identifier == D3DDeviceGuid) {
        cmb3DDevice = static_cast<int>(i);
        found = true;
      }
  if (!found) Select_Default_Device();
  for (size_t i = 0; i < SoundDevices.size(); ++i)
    if (SoundDevices[i].identifier == SoundDeviceGuid) {
      cmbSoundDriver = static_cast<int>(i);
      break;
    }
}

void SetupForm::Fill_Device_List(std::vector<platform::DeviceInfo> devices) {
  Devices = std::move(devices);
  cmb3DDevice = Devices.empty() ? -1 : 0;
}

void SetupForm::Select_Default_Device() {
  for (const char* wanted : {platform::kTnLHardwareDevice, platform::kHardwareDevice})
    for (size_t i = 0; i < Devices.size(); ++i)
      if (Devices[i].identifier == wanted) {
        cmb3DDevice = static_cast<int>(i);
        return;
      }
}

void SetupForm::Fill_Sound_List(std::vector<platform::SoundDeviceInfo> sounds) {
  SoundDevices = std::move(sounds);
  cmbSoundDriver = SoundDevices.empty() ? -1 : 0;
}

void SetupForm::HScrollRes_Change() {
  if (HScrollRes >= 0 && HScrollRes < int(Modes.size())) lblRes = Modes[size_t(HScrollRes)].caption;
}

void SetupForm::HScrollBPP_Change() {
  if (HScrollBPP >= 0 && HScrollBPP < 3) lblBPP = kDepthCaptions[HScrollBPP];
}

void SetupForm::lblStart_Click() {
  using namespace modMain;
  if (HScrollRes >= 0 && HScrollRes < int(Modes.size())) {
    ScreenWidth = Modes[size_t(HScrollRes)].width;
    ScreenHeight = Modes[size_t(HScrollRes)].height;
  }
  if (HScrollBPP >= 0 && HScrollBPP < 3) ScreenBPP = kDepths[HScrollBPP];
  SkipSetup = chkShowAgain ? 1 : 0;
  // An empty list leaves nothing chosen, which the settings file writes as "<none>".
  D3DDeviceGuid =
      cmb3DDevice >= 0 && cmb3DDevice < int(Devices.size()) ? Devices[size_t(cmb3DDevice)].identifier : "<none>";
  SoundDeviceGuid = cmbSoundDriver >= 0 && cmbSoundDriver < int(SoundDevices.size())
                        ? SoundDevices[size_t(cmbSoundDriver)].identifier
                        : "<none>";
  Write_Settings();
  platform::Pump_Messages();
  Read_Settings();
}

std::string SetupForm::Device_Caption() const {
  return cmb3DDevice >= 0 && cmb3DDevice < int(Devices.size()) ? Devices[size_t(cmb3DDevice)].description : "Renderer";
}

std::string SetupForm::Sound_Caption() const {
  return cmbSoundDriver >= 0 && cmbSoundDriver < int(SoundDevices.size())
             ? SoundDevices[size_t(cmbSoundDriver)].description
             : "Sound Devices";
}

}  // namespace frmSetup
