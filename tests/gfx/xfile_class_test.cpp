#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <set>
#include <tuple>

#include "core/log.h"
#include "gfx/XFileClass.h"
#include "gfx/mod3Denhance.h"
#include "mathmesh/modMATH.h"
#include "support/recording_device.h"
#include "support/test_env.h"
#include "vehicle/ships_dat.h"

namespace {

// Material 0 (skinned): a quad and a pentagon; material 1 (missing texture): a triangle.
const char* kShip = R"(xof 0303txt 0032
Mesh ship { 7; 0;0;0;, 0;0;1;, 1;0;1;, 1;0;0;, 2;0;1;, 2;0;0;, 3;0;0.5;; 3; 4;0,1,2,3;, 5;3,2,4,6,5;, 3;0,2,3;;
  MeshMaterialList { 2; 3; 0,0,1;;
    Material { 0.9;0.8;0.7;1;; 20; 1;1;1;; 0;0;0;; TextureFilename { "..\\Textures\\Grass.bmp"; } }
    Material { 0.2;0.2;0.2;1;; 0; 0;0;0;; 0;0;0;; TextureFilename { "missing.bmp"; } } } }
)";

Vector3 Apply(const Matrix4& m, Vector3 p) { return modMATH::Transform_Point(p, m); }

void Expect_Near(const Vector3& a, const Vector3& b) {
  EXPECT_LT(std::hypot(a.x - b.x, a.y - b.y, a.z - b.z), 2e-4f) << a.x << "," << a.y << "," << a.z;
}

TEST(XFileClass, LoadFansPolygonsIntoPartsOnlyALoadedMeshDrawsAndRenderScalesRotatesMoves) {
  testenv::ScratchAppDir dir;
  XFileClass x;
  float a = 1, b = 1, c = 1;
  x.GetMinExtent(a, b, c);
  EXPECT_EQ(std::tuple(x.Parts.size(), x.GroupCount, a + b + c), std::tuple(1u, 0, 0.0f));
  RecordingDevice device;
  EXPECT_FALSE(x.Load(dir.path() + "/Objects/ship.x"));
  EXPECT_EQ(x.Loaded, kFalse);
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
  const mod3Denhance::Surface skin = x.Parts[0].PartTexture;
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
  Expect_Near(Apply(x.RotationMatrix, {0, 0, 1}), {-std::sin(0.7f), 0, std::cos(0.7f)});
  EXPECT_NEAR(std::abs(Apply(x.RotationMatrix, {1, 0, 0}).y), std::sin(0.4f), 1e-5f);
  x.SetRotation(0, 1.570795f, 0);
  Expect_Near(Apply(x.RotationMatrix, {0, 0, 1}), {-1, 0, 0});
  x.Rotate(0, 1.570795f, 0);
  Expect_Near(Apply(x.RotationMatrix, {0, 0, 1}), {0, 0, -1});

  x.SetPosition(1, 2, 3);
  x.MoveObject(1, 1, 1);
  Expect_Near(Apply(x.PositionMatrix, {0, 0, 0}), {2, 3, 4});
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
  Expect_Near(Apply(x.WorkMatrix, {0, 0, 1}), {8, 0, 0});
  ASSERT_EQ(device.worlds.size(), 1u);
  Expect_Near(Apply(device.worlds[0], {0, 0, 1}), {8, 0, 0});
  // The spin is added on every render.
  x.SpinY = 1.570795f;
  x.Render(&device);
  Expect_Near(Apply(x.WorkMatrix, {0, 0, 1}), {10, 0, -2});
}

