// Drawing checked by reading back the back buffer (headless GL).
#include <array>
#include <set>

#include "gfx/XFileClass.h"
#include "mathmesh/modMATH.h"
#include "support/screen_fixture.h"

using namespace mod3Denhance;
using platform::PixelFormat;
namespace rs = platform::rs;

namespace {

ScreenVertex SV(float x, float y, float z, uint32_t c, float u = 0, float v = 0) { return {x, y, z, 1.0f, c, 0, u, v}; }
int Red(uint32_t rgb) { return int(rgb >> 16 & 0xFF); }

// An upright quad drawn as a strip, the texture's u running 0..u across it.
void Quad(float l, float t, float r, float b, float z, uint32_t c, float u = 1) {
  const ScreenVertex v[] = {SV(l, b, z, c, 0, 1), SV(l, t, z, c), SV(r, b, z, c, u, 1), SV(r, t, z, c, u, 0)};
  D3DDevice->DrawPrimitive(platform::Primitive::TriangleStrip, v, 4);
}

// Blit_Clipped from the source's top left corner, of the whole source unless a size is given.
void Blit(const Surface& dst, const Surface& src, int x, int y, u8 transparent, int w = 0, int h = 0) {
  Rect r = Make_Rect(0, 0, i16(w ? w : src->Width()), i16(h ? h : src->Height()));
  i16 px = i16(x), py = i16(y);
  Blit_Clipped(dst, src, r, px, py, transparent);
}

platform::Device3D& Unlit_On_Clear_Screen() {
  Clear_Screen();
  D3DDevice->SetRenderState(rs::Lighting, 0);
  return *D3DDevice;
}
}  // namespace

