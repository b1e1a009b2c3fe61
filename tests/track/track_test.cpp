// The track file reader and block builder on small hand-made files, then the generated circuit as a race loads it.
#include <bit>
#include <limits>
#include <set>

#include "../../tools/assetgen/track_params.h"
#include "app/game_script.h"

using namespace modTracks;
using namespace vehicle_test;

namespace {

using Points = std::vector<std::pair<float, float>>;

// Track file bytes written field by field, so a test can break any one of them.
struct FileBytes {
  std::string b;
  FileBytes& Bytes(const std::string& s) {
    b += s;
    return *this;
  }
  template <class T>
  FileBytes& Raw(T v) {
    return Bytes(std::string(reinterpret_cast<const char*>(&v), sizeof v));
  }
  FileBytes& I16(int v) { return Raw(static_cast<int16_t>(v)); }
  FileBytes& I32(long long v) { return Raw(static_cast<int32_t>(v)); }
  FileBytes& Fill(size_t n, char c) { return Bytes(std::string(n, c)); }
  FileBytes& Text(const std::string& s) { return I16(static_cast<int>(s.size())).Bytes(s); }
  // A strip of (x, z) points at height 1, with dimension count and lower bound as given.
  FileBytes& Strip(const Points& xz, int texture, int dims = 1, int lower = 0) {
    I16(dims).I32(static_cast<long long>(xz.size())).I32(lower);
    for (auto [x, z] : xz) Raw(x).Raw(1.0f).Raw(z).I32(0).I32(0xFFFFFFFFll).I32(0).Raw(0.5f).Raw(0.25f);
    return I16(texture);
  }
  // 16 fixed bytes, then three lists of two entries from index 5.
  FileBytes& Sector() {
    Fill(16, 7);
    for (int i = 0; i < 3; ++i) I16(1).I32(2).I32(5).I16(100 + i).I16(-3);
    return *this;
  }
  // One sector and one texture name: a good end to a file.
  FileBytes& End() { return I32(0).Sector().I32(0).Text("a.bmp"); }
};

const Points kSquare = {{10, 0}, {0, 0}, {10, 10}, {0, 10}};

// Road: strips of 6 and 4 vertices; a grass strip; no walls (-1 still stores a record); a sector; two texture names.
std::string Small_Track() {
  FileBytes f;
  f.Text("test header").I32(1).Strip({{10, 0}, {0, 0}, {10, 10}, {0, 10}, {10, 20}, {0, 20}}, 0);
  f.Strip({{10, 20}, {0, 20}, {10, 30}, {0, 30}}, 1).I32(0).Strip(kSquare, 1).I32(-1).Strip({{1, 1}}, 99);
  return f.I32(0).Sector().I32(1).Text("Road.BMP").Text("glass.dds").b;
}

// A file up to the sectors: a road of the one strip given, empty grass and walls.
FileBytes Road(const Points& road = kSquare, int texture = 0, int dims = 1, int lower = 0) {
  return FileBytes().Text("h").I32(0).Strip(road, texture, dims, lower).I32(0).Strip({}, 0).I32(-1).Strip({}, 0);
}

// What is left of a loaded track beyond the one empty record of each list.
std::string Left_Over() {
  std::string left;
  if (Track.Count() != 1 || Track(0).Vertices.Count() != 0) left += " road";
  if (TrackTexture.Count() != 1 || !TrackTexture(0).TextureName.empty()) left += " textures";
  if (TrackBlock.Count() != 1) left += " blocks";
  return left;
}

bool Same_Point(const LitVertex& a, const LitVertex& b) { return a.x == b.x && a.y == b.y && a.z == b.z; }

// Strips of one texture sit together, so drawing switches texture once per texture.
bool Grouped(const IndexedArray<TrackStrip>& strips) {
  std::vector<int> runs;
  for (const TrackStrip& s : strips.Items())
    if (runs.empty() || runs.back() != s.TextureIndex) runs.push_back(s.TextureIndex);
  return std::set<int>(runs.begin(), runs.end()).size() == runs.size();
}

}  // namespace

