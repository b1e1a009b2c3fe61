// The generated ships: a raceable, varied catalogue; meshes, skins and shadows that fit the footprint.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <set>
#include <string>
#include <vector>

#include "gfx/XFileClass.h"
#include "gfx/mod3Denhance.h"
#include "support/test_env.h"
#include "vehicle/ships_dat.h"

namespace {

using Ship = shipsdat::ShipRecord;

bool Between(double v, double lo, double hi) { return v >= lo && v <= hi; }
double Top_Speed(const Ship& s) { return 2 * s.Thrust / (s.LinearDrag - s.Thrust); }
double Pick_Up(const Ship& s) { return s.Thrust / s.Mass; }

// The generated catalogue; its lines end in CR LF and nothing follows the last ship.
std::vector<Ship> Catalogue() {
  const std::string path = testenv::Game_Dir() + "/Data/Ships.Dat";
  shipsdat::Catalogue cat;
  std::string error;
  EXPECT_TRUE(shipsdat::Load(path, cat, error)) << error;
  EXPECT_EQ(testenv::Read_Lines_CRLF(path).size(), 7 * cat.Ships.size() + 1);
  return cat.Ships;
}

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

TEST(GeneratedShips, CatalogueGivesRaceableShipsThatFeelDifferent) {
  const std::vector<Ship> ships = Catalogue();
  ASSERT_GE(ships.size(), 4u);
  std::set<std::string> bases;
  for (const Ship& s : ships) {
    SCOPED_TRACE(s.BaseName);
    EXPECT_TRUE(!s.DisplayName.empty() && bases.insert(s.BaseName).second) << "names present, base names differ";
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
}

TEST(GeneratedShips, MeshesLoadWithSkinsAndFitTheFootprint) {
  testenv::ScratchAppDir app;
  const std::vector<Ship> ships = Catalogue();
  ASSERT_FALSE(ships.empty());
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
      for (const MeshVertex& v : p.PartVertices) ASSERT_TRUE(v.tu >= 0 && v.tu <= 1 && v.tv >= 0 && v.tv <= 1);
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
        for (int x = 0; x < 256; x += 4) sum = sum * 31 + (skin->Argb(x, y) & 0xFFFFFF);
      sums.insert(sum);
    }
    EXPECT_EQ(sums.size(), 3u);

    // A soft black shadow: dense in the middle, clear at the edges.
    const mod3Denhance::Surface shadow = mod3Denhance::Create_Texture(textures + "shadow.dds", 0, 0, 0);
    ASSERT_NE(shadow, nullptr);
    EXPECT_EQ(shadow->Format(), platform::PixelFormat::A4R4G4B4);
    const int w = shadow->Width(), h = shadow->Height();
    EXPECT_GE(shadow->Argb(w / 2, h / 2), 0x80000000u);
    EXPECT_EQ(shadow->Argb(w / 2, h / 2) & 0xFFFFFF, 0u);
    for (const auto& [x, y] : {std::pair{0, 0}, {w - 1, 0}, {0, h - 1}, {w - 1, h - 1}, {0, h / 2}, {w / 2, 0}})
      EXPECT_EQ(shadow->Argb(x, y) >> 24, 0u);
  }
}

}  // namespace