TEST_F(DisplayTest, StartUpSetsTheScreenFontsAndDeviceTextFillsEachGlyphsCellAndBlitsKeyAndClip) {
  std::string missing;
  ASSERT_TRUE(modText::Load_Fonts(missing)) << missing;
  EXPECT_EQ(std::pair(ScreenRect.right, ScreenRect.bottom), std::pair(640, 480));
  EXPECT_EQ(platform::Render_State(*D3DDevice, rs::Lighting), uint32_t(-1));
  EXPECT_EQ(platform::Render_State(*D3DDevice, rs::SrcBlend), platform::blend::SrcAlpha);
  ASSERT_TRUE(modText::Font(2));
  EXPECT_EQ(modText::Font(2)->Width(), 27 * 12);
  // "<none>" and device names this machine lacks run on the best device there is.
  const auto list = platform::Device_List();
  ASSERT_FALSE(list.empty());
  EXPECT_EQ(platform::Device_Identifier(*D3DDevice), list.front().identifier);
  EXPECT_EQ(platform::Resolve_Device("IID_IDirect3DTnLHALDevice"), list.front().identifier);
  EXPECT_EQ(list.back().identifier, platform::kSoftwareDevice);
  EXPECT_EQ(platform::Resolve_Device(platform::kSoftwareDevice), platform::kSoftwareDevice);

  const Surface& font = modText::Font(0);
  ASSERT_TRUE(font);
  Clear_Screen();
  modText::Draw_Text(10, 10, 0, "Lap 1/3");
  const auto px = Read(0, 0, 200, 50);
  // Screen x of each cell and the glyph's source left/top; the space (sx < 0) leaves its cell empty.
  const std::array<int, 3> cells[] = {{10, 220, 0},  {30, 0, 30},    {50, 300, 30}, {70, -1, 0},
                                      {90, 220, 60}, {110, 180, 60}, {130, 260, 60}};
  int glyph_pixels = 0;
  for (const auto& [x, sx, sy] : cells)
    for (int i = 0; i < 600; ++i) {
      const uint32_t src = sx < 0 ? 0 : font->Pixel(sx + i % 20, sy + i / 20) & 0xFFFFFFu;
      glyph_pixels += src != 0;
      ASSERT_EQ(px[size_t((10 + i / 20) * 200 + x + i % 20)], src != 0 ? src : kClear) << x << " " << i;
    }
  EXPECT_GT(glyph_pixels, 200);
  Fill_Rect(BackBuffer, 0, 0, 640, 480, 0x00FF8000);
  EXPECT_EQ(At(5, 5), 0xFF8000u);
  Clear_Screen();
  EXPECT_EQ(std::pair(At(0, 0), At(639, 479)), std::pair(kClear, kClear));
  Fill_Rect(BackBuffer, 0, 0, 10, 10, 0x00FFFFFF);
  Surface map = Create_Texture("", 128, 128, kKeyNone);
  Blit(map, BackBuffer, 0, 0, 0, 127, 127);
  // The back buffer copies out; outside the copied square stays empty.
  EXPECT_EQ((std::array{map->Pixel(9, 9) & 0xFFFFFFu, map->Pixel(10, 10) & 0xFFFFFFu, map->Pixel(127, 127)}),
            (std::array{0xFFFFFFu, kClear, 0u}));

  Surface src;
  ASSERT_TRUE(Create_Surface(src, 32, 8, "", kKeyBlack, kFalse));
  for (int y = 0; y < 8; ++y)
    for (int x = 0; x < 32; ++x) src->Set_Pixel(x, y, (x + y) % 3 == 0 ? 0 : 0x00010203u * uint32_t(x * 8 + y + 1));
  const auto src_at = [&](int x, int y) { return src->Pixel(x, y) & 0xFFFFFFu; };
  Clear_Screen();
  Blit(BackBuffer, src, 100, 50, 1);
  Blit(BackBuffer, src, -10, 0, 0);
  Blit(BackBuffer, src, 640 - 5, 100, 0);
  // Keyed: key pixels leave the screen, others copy, nothing spills a column either side.
  EXPECT_EQ((std::array{At(100, 50), At(101, 50), At(131, 57)}), (std::array{kClear, src_at(1, 0), src_at(31, 7)}));
  EXPECT_EQ(std::pair(At(99, 51), At(132, 51)), std::pair(kClear, kClear));
  // Clipped on the left: source columns 10 to 31 from x 0; on the right: columns 0 to 4.
  EXPECT_EQ((std::array{At(0, 0), At(21, 0), At(22, 0)}), (std::array{src_at(10, 0), src_at(31, 0), kClear}));
  EXPECT_EQ((std::array{At(634, 100), At(635, 100), At(639, 100)}), (std::array{kClear, src_at(0, 0), src_at(4, 0)}));
  Blit(BackBuffer, src, 100, 50, 0);  // unkeyed, the key pixels are copied too
  EXPECT_EQ(At(100, 50), 0u);
}

