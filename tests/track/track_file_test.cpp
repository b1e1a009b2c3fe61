// The track file reader and the block builder, on small hand-made files.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <limits>
#include <memory>
#include <tuple>

#include "app/run_log.h"
#include "core/log.h"
#include "platform/platform.h"
#include "support/test_env.h"
#include "track/modTracks.h"

using namespace modTracks;

namespace {

using Points = std::vector<std::pair<float, float>>;

// Track file bytes written field by field, so a test can break any one of them.
struct FileBytes {
  std::string b;
  template <class T>
  FileBytes& Raw(T v) {
    b.append(reinterpret_cast<const char*>(&v), sizeof v);
    return *this;
  }
  FileBytes& I16(int v) { return Raw(static_cast<int16_t>(v)); }
  FileBytes& I32(long long v) { return Raw(static_cast<int32_t>(v)); }
  FileBytes& Fill(size_t n, char c) {
    b.append(n, c);
    return *this;
  }
  FileBytes& Text(const std::string& s) {
    I16(static_cast<int>(s.size()));
    b += s;
    return *this;
  }
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

// Road: strips of 6 and 4 vertices; one grass strip; no walls (-1 still stores a record);
// one sector; two texture names.
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

}  // namespace

TEST(TrackFile, CountsAreUpperIndicesListsStartAnywhereAndBlocksAreNumberedAcrossStrips) {
  std::string error;
  ASSERT_TRUE(Load_Track_From_Bytes(Small_Track(), "mem.MXT", &error)) << error;
  EXPECT_EQ(std::pair(Track.Lower(), Track.Upper()), std::pair(0, 1));
  EXPECT_EQ(Grass.Upper(), 0);  // a count of 0 is one record
  EXPECT_EQ(std::tuple(Track(0).Vertices.Count(), Track(1).TextureIndex, Track(0).Vertices(0).tv),
            std::tuple(6, 1, 0.25f));
  // -1 walls: one record consumed and kept at index -1, so what follows still lines up.
  EXPECT_EQ(std::pair(TrackWalls.Lower(), TrackWalls.Upper()), std::pair(-1, -1));
  EXPECT_EQ(TrackWalls(-1).TextureIndex, 99);
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
}

TEST(TrackBlocks, NormalsPointOutAndExtremeCornersKeepTheLowerIndexOnTies) {
  auto strip = [](const Points& xz) {
    TrackStrip s;
    for (auto [x, z] : xz) s.Vertices.Items().push_back(LitVertex{x, 0, z});
    return s;
  };
  const auto extremes = [](const TrackBlockRecord& b) {
    return std::array<int, 4>{b.MinXCorner, b.MinZCorner, b.MaxXCorner, b.MaxZCorner};
  };
  // A lone rung makes no block. Racing toward +x the right-hand side is -z; the skewed quad widens at the front.
  Track.Items() = {strip(kSquare), strip({{5, 5}, {3, 5}}), strip({{0, -2}, {0, 2}, {4, -5}, {4, 5}})};
  Build_Track_Blocks();
  ASSERT_EQ(TrackBlock.Count(), 2);

  const TrackBlockRecord& sq = TrackBlock(0);
  EXPECT_EQ(extremes(sq), (std::array{1, 0, 0, 2}));
  const float want[4][2] = {{1, 0}, {-1, 0}, {0, 1}, {0, -1}};
  for (int j = 0; j < 4; ++j)
    EXPECT_LT(std::fabs(sq.EdgeNormal[j].x - want[j][0]) + std::fabs(sq.EdgeNormal[j].z - want[j][1]), 1e-6f) << j;
  // Every normal is a unit vector pointing away from the quad's centre (2, 0).
  const TrackBlockRecord& sk = TrackBlock(1);
  const int on_edge[4] = {0, 1, 2, 0};
  for (int j = 0; j < 4; ++j) {
    const Vector3 &n = sk.EdgeNormal[j], &c = sk.Corner[on_edge[j]];
    EXPECT_NEAR(std::hypot(n.x, n.z), 1.0, 1e-6) << j;
    EXPECT_GT((c.x - 2) * n.x + c.z * n.z, 0) << j;
  }
  EXPECT_EQ(extremes(sk), (std::array{0, 2, 2, 3}));  // corners 0 and 1 tie on x = 0

  Track.Items() = {strip({{5, 5}, {3, 5}})};  // no block at all: the list keeps one zeroed element
  Build_Track_Blocks();
  EXPECT_EQ(std::pair(TrackBlock.Count(), TrackBlock(0).Corner[3].x), std::pair(1, 0.0f));
}

TEST(TrackFile, BrokenOrCutFilesAreRefusedWithTheFileAndFaultNamed) {
  Points long_road;  // more blocks than a racer's 16-bit block number can count
  for (int r = 0; r <= kMaxTrackBlocks + 1; ++r) long_road.insert(long_road.end(), {{10, float(r)}, {0, float(r)}});
  const auto h = [] { return FileBytes().Text("h"); };
  const struct {
    const char* fault;
    std::string bytes;
    const char* says = "";
  } cases[] = {
      {"odd road count", Road({{0, 0}, {1, 0}, {0, 1}, {1, 1}, {0, 2}}).End().b},
      {"road of one rung", Road({{0, 0}, {1, 0}}).End().b},
      {"texture index past the table", Road(kSquare, 1).End().b},
      {"two-dimensional strip", Road(kSquare, 0, 2).End().b},
      {"vertices not from 0", Road(kSquare, 0, 1, 1).End().b},
      {"NaN coordinate", Road({{0, 0}, {1, 0}, {0, std::nanf("")}, {1, 1}}).End().b},
      {"too many blocks", Road(long_road).End().b, "32768 blocks"},
      {"huge section count", h().I32(0x7FFFFFFF).Strip(kSquare, 0).b},
      {"huge vertex count", h().I32(0).I16(1).I32(0x7FFFFFFF).I32(0).I16(0).b},
      {"grass count -1", h().I32(0).Strip(kSquare, 0).I32(-1).Strip(kSquare, 0).b},
      {"wall count -2", h().I32(0).Strip(kSquare, 0).I32(0).Strip({}, 0).I32(-2).b},
      // Enough bytes left for a sector's smallest size, so the list itself is what fails.
      {"huge sector list", Road().I32(0).Fill(16, 0).I16(1).I32(0x40000000).I32(0).Fill(40, 0).b, "list of"},
      {"sector index overflow", Road().I32(0).Fill(16, 0).I16(1).I32(2).I32(0x7FFFFFFF).Fill(44, 0).b, "overflows"},
      {"name longer than the file", Road().I32(0).Sector().I32(0).I16(200).Text("x").b},
  };
  for (const auto& c : cases) {
    ASSERT_TRUE(Load_Track_From_Bytes(Small_Track(), "mem.MXT"));
    std::string error;
    EXPECT_FALSE(Load_Track_From_Bytes(c.bytes, "mem.MXT", &error)) << c.fault;
    EXPECT_EQ(error.rfind("Track file mem.MXT: ", 0), 0u) << c.fault << ": " << error;
    EXPECT_NE(error.find(c.says), std::string::npos) << c.fault << ": " << error;
    EXPECT_EQ(Left_Over(), "") << c.fault << ": nothing of the earlier track may survive";
  }
  const std::string whole = Small_Track();
  for (size_t n = 0; n < whole.size(); ++n) {
    std::string error;
    ASSERT_FALSE(Load_Track_From_Bytes(std::string_view(whole).substr(0, n), "cut.MXT", &error)) << n;
    EXPECT_NE(error.find("left"), std::string::npos) << n << ": " << error;
  }
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
