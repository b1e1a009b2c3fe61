// Drawing checked by reading back the back buffer (headless GL).
#include <string>

#include "display_fixture.h"
#include "mathmesh/modMATH.h"

using namespace mod3Denhance;
using platform::PixelFormat;

namespace {
ScreenVertex SV(float x, float y, float z, uint32_t colour, float u = 0, float v = 0) {
  return ScreenVertex{x, y, z, 1.0f, colour, 0, u, v};
}
uint32_t Red(uint32_t rgb) { return (rgb >> 16) & 0xFF; }
}  // namespace

TEST_F(DisplayTest, StartUpLogsEveryStepInOrder) {
  const std::vector<std::string> expected = {
      "Program Started", " ", "DX and DDraw objects created", "Exclusive mode set, at 640x480x16",
      "Primary Surface Created", "Backbuffer Created", "...DDraw Initialized", "", "Initializing D3D...",
      "D3D object created", "Device found - <none>", "Z-buffer created", "Z-buffer Attached to backbuffer",
      "Device Created", "...D3D initialized", "", "Loading Font0.bmp...", "...Done", "Loading Font1.bmp...",
      "...Done", "Loading Font2.bmp...", "...Done"};
  modText::Load_Fonts();
  EXPECT_EQ(testenv::Read_Lines_CRLF(modMain::Log_Path()), expected);
  EXPECT_EQ(ScreenRect.right, 640);
  EXPECT_EQ(ScreenRect.bottom, 480);
  EXPECT_EQ(BackBuffer->Width(), 640);
  EXPECT_EQ(D3DDevice->GetRenderState(platform::rs::Lighting), uint32_t(-1));
  EXPECT_EQ(D3DDevice->GetRenderState(platform::rs::SrcBlend), platform::blend::SrcAlpha);
  // "<none>" runs on the best device there is.
  EXPECT_EQ(D3DDevice->Identifier(), platform::Device_List().front().identifier);
  ASSERT_TRUE(modText::Fonts[2]);
  EXPECT_EQ(modText::Fonts[2]->Width(), 27 * 12);
}

TEST_F(DisplayTest, DeviceListFallsBackToTheBestDevice) {
  const auto list = platform::Device_List();
  ASSERT_FALSE(list.empty());
  EXPECT_EQ(list.back().identifier, platform::kSoftwareDevice);
  EXPECT_EQ(platform::Resolve_Device(platform::kSoftwareDevice), platform::kSoftwareDevice);
  EXPECT_EQ(platform::Resolve_Device("IID_IDirect3DTnLHALDevice"), list.front().identifier);
  if (platform::Renderer_Name().find("llvmpipe") != std::string::npos) {
    EXPECT_EQ(platform::Resolve_Device(platform::kHardwareDevice), platform::kSoftwareDevice);
  }
}

TEST_F(DisplayTest, ClearScreenIsDarkBlueEverywhere) {
  Fill_Rect(BackBuffer, 0, 0, 640, 480, 0x00FF8000);
  EXPECT_EQ(At(5, 5), 0xFF8000u);
  Clear_Screen();
  for (uint32_t p : Read(0, 0, 640, 480)) ASSERT_EQ(p, 0x000066u);
}

TEST_F(DisplayTest, KeyedBlitCopiesPixelForPixelAndLeavesKeyPixels) {
  Surface src;
  ASSERT_TRUE(Create_Surface(src, 16, 8, "", kKeyBlack, kFalse));
  for (int y = 0; y < 8; ++y)
    for (int x = 0; x < 16; ++x) src->Set_Pixel(x, y, (x + y) % 3 == 0 ? 0 : 0x00010203u * uint32_t(x * 8 + y + 1));
  Clear_Screen();
  Rect r = Make_Rect(0, 0, 16, 8);
  i16 x = 100, y = 50;
  Blit_Clipped(BackBuffer, src, r, x, y, 1);
  const auto px = Read(100, 50, 116, 58);
  for (int j = 0; j < 8; ++j)
    for (int i = 0; i < 16; ++i) {
      const uint32_t want = (i + j) % 3 == 0 ? 0x000066u : src->Pixel(i, j) & 0xFFFFFFu;
      ASSERT_EQ(px[size_t(j * 16 + i)], want) << i << "," << j;
    }
  EXPECT_EQ(At(99, 50), 0x000066u);
  EXPECT_EQ(At(116, 50), 0x000066u);
  // Unkeyed, the key pixels are copied too.
  r = Make_Rect(0, 0, 16, 8);
  Blit_Clipped(BackBuffer, src, r, x, y, 0);
  EXPECT_EQ(At(100, 50), 0u);
}