TEST_F(DisplayTest, WindingDepthTextureBlendingWrapAndLongStrips) {
  platform::Device3D& d = Unlit_On_Clear_Screen();
  ASSERT_EQ(platform::Render_State(d, rs::CullMode), platform::cull::CounterClockwise);
  const uint32_t r = 0xFFFF0000, g = 0xFF00FF00;
  // Clockwise red on the left, counter-clockwise green on the right.
  const ScreenVertex tris[] = {SV(100, 100, 0.5f, r), SV(200, 100, 0.5f, r), SV(100, 200, 0.5f, r),
                               SV(300, 100, 0.5f, g), SV(300, 200, 0.5f, g), SV(400, 100, 0.5f, g)};
  const auto draw_both = [&] {
    d.DrawPrimitive(platform::Primitive::TriangleStrip, tris, 3);
    d.DrawPrimitive(platform::Primitive::TriangleStrip, tris + 3, 3);
  };
  draw_both();
  EXPECT_EQ(std::pair(At(120, 120), At(320, 120)), std::pair(0xFF0000u, kClear));
  d.SetRenderState(rs::CullMode, platform::cull::Clockwise);
  draw_both();
  d.SetRenderState(rs::CullMode, platform::cull::CounterClockwise);
  Quad(0, 300, 100, 480, 0.5f, 0xFF0000FF);  // a strip's second triangle is wound the other way; it still shows
  // 2D work after batched 3D lands on top of it.
  Fill_Rect(BackBuffer, 5, 465, 15, 475, 0x00FFFFFF);
  EXPECT_EQ((std::array{At(10, 470), At(20, 470), At(110, 110), At(320, 120), At(90, 310)}),
            (std::array{0xFFFFFFu, 0x0000FFu, 0xFF0000u, 0x00FF00u, 0x0000FFu}));

  Unlit_On_Clear_Screen();
  Quad(100, 100, 200, 200, 0.2f, 0xFFFF0000);
  Quad(100, 100, 200, 200, 0.8f, 0xFF00FF00);
  Quad(300, 100, 400, 200, 0.8f, 0xFF00FF00);
  Quad(300, 100, 400, 200, 0.2f, 0xFFFF0000);
  d.SetRenderState(rs::ZWriteEnable, 0);  // without depth writes a later far quad shows
  Quad(500, 100, 600, 200, 0.1f, 0xFFFFFF00);
  Quad(500, 100, 600, 200, 0.5f, 0xFF00FFFF);
  EXPECT_EQ((std::array{At(150, 150), At(350, 150), At(550, 150)}), (std::array{0xFF0000u, 0xFF0000u, 0x00FFFFu}));
  Unlit_On_Clear_Screen();
  Surface dds = platform::Image::Create(2, 2, PixelFormat::A4R4G4B4);
  for (int i = 0; i < 4; ++i) dds->Set_Pixel(i % 2, i / 2, 0x88FF0000u);
  Surface two = Create_Texture("", 2, 1, kKeyNone);
  two->Set_Pixel(0, 0, 0xFFFFFFFF);
  two->Set_Pixel(1, 0, 0xFF00FF00);
  d.Clear(nullptr, 0, platform::kClearTarget, 0xFF0000FFu, 1, 0);
  d.SetRenderState(rs::AlphaBlendEnable, 1);
  d.SetRenderState(rs::TextureMag, platform::filter::Point);
  d.SetTexture(0, dds);
  Quad(0, 0, 100, 100, 0, 0xFFFFFFFF);
  d.SetTexture(0, two);
  Quad(0, 200, 400, 220, 0, 0xFF808080, 4);  // the two texels repeat every 100 pixels
  const uint32_t p = At(50, 50);             // alpha 0x88 of red over blue
  EXPECT_NEAR(Red(p), 0x88, 1);
  EXPECT_NEAR(int(p & 0xFF), 0x77, 1);
  EXPECT_EQ(p & 0xFF00, 0u);
  EXPECT_EQ((std::array{At(25, 210), At(75, 210), At(325, 210), At(375, 210)}),
            (std::array{0x808080u, 0x008000u, 0x808080u, 0x008000u}));

  // A strip longer than the device's buffers is drawn in pieces, none lost, culled or doubled (added up).
  d.SetTexture(0, nullptr);
  d.Clear(nullptr, 0, platform::kClearTarget | platform::kClearZBuffer, 0, 1, 0);
  d.SetRenderState(rs::SrcBlend, platform::blend::One);
  d.SetRenderState(rs::DestBlend, platform::blend::One);
  const int rungs = 32769;
  std::vector<ScreenVertex> v;
  for (int r = 0; r < rungs; ++r) {
    const float x = r < rungs - 2 ? 100.0f : r == rungs - 2 ? 300.0f : 500.0f;
    v.push_back(SV(x, 120, 0, 0xFF400000));
    v.push_back(SV(x, 100, 0, 0xFF400000));
  }
  d.DrawPrimitive(platform::Primitive::TriangleStrip, v.data(), int(v.size()));
  EXPECT_EQ((std::array{At(99, 110), At(100, 110), At(299, 110), At(300, 110), At(499, 110), At(500, 110)}),
            (std::array{0u, 0x400000u, 0x400000u, 0x400000u, 0x400000u, 0u}));
}