TEST(TrackFile, CountsAreUpperIndicesBlocksNumberAcrossStripsAndBrokenOrCutFilesAreRefusedNamingTheFault) {
  std::string error;
  ASSERT_TRUE(Load_Track_From_Bytes(Small_Track(), "mem.MXT", &error)) << error;
  EXPECT_EQ(std::tuple(Track.Lower(), Track.Upper(), Grass.Upper()), std::tuple(0, 1, 0));  // a count of 0: one record
  EXPECT_EQ(std::tuple(Track(0).Vertices.Count(), Track(1).TextureIndex, Track(0).Vertices(0).tv),
            std::tuple(6, 1, 0.25f));
  // -1 walls: one record consumed and kept at index -1, so what follows still lines up.
  EXPECT_EQ(std::tuple(TrackWalls.Lower(), TrackWalls.Upper(), TrackWalls(-1).TextureIndex), std::tuple(-1, -1, 99));
  ASSERT_EQ(std::pair(Sectors().Count(), TrackTexture.Upper()), std::pair(1, 1));
  const auto& list = Sectors()(0).Lists[2];
  EXPECT_EQ((std::array{int(Sectors()(0).Fixed[15]), list.Lower(), int(list(5)), int(list(6))}),
            (std::array{7, 5, 102, -3}));
  EXPECT_EQ(TrackTexture(0).TextureName + TrackTexture(1).TextureName, "Road.BMPglass.dds");  // exactly as stored
  EXPECT_FALSE(TrackTexture(0).Texture);  // bytes-only loads create no textures

  Build_Track_Blocks();
  ASSERT_EQ(TrackBlock.Upper(), 2);
  const auto z = [](int k, int j) { return TrackBlock(k).Corner[j].z; };  // block 2 is Track(1)'s first quad
  EXPECT_EQ((std::array{z(1, 0), z(1, 3), z(2, 0), z(2, 3), TrackBlock(2).Corner[3].y}),
            (std::array{10.0f, 20.0f, 20.0f, 30.0f, 1.0f}));

  // An empty sector list may start at any index, even the extremes.
  FileBytes f = Road().I32(0).Fill(16, 0).I16(1).I32(0).I32(std::numeric_limits<int32_t>::min());
  f.I16(1).I32(0).I32(std::numeric_limits<int32_t>::max()).I16(1).I32(1).I32(-9).I16(42).I32(0).Text("a.bmp");
  ASSERT_TRUE(Load_Track_From_Bytes(f.b, "mem.MXT", &error)) << error;
  for (int i : {0, 1}) EXPECT_LT(Sectors()(0).Lists[i].Upper(), Sectors()(0).Lists[i].Lower()) << i;
  EXPECT_EQ(Sectors()(0).Lists[2](-9), 42);

  Points long_road;  // more blocks than a racer's 16-bit block number can count
  for (int r = 0; r <= kMaxTrackBlocks + 1; ++r) long_road.insert(long_road.end(), {{10, float(r)}, {0, float(r)}});
  const auto h = [] { return FileBytes().Text("h"); };
  const std::tuple<const char*, std::string, const char*> cases[] = {
      {"odd road count", Road({{0, 0}, {1, 0}, {0, 1}, {1, 1}, {0, 2}}).End().b, ""},
      {"road of one rung", Road({{0, 0}, {1, 0}}).End().b, ""},
      {"texture index past the table", Road(kSquare, 1).End().b, ""},
      {"two-dimensional strip", Road(kSquare, 0, 2).End().b, ""},
      {"vertices not from 0", Road(kSquare, 0, 1, 1).End().b, ""},
      {"NaN coordinate", Road({{0, 0}, {1, 0}, {0, std::nanf("")}, {1, 1}}).End().b, ""},
      {"too many blocks", Road(long_road).End().b, "32768 blocks"},
      {"huge section count", h().I32(0x7FFFFFFF).Strip(kSquare, 0).b, ""},
      {"huge vertex count", h().I32(0).I16(1).I32(0x7FFFFFFF).I32(0).I16(0).b, ""},
      {"grass count -1", h().I32(0).Strip(kSquare, 0).I32(-1).Strip(kSquare, 0).b, ""},
      {"wall count -2", h().I32(0).Strip(kSquare, 0).I32(0).Strip({}, 0).I32(-2).b, ""},
      // Enough bytes left for a sector's smallest size, so the list itself is what fails.
      {"huge sector list", Road().I32(0).Fill(16, 0).I16(1).I32(0x40000000).I32(0).Fill(40, 0).b, "list of"},
      {"sector index overflow", Road().I32(0).Fill(16, 0).I16(1).I32(2).I32(0x7FFFFFFF).Fill(44, 0).b, "overflows"},
      {"name longer than the file", Road().I32(0).Sector().I32(0).I16(200).Text("x").b, ""},
  };
  for (const auto& [fault, bytes, says] : cases) {
    ASSERT_TRUE(Load_Track_From_Bytes(Small_Track(), "mem.MXT"));
    std::string error;
    EXPECT_FALSE(Load_Track_From_Bytes(bytes, "mem.MXT", &error)) << fault;
    EXPECT_EQ(error.rfind("Track file mem.MXT: ", 0), 0u) << fault << ": " << error;
    EXPECT_NE(error.find(says), std::string::npos) << fault << ": " << error;
    EXPECT_EQ(Left_Over(), "") << fault << ": nothing of the earlier track may survive";
  }
  const std::string whole = Small_Track();
  for (size_t n = 0; n < whole.size(); ++n) {
    std::string error;
    ASSERT_FALSE(Load_Track_From_Bytes(std::string_view(whole).substr(0, n), "cut.MXT", &error)) << n;
    EXPECT_NE(error.find("left"), std::string::npos) << n << ": " << error;
  }
}