TEST_F(DisplayTest, BlitClippedAtTheScreenEdges) {
  Surface src = platform::Image::Create(32, 4, PixelFormat::X8R8G8B8);
  for (int i = 0; i < 32; ++i)
    for (int j = 0; j < 4; ++j) src->Set_Pixel(i, j, 0x00080000u * uint32_t(i / 2 + 1) + uint32_t(i));
  Clear_Screen();
  Rect r = Make_Rect(0, 0, 32, 4);
  i16 x = -10, y = 0;
  Blit_Clipped(BackBuffer, src, r, x, y, 0);
  auto px = Read(0, 0, 32, 1);
  for (int i = 0; i < 22; ++i) ASSERT_EQ(px[size_t(i)], src->Pixel(i + 10, 0)) << i;
  EXPECT_EQ(px[22], 0x000066u);

  r = Make_Rect(0, 0, 32, 4);
  x = 640 - 5;
  y = 100;
  Blit_Clipped(BackBuffer, src, r, x, y, 0);
  px = Read(630, 100, 640, 101);
  EXPECT_EQ(px[4], 0x000066u);
  for (int i = 0; i < 5; ++i) EXPECT_EQ(px[size_t(5 + i)], src->Pixel(i, 0));

  Clear_Screen();
  r = Make_Rect(0, 0, 32, 4);
  x = -40;
  y = 200;
  Blit_Clipped(BackBuffer, src, r, x, y, 0);
  for (uint32_t p : Read(0, 195, 40, 210)) ASSERT_EQ(p, 0x000066u);
}

TEST_F(DisplayTest, DrawTextPutsEachGlyphInItsCell) {
  modText::Load_Fonts();
  const Surface& font = modText::Fonts[0];
  ASSERT_TRUE(font);
  Clear_Screen();
  modText::Draw_Text(10, 10, 0, "Lap 1/3");
  const auto px = Read(0, 0, 200, 50);
  // Screen x of each cell and the glyph's source left/top; the space leaves its cell empty.
  struct Cell { int x, sx, sy; };
  const Cell cells[] = {{10, 220, 0}, {30, 0, 30}, {50, 300, 30}, {90, 220, 60}, {110, 180, 60}, {130, 260, 60}};
  int glyph_pixels = 0;
  for (const Cell& c : cells) {
    for (int j = 0; j < 30; ++j)
      for (int i = 0; i < 20; ++i) {
        const uint32_t src = font->Pixel(c.sx + i, c.sy + j) & 0xFFFFFFu;
        glyph_pixels += src != 0;
        ASSERT_EQ(px[size_t((10 + j) * 200 + c.x + i)], src != 0 ? src : 0x000066u) << c.x << " " << i << "," << j;
      }
  }
  EXPECT_GT(glyph_pixels, 200);
  for (int j = 10; j < 40; ++j)
    for (int i = 70; i < 90; ++i) ASSERT_EQ(px[size_t(j * 200 + i)], 0x000066u);
}

TEST_F(DisplayTest, TrianglesClockwiseOnScreenAreFrontFacing) {
  platform::Device3D& d = *D3DDevice;
  Clear_Screen();
  d.BeginScene();
  d.SetRenderState(platform::rs::Lighting, 0);
  ASSERT_EQ(d.GetRenderState(platform::rs::CullMode), platform::cull::CounterClockwise);
  const ScreenVertex cw[] = {SV(100, 100, 0.5f, 0xFFFF0000), SV(200, 100, 0.5f, 0xFFFF0000),
                                       SV(100, 200, 0.5f, 0xFFFF0000)};
  const ScreenVertex ccw[] = {SV(300, 100, 0.5f, 0xFF00FF00), SV(300, 200, 0.5f, 0xFF00FF00),
                                        SV(400, 100, 0.5f, 0xFF00FF00)};
  d.DrawPrimitive(platform::Primitive::TriangleList, cw, 3);
  d.DrawPrimitive(platform::Primitive::TriangleList, ccw, 3);
  d.EndScene();
  EXPECT_EQ(At(120, 120), 0xFF0000u);
  EXPECT_EQ(At(320, 120), 0x000066u);
  // A strip's second triangle is wound the other way by the vertex order; it still shows.
  const ScreenVertex strip[] = {SV(0, 480, 0.5f, 0xFF0000FF), SV(0, 300, 0.5f, 0xFF0000FF),
                                          SV(100, 480, 0.5f, 0xFF0000FF), SV(100, 300, 0.5f, 0xFF0000FF)};
  d.SetRenderState(platform::rs::CullMode, platform::cull::Clockwise);
  d.DrawPrimitive(platform::Primitive::TriangleList, cw, 3);
  d.DrawPrimitive(platform::Primitive::TriangleList, ccw, 3);
  d.SetRenderState(platform::rs::CullMode, platform::cull::CounterClockwise);
  d.DrawPrimitive(platform::Primitive::TriangleStrip, strip, 4);
  // 2D work after batched 3D lands on top of it.
  Fill_Rect(BackBuffer, 5, 465, 15, 475, 0x00FFFFFF);
  EXPECT_EQ(At(10, 470), 0xFFFFFFu);
  EXPECT_EQ(At(20, 470), 0x0000FFu);
  EXPECT_EQ(At(110, 110), 0xFF0000u);
  EXPECT_EQ(At(320, 120), 0x00FF00u);
  EXPECT_EQ(At(90, 310), 0x0000FFu);
}

