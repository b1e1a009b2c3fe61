// The track file reader and the block builder, on small hand-made files.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <functional>
#include <limits>
#include <memory>

#include "core/log.h"
#include "platform/platform.h"
#include "support/test_env.h"
#include "track/modTracks.h"

using namespace modTracks;

namespace {

// Track file bytes written field by field, so a test can break any one of them.
struct FileBytes {
  std::string b;
  FileBytes& I16(int v) { return Raw(static_cast<int16_t>(v)); }
  FileBytes& I32(long long v) { return Raw(static_cast<int32_t>(v)); }
  FileBytes& F32(float v) { return Raw(v); }
  FileBytes& Text(const std::string& s) {
    I16(static_cast<int>(s.size()));
    b += s;
    return *this;
  }
  template <class T>
  FileBytes& Raw(T v) {
    b.append(reinterpret_cast<const char*>(&v), sizeof v);
    return *this;
  }
  // A strip of (x, z) points at height 1, with dimension count and lower bound as given.
  FileBytes& Strip(const std::vector<std::pair<float, float>>& xz, int texture, int dims = 1, int lower = 0) {
    I16(dims).I32(static_cast<long long>(xz.size())).I32(lower);
    for (auto [x, z] : xz) F32(x).F32(1).F32(z).I32(0).I32(0xFFFFFFFFll).I32(0).F32(0.5f).F32(0.25f);
    return I16(texture);
  }
  FileBytes& Sector() {
    b.append(16, '\x07');
    for (int i = 0; i < 3; ++i) I16(1).I32(2).I32(5).I16(100 + i).I16(-3);
    return *this;
  }
};

const std::vector<std::pair<float, float>> kSquare = {{10, 0}, {0, 0}, {10, 10}, {0, 10}};
const std::vector<std::pair<float, float>> kSix = {{10, 0}, {0, 0}, {10, 10}, {0, 10}, {10, 20}, {0, 20}};

// Road: strips of 6 and 4 vertices; one grass strip; no walls (-1 still stores a record);
// one sector; two texture names.
FileBytes Small_Track() {
  FileBytes f;
  f.Text("test header").I32(1).Strip(kSix, 0).Strip({{10, 20}, {0, 20}, {10, 30}, {0, 30}}, 1);
  f.I32(0).Strip(kSquare, 1);
  f.I32(-1).Strip({{1, 1}}, 99);
  f.I32(0).Sector();
  f.I32(1).Text("Road.BMP").Text("glass.dds");
  return f;
}

bool Model_Is_Empty() {
  return Track.Count() == 1 && Track(0).Vertices.Count() == 0 && TrackTexture.Count() == 1 &&
         TrackTexture(0).TextureName.empty() && TrackBlock.Count() == 1;
}

}  // namespace