TEST_F(DisplayTest, LitMeshesAreBrighterFacingTheLightAndCullingAShipKeepsTheOutsideOfEveryPart) {
  platform::Device3D& d = *D3DDevice;
  Matrix4 view;
  modMATH::Identity_Matrix(view);
  d.SetTransform(platform::TransformKind::View, view);
  Clear_Screen();
  // Two triangles in front of the eye (+z), one facing up towards the light, one down.
  const MeshVertex v[] = {{-4, 0, 10, 0, 1, 0, 0, 0}, {-1, 2, 10, 0, 1, 0, 0, 0}, {-1, -2, 10, 0, 1, 0, 0, 0},
                          {1, 0, 10, 0, -1, 0, 0, 0}, {4, 2, 10, 0, -1, 0, 0, 0}, {4, -2, 10, 0, -1, 0, 0, 0}};
  const uint16_t idx[] = {0, 1, 2, 3, 4, 5};
  d.SetRenderState(rs::CullMode, platform::cull::None);
  const platform::GeometryRef mesh = d.MakeGeometry(v, 6, idx, 6);
  d.DrawGeometry(*mesh, 0, 1);
  // x / z maps to the screen with cot(fov / 2) = 1: -2.5 / 10 -> 240, 2.5 / 10 -> 400.
  // Ambient 150 alone lights the far side; the light's 0.93 on top saturates the near side.
  EXPECT_NEAR(Red(At(400, 240)), 150, 2);
  EXPECT_EQ(Red(At(240, 240)), 255);
  // Halving the material shows the light's share: 0.5 * (150/255 + 0.928) of full scale.
  D3DMaterial half = Material;
  half.diffuse = half.ambient = ColorValue{0.5f, 0.5f, 0.5f, 0};
  d.SetMaterial(half);
  d.DrawGeometry(*mesh, 0, 1);
  EXPECT_NEAR(Red(At(240, 240)), 193, 3);
  EXPECT_NEAR(Red(At(400, 240)), 75, 2);
  dir_.Copy_From_Game("Objects");
  dir_.Copy_From_Game("Textures");
  XFileClass ship;
  ASSERT_EQ(ship.Load_Quiet(dir_.path() + "/Objects/Kestrel.x"), "");
  // The ship from behind and above, as the chase camera sees it, with the given culling.
  const auto draw = [&](uint32_t cull) {
    platform::Device3D& d = *D3DDevice;
    Matrix4 view, projection;
    modMATH::View_Matrix(view, Vector3{4, 6, -16}, Vector3{0, 0, 0}, Vector3{0, 1, 0}, 0);
    modMATH::Projection_Matrix(projection, 1, 1000, 0.8f);
    d.SetTransform(platform::TransformKind::View, view);
    d.SetTransform(platform::TransformKind::Projection, projection);
    d.SetRenderState(rs::Lighting, uint32_t(-1));
    d.SetRenderState(rs::CullMode, cull);
    Clear_Screen();
    ship.Render(&d);
    return Read(0, 0, 640, 480);
  };
  const std::vector<uint32_t> both = draw(platform::cull::None), normal = draw(platform::cull::CounterClockwise),
                              reversed = draw(platform::cull::Clockwise);
  size_t ship_pixels = 0, normal_differs = 0, reversed_differs = 0;
  std::set<uint32_t> colours;
  for (size_t i = 0; i < both.size(); ++i) {
    if (both[i] == both[0]) continue;  // the background
    ++ship_pixels;
    normal_differs += normal[i] != both[i];
    reversed_differs += reversed[i] != both[i];
    colours.insert(both[i]);
  }
  ASSERT_GT(ship_pixels, 5000u) << "the ship should fill a good part of the view";
  // Culling back faces changes nothing (they lie behind the front ones); the other way shows insides.
  EXPECT_LT(normal_differs, ship_pixels / 100);
  EXPECT_GT(reversed_differs, ship_pixels / 2);
  EXPECT_GE(colours.size(), 64u) << "textured and lit, not flat";
}
