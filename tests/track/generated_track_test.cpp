// The generated circuit, loaded as a race loads it: a closed drivable loop, a starting
// grid that puts every racer on blocks 0 and 1, and scenery ordered for drawing.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <filesystem>
#include <set>

#include "../../tools/assetgen/track_params.h"
#include "support/test_env.h"
#include "track/modTracks.h"

using namespace modTracks;

namespace {

class GeneratedTrack : public ::testing::Test {
 protected:
  void SetUp() override {
    app_.Copy_From_Game("Tracks");
    app_.Copy_From_Game("Textures");
    std::string error;
    ASSERT_TRUE(Load_Track(&error)) << error;
    Build_Track_Blocks();
  }
  testenv::ScratchAppDir app_;
};

bool Same_Point(const LitVertex& a, const LitVertex& b) { return a.x == b.x && a.y == b.y && a.z == b.z; }

// Inside a block: behind each of its four edges (normals point out).
bool Inside(const TrackBlockRecord& b, float x, float z) {
  const int through[4] = {0, 1, 2, 0};
  for (int j = 0; j < 4; ++j) {
    const Vector3& c = b.Corner[through[j]];
    if ((x - c.x) * b.EdgeNormal[j].x + (z - c.z) * b.EdgeNormal[j].z >= 0) return false;
  }
  return true;
}

// Turn across one block, back edge to front edge; positive to the right (+z toward +x).
float Heading_Change(int k) {
  const Vector3 a{-TrackBlock(k).EdgeNormal[3].x, 0, -TrackBlock(k).EdgeNormal[3].z};
  const Vector3& b = TrackBlock(k).EdgeNormal[2];
  return std::atan2(a.z * b.x - a.x * b.z, a.x * b.x + a.z * b.z);
}

bool Grouped(const std::vector<int>& textures) {
  std::set<int> done;
  for (size_t i = 0; i < textures.size(); ++i) {
    if (i > 0 && textures[i] == textures[i - 1]) continue;
    if (!done.insert(textures[i]).second) return false;
  }
  return true;
}

}  // namespace

TEST_F(GeneratedTrack, RoadIsOneClosedLoopOfShortEvenBlocks) {
  for (int i = 0; i <= Track.Upper(); ++i) {
    const auto& v = Track(i).Vertices;
    ASSERT_TRUE(v.Count() >= 4 && v.Count() % 2 == 0) << i;
    // Each strip ends on the rung where the next begins; the last one on the start line.
    const auto& next = Track((i + 1) % Track.Count()).Vertices;
    EXPECT_TRUE(Same_Point(v(v.Upper() - 1), next(0)) && Same_Point(v(v.Upper()), next(1))) << "strip " << i;
  }
  double lap = 0, widest_turn = 0;
  for (int k = 0; k < TrackBlock.Count(); ++k) {
    const TrackBlockRecord& b = TrackBlock(k);
    const TrackBlockRecord& n = TrackBlock((k + 1) % TrackBlock.Count());
    for (int j : {2, 3}) EXPECT_TRUE(b.Corner[j].x == n.Corner[j - 2].x && b.Corner[j].z == n.Corner[j - 2].z) << k;
    EXPECT_NEAR(std::hypot(b.Corner[0].x - b.Corner[1].x, b.Corner[0].z - b.Corner[1].z), 2 * trackgen::kHalfWidth,
                0.01) << k;
    EXPECT_TRUE(Inside(b, (b.Corner[0].x + b.Corner[3].x) / 2, (b.Corner[0].z + b.Corner[3].z) / 2)) << k;
    const float mx = (b.Corner[0].x + b.Corner[1].x) / 2 - (b.Corner[2].x + b.Corner[3].x) / 2;
    const float mz = (b.Corner[0].z + b.Corner[1].z) / 2 - (b.Corner[2].z + b.Corner[3].z) / 2;
    lap += std::hypot(mx, mz);
    widest_turn = std::max(widest_turn, std::fabs(static_cast<double>(Heading_Change(k))));
  }
  // A lap takes 30 to 60 s at 2 units per 10 ms; racers steering by block heading need
  // the heading to change only a little from one block to the next.
  EXPECT_GT(lap, 6000);
  EXPECT_LT(lap, 12000);
  EXPECT_LT(widest_turn, 5.0 * 3.14159265 / 180);
  EXPECT_LE(TrackBlock.Count(), kMaxTrackBlocks);
}

TEST_F(GeneratedTrack, HillsAndBanksStayDrivable) {
  float low = 1e9f, high = -1e9f, max_step = 0;
  bool banked = false, level_curve = false;
  for (int k = 0; k < TrackBlock.Count(); ++k) {
    const TrackBlockRecord& b = TrackBlock(k);
    for (const Vector3& c : b.Corner) low = std::min(low, c.y), high = std::max(high, c.y);
    max_step = std::max({max_step, std::fabs(b.Corner[0].y - b.Corner[2].y), std::fabs(b.Corner[1].y - b.Corner[3].y)});
    const float rise = (b.Corner[2].y + b.Corner[3].y - b.Corner[0].y - b.Corner[1].y) / 2;
    const float run = std::hypot(b.Corner[2].x + b.Corner[3].x - b.Corner[0].x - b.Corner[1].x,
                                 b.Corner[2].z + b.Corner[3].z - b.Corner[0].z - b.Corner[1].z) / 2;
    EXPECT_LE(std::fabs(rise) / run, trackgen::kMaxGrade + 0.005) << k;
    // Banks raise the outside of the curve: the left edge on a right-hander.
    const float bank = b.Corner[1].y - b.Corner[0].y, turn = Heading_Change(k);
    if (std::fabs(bank) > 0.5f) {
      EXPECT_GT(bank * turn, 0) << k;
    }
    banked = banked || std::fabs(bank) > 4;
    level_curve = level_curve || (std::fabs(turn) > 0.02f && bank == 0);
  }
  EXPECT_LT(max_step, trackgen::kStepGuard / 2);
  EXPECT_GT(high - low, 30) << "the circuit has hills";
  EXPECT_TRUE(banked);
  EXPECT_TRUE(level_curve);
}