TEST(TrackFile, CountsAreUpperIndicesAndBlocksAreNumberedAcrossStrips) {
  std::string error;
  ASSERT_TRUE(Load_Track_From_Bytes(Small_Track().b, "mem.MXT", &error)) << error;
  EXPECT_EQ(Track.Lower(), 0);
  EXPECT_EQ(Track.Upper(), 1);
  EXPECT_EQ(Grass.Upper(), 0);  // a count of 0 is one record
  EXPECT_EQ(Track(0).Vertices.Count(), 6);
  EXPECT_FLOAT_EQ(Track(1).Vertices(3).z, 30);
  EXPECT_EQ(Track(1).TextureIndex, 1);
  EXPECT_EQ(Track(0).Vertices(0).color, 0xFFFFFFFFu);
  EXPECT_FLOAT_EQ(Track(0).Vertices(0).tv, 0.25f);
  // -1 walls: one record consumed and kept at index -1, so what follows still lines up.
  EXPECT_EQ(TrackWalls.Lower(), -1);
  EXPECT_EQ(TrackWalls.Upper(), -1);
  EXPECT_EQ(TrackWalls(-1).TextureIndex, 99);
  ASSERT_EQ(TrackSector.Count(), 1);
  EXPECT_EQ(TrackSector(0).Fixed[15], 7);
  EXPECT_EQ(TrackSector(0).Lists[2].Lower(), 5);
  EXPECT_EQ(TrackSector(0).Lists[2](5), 102);
  EXPECT_EQ(TrackSector(0).Lists[2](6), -3);
  ASSERT_EQ(TrackTexture.Upper(), 1);
  EXPECT_EQ(TrackTexture(0).TextureName, "Road.BMP");  // exactly as stored
  EXPECT_EQ(TrackTexture(1).TextureName, "glass.dds");
  EXPECT_FALSE(TrackTexture(0).Texture);  // bytes-only loads create no textures

  Build_Track_Blocks();
  ASSERT_EQ(TrackBlock.Upper(), 2);
  EXPECT_FLOAT_EQ(TrackBlock(1).Corner[0].z, 10);  // Track(0) vertices 2..5
  EXPECT_FLOAT_EQ(TrackBlock(1).Corner[3].z, 20);
  EXPECT_FLOAT_EQ(TrackBlock(2).Corner[0].z, 20);  // Track(1) vertices 0..3
  EXPECT_FLOAT_EQ(TrackBlock(2).Corner[3].z, 30);
  EXPECT_FLOAT_EQ(TrackBlock(2).Corner[3].y, 1);
}

TEST(TrackBlocks, NormalsPointOutAndExtremeCornersKeepTheLowerIndexOnTies) {
  auto strip = [](const std::vector<std::pair<float, float>>& xz) {
    TrackStrip s;
    s.Vertices.Resize(0, static_cast<int>(xz.size()) - 1);
    for (int i = 0; i < s.Vertices.Count(); ++i) s.Vertices(i) = LitVertex{xz[i].first, 0, xz[i].second};
    return s;
  };
  Track.Resize(0, 2);
  Track(0) = strip(kSquare);
  Track(1) = strip({{5, 5}, {3, 5}});  // a lone rung makes no block
  // Racing toward +x: right-hand side is -z. A skewed quad, wider at the front.
  Track(2) = strip({{0, -2}, {0, 2}, {4, -5}, {4, 5}});
  Build_Track_Blocks();
  ASSERT_EQ(TrackBlock.Count(), 2);

  const TrackBlockRecord& sq = TrackBlock(0);
  EXPECT_EQ(sq.MinXCorner, 1);
  EXPECT_EQ(sq.MinZCorner, 0);
  EXPECT_EQ(sq.MaxXCorner, 0);
  EXPECT_EQ(sq.MaxZCorner, 2);
  const float want[4][3] = {{1, 0, 0}, {-1, 0, 0}, {0, 0, 1}, {0, 0, -1}};
  for (int j = 0; j < 4; ++j) {
    EXPECT_FLOAT_EQ(sq.EdgeNormal[j].x, want[j][0]) << j;
    EXPECT_FLOAT_EQ(sq.EdgeNormal[j].y, 0) << j;
    EXPECT_FLOAT_EQ(sq.EdgeNormal[j].z, want[j][2]) << j;
  }
  // Every normal is a unit vector pointing away from the quad's centre.
  const TrackBlockRecord& sk = TrackBlock(1);
  const int on_edge[4] = {0, 1, 2, 0};
  for (int j = 0; j < 4; ++j) {
    const Vector3& n = sk.EdgeNormal[j];
    EXPECT_NEAR(std::hypot(n.x, n.z), 1.0, 1e-6) << j;
    const Vector3& c = sk.Corner[on_edge[j]];
    EXPECT_GT((c.x - 2) * n.x + (c.z - 0) * n.z, 0) << j;
  }
  EXPECT_EQ(sk.MinXCorner, 0);  // corners 0 and 1 tie on x = 0
  EXPECT_EQ(sk.MaxXCorner, 2);
  EXPECT_EQ(sk.MinZCorner, 2);
  EXPECT_EQ(sk.MaxZCorner, 3);

  // No block at all: the list keeps its one zeroed element.
  Track.Resize(0, 0);
  Track(0) = strip({{5, 5}, {3, 5}});
  Build_Track_Blocks();
  ASSERT_EQ(TrackBlock.Count(), 1);
  EXPECT_EQ(TrackBlock(0).Corner[3].x, 0);
}