TEST_F(DisplayTest, DepthTestHidesAFarTriangleDrawnAfterANearOne) {
  platform::Device3D& d = *D3DDevice;
  Clear_Screen();
  d.SetRenderState(platform::rs::Lighting, 0);
  const auto quad = [&](float z, uint32_t colour, float x0) {
    const ScreenVertex v[] = {SV(x0, 200, z, colour), SV(x0, 100, z, colour), SV(x0 + 100, 200, z, colour),
                                        SV(x0 + 100, 100, z, colour)};
    d.DrawPrimitive(platform::Primitive::TriangleStrip, v, 4);
  };
  d.BeginScene();
  quad(0.2f, 0xFFFF0000, 100);
  quad(0.8f, 0xFF00FF00, 100);
  quad(0.8f, 0xFF00FF00, 300);
  quad(0.2f, 0xFFFF0000, 300);
  d.SetRenderState(platform::rs::ZWriteEnable, 0);  // without depth writes a later far quad shows
  quad(0.1f, 0xFFFFFF00, 500);
  quad(0.5f, 0xFF00FFFF, 500);
  d.EndScene();
  EXPECT_EQ(At(150, 150), 0xFF0000u);
  EXPECT_EQ(At(350, 150), 0xFF0000u);
  EXPECT_EQ(At(550, 150), 0x00FFFFu);
}

TEST_F(DisplayTest, LitMeshIsBrighterFacingTheLight) {
  platform::Device3D& d = *D3DDevice;
  Matrix4 view;
  modMATH::Identity_Matrix(view);
  d.SetTransform(platform::TransformKind::View, view);
  Clear_Screen();
  // Two triangles in front of the eye (+z), one facing up towards the light, one down.
  const MeshVertex v[] = {
      {-4, 0, 10, 0, 1, 0, 0, 0}, {-1, 2, 10, 0, 1, 0, 0, 0}, {-1, -2, 10, 0, 1, 0, 0, 0},
      {1, 0, 10, 0, -1, 0, 0, 0}, {4, 2, 10, 0, -1, 0, 0, 0}, {4, -2, 10, 0, -1, 0, 0, 0}};
  const uint16_t idx[] = {0, 1, 2, 3, 4, 5};
  d.SetRenderState(platform::rs::CullMode, platform::cull::None);
  d.BeginScene();
  d.DrawIndexedMesh(v, 6, idx, 6);
  d.EndScene();
  // x / z maps to the screen with cot(fov / 2) = 1: -2.5 / 10 -> 240, 2.5 / 10 -> 400.
  const uint32_t facing = At(240, 240), away = At(400, 240);
  // Ambient 150 alone for the far side; the light's 0.93 on top saturates the near side.
  EXPECT_NEAR(int(Red(away)), 150, 2);
  EXPECT_EQ(Red(facing), 255u);
  EXPECT_EQ(away & 0xFF, Red(away));
  // Halving the material shows the light's share: 0.5 * (150/255 + 0.928) of full scale.
  D3DMaterial half = Material;
  half.diffuse = ColorValue{0.5f, 0.5f, 0.5f, 0};
  half.ambient = ColorValue{0.5f, 0.5f, 0.5f, 0};
  d.SetMaterial(half);
  d.DrawIndexedMesh(v, 6, idx, 6);
  EXPECT_NEAR(int(Red(At(240, 240))), 193, 3);
  EXPECT_NEAR(int(Red(At(400, 240))), 75, 2);
}