TEST_F(GeneratedTrack, EveryGridSlotStartsOnItsBlockFacingForward) {
  // Placement rule of the racers: block, fz, fx per slot.
  struct Slot {
    int block;
    float fz, fx;
  };
  const Slot slots[7] = {{0, 0.54f, 1.3f}, {0, 0.5f, -0.3f}, {0, 0.46f, 1.3f}, {0, 0.42f, -0.3f},
                         {0, 0.38f, 1.3f}, {1, 0.64f, -0.3f}, {1, 0.6f, 1.3f}};
  // The start line lies at z = 0 and the road runs toward +z there.
  for (int j : {0, 1}) EXPECT_EQ(TrackBlock(0).Corner[j].z, 0);
  for (int k : {0, 1}) {
    EXPECT_FLOAT_EQ(TrackBlock(k).EdgeNormal[3].x, 0);
    EXPECT_FLOAT_EQ(TrackBlock(k).EdgeNormal[3].z, -1);
  }
  // A roomier footprint than the ships (about 2.5 by 5 half-extents) for margin.
  const float hw = 3.0f, hl = 6.0f;
  float px[7], pz[7];
  for (int s = 0; s < 7; ++s) {
    const TrackBlockRecord& b = TrackBlock(slots[s].block);
    px[s] = (b.Corner[0].x + b.Corner[3].x) * slots[s].fx;
    pz[s] = (b.Corner[0].z + b.Corner[3].z) * slots[s].fz;
    for (float dx : {-hw, hw})
      for (float dz : {-hl, hl}) EXPECT_TRUE(Inside(b, px[s] + dx, pz[s] + dz)) << "slot " << s;
  }
  for (int a = 0; a < 7; ++a)
    for (int c = a + 1; c < 7; ++c)
      EXPECT_TRUE(std::fabs(px[a] - px[c]) >= 5 || std::fabs(pz[a] - pz[c]) >= 10) << a << " and " << c;
}

TEST_F(GeneratedTrack, ScenerySortedByTextureAndEveryTextureLoads) {
  std::vector<int> walls, grass, road;
  for (int i = 0; i <= TrackWalls.Upper(); ++i) walls.push_back(TrackWalls(i).TextureIndex);
  for (int i = 0; i <= Grass.Upper(); ++i) grass.push_back(Grass(i).TextureIndex);
  for (int i = 0; i <= Track.Upper(); ++i) road.push_back(Track(i).TextureIndex);
  EXPECT_TRUE(Grouped(walls));
  EXPECT_TRUE(Grouped(grass));
  EXPECT_EQ(std::count(road.begin(), road.end(), road[0]), 1) << "the start strip has its own texture";
  EXPECT_EQ(TrackSector.Count(), Track.Count());

  bool glass = false, opaque = false;
  for (int t : walls) {
    const std::string& name = TrackTexture(t).TextureName;
    (name.ends_with(".dds") ? glass : opaque) = true;
  }
  EXPECT_TRUE(glass && opaque) << "some walls are see-through, some are not";

  for (int i = 0; i <= TrackTexture.Upper(); ++i) {
    const auto& tex = TrackTexture(i).Texture;
    ASSERT_TRUE(tex) << TrackTexture(i).TextureName;
    EXPECT_TRUE(std::has_single_bit(unsigned(tex->Width())) && std::has_single_bit(unsigned(tex->Height())))
        << TrackTexture(i).TextureName;
    if (TrackTexture(i).TextureName.ends_with(".dds")) {
      int clear = 0;
      for (int y = 0; y < tex->Height(); ++y)
        for (int x = 0; x < tex->Width(); ++x) clear += (tex->Pixel(x, y) >> 12) < 15;
      EXPECT_GT(clear, tex->Width() * tex->Height() / 2) << "glass is mostly see-through";
    }
  }

  // Only the first ground strip is drawn, so it must reach well past the road.
  float road_min = 1e9f, road_max = -1e9f, ground_min = 1e9f, ground_max = -1e9f;
  for (const TrackStrip& s : Track.Items())
    for (const LitVertex& v : s.Vertices.Items()) road_min = std::min({road_min, v.x, v.z}), road_max = std::max({road_max, v.x, v.z});
  for (const LitVertex& v : Grass(0).Vertices.Items())
    ground_min = std::min({ground_min, v.x, v.z}), ground_max = std::max({ground_max, v.x, v.z});
  EXPECT_LT(ground_min, road_min - 1000);
  EXPECT_GT(ground_max, road_max + 1000);
}