TEST(TrackFile, BrokenFilesAreRefusedWithTheFileAndFaultNamed) {
  struct Case {
    const char* fault;
    std::function<FileBytes()> make;
  };
  auto header = [] { return FileBytes().Text("h"); };
  auto tail_after_road = [](FileBytes f) {
    f.I32(0).Strip(kSquare, 0).I32(-1).Strip({}, 0).I32(0).Sector().I32(0).Text("a.bmp");
    return f;
  };
  const Case cases[] = {
      {"odd road count", [&] { return tail_after_road(header().I32(0).Strip({{0, 0}, {1, 0}, {0, 1}, {1, 1}, {0, 2}}, 0)); }},
      {"road of one rung", [&] { return tail_after_road(header().I32(0).Strip({{0, 0}, {1, 0}}, 0)); }},
      {"texture index past the table", [&] { return tail_after_road(header().I32(0).Strip(kSquare, 1)); }},
      {"negative texture index", [&] { return tail_after_road(header().I32(0).Strip(kSquare, -1)); }},
      {"negative road count", [&] { return header().I32(-1).Strip(kSquare, 0); }},
      {"grass count -1", [&] { return header().I32(0).Strip(kSquare, 0).I32(-1).Strip(kSquare, 0); }},
      {"wall count -2", [&] { return header().I32(0).Strip(kSquare, 0).I32(0).Strip({}, 0).I32(-2); }},
      {"two-dimensional strip", [&] { return tail_after_road(header().I32(0).Strip(kSquare, 0, 2)); }},
      {"vertices not from 0", [&] { return tail_after_road(header().I32(0).Strip(kSquare, 0, 1, 1)); }},
      {"NaN coordinate",
       [&] { return tail_after_road(header().I32(0).Strip({{0, 0}, {1, 0}, {0, std::nanf("")}, {1, 1}}, 0)); }},
      {"huge section count", [&] { return header().I32(0x7FFFFFFF).Strip(kSquare, 0); }},
      {"huge vertex count", [&] { return header().I32(0).I16(1).I32(0x7FFFFFFF).I32(0).I16(0); }},
      {"negative vertex count", [&] { return header().I32(0).I16(1).I32(-4).I32(0).I16(0); }},
      {"huge sector list",
       [&] {
         FileBytes f = header().I32(0).Strip(kSquare, 0).I32(0).Strip({}, 0).I32(-1).Strip({}, 0).I32(0);
         f.b.append(16, '\0');
         return f.I16(1).I32(0x40000000).I32(0);
       }},
      {"sector list index overflow",
       [&] {
         FileBytes f = header().I32(0).Strip(kSquare, 0).I32(0).Strip({}, 0).I32(-1).Strip({}, 0).I32(0);
         f.b.append(16, '\0');
         return f.I16(1).I32(2).I32(0x7FFFFFFF).I16(0).I16(0);
       }},
      {"name longer than the file",
       [&] {
         FileBytes f = header().I32(0).Strip(kSquare, 0).I32(0).Strip({}, 0).I32(-1).Strip({}, 0);
         return f.I32(0).Sector().I32(0).I16(200).Text("x");
       }},
  };
  for (const Case& c : cases) {
    ASSERT_TRUE(Load_Track_From_Bytes(Small_Track().b, "mem.MXT"));
    std::string error;
    EXPECT_FALSE(Load_Track_From_Bytes(c.make().b, "mem.MXT", &error)) << c.fault;
    EXPECT_EQ(error.rfind("Track file mem.MXT: ", 0), 0u) << c.fault << ": " << error;
    EXPECT_GT(error.size(), 30u) << c.fault;
    EXPECT_TRUE(Model_Is_Empty()) << c.fault << ": nothing of the earlier track may survive";
  }

  // More blocks than a racer's 16-bit block number can count.
  std::vector<std::pair<float, float>> long_road;
  for (int r = 0; r <= kMaxTrackBlocks + 1; ++r) long_road.insert(long_road.end(), {{10, float(r)}, {0, float(r)}});
  FileBytes big = tail_after_road(header().I32(0).Strip(long_road, 0));
  std::string error;
  EXPECT_FALSE(Load_Track_From_Bytes(big.b, "big.MXT", &error));
  EXPECT_NE(error.find("32768 blocks"), std::string::npos) << error;
}