TEST(TrackBlocks, NormalsPointOutAndExtremeCornersKeepTheLowerIndexOnTies) {
  const auto extremes = [](const TrackBlockRecord& b) {
    return std::array<int, 4>{b.MinXCorner, b.MinZCorner, b.MaxXCorner, b.MaxZCorner};
  };
  // A lone rung makes no block. Racing toward +x the right-hand side is -z; the skewed quad widens at the front.
  Track.Items() = {Strip(kSquare), Strip({{5, 5}, {3, 5}}), Strip({{0, -2}, {0, 2}, {4, -5}, {4, 5}})};
  Build_Track_Blocks();
  ASSERT_EQ(TrackBlock.Count(), 2);

  const TrackBlockRecord& sq = TrackBlock(0);
  EXPECT_EQ(extremes(sq), (std::array{1, 0, 0, 2}));
  const float want[4][2] = {{1, 0}, {-1, 0}, {0, 1}, {0, -1}};
  for (int j = 0; j < 4; ++j)
    EXPECT_LT(std::fabs(sq.EdgeNormal[j].x - want[j][0]) + std::fabs(sq.EdgeNormal[j].z - want[j][1]), 1e-6f) << j;
  // Every normal is a unit vector pointing away from the quad's centre (2, 0).
  const TrackBlockRecord& sk = TrackBlock(1);
  for (int j = 0; j < 4; ++j) {
    const Vector3 &n = sk.EdgeNormal[j], &c = sk.Corner[j % 3];  // corner on edge j
    EXPECT_NEAR(std::hypot(n.x, n.z), 1.0, 1e-6) << j;
    EXPECT_GT((c.x - 2) * n.x + c.z * n.z, 0) << j;
  }
  EXPECT_EQ(extremes(sk), (std::array{0, 2, 2, 3}));  // corners 0 and 1 tie on x = 0

  Track.Items() = {Strip({{5, 5}, {3, 5}})};  // no block at all: the list keeps one zeroed element
  Build_Track_Blocks();
  EXPECT_EQ(std::pair(TrackBlock.Count(), TrackBlock(0).Corner[3].x), std::pair(1, 0.0f));
}