TEST_F(DisplayTest, DdsTexelBlendsWithItsAlpha) {
  platform::Device3D& d = *D3DDevice;
  Surface t = platform::Image::Create(2, 2, PixelFormat::A4R4G4B4);
  for (int i = 0; i < 4; ++i) t->Set_Pixel(i % 2, i / 2, 0x8F00);
  D3DDevice->Clear(nullptr, 0, platform::kClearTarget, 0xFF0000FFu, 1, 0);
  d.SetRenderState(platform::rs::Lighting, 0);
  d.SetRenderState(platform::rs::AlphaBlendEnable, 1);
  d.SetTexture(0, t);
  const ScreenVertex v[] = {SV(0, 100, 0, 0xFFFFFFFF, 0, 1), SV(0, 0, 0, 0xFFFFFFFF, 0, 0),
                                      SV(100, 100, 0, 0xFFFFFFFF, 1, 1), SV(100, 0, 0, 0xFFFFFFFF, 1, 0)};
  d.BeginScene();
  d.DrawPrimitive(platform::Primitive::TriangleStrip, v, 4);
  d.EndScene();
  // Alpha 0x88 of red over blue.
  const uint32_t p = At(50, 50);
  EXPECT_NEAR(int(Red(p)), 0x88, 1);
  EXPECT_NEAR(int(p & 0xFF), 0xFF - 0x88, 1);
  EXPECT_EQ((p >> 8) & 0xFF, 0u);
}

TEST_F(DisplayTest, TextureModulatesVertexColourAndWraps) {
  platform::Device3D& d = *D3DDevice;
  Surface t = Create_Texture("", 2, 1, kKeyNone);
  t->Set_Pixel(0, 0, 0xFFFFFFFF);
  t->Set_Pixel(1, 0, 0xFF00FF00);
  d.SetRenderState(platform::rs::Lighting, 0);
  d.SetTextureStageState(0, platform::tss::MagFilter, platform::tss::Point);
  d.SetTexture(0, t);
  Clear_Screen();
  // u runs 0..4 over 400 pixels: the two texels repeat every 100 pixels.
  const ScreenVertex v[] = {SV(0, 20, 0, 0xFF808080, 0, 1), SV(0, 0, 0, 0xFF808080, 0, 0),
                                      SV(400, 20, 0, 0xFF808080, 4, 1), SV(400, 0, 0, 0xFF808080, 4, 0)};
  d.DrawPrimitive(platform::Primitive::TriangleStrip, v, 4);
  EXPECT_EQ(At(25, 10), 0x808080u);
  EXPECT_EQ(At(75, 10), 0x008000u);
  EXPECT_EQ(At(325, 10), 0x808080u);
  EXPECT_EQ(At(375, 10), 0x008000u);
}

TEST_F(DisplayTest, BackBufferCopiesIntoASurface) {
  Clear_Screen();
  Fill_Rect(BackBuffer, 0, 0, 10, 10, 0x00FFFFFF);
  Surface map = Create_Texture("", 128, 128, kKeyNone);
  Rect r = Make_Rect(0, 0, 127, 127);
  i16 x = 0, y = 0;
  Blit_Clipped(map, BackBuffer, r, x, y, 0);
  EXPECT_EQ(map->Argb(9, 9) & 0xFFFFFFu, 0xFFFFFFu);
  EXPECT_EQ(map->Argb(10, 10) & 0xFFFFFFu, 0x000066u);
  EXPECT_EQ(map->Argb(127, 127), 0u);  // outside the copied square
}

// A strip longer than the device's buffers is drawn in pieces: no triangle may be lost,
// culled by a wrong winding, or drawn twice (additive blending would show it). All but
// the last rungs sit on one line, so the only visible quads straddle the first split.
TEST_F(DisplayTest, LongStripIsDrawnWholeAndOnce) {
  platform::Device3D& d = *D3DDevice;
  D3DDevice->Clear(nullptr, 0, platform::kClearTarget | platform::kClearZBuffer, 0, 1, 0);
  d.SetRenderState(platform::rs::Lighting, 0);
  d.SetRenderState(platform::rs::AlphaBlendEnable, 1);
  d.SetRenderState(platform::rs::SrcBlend, platform::blend::One);
  d.SetRenderState(platform::rs::DestBlend, platform::blend::One);
  const int rungs = 32769;
  std::vector<ScreenVertex> v;
  for (int r = 0; r < rungs; ++r) {
    const float x = r < rungs - 2 ? 100.0f : r == rungs - 2 ? 300.0f : 500.0f;
    v.push_back(SV(x, 120, 0, 0xFF400000));
    v.push_back(SV(x, 100, 0, 0xFF400000));
  }
  d.DrawPrimitive(platform::Primitive::TriangleStrip, v.data(), int(v.size()));
  const auto row = Read(0, 110, 640, 111);
  for (int x = 0; x < 640; ++x) ASSERT_EQ(row[size_t(x)], x >= 100 && x < 500 ? 0x400000u : 0u) << x;
}