TEST(TrackFile, EmptySectorListMayStartAnywhere) {
  FileBytes f;
  f.Text("h").I32(0).Strip(kSquare, 0).I32(0).Strip({}, 0).I32(-1).Strip({}, 0).I32(0);
  f.b.append(16, '\0');
  f.I16(1).I32(0).I32(std::numeric_limits<int32_t>::min());
  f.I16(1).I32(0).I32(std::numeric_limits<int32_t>::max()).I16(1).I32(1).I32(-9).I16(42);
  f.I32(0).Text("a.bmp");
  std::string error;
  ASSERT_TRUE(Load_Track_From_Bytes(f.b, "mem.MXT", &error)) << error;
  for (int i : {0, 1}) EXPECT_LT(TrackSector(0).Lists[i].Upper(), TrackSector(0).Lists[i].Lower()) << i;
  EXPECT_EQ(TrackSector(0).Lists[2](-9), 42);
}

TEST(TrackFile, EveryTruncationIsRefused) {
  const std::string whole = Small_Track().b;
  for (size_t n = 0; n < whole.size(); ++n) {
    std::string error;
    ASSERT_FALSE(Load_Track_From_Bytes(std::string_view(whole).substr(0, n), "cut.MXT", &error)) << n;
    EXPECT_NE(error.find("left"), std::string::npos) << n << ": " << error;
  }
  EXPECT_TRUE(Load_Track_From_Bytes(whole, "cut.MXT"));
}

TEST(TrackFile, LoadsFromTheGameFolderAndTeardownReleasesAndLogs) {
  testenv::ScratchAppDir app;
  modMain::Create_Log();
  std::string error;
  EXPECT_FALSE(Load_Track(&error));
  EXPECT_NE(error.find(app.path() + "/Tracks/test.MXT"), std::string::npos) << error;
  EXPECT_NE(error.find("cannot be opened"), std::string::npos) << error;

  testenv::Write_File(app.path() + "/Tracks/test.MXT", Small_Track().b);
  app.Copy_From_Game("Textures/Road.bmp");
  std::rename((app.path() + "/Textures/Road.bmp").c_str(), (app.path() + "/Textures/Road.BMP").c_str());
  ASSERT_TRUE(Load_Track(&error)) << error;
  ASSERT_TRUE(TrackTexture(0).Texture) << "Textures/Road.BMP exists";
  EXPECT_FALSE(TrackTexture(1).Texture) << "glass.dds does not";
  const std::weak_ptr<platform::Image> road = TrackTexture(0).Texture;

  Clear_Track();
  EXPECT_TRUE(road.expired());
  EXPECT_TRUE(Model_Is_Empty());
  EXPECT_EQ(TrackWalls.Lower(), 0);
  const std::vector<std::string> want = {"Program Started", " ", "TrackTexture(0).Texture = Nothing",
                                         "TrackTexture(1).Texture = Nothing", "Track", "TrackWalls", "Grass",
                                         "TrackTexture", "TrackBlock", "TrackSector"};
  EXPECT_EQ(testenv::Read_Lines_CRLF(modMain::Log_Path()), want);
}