TEST(TrackFile, LoadsFromTheGameFolderAndTeardownReleasesAndLogs) {
  testenv::ScratchAppDir app;
  modMain::Create_Log();
  std::string error;
  EXPECT_FALSE(Load_Track(&error));
  EXPECT_NE(error.find(app.path() + "/Tracks/test.MXT: cannot be opened"), std::string::npos) << error;

  testenv::Write_File(app.path() + "/Tracks/test.MXT", Small_Track());
  app.Copy_From_Game("Textures/Road.bmp");
  std::rename((app.path() + "/Textures/Road.bmp").c_str(), (app.path() + "/Textures/Road.BMP").c_str());
  ASSERT_TRUE(Load_Track(&error)) << error;
  ASSERT_TRUE(TrackTexture(0).Texture) << "Textures/Road.BMP exists";
  EXPECT_FALSE(TrackTexture(1).Texture) << "glass.dds does not";
  const std::weak_ptr<platform::Image> road = TrackTexture(0).Texture;

  Clear_Track();
  EXPECT_TRUE(road.expired());
  EXPECT_EQ(Left_Over(), "");
  EXPECT_EQ(TrackWalls.Lower(), 0);
  EXPECT_EQ(testenv::Read_Lines_CRLF(modMain::Log_Path()),
            Lines("Program Started| |TrackTexture(0).Texture = Nothing|TrackTexture(1).Texture = Nothing|Track|"
                  "TrackWalls|Grass|TrackTexture|TrackBlock|TrackSector"));
}

TEST(GeneratedTrack, RoadIsOneClosedLoopOfShortEvenDrivableBlocksSceneryIsSortedAndEveryTextureLoads) {
  testenv::ScratchAppDir app{"Tracks", "Textures"};
  std::string error;
  ASSERT_TRUE(Load_Track(&error)) << error;
  Build_Track_Blocks();
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
    // The turn from the back edge to the front; positive to the right (+z toward +x).
    const Vector3 &back = TrackBlock(k).EdgeNormal[3], &front = TrackBlock(k).EdgeNormal[2];
    const float turn = std::atan2(front.z * back.x - back.z * front.x, -back.x * front.x - back.z * front.z);
    const float rise = (c[2].y + c[3].y - c[0].y - c[1].y) / 2, bank = c[1].y - c[0].y;
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
  // A lap of 30-60 s at 2 units per 10 ms; small turns and steps, as racers steer by block heading and walls kink.
  EXPECT_GT(lap, 6000);
  EXPECT_LT(lap, 12000);
  EXPECT_LT(widest_turn, 3.5 * 3.14159265 / 180);
  EXPECT_LT(max_step, trackgen::kStepGuard / 2);
  EXPECT_GT(high - low, 30) << "the circuit has hills";
  EXPECT_EQ(std::pair(banked, level_curve), std::pair(true, true)) << "curves banked, curves level";
  EXPECT_EQ(std::pair(Grouped(TrackWalls), Grouped(Grass)), std::pair(true, true)) << "sorted by texture: walls, grass";
  const std::vector<TrackStrip>& road = Track.Items();
  EXPECT_EQ(std::ranges::count(road, road[0].TextureIndex, &TrackStrip::TextureIndex), 1)
      << "the start strip has its own texture";
  EXPECT_EQ(Sectors().Count(), Track.Count());
  bool glass = false, opaque = false;
  for (const TrackStrip& w : TrackWalls.Items())
    (TrackTexture(w.TextureIndex).TextureName.ends_with(".dds") ? glass : opaque) = true;
  EXPECT_EQ(std::pair(glass, opaque), std::pair(true, true)) << "walls see-through, walls solid";

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