TEST(XFileClass, FansFaceDataRefusesDataThatOverrunsAndResolvesTextureNamesBesideTheMesh) {
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
    EXPECT_EQ(XFileClass::Append_Fan_Indices(data, per_face, count, out), !want.empty()) << what;
    if (!want.empty()) {
      EXPECT_EQ(out, want) << what;
    }
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

bool Between(double v, double lo, double hi) { return v >= lo && v <= hi; }
double Top_Speed(const Ship& s) { return 2 * s.Thrust / (s.LinearDrag - s.Thrust); }
double Pick_Up(const Ship& s) { return s.Thrust / s.Mass; }

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
  for (const Ship& s : ships) {
    SCOPED_TRACE(s.BaseName);
    EXPECT_FALSE(s.DisplayName.empty());
    EXPECT_TRUE(bases.insert(s.BaseName).second) << "base names differ";
    EXPECT_GT(s.AngularDrag, 0);
    ASSERT_GT(s.LinearDrag, s.Thrust) << "no top speed";
    EXPECT_PRED3(Between, 60 * Top_Speed(s) * Top_Speed(s), 140, 310);  // mph
    // Tightest turn of the nose, about angular drag / 0.028 units: must fit curves of radius 80.
    EXPECT_LT(s.AngularDrag / 0.028, 80);
  }
  // A real trade-off: the fastest ship is not also the quickest off the line.
  const auto by = [](double (*f)(const Ship&)) { return [f](const Ship& a, const Ship& b) { return f(a) < f(b); }; };
  const auto fastest = std::max_element(ships.begin(), ships.end(), by(Top_Speed));
  const auto quickest = std::max_element(ships.begin(), ships.end(), by(Pick_Up));
  EXPECT_NE(fastest, quickest);
  EXPECT_GT(Top_Speed(*fastest) - Top_Speed(*quickest), 0.2);

  testenv::ScratchAppDir app;
  for (const Ship& s : ships) {
    SCOPED_TRACE(s.BaseName);
    XFileClass mesh;
    ASSERT_EQ(mesh.Load_Quiet(testenv::Game_Dir() + "/Objects/" + s.BaseName + ".x"), "");
    ASSERT_GE(mesh.GroupCount, 4);
    const Vector3 lo = mesh.BoxMin, hi = mesh.BoxMax;
    // Centred, so the footprint corners round the racer's position match the body.
    EXPECT_NEAR(std::hypot(lo.x + hi.x, lo.z + hi.z), 0, 0.01);
    EXPECT_PRED3(Between, hi.x - lo.x, 4, 6);
    EXPECT_PRED3(Between, hi.z - lo.z, 8, 12);
    EXPECT_PRED3(Between, hi.y - lo.y, 1.8, 3);
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

    // Three distinct liveries of the same size.
    const std::string textures = testenv::Game_Dir() + "/Textures/" + s.BaseName;
    std::set<uint64_t> sums;
    for (int k = 1; k <= 3; ++k) {
      const mod3Denhance::Surface skin = mod3Denhance::Create_Texture(textures + std::to_string(k) + ".bmp", 0, 0, 0);
      ASSERT_NE(skin, nullptr);
      EXPECT_EQ(std::pair(skin->Width(), skin->Height()), std::pair(256, 256));
      uint64_t sum = 0;
      for (int y = 0; y < 256; y += 4)
        for (int x = 0; x < 256; x += 4) sum = sum * 31 + (skin->Pixel(x, y) & 0xFFFFFF);
      sums.insert(sum);
    }
    EXPECT_EQ(sums.size(), 3u);

    // A soft black shadow: dense in the middle, clear at the edges.
    const mod3Denhance::Surface shadow = mod3Denhance::Create_Texture(textures + "shadow.dds", 0, 0, 0);
    ASSERT_NE(shadow, nullptr);
    EXPECT_EQ(shadow->Format(), platform::PixelFormat::A4R4G4B4);
    const int w = shadow->Width(), h = shadow->Height();
    EXPECT_GE(shadow->Pixel(w / 2, h / 2), 0x80000000u);
    EXPECT_EQ(shadow->Pixel(w / 2, h / 2) & 0xFFFFFF, 0u);
    for (const auto& [x, y] : {std::pair{0, 0}, {w - 1, 0}, {0, h - 1}, {w - 1, h - 1}, {0, h / 2}, {w / 2, 0}})
      EXPECT_EQ(shadow->Pixel(x, y) >> 24, 0u);
  }
}

}  // namespace
