// The generated ships: catalogue numbers that make a raceable, varied field, and meshes,
// skins and shadows that load and fit the racer's footprint.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <set>
#include <string>
#include <vector>

#include "core/numbers.h"
#include "gfx/mod3Denhance.h"
#include "mathmesh/XFileClass.h"
#include "support/test_env.h"

namespace {

struct Ship {
  std::string name, base;
  double mass, inertia, thrust, linear_drag, angular_drag;
  double Top_Speed() const { return 2 * thrust / (linear_drag - thrust); }
  double Pick_Up() const { return thrust / mass; }
};

std::vector<Ship> Catalogue() {
  const std::vector<std::string> lines = testenv::Read_Lines_CRLF(testenv::Game_Dir() + "/Data/Ships.Dat");
  std::vector<Ship> ships;
  if (lines.empty()) return ships;
  const int n = int(numbers::Leading_Number(lines[0].substr(0, 3)));
  for (int k = 0; k < n && size_t(7 * k + 7) < lines.size(); ++k) {
    const auto num = [&](int i) { return numbers::Leading_Number(lines[size_t(7 * k + i)]); };
    ships.push_back({lines[size_t(7 * k + 1)], lines[size_t(7 * k + 2)], num(3), num(4), num(5), num(6), num(7)});
  }
  EXPECT_EQ(int(ships.size()), n);
  EXPECT_EQ(lines.size(), size_t(7 * n + 1));
  return ships;
}

// Signed volume of a part's triangles: positive when every closed piece faces outward.
double Volume(const MeshPart& p) {
  double v = 0;
  for (size_t i = 0; i + 2 < p.PartIndices.size(); i += 3) {
    const MeshVertex& a = p.PartVertices[p.PartIndices[i]];
    const MeshVertex& b = p.PartVertices[p.PartIndices[i + 1]];
    const MeshVertex& c = p.PartVertices[p.PartIndices[i + 2]];
    v += (double(a.x) * (double(b.y) * c.z - double(b.z) * c.y) - double(a.y) * (double(b.x) * c.z - double(b.z) * c.x) +
          double(a.z) * (double(b.x) * c.y - double(b.y) * c.x)) / 6;
  }
  return v;
}

TEST(GeneratedShips, CatalogueGivesRaceableShipsThatFeelDifferent) {
  const std::vector<Ship> ships = Catalogue();
  ASSERT_GE(ships.size(), 4u);
  std::set<std::string> bases;
  for (const Ship& s : ships) {
    SCOPED_TRACE(s.base);
    EXPECT_FALSE(s.name.empty());
    EXPECT_TRUE(bases.insert(s.base).second) << "base names must differ";
    EXPECT_GT(s.mass, 0);
    EXPECT_GT(s.inertia, 0);
    EXPECT_GT(s.angular_drag, 0);
    ASSERT_GT(s.linear_drag, s.thrust) << "no top speed";
    const double mph = 60 * s.Top_Speed() * s.Top_Speed();
    EXPECT_GE(mph, 140);
    EXPECT_LE(mph, 310);
    // Tightest turn of the nose, about angular drag / 0.028 units: must fit curves of radius 80.
    EXPECT_LT(s.angular_drag / 0.028, 80);
  }
  // A real trade-off: the fastest ship is not also the quickest off the line.
  const auto fastest = std::max_element(ships.begin(), ships.end(),
                                        [](const Ship& a, const Ship& b) { return a.Top_Speed() < b.Top_Speed(); });
  const auto quickest = std::max_element(ships.begin(), ships.end(),
                                         [](const Ship& a, const Ship& b) { return a.Pick_Up() < b.Pick_Up(); });
  EXPECT_NE(fastest, quickest);
  EXPECT_GT(fastest->Top_Speed() - quickest->Top_Speed(), 0.2);
}

TEST(GeneratedShips, MeshesLoadWithSkinsAndFitTheFootprint) {
  testenv::ScratchAppDir app;
  const std::vector<Ship> ships = Catalogue();
  ASSERT_FALSE(ships.empty());
  for (const Ship& s : ships) {
    SCOPED_TRACE(s.base);
    XFileClass mesh;
    ASSERT_EQ(mesh.Load_Quiet(testenv::Game_Dir() + "/Objects/" + s.base + ".x"), "");
    ASSERT_GE(mesh.GroupCount, 4);
    const Vector3 lo = mesh.BoxMin, hi = mesh.BoxMax;
    // Centred, so the footprint corners round the racer's position match the body.
    EXPECT_NEAR(lo.x + hi.x, 0, 0.01);
    EXPECT_NEAR(lo.z + hi.z, 0, 0.01);
    EXPECT_GE(hi.x - lo.x, 4.0f);
    EXPECT_LE(hi.x - lo.x, 6.0f);
    EXPECT_GE(hi.z - lo.z, 8.0f);
    EXPECT_LE(hi.z - lo.z, 12.0f);
    EXPECT_GE(hi.y - lo.y, 1.8f);
    EXPECT_LE(hi.y - lo.y, 3.0f);
    for (const MeshPart& p : mesh.Parts) {
      EXPECT_GT(Volume(p), 0.0) << "a part faces inward";
      EXPECT_NE(p.PartTexture, nullptr) << "the file's skin did not load";
      EXPECT_EQ(p.PartTexture, mesh.Parts[0].PartTexture) << "one skin file, one texture";
      for (const MeshVertex& v : p.PartVertices) {
        ASSERT_TRUE(v.tu >= 0 && v.tu <= 1 && v.tv >= 0 && v.tv <= 1);
      }
    }
    // The glowing nozzles sit at the tail: the nose points along +z.
    const MeshPart& exhaust = mesh.Parts.back();
    ASSERT_FALSE(exhaust.PartVertices.empty());
    for (const MeshVertex& v : exhaust.PartVertices) EXPECT_LT(v.z, 0.6f * lo.z);

    // Three distinct liveries of the same size.
    std::set<uint64_t> sums;
    for (int k = 1; k <= 3; ++k) {
      const mod3Denhance::Surface skin =
          mod3Denhance::Create_Texture(testenv::Game_Dir() + "/Textures/" + s.base + std::to_string(k) + ".bmp", 0, 0, 0);
      ASSERT_NE(skin, nullptr);
      EXPECT_EQ(skin->Width(), 256);
      EXPECT_EQ(skin->Height(), 256);
      uint64_t sum = 0;
      for (int y = 0; y < 256; y += 4)
        for (int x = 0; x < 256; x += 4) sum = sum * 31 + (skin->Argb(x, y) & 0xFFFFFF);
      sums.insert(sum);
    }
    EXPECT_EQ(sums.size(), 3u);

    // A soft black shadow: dense in the middle, clear at the edges.
    const mod3Denhance::Surface shadow =
        mod3Denhance::Create_Texture(testenv::Game_Dir() + "/Textures/" + s.base + "shadow.dds", 0, 0, 0);
    ASSERT_NE(shadow, nullptr);
    EXPECT_EQ(shadow->Format(), platform::PixelFormat::A4R4G4B4);
    const int w = shadow->Width(), h = shadow->Height();
    EXPECT_GE(shadow->Argb(w / 2, h / 2) >> 24, 0x80u);
    EXPECT_EQ(shadow->Argb(w / 2, h / 2) & 0xFFFFFF, 0u);
    for (const auto& [x, y] : {std::pair{0, 0}, {w - 1, 0}, {0, h - 1}, {w - 1, h - 1}, {0, h / 2}, {w / 2, 0}})
      EXPECT_EQ(shadow->Argb(x, y) >> 24, 0u);
  }
}

}  // namespace
