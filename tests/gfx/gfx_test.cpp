// Surfaces, .dds files and meshes on the CPU side; drawing checked by reading the back buffer back (headless GL).
#include <algorithm>
#include <array>
#include <cmath>
#include <set>
#include <tuple>

#include "gfx/XFileClass.h"
#include "mathmesh/modMATH.h"
#include "support/recording_device.h"
#include "support/screen_fixture.h"
#include "vehicle/ships_dat.h"

using namespace mod3Denhance;
using platform::PixelFormat;
namespace rs = platform::rs;

namespace {

// A .dds file as the game's textures are written: 16-bit A4R4G4B4, rows unpadded.
std::string Dds(uint32_t width, uint32_t height, const std::vector<uint16_t>& texels, uint32_t pitch = 0,
                uint32_t flags = 0x100F, uint32_t bit_count = 16) {
  std::string b = "DDS ";
  testenv::Put(b, {124, flags, height, width, pitch ? pitch : width * 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
  testenv::Put(b, {32, 0x41, 0, bit_count, 0x0F00, 0x00F0, 0x000F, 0xF000, 0x1000, 0, 0, 0, 0});
  for (uint16_t t : texels) b.append({char(t), char(t >> 8)});
  return b;
}

Surface Decode(const std::string& b) { return Decode_DDS(reinterpret_cast<const uint8_t*>(b.data()), b.size()); }

// A 24-bit .bmp, bottom-up rows, from 0xRRGGBB values given top row first.
std::string Bmp(int w, int h, const std::vector<uint32_t>& rgb) {
  const int row = (w * 3 + 3) & ~3;
  std::string b = "BM";
  testenv::Put(b, {uint32_t(54 + row * h), 0, 54, 40, uint32_t(w), uint32_t(h), 0x00180001, 0, 0, 0, 0, 0, 0});
  for (int y = h - 1; y >= 0; --y) {
    for (int x = 0; x < w; ++x) b.append(reinterpret_cast<const char*>(&rgb[size_t(y * w + x)]), 3);  // B, G, R
    b.append(size_t(row - w * 3), '\0');
  }
  return b;
}

// Blit_Clipped from the source's top left (all of it unless sized), with the rectangle and position it leaves.
struct Blitted {
  Rect r;
  i16 x, y;
};
Blitted Blit(const Surface& dst, const Surface& src, int x, int y, u8 transparent, int w = 0, int h = 0) {
  Blitted b{Make_Rect(0, 0, i16(w ? w : src->Width()), i16(h ? h : src->Height())), i16(x), i16(y)};
  Blit_Clipped(dst, src, b.r, b.x, b.y, transparent);
  return b;
}

ScreenVertex SV(float x, float y, float z, uint32_t c, float u = 0, float v = 0) { return {x, y, z, 1.0f, c, 0, u, v}; }

// An upright quad drawn as a strip, the texture's u running 0..u across it.
void Quad(float l, float t, float r, float b, float z, uint32_t c, float u = 1) {
  const ScreenVertex v[] = {SV(l, b, z, c, 0, 1), SV(l, t, z, c), SV(r, b, z, c, u, 1), SV(r, t, z, c, u, 0)};
  D3DDevice->DrawPrimitive(platform::Primitive::TriangleStrip, v, 4);
}

platform::Device3D& Unlit_On_Clear_Screen() {
  Clear_Screen();
  D3DDevice->SetRenderState(rs::Lighting, 0);
  return *D3DDevice;
}

// Material 0 (skinned): a quad and a pentagon; material 1 (missing texture): a triangle.
const char* kShip = R"(xof 0303txt 0032
Mesh ship { 7; 0;0;0;, 0;0;1;, 1;0;1;, 1;0;0;, 2;0;1;, 2;0;0;, 3;0;0.5;; 3; 4;0,1,2,3;, 5;3,2,4,6,5;, 3;0,2,3;;
  MeshMaterialList { 2; 3; 0,0,1;;
    Material { 0.9;0.8;0.7;1;; 20; 1;1;1;; 0;0;0;; TextureFilename { "..\\Textures\\Grass.bmp"; } }
    Material { 0.2;0.2;0.2;1;; 0; 0;0;0;; 0;0;0;; TextureFilename { "missing.bmp"; } } } }
)";

void Expect_Moves(const Matrix4& m, Vector3 p, const Vector3& b) {
  const Vector3 a = modMATH::Transform_Point(p, m);
  EXPECT_LT(std::hypot(a.x - b.x, a.y - b.y, a.z - b.z), 2e-4f) << a.x << "," << a.y << "," << a.z;
}

TEST(XFileClass, LoadFansPolygonsIntoPartsRefusesOverrunsFindsTexturesBesideTheMeshDrawsWhenLoadedAndMovesInRender) {
  testenv::ScratchAppDir dir;
  XFileClass x;
  float a = 1, b = 1, c = 1;
  x.GetMinExtent(a, b, c);
  EXPECT_EQ(std::tuple(x.Parts.size(), x.GroupCount, a + b + c), std::tuple(1u, 0, 0.0f));
  RecordingDevice device;
  EXPECT_FALSE(x.Load(dir.path() + "/Objects/ship.x"));
  x.Render(&device);
  EXPECT_EQ(device.calls, 0);
  EXPECT_NE(testenv::Read_File(modMain::Log_Path()).find("error loading xfile"), std::string::npos);

  testenv::Write_File(dir.path() + "/Objects/ship.x", kShip);
  dir.Copy_From_Game("Textures/Grass.bmp");
  ASSERT_TRUE(x.Load(dir.path() + "/Objects/ship.x"));
  ASSERT_EQ(std::tuple(x.Loaded, x.GroupCount, x.Parts.size()), std::tuple(kTrue, 2, 2u));
  // Quad 2 + pentagon 3 triangles, then one.
  EXPECT_EQ((std::array{x.Parts[0].PartIndices.size(), x.Parts[1].PartIndices.size()}), (std::array<size_t, 2>{15, 3}));
  EXPECT_EQ(x.Parts[0].PartTextureFile, dir.path() + "/Objects/../Textures/Grass.bmp");
  EXPECT_TRUE(x.Parts[0].PartTexture);
  EXPECT_FALSE(x.Parts[1].PartTexture) << "missing: drawn untextured";
  EXPECT_EQ(x.Parts[1].PartTextureFile, dir.path() + "/Objects/missing.bmp");
  x.GetMaxExtent(a, b, c);
  EXPECT_EQ(std::pair(a, c), std::pair(3.0f, 1.0f));

  x.Render(&device);
  ASSERT_EQ(device.draws.size(), 2u);
  EXPECT_EQ(device.draws[0].texture, x.Parts[0].PartTexture);
  EXPECT_EQ(std::pair(device.draws[0].material.diffuse.g, device.draws[0].material.power), std::pair(0.8f, 20.0f));
  EXPECT_EQ(std::pair(device.draws[0].indices, device.draws[0].vertices),
            std::pair(15, int(x.Parts[0].PartVertices.size())));
  EXPECT_LT(device.draws[0].max_index, device.draws[0].vertices);
  EXPECT_EQ(device.draws[1].texture, nullptr);

  // A skin over every part, then the file's own textures back.
  const Surface skin = x.Parts[0].PartTexture;
  x.Parts[0].PartTexture = nullptr;
  x.SetXTexture(skin);
  EXPECT_EQ(x.Parts[1].PartTexture, skin);
  x.ReloadTextures();
  EXPECT_TRUE(x.Parts[0].PartTexture);
  EXPECT_NE(x.Parts[0].PartTexture, skin);
  EXPECT_FALSE(x.Parts[1].PartTexture);

  // A bad second load keeps the parts but stops drawing.
  testenv::Write_File(dir.path() + "/Objects/bad.x", "xof 0303txt 0032\nMesh { 1; 0;0;0;; 1; 3;0,0,1;; }");
  EXPECT_NE(x.Load_Quiet(dir.path() + "/Objects/bad.x"), "");
  EXPECT_EQ(x.GroupCount, 2);
  device.draws.clear();
  x.Render(&device);
  EXPECT_TRUE(device.draws.empty());

  // A model facing +z faces the heading (-sin h, 0, cos h); the bank rolls the wings, not the nose.
  x.SetRotation(0, 0.7f, 0.4f);
  Expect_Moves(x.RotationMatrix, {0, 0, 1}, {-std::sin(0.7f), 0, std::cos(0.7f)});
  EXPECT_NEAR(std::abs(modMATH::Transform_Point({1, 0, 0}, x.RotationMatrix).y), std::sin(0.4f), 1e-5f);
  x.SetRotation(0, 1.570795f, 0);
  x.Rotate(0, 1.570795f, 0);
  Expect_Moves(x.RotationMatrix, {0, 0, 1}, {0, 0, -1});

  x.SetPosition(1, 2, 3);
  x.MoveObject(1, 1, 1);
  Expect_Moves(x.PositionMatrix, {0, 0, 0}, {2, 3, 4});
  x.ScaleMatrix._12 = 5;
  x.AdjustScale(2, 2, 2);
  EXPECT_EQ(x.ScaleMatrix._12, 5.0f);
  x.ScaleMatrix._12 = 0;

  ASSERT_EQ(x.Load_Quiet(dir.path() + "/Objects/ship.x"), "");
  x.SetRotation(0, 1.570795f, 0);
  x.SetPosition(10, 0, 0);
  device.worlds.clear();
  x.Render(&device);
  // (0, 0, 1) scaled to (0, 0, 2), turned to (-2, 0, 0), moved to (8, 0, 0).
  ASSERT_EQ(device.worlds.size(), 1u);
  Expect_Moves(device.worlds[0], {0, 0, 1}, {8, 0, 0});
  // The spin is added on every render.
  x.SpinY = 1.570795f;
  x.Render(&device);
  Expect_Moves(device.worlds.back(), {0, 0, 1}, {10, 0, -2});

  using Fan = std::vector<uint16_t>;
  // Face data, vertices per face (0: each face leads with its count), vertex count, fan (empty: refused).
  const std::tuple<std::vector<int32_t>, int32_t, int32_t, Fan, const char*> fans[] = {
      {{5, 6, 7, 8}, 4, 9, {5, 6, 7, 5, 7, 8}, "quad"},
      {{0, 1, 2, 3, 4}, 5, 5, {0, 1, 2, 0, 2, 3, 0, 3, 4}, "pentagon"},
      {{0, 1, 2, 2, 1, 0, 3, 4, 5, 5, 4, 3}, 3, 6, {0, 1, 2, 2, 1, 0, 3, 4, 5, 5, 4, 3}, "triangles"},
      {{3, 10, 11, 12, 4, 13, 14, 15, 16}, 0, 17, {10, 11, 12, 13, 14, 15, 13, 15, 16}, "counted faces"},
      {{3, 0, 1}, 0, 4, {}, "face runs past the data"},
      {{0, 1, 4}, 3, 4, {}, "index not below the count"},
      {{0, -1, 2}, 3, 4, {}, "negative index"},
      {{-2, 0, 1}, 0, 4, {}, "negative face size"},
      {{0, 1, 2, 3}, 3, 4, {}, "a partial face"}};
  for (const auto& [data, per_face, count, want, what] : fans) {
    Fan out;
    const bool fanned = XFileClass::Append_Fan_Indices(data, per_face, count, out);
    EXPECT_EQ(fanned, !want.empty()) << what;
    EXPECT_EQ(fanned ? out : Fan{}, want) << what;
  }

  EXPECT_EQ(XFileClass::Get_Path("/g/Objects/a.x") + "|" + XFileClass::Get_Path("C:\\game\\a.x") + "|" +
                XFileClass::Get_Path("a.x"),
            "/g/Objects/|C:\\game\\|");
  for (const auto& [name, path] : {std::pair{"..\\\\Textures\\\\Arrow1.bmp", "/g/Objects/../Textures/Arrow1.bmp"},
                                   {"..\\Textures\\Arrow1.bmp", "/g/Objects/../Textures/Arrow1.bmp"},
                                   {".\\\\test.png", "/g/Objects/test.png"},
                                   {"C:\\\\code\\\\data\\\\top.tga", "/g/Objects/top.tga"},
                                   {"/home/x/skin.bmp", "/g/Objects/skin.bmp"}})
    EXPECT_EQ(XFileClass::Texture_Path("/g/Objects/", name), path);
}

using Ship = shipsdat::ShipRecord;

double Top_Speed(const Ship& s) { return 2 * s.Thrust / (s.LinearDrag - s.Thrust); }

// Signed volume of a part's triangles: positive when every closed piece faces outward.
double Volume(const MeshPart& p) {
  double v = 0;
  for (size_t i = 0; i + 2 < p.PartIndices.size(); i += 3) {
    const MeshVertex &a = p.PartVertices[p.PartIndices[i]], &b = p.PartVertices[p.PartIndices[i + 1]],
                     &c = p.PartVertices[p.PartIndices[i + 2]];
    v += double(a.x) * (double(b.y) * c.z - double(b.z) * c.y) + double(a.y) * (double(b.z) * c.x - double(b.x) * c.z) +
         double(a.z) * (double(b.x) * c.y - double(b.y) * c.x);
  }
  return v / 6;
}

TEST(GeneratedShips, RaceableShipsThatFeelDifferentWithMeshesSkinsAndShadowsThatFitTheFootprint) {
  const std::string path = testenv::Game_Dir() + "/Data/Ships.Dat";
  shipsdat::Catalogue cat;
  std::string error;
  ASSERT_TRUE(shipsdat::Load(path, cat, error)) << error;
  const std::vector<Ship>& ships = cat.Ships;
  EXPECT_EQ(testenv::Read_Lines_CRLF(path).size(), 7 * ships.size() + 1) << "CR LF lines, nothing after the last ship";
  ASSERT_GE(ships.size(), 4u);
  std::set<std::string> bases;
  testenv::ScratchAppDir app;
  for (const Ship& s : ships) {
    SCOPED_TRACE(s.BaseName);
    EXPECT_FALSE(s.DisplayName.empty());
    EXPECT_TRUE(bases.insert(s.BaseName).second) << "base names differ";
    EXPECT_GT(s.AngularDrag, 0);
    ASSERT_GT(s.LinearDrag, s.Thrust) << "no top speed";
    EXPECT_PRED3(testenv::Between, 60 * Top_Speed(s) * Top_Speed(s), 140, 310);  // mph
    // Tightest turn of the nose, about angular drag / 0.028 units: must fit curves of radius 80.
    EXPECT_LT(s.AngularDrag / 0.028, 80);
    XFileClass mesh;
    ASSERT_EQ(mesh.Load_Quiet(testenv::Game_Dir() + "/Objects/" + s.BaseName + ".x"), "");
    ASSERT_GE(mesh.GroupCount, 4);
    const Vector3 lo = mesh.BoxMin, hi = mesh.BoxMax;
    // Centred, so the footprint corners round the racer's position match the body.
    EXPECT_NEAR(std::hypot(lo.x + hi.x, lo.z + hi.z), 0, 0.01);
    EXPECT_PRED3(testenv::Between, hi.x - lo.x, 4, 6);
    EXPECT_PRED3(testenv::Between, hi.z - lo.z, 8, 12);
    EXPECT_PRED3(testenv::Between, hi.y - lo.y, 1.8, 3);
    for (const MeshPart& p : mesh.Parts) {
      EXPECT_GT(Volume(p), 0.0) << "a part faces inward";
      EXPECT_NE(p.PartTexture, nullptr) << "the file's skin did not load";
      EXPECT_EQ(p.PartTexture, mesh.Parts[0].PartTexture) << "one skin file, one texture";
      for (const MeshVertex& v : p.PartVertices)
        ASSERT_TRUE(v.tu >= 0 && v.tu <= 1 && v.tv >= 0 && v.tv <= 1) << "uv outside the skin: " << v.tu << "," << v.tv;
    }
    // The glowing nozzles sit at the tail: the nose points along +z.
    const MeshPart& exhaust = mesh.Parts.back();
    ASSERT_FALSE(exhaust.PartVertices.empty());
    for (const MeshVertex& v : exhaust.PartVertices) EXPECT_LT(v.z, 0.6f * lo.z);

    const std::string textures = testenv::Game_Dir() + "/Textures/" + s.BaseName;
    std::set<uint64_t> sums;
    for (int k = 1; k <= 3; ++k) {
      const Surface skin = Create_Texture(textures + std::to_string(k) + ".bmp", 0, 0, 0);
      ASSERT_NE(skin, nullptr);
      EXPECT_EQ(std::pair(skin->Width(), skin->Height()), std::pair(256, 256));
      uint64_t sum = 0;
      for (int y = 0; y < 256; y += 4)
        for (int x = 0; x < 256; x += 4) sum = sum * 31 + (skin->Pixel(x, y) & 0xFFFFFF);
      sums.insert(sum);
    }
    EXPECT_EQ(sums.size(), 3u);

    const Surface shadow = Create_Texture(textures + "shadow.dds", 0, 0, 0);
    ASSERT_NE(shadow, nullptr);
    const int w = shadow->Width(), h = shadow->Height();
    EXPECT_GE(shadow->Pixel(w / 2, h / 2), 0x80000000u);
    EXPECT_EQ(shadow->Pixel(w / 2, h / 2) & 0xFFFFFF, 0u);
    for (const auto& [x, y] : {std::pair{0, 0}, {w - 1, 0}, {0, h - 1}, {w - 1, h - 1}, {0, h / 2}, {w / 2, 0}})
      EXPECT_EQ(shadow->Pixel(x, y) >> 24, 0u);
  }
  // A real trade-off: the fastest ship is not also the quickest off the line.
  const auto fastest = std::ranges::max_element(ships, {}, Top_Speed);
  const auto quickest = std::ranges::max_element(ships, {}, [](const Ship& s) { return s.Thrust / s.Mass; });
  EXPECT_NE(fastest, quickest);
  EXPECT_GT(Top_Speed(*fastest) - Top_Speed(*quickest), 0.2);
}

}  // namespace

TEST(SurfaceTest, DdsDecodesWithinBoundsFilesLoadByExtensionBitmapsScaleKeysFillsAndPointsFollowRulesAndBlitsClip) {
  const std::vector<uint32_t> k1234{0x11111111u, 0x22222222u, 0x33333333u, 0x44444444u};
  // Height, texels, pitch (0: unpadded) and every pixel, rows top to bottom, of an image 2 wide.
  const std::tuple<uint32_t, std::vector<uint16_t>, uint32_t, std::vector<uint32_t>, const char*> images[] = {
      {2, {0x8F00, 0xF0F0, 0x100F, 0x0000}, 0, {0x88FF0000u, 0xFF00FF00u, 0x110000FFu, 0u}, "4 bits a channel"},
      {3, {0x1111, 0x2222, 0x3333}, 0, {k1234[0], k1234[1], k1234[2], 0, 0, 0}, "the second of 3 rows half there"},
      {2, {0x1111, 0x2222, 0x3333, 0x4444}, 4000, k1234, "a pitch far beyond the data: rows read unpadded"},
      {2, {0x1111, 0x2222, 0xDEAD, 0x3333, 0x4444}, 6, k1234, "a padded pitch the data really has"}};
  for (const auto& [height, texels, pitch, want, what] : images) {
    const Surface t = Decode(Dds(2, height, texels, pitch));
    ASSERT_TRUE(t) << what;
    EXPECT_EQ(t->Format(), PixelFormat::A4R4G4B4) << what;
    EXPECT_FALSE(t->Color_Key()) << what;
    std::vector<uint32_t> pixels;
    for (uint32_t i = 0; i < 2 * height; ++i) pixels.push_back(t->Pixel(int(i % 2), int(i / 2)));
    EXPECT_EQ(pixels, want) << what;
  }

  std::string compressed = Dds(1, 1, {1});
  compressed[80] = 0x04;  // four-character-code pixel format
  for (const auto& [what, bytes] : {std::pair{"magic", std::string("XDS ") + Dds(1, 1, {1}).substr(4)},
                                    {"header cut short", Dds(1, 1, {1}).substr(0, 100)},
                                    {"32 bits", Dds(1, 1, {1}, 0, 0x100F, 32)},
                                    {"no width", Dds(0, 4, {})},
                                    {"too tall", Dds(4, 100000, {})},
                                    {"compressed", compressed}})
    EXPECT_FALSE(Decode(bytes)) << what;

  testenv::ScratchAppDir dir;
  const std::string path = dir.path() + "/Gfx/p.bmp";
  testenv::Write_File(path, Bmp(2, 2, {0xFF0000, 0x00FF00, 0x0000FF, 0xFFFFFF}));
  testenv::Write_File(dir.path() + "/Textures/a.DDS", Dds(1, 1, {0xF00F}));
  testenv::Write_File(dir.path() + "/Textures/fake.dds", "BM not a dds at all");
  Surface t = Create_Texture(dir.path() + "\\Textures\\a.DDS", 64, 64, kKeyBlack);
  ASSERT_TRUE(t);
  EXPECT_EQ(t->Width(), 1);  // the file's size, and no colour key on .dds
  EXPECT_FALSE(t->Color_Key());
  EXPECT_FALSE(Create_Texture(dir.path() + "/Textures/fake.dds", 0, 0, 0));
  EXPECT_FALSE(Create_Texture(dir.path() + "/Textures/missing.dds", 0, 0, 0));
  // A texture with only one size given keeps the file's own size.
  t = Create_Texture(path, 0, 64, kKeyNone);
  ASSERT_TRUE(t);
  EXPECT_EQ(std::pair(t->Width(), t->Height()), std::pair(2, 2));
  Surface s;
  ASSERT_TRUE(Create_Surface(s, 4.5, 3.5, path, kKeyNone, kFalse));  // rounds half to even: 4 x 4
  ASSERT_EQ(std::pair(s->Width(), s->Height()), std::pair(4, 4));
  // Enlarged linearly: corners keep their colour, between them a blend a quarter of the way.
  EXPECT_EQ(std::pair(s->Pixel(0, 0), s->Pixel(3, 3)), std::pair(0xFFFF0000u, 0xFFFFFFFFu)) << "the corners";
  EXPECT_EQ(s->Pixel(1, 0), 0xFFBF4000u) << "three quarters red, one quarter green";
  // Shrunk by area: each pixel the mean of the four it covers.
  ASSERT_TRUE(Create_Surface(s, 1, 1, path, kKeyNone, kFalse));
  EXPECT_EQ(s->Pixel(0, 0), 0xFF808080u);

  // A black-keyed row enlarged 2.25 times: the key lands as pixel by pixel would; no other pixel takes in its black.
  testenv::Write_File(path, Bmp(4, 1, {0x000000, 0xFF0000, 0x00FF00, 0x000000}));
  ASSERT_TRUE(Create_Surface(s, 9, 1, path, kKeyBlack, kFalse));
  for (int x = 0; x < 9; ++x) {
    const bool key = x * 4 / 9 == 0 || x * 4 / 9 == 3;
    const uint32_t c = s->Pixel(x, 0);
    EXPECT_EQ((c & 0xFFFFFFu) == 0, key) << "x " << x;
    if (!key) {
      EXPECT_GE(testenv::Red(c) + testenv::Green(c), 254) << "red and green undarkened, x " << x;
    }
  }
  EXPECT_FALSE(Create_Surface(s, 0, 0, dir.path() + "/Gfx/none.bmp", kKeyNone, kFalse));
  EXPECT_FALSE(s);
  testenv::Write_File(dir.path() + "/Gfx/p.bmp", Bmp(1, 1, {0xFF0000}));
  testenv::Write_File(dir.path() + "/Gfx/2x/p.bmp", Bmp(2, 2, {0x00FF00, 0x00FF00, 0x00FF00, 0x00FF00}));
  testenv::Write_File(dir.path() + "/Gfx/q.bmp", Bmp(1, 1, {0x0000FF}));
  for (const auto& [scale, file, argb] :
       {std::tuple{1.0f, "p", 0xFFFF0000u}, std::tuple{2.25f, "p", 0xFF00FF00u}, std::tuple{2.25f, "q", 0xFF0000FFu}}) {
    modMain::ScaleX = modMain::ScaleY = scale;
    ASSERT_TRUE(Create_Surface(s, 3, 3, dir.path() + "\\Gfx\\" + file + ".bmp", kKeyNone, kFalse));
    EXPECT_EQ(s->Pixel(1, 1), argb) << file << " at scale " << scale;
  }
  modMain::ScaleX = modMain::ScaleY = 1.0f;

  for (const auto& [key, argb] : {std::pair<i16, std::optional<uint32_t>>{kKeyMagenta, 0xFFFF00FFu},
                                  {kKeyBlack, 0xFF000000u},
                                  {3, std::nullopt}}) {
    ASSERT_TRUE(Create_Surface(s, 4, 4, "", key, kTrue));
    EXPECT_EQ(s->Color_Key(), argb) << int(key);
  }
  const Surface dds = Decode(Dds(1, 1, {0}));
  dds->Set_Color_Key(0x00FE01FFu);
  EXPECT_EQ(dds->Color_Key(), 0x00FF00FFu) << "held to 4 bits a channel";

  t = Create_Texture("", 2, 2, kKeyNone);
  ASSERT_TRUE(t);
  Fill_Rect(t, -5, -5, 1, 9, 0x80808080u);
  EXPECT_EQ(std::pair(t->Pixel(0, 1), t->Pixel(1, 0)), std::pair(0x80808080u, 0u));
  EXPECT_FALSE(Create_Texture("", 0, 8, kKeyNone));

  const Rect r = Make_Rect(10, 20, 30, 40);
  // Inside: the top left corner and the last pixel; outside: one past each edge.
  const int points[][3] = {{10, 20, kTrue}, {29, 39, kTrue}, {30, 25, 0}, {15, 40, 0}, {9, 25, 0}, {15, 19, 0}};
  for (const auto& [x, y, in] : points) EXPECT_EQ(Point_In_Rect(r, i16(x), i16(y)), in) << x << "," << y;
  modMain::ScreenWidth = 64;
  modMain::ScreenHeight = 48;
  Surface src = platform::Image::Create(32, 8, PixelFormat::X8R8G8B8);
  for (int x = 0; x < 32; ++x)
    for (int y = 0; y < 8; ++y) src->Set_Pixel(x, y, 0x010000u * uint32_t(x + 1) + uint32_t(y));
  Surface dst = platform::Image::Create(64, 48, PixelFormat::X8R8G8B8);
  Blitted b = Blit(dst, src, -10, 5, 0);  // source column 10 lands at x 0
  EXPECT_EQ(std::tuple(int(b.r.left), int(b.x), dst->Pixel(0, 5)), std::tuple(10, 0, 0xFF0B0000u));
  b = Blit(dst, src, 64 - 5, -3, 0);
  EXPECT_EQ(std::tuple(int(b.r.right), int(b.r.top), int(b.y)), std::tuple(5, 3, 0));
  EXPECT_EQ(std::pair(dst->Pixel(59, 0), dst->Pixel(63, 4)), std::pair(0xFF010003u, 0xFF050007u));
  const uint8_t* bytes = platform::Image_Bytes(*dst);
  const std::vector<uint8_t> before(bytes, bytes + 64 * 48 * 4);
  EXPECT_EQ(Blit(dst, src, -40, 30, 0).x, -40);  // nothing drawn, nothing changed
  EXPECT_EQ(std::vector<uint8_t>(bytes, bytes + before.size()), before);
  Blit(dst, src, 10, 30, 2);  // an unknown transparency flag draws nothing
  EXPECT_EQ(dst->Pixel(10, 30), 0xFF000000u);

  Surface keyed;
  ASSERT_TRUE(Create_Surface(keyed, 3, 1, "", kKeyMagenta, kFalse));
  keyed->Set_Pixel(0, 0, 0x00FF00FF);
  keyed->Set_Pixel(1, 0, 0x00123456);
  keyed->Set_Pixel(2, 0, 0x00000000);  // black is not the key here
  Fill_Rect(dst, 0, 40, 8, 48, 0x00777777);
  Blit(dst, keyed, 2, 42, 1);
  EXPECT_EQ((std::array{dst->Pixel(2, 42), dst->Pixel(3, 42), dst->Pixel(4, 42)}),
            (std::array{0xFF777777u, 0xFF123456u, 0xFF000000u}));
  Blit(dst, keyed, 2, 42, 0);
  EXPECT_EQ(dst->Pixel(2, 42), 0xFFFF00FFu);
}

TEST_F(DisplayTest, StartUpStateFontsDeviceTextKeyedClippedBlitsWindingDepthTextureBlendingWrapAndLongStrips) {
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
  const Surface dds = Decode(Dds(2, 2, {0x8F00, 0x8F00, 0x8F00, 0x8F00}));
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
  EXPECT_NEAR(testenv::Red(p), 0x88, 1);
  EXPECT_NEAR(testenv::Blue(p), 0x77, 1);
  EXPECT_EQ(testenv::Green(p), 0);
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

TEST_F(DisplayTest, LitMeshesAreBrighterFacingTheLightAKeptStripSendsOnlyWhatIsInSightAndCullingKeepsAShipsOutside) {
  platform::Device3D& d = *D3DDevice;
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
  EXPECT_NEAR(testenv::Red(At(400, 240)), 150, 2);
  EXPECT_EQ(testenv::Red(At(240, 240)), 255);
  // Halving the material shows the light's share: 0.5 * (150/255 + 0.928) of full scale.
  D3DMaterial half = Material;
  half.diffuse = half.ambient = ColorValue{0.5f, 0.5f, 0.5f, 0};
  d.SetMaterial(half);
  d.DrawGeometry(*mesh, 0, 1);
  EXPECT_NEAR(testenv::Red(At(240, 240)), 193, 3);
  EXPECT_NEAR(testenv::Red(At(400, 240)), 75, 2);

  // Still looking from the origin along +z, now through a narrower lens (the chase camera's, kept for the ship).
  Matrix4 view, projection;
  modMATH::Projection_Matrix(projection, 1, 1000, 0.8f);
  d.SetTransform(platform::TransformKind::Projection, projection);
  Unlit_On_Clear_Screen();
  std::vector<LitVertex> strip;  // 300 triangles from x = -300 to 300, 20 ahead, each rung its own colour
  for (int i = 0; i <= 150; ++i)
    for (const float y : {-2.0f, 2.0f})
      strip.push_back({4.0f * i - 300, y, 20, 0, 0xFF000000u | uint32_t(i * 0x010305)});
  d.DrawPrimitive(platform::Primitive::TriangleStrip, strip.data(), int(strip.size()));
  const std::vector<uint32_t> whole = Read(0, 0, 640, 480);
  EXPECT_GT(whole.size() - size_t(std::ranges::count(whole, whole[0])), 640u * 60) << "the strip crosses the view";
  Clear_Screen();
  const platform::GeometryRef kept = d.MakeGeometry(strip.data(), std::array{int(strip.size())}.data(), 1);
  const uint64_t before = platform::Triangles_Sent();
  d.DrawGeometry(*kept, 0, 1);
  EXPECT_TRUE(Read(0, 0, 640, 480) == whole) << "the kept strip's picture differs";
  EXPECT_LT(platform::Triangles_Sent() - before, 100u) << "pieces out of sight were sent";

  for (const char* folder : {"Objects", "Textures"}) dir_.Copy_From_Game(folder);
  XFileClass ship;
  ASSERT_EQ(ship.Load_Quiet(dir_.path() + "/Objects/Kestrel.x"), "");
  // The ship from behind and above, as the chase camera sees it, with the given culling.
  const auto draw = [&](uint32_t cull) {
    modMATH::View_Matrix(view, Vector3{4, 6, -16}, Vector3{0, 0, 0}, Vector3{0, 1, 0}, 0);
    d.SetTransform(platform::TransformKind::View, view);
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
