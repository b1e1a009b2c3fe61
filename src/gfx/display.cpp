// Display and 3D device set-up, flipping and teardown.
#include "core/log.h"
#include "core/modMain.h"
#include "core/settings.h"
#include "gfx/mod3Denhance.h"
#include "mathmesh/modMATH.h"
#include "platform/platform.h"

namespace mod3Denhance {

Surface BackBuffer;
platform::Device3D* D3DDevice = nullptr;
Rect ScreenRect;
D3DMaterial Material;

namespace {
// The display objects, in creation order; each is set while it exists.
struct RootObject {};     // DX: the clock, matrix and colour services need no state of their own
struct DisplayDriver {};  // DD: the GL context on the game window, with the back buffer
struct Direct3DObject {   // D3D: the devices this machine offers
  std::vector<platform::DeviceInfo> devices;
};
std::unique_ptr<RootObject> DX;
std::unique_ptr<DisplayDriver> DD;
std::unique_ptr<Direct3DObject> D3D;

std::unique_ptr<platform::Device3D> g_device;

// Undoes a set-up that cannot go on, so the game can end without a shutdown sequence.
void Abandon_Display() {
  Release_D3DDevice();
  Release_D3D();
  Release_BackBuffer();
  Release_DD();
  Release_DX();
}

bool Fail(const std::string& message) {
  platform::Message_Box(message);
  Abandon_Display();
  return false;
}
}  // namespace

bool Init_DDraw(i16& width, i16& height, u8& bpp) {
  using modMain::Write_Log;
  DX = std::make_unique<RootObject>();
  // One open makes the context, the back buffer and its z-buffer; the log still tells
  // each step. Full screen and exclusive: the window already covers the desktop; the mode
  // is the back buffer's size, which Flip scales to the window.
  std::string error;
  BackBuffer = platform::Open_Display(modMain::D3DDeviceGuid, width, height, error);
  if (!BackBuffer) return Fail(error + "\n\nBrindlex Quorval needs a 3D display and will now close.");
  DD = std::make_unique<DisplayDriver>();
  Write_Log("DX and DDraw objects created");
  Write_Log("Exclusive mode set, at " + std::to_string(width) + "x" + std::to_string(height) + "x" +
            std::to_string(bpp));
  Write_Log("Primary Surface Created");
  Write_Log("Backbuffer Created");
  ScreenRect = Rect{0, 0, width, height};
  Write_Log("...DDraw Initialized");
  Write_Log("");
  return Init_D3D();
}

bool Init_D3D() {
  using modMain::Write_Log;
  Write_Log("Initializing D3D...");
  D3D = std::make_unique<Direct3DObject>(Direct3DObject{platform::Device_List()});
  Write_Log("D3D object created");
  Write_Log("Device found - " + modMain::D3DDeviceGuid);
  // The z-buffer came with the back buffer: 24 bits, in GPU memory like the target.
  Write_Log("Z-buffer created");
  Write_Log("Z-buffer Attached to backbuffer");
  // An identifier this machine does not offer ("<none>" after a skipped setup) runs on
  // the best device there is.
  g_device = platform::Create_Device(modMain::D3DDeviceGuid);
  D3DDevice = g_device.get();
  if (D3DDevice == nullptr) return Fail("The 3D device could not be created.\n\nBrindlex Quorval will now close.");
  Write_Log("Device Created");

  Material = D3DMaterial{};
  Material.diffuse = ColorValue{1, 1, 1, 0};
  Material.ambient = ColorValue{1, 1, 1, 0};
  D3DDevice->SetMaterial(Material);
  Matrix4 m;
  modMATH::Identity_Matrix(m);
  D3DDevice->SetTransform(platform::TransformKind::World, m);
  modMATH::Identity_Matrix(m);
  modMATH::Projection_Matrix(m, 1.0f, 1500.0f, 3.14159f / 2.0f);
  D3DDevice->SetTransform(platform::TransformKind::Projection, m);
  D3DDevice->SetRenderState(platform::rs::ZEnable, 1);

  Set_Scene_Light(ColorValue{1, 1, 1, 0}, Vector3{0.4f, -1.0f, 0});
  D3DDevice->SetRenderState(platform::rs::TextureMag, platform::filter::Linear);
  D3DDevice->SetRenderState(platform::rs::TextureMin, platform::filter::Linear);
  D3DDevice->SetRenderState(platform::rs::DestBlend, platform::blend::InvSrcAlpha);
  D3DDevice->SetRenderState(platform::rs::SrcBlend, platform::blend::SrcAlpha);
  Write_Log("...D3D initialized");
  Write_Log("");
  return true;
}

void Set_Scene_Light(const ColorValue& diffuse, const Vector3& direction) {
  if (D3DDevice == nullptr) return;
  platform::D3DLight light;
  light.type = 3;
  light.diffuse = diffuse;
  light.position = Vector3{0, 10.0f, 0};
  light.direction = direction;
  light.range = 5000.0f;
  light.attenuation0 = 0.8f;
  D3DDevice->SetLight(0, light);  // and enables it
  D3DDevice->SetRenderState(platform::rs::Lighting, static_cast<uint32_t>(kTrue));
  D3DDevice->SetRenderState(platform::rs::Ambient, 0x00969696u);  // red, green and blue 150
}

void Flip() {
  platform::Present();
  modMain::Count_Design_Steps();
}

void Release_D3DDevice() {
  g_device.reset();
  D3DDevice = nullptr;
}

void Release_D3D() { D3D.reset(); }

void Release_BackBuffer() { BackBuffer.reset(); }

void Release_DD() {
  if (DD) platform::Close_Display();
  DD.reset();
}

void Release_DX() { DX.reset(); }

}  // namespace mod3Denhance
