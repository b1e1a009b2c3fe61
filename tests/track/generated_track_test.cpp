// The generated circuit, loaded as a race loads it: a closed drivable loop and scenery
// ordered for drawing (the racers' simulation starts every racer on it).
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
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
    const Vector3 &c = b.Corner[through[j]], &n = b.EdgeNormal[j];
    if ((x - c.x) * n.x + (z - c.z) * n.z >= 0) return false;
  }
  return true;
}

// Turn across one block, back edge to front edge; positive to the right (+z toward +x).
float Heading_Change(int k) {
  const Vector3 &back = TrackBlock(k).EdgeNormal[3], &b = TrackBlock(k).EdgeNormal[2];
  return std::atan2(b.z * back.x - back.z * b.x, -back.x * b.x - back.z * b.z);
}

// Strips of one texture sit together, so drawing switches texture once per texture.
bool Grouped(const IndexedArray<TrackStrip>& strips) {
  std::vector<int> runs;
  for (const TrackStrip& s : strips.Items())
    if (runs.empty() || runs.back() != s.TextureIndex) runs.push_back(s.TextureIndex);
  return std::set<int>(runs.begin(), runs.end()).size() == runs.size();
}

}  // namespace

TEST_F(GeneratedTrack, RoadIsOneClosedLoopOfShortEvenBlocksWithDrivableHillsAndBanks) {
  // Each strip ends on the rung where the next begins; the last one on the start line.
  for (int i = 0; i <= Track.Upper(); ++i) {
    const auto &v = Track(i).Vertices, &next = Track((i + 1) % Track.Count()).Vertices;
    EXPECT_TRUE(Same_Point(v(v.Upper() - 1), next(0))) << "strip " << i << ", first point";
    EXPECT_TRUE(Same_Point(v(v.Upper()), next(1))) << "strip " << i << ", second point";
  }
  double lap = 0, widest_turn = 0;
  float low = 1e9f, high = -1e9f, max_step = 0;
  bool banked = false, level_curve = false;
  for (int k = 0; k < TrackBlock.Count(); ++k) {
    const Vector3 *c = TrackBlock(k).Corner, *n = TrackBlock((k + 1) % TrackBlock.Count()).Corner;
    for (int j : {2, 3}) EXPECT_EQ(std::pair(c[j].x, c[j].z), std::pair(n[j - 2].x, n[j - 2].z)) << k;
    EXPECT_NEAR(std::hypot(c[0].x - c[1].x, c[0].z - c[1].z), 2 * trackgen::kHalfWidth, 0.01) << k;
    EXPECT_TRUE(Inside(TrackBlock(k), (c[0].x + c[3].x) / 2, (c[0].z + c[3].z) / 2)) << k;
    const float run = std::hypot(c[2].x + c[3].x - c[0].x - c[1].x, c[2].z + c[3].z - c[0].z - c[1].z) / 2;
    const float rise = (c[2].y + c[3].y - c[0].y - c[1].y) / 2, bank = c[1].y - c[0].y, turn = Heading_Change(k);
    EXPECT_LE(std::fabs(rise) / run, trackgen::kMaxGrade + 0.005) << k;
    // Banks raise the outside of the curve: the left edge on a right-hander.
    EXPECT_TRUE(std::fabs(bank) <= 0.5f || bank * turn > 0) << k;
    banked = banked || std::fabs(bank) > 4;
    level_curve = level_curve || (std::fabs(turn) > 0.02f && bank == 0);
    lap += run;
    widest_turn = std::max(widest_turn, std::fabs(double(turn)));
    for (int j = 0; j < 4; ++j) low = std::min(low, c[j].y), high = std::max(high, c[j].y);
    max_step = std::max({max_step, std::fabs(c[0].y - c[2].y), std::fabs(c[1].y - c[3].y)});
  }
  // A lap takes 30 to 60 s at 2 units per 10 ms; racers steering by block heading need
  // the heading to change only a little from one block to the next, and a corner rubbing
  // the outer wall slips past the next block's bent-in edge by its move times that kink.
  EXPECT_GT(lap, 6000);
  EXPECT_LT(lap, 12000);
  EXPECT_LT(widest_turn, 3.5 * 3.14159265 / 180);
  EXPECT_LT(max_step, trackgen::kStepGuard / 2);
  EXPECT_GT(high - low, 30) << "the circuit has hills";
  EXPECT_TRUE(banked);
  EXPECT_TRUE(level_curve);
}

TEST_F(GeneratedTrack, ScenerySortedByTextureAndEveryTextureLoads) {
  EXPECT_TRUE(Grouped(TrackWalls));
  EXPECT_TRUE(Grouped(Grass));
  const std::vector<TrackStrip>& road = Track.Items();
  EXPECT_EQ(std::ranges::count(road, road[0].TextureIndex, &TrackStrip::TextureIndex), 1)
      << "the start strip has its own texture";
  EXPECT_EQ(Sectors().Count(), Track.Count());
  bool glass = false, opaque = false;
  for (const TrackStrip& w : TrackWalls.Items())
    (TrackTexture(w.TextureIndex).TextureName.ends_with(".dds") ? glass : opaque) = true;
  EXPECT_TRUE(glass) << "some walls are see-through";
  EXPECT_TRUE(opaque) << "some are not";

  for (const TextureEntry& t : TrackTexture.Items()) {
    ASSERT_TRUE(t.Texture) << t.TextureName;
    const int w = t.Texture->Width(), h = t.Texture->Height();
    EXPECT_TRUE(std::has_single_bit(unsigned(w))) << t.TextureName << " width " << w;
    EXPECT_TRUE(std::has_single_bit(unsigned(h))) << t.TextureName << " height " << h;
    if (!t.TextureName.ends_with(".dds")) continue;
    int clear = 0;
    for (int i = 0; i < w * h; ++i) clear += (t.Texture->Pixel(i % w, i / w) >> 28) < 15;
    EXPECT_GT(clear, w * h / 2) << t.TextureName << ": glass is mostly see-through";
  }

  // Only the first ground strip is drawn, so it must reach well past the road.
  float lo = 1e9f, hi = -1e9f;
  for (const LitVertex& v : Grass(0).Vertices.Items()) lo = std::min({lo, v.x, v.z}), hi = std::max({hi, v.x, v.z});
  for (const TrackStrip& s : road)
    for (const LitVertex& v : s.Vertices.Items()) {
      ASSERT_GT(std::min(v.x, v.z), lo + 1000) << v.x << ", " << v.z;
      ASSERT_LT(std::max(v.x, v.z), hi - 1000) << v.x << ", " << v.z;
    }
}
