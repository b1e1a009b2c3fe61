#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <filesystem>
#include <tuple>

#include "mathmesh/modMATH.h"
#include "mathmesh/xfile_reader.h"

using namespace modMATH;

namespace {

const std::string kHeader = "xof 0303txt 0032\n";

// A unit cube whose 8 corners are shared by 6 quads, wound clockwise seen from outside.
const std::string kSharedCube = R"(
Mesh cube { 8; 0;0;0;, 1;0;0;, 1;1;0;, 0;1;0;, 0;0;1;, 1;0;1;, 1;1;1;, 0;1;1;;
  6; 4;0,3,2,1;, 4;4,5,6,7;, 4;0,1,5,4;, 4;3,7,6,2;, 4;0,4,7,3;, 4;1,2,6,5;; }
)";

xfile::Model Read_Ok(const std::string& text) {
  xfile::Model m;
  EXPECT_EQ(xfile::Read(text, m), "") << text;
  return m;
}

size_t Triangles(const xfile::Group& g) {
  if (g.vertices_per_face > 0)
    return g.face_data.size() / size_t(g.vertices_per_face) * size_t(g.vertices_per_face - 2);
  size_t n = 0;
  for (size_t i = 0; i < g.face_data.size(); i += size_t(g.face_data[i]) + 1) n += size_t(g.face_data[i]) - 2;
  return n;
}

// Vertices per face (0: each face leads with its count), face data size, vertices, triangles.
std::array<size_t, 4> Shape(const xfile::Group& g) {
  return {size_t(g.vertices_per_face), g.face_data.size(), g.vertices.size(), Triangles(g)};
}

// Every normal unit length, along an axis, and pointing away from the box centre.
void Expect_Box_Normals(const xfile::Model& m) {
  const float cx = (m.box_min.x + m.box_max.x) / 2, cy = (m.box_min.y + m.box_max.y) / 2,
              cz = (m.box_min.z + m.box_max.z) / 2;
  for (const xfile::Group& g : m.groups)
    for (const MeshVertex& v : g.vertices) {
      EXPECT_NEAR(std::abs(v.nx) + std::abs(v.ny) + std::abs(v.nz), 1.0f, 1e-4f);
      EXPECT_NEAR(v.nx * v.nx + v.ny * v.ny + v.nz * v.nz, 1.0f, 1e-4f);
      EXPECT_GT(v.nx * (v.x - cx) + v.ny * (v.y - cy) + v.nz * (v.z - cz), 0.0f)
          << "inward normal at " << v.x << "," << v.y << "," << v.z;
    }
}

TEST(XFileReader, CreasesSplitCornersFramesTransformOnlyTheFirstMeshIsReadAndGroupsFollowTheMaterialList) {
  const xfile::Model cube = Read_Ok(kHeader + kSharedCube);
  ASSERT_EQ(cube.groups.size(), 1u);
  EXPECT_EQ(Shape(cube.groups[0]), (std::array<size_t, 4>{4, 24, 24, 12}));  // each corner once per face direction
  Expect_Box_Normals(cube);

  // Two quads folded by 20 degrees along x = 1 share one averaged normal on the fold.
  const xfile::Model folded =
      Read_Ok(kHeader + "Mesh fold { 6; 0;0;0;, 0;0;1;, 1;0;1;, 1;0;0;, 1.939692;0.342020;1;, " +
              "1.939692;0.342020;0;; 2; 4;0,1,2,3;, 4;3,2,4,5;; }");  // (1 + cos, sin) of 20 degrees
  ASSERT_EQ(folded.groups.size(), 1u);
  EXPECT_EQ(Shape(folded.groups[0]), (std::array<size_t, 4>{4, 8, 6, 4}));
  for (const MeshVertex& v : folded.groups[0].vertices) {
    EXPECT_GT(v.ny, 0.9f) << "clockwise seen from above faces up, x " << v.x;
    if (v.x == 1.0f) {
      EXPECT_NEAR(v.nx, -std::sin(0.349066f / 2), 1e-4f) << "the fold's normal halves the angle";
    }
  }
  // The outer frame swaps y and z (a mirror), the inner one moves by (10, 0, 0).
  const std::string nested = kHeader +
                             "Frame outer { FrameTransformMatrix { 1,0,0,0, 0,0,1,0, 0,1,0,0, 0,0,0,1;; }\n"
                             "Frame inner { FrameTransformMatrix { 1,0,0,0, 0,1,0,0, 0,0,1,0, 10,0,0,1;; }\n" +
                             kSharedCube + "} }";
  const xfile::Model mirrored = Read_Ok(nested);
  EXPECT_EQ((std::array{mirrored.box_min.x, mirrored.box_max.x, mirrored.box_max.y}), (std::array{10.0f, 11.0f, 1.0f}));
  Expect_Box_Normals(mirrored);

  // A frame turning 90 degrees about y takes +x to -z (rows are the images of the axes).
  const xfile::Model turned =
      Read_Ok(kHeader + "Frame { FrameTransformMatrix { 0,0,-1,0, 0,1,0,0, 1,0,0,0, 0,0,0,1;; }\n" +
              "Mesh { 3; 2;0;0;, 3;0;0;, 2;1;0;; 1; 3;0,1,2;; } }");
  EXPECT_EQ((std::array{turned.box_min.x, turned.box_max.x, turned.box_min.z, turned.box_max.z}),
            (std::array{0.0f, 0.0f, -3.0f, -2.0f}));
  const std::string framed =
      "Frame f { FrameTransformMatrix { 1,0,0,0, 0,1,0,0, 0,0,1,0, 10,0,0,1;; }\n" + kSharedCube + "}";
  const std::string tri = "Mesh tri { 3; 5;0;0;, 6;0;0;, 5;1;0;; 1; 3;0,1,2;; }\n";
  // Frames before, beside and after the first mesh, and a second mesh: only the first is read.
  for (const std::string& text : {framed + tri + kSharedCube, tri + framed + kSharedCube + framed}) {
    const xfile::Model m = Read_Ok(kHeader + text);
    ASSERT_EQ(m.groups.size(), 1u) << text;
    EXPECT_EQ(Triangles(m.groups[0]), 1u);
    EXPECT_EQ((std::array{m.box_min.x, m.box_max.x}), (std::array{5.0f, 6.0f}));
  }
  // No mesh at the top: the first frame hierarchy, with its transform; not the second.
  const xfile::Model first = Read_Ok(kHeader + framed + "Frame g { " + tri + "}");
  ASSERT_EQ(first.groups.size(), 1u);
  EXPECT_EQ(Triangles(first.groups[0]), 12u);
  EXPECT_EQ((std::array{first.box_min.x, first.box_max.x}), (std::array{10.0f, 11.0f}));

  const std::string text = kHeader + R"(
template Dummy { <11111111-2222-3333-4444-555555555555> DWORD x; [...] }
// a comment { with braces
Material Red { 1.0;0.0;0.0;0.5;; 12.0; 0.1;0.2;0.3;; 0.4;0.5;0.6;; TextureFileName { "skins\\red.bmp"; } }
Mesh m { 6; 0;0;0;, 0;1;0;, 1;1;0;, 1;0;0;, 2;0;0;, 2;1;0;; 3; 3;0,1,2;, 4;3,2,5,4;, 3;0,2,3;;
  MeshNormals { 1; 0;0;1;; 3; 3;0,0,0;, 3;0,0,0;, 3;0,0,0;; }
  MeshTextureCoords { 6; 0;0;, 0;1;, 1;1;, 1;0;, 2;0;, 2;1;; }
  MeshMaterialList { 3; 3; 1, 0, 1;; { Red }
    Material Blue { 0;0;1;1;; 5; 0;0;0;; 0;0;0;; TextureFilename { "blue.bmp"; } }
    Material Unused { 1;1;1;1;; 0; 0;0;0;; 0;0;0;; } }
  SkinWeights { "bone"; 2; 99999, 5; 1.0, 1.0; 1,0,0,0,0,1,0,0,0,0,1,0,0,0,0,1;; } }
AnimationSet run { Animation { { m } AnimationKey { 0; 1; 0; 3; 1,2,3;;; } } }
)";
  const xfile::Model m = Read_Ok(text);
  ASSERT_EQ(m.groups.size(), 2u);  // the unused third material makes no group
  const xfile::Group &red = m.groups[0], &blue = m.groups[1];
  EXPECT_EQ(red.texture_name + "|" + blue.texture_name, "skins\\\\red.bmp|blue.bmp");
  // Ambient is the face colour made opaque.
  const D3DMaterial& mat = red.material;
  EXPECT_EQ((std::array{mat.diffuse.a, mat.ambient.r, mat.ambient.a, mat.power, mat.specular.b, mat.emissive.g}),
            (std::array{0.5f, 1.0f, 1.0f, 12.0f, 0.3f, 0.5f}));
  EXPECT_FLOAT_EQ(blue.material.diffuse.b, 1.0f);
  EXPECT_EQ(Shape(red), (std::array<size_t, 4>{4, 4, 4, 2}));  // only the quad: fixed size 4
  EXPECT_EQ(Shape(blue), (std::array<size_t, 4>{3, 6, 4, 2}));
  // Vertices carry their file texture coordinates.
  for (const MeshVertex& v : red.vertices) EXPECT_FLOAT_EQ(v.tu, v.x);
  EXPECT_FLOAT_EQ(m.box_max.x, 2.0f);
  xfile::Model mixed =
      Read_Ok(kHeader + "Mesh { 5; 0;0;0;, 0;1;0;, 1;1;0;, 1;0;0;, 2;0;0;; 2; 3;0,1,2;, 4;0,2,4,3;; }");
  ASSERT_EQ(mixed.groups.size(), 1u);
  ASSERT_EQ(Shape(mixed.groups[0]), (std::array<size_t, 4>{0, 9, 5, 3}));
  EXPECT_EQ(std::pair(mixed.groups[0].face_data[0], mixed.groups[0].face_data[4]), std::pair(3, 4));
  EXPECT_FLOAT_EQ(mixed.groups[0].material.diffuse.g, 1.0f);  // no material list: one white group

  const std::string white = "Material { 1;1;1;1;; 0; 0;0;0;; 0;0;0;; }";
  mixed = Read_Ok(kHeader + "Mesh { 4; 0;0;0;, 0;1;0;, 1;1;0;, 1;0;0;; 3; 3;0,1,2;, 3;0,2,3;, 3;1,2,3;;" +
                  " MeshMaterialList { 2; 2; 0, 1;; " + white + white + " } }");
  ASSERT_EQ(mixed.groups.size(), 2u);
  EXPECT_EQ(std::pair(Triangles(mixed.groups[0]), Triangles(mixed.groups[1])), std::pair(size_t{1}, size_t{2}));
}

TEST(XFileReader, RefusesForeignHeadersAndDataThatDisagreesWithItsCounts) {
  xfile::Model m;
  for (const char* head : {"xof 0303bin 0032", "xof 0303tzip0032", "xof 0303bzip0032"}) {
    EXPECT_EQ(xfile::Read(head + kSharedCube, m), "binary and compressed .x files are not supported") << head;
    EXPECT_TRUE(m.groups.empty()) << head;
  }
  const std::string tri = "3; 0;0;0;, 0;1;0;, 1;0;0;;", one = "Mesh { " + tri + " 1; 3;0,1,2;; ";
  const std::string mat = "Material { 1;1;1;1;; 0; 0;0;0;; 0;0;0;; ";
  const std::string big_power = "Material { 1;1;1;1;; 1e39; 0;0;0;; 0;0;0;; ";
  const std::string big_colour = "Material { 1;1;1;1;; 0; 0;0;0;; 0;-4e38;0;; ";
  std::string deep = one + "}";
  for (int i = 0; i < 60; ++i) deep = "Frame {" + deep + "}";
  const std::pair<const char*, std::string> cases[] = {
      {"vertex count beyond data", "Mesh { 4; 0;0;0;, 0;1;0;, 1;0;0;; 1; 3;0,1,2;; }"},
      {"index out of range", "Mesh { " + tri + " 1; 3;0,1,3;; }"},
      {"fractional count", "Mesh { " + tri + " 1; 2.5;0,1,2;; }"},
      {"face count beyond data", "Mesh { " + tri + " 7; 3;0,1,2;; }"},
      {"extra numbers", one + "7; }"},
      {"texcoord count", one + "MeshTextureCoords { 2; 0;0;, 1;1;; } }"},
      {"material index", one + "MeshMaterialList { 1; 1; 1;; " + mat + "} } }"},
      {"missing material", one + "MeshMaterialList { 2; 1; 0;; " + mat + "} } }"},
      {"unknown reference", one + "MeshMaterialList { 1; 1; 0;; { Nowhere } } }"},
      {"short material", one + "MeshMaterialList { 1; 1; 0;; Material { 1;1;1;; } } }"},
      {"short frame matrix", "Frame f { FrameTransformMatrix { 1,0,0; } " + one + "} }"},
      {"unterminated object", one},
      {"unterminated string", one + "MeshMaterialList { 1; 1; 0;; " + mat + "TextureFilename { \"x.bmp; } } } }"},
      {"bad number", "Mesh { 3; 0;0;0;, 0;1e999;0;, 1;0;0;; 1; 3;0,1,2;; }"},
      {"huge coordinate", "Mesh { 3; 0;0;0;, 0;1e30;0;, 1;0;0;; 1; 3;0,1,2;; }"},
      {"texcoord beyond a float", one + "MeshTextureCoords { 3; 0;0;, 1e39;0;, 1;0;; } }"},
      {"material power beyond a float", one + "MeshMaterialList { 1; 1; 0;; " + big_power + "} } }"},
      {"material colour beyond a float", one + "MeshMaterialList { 1; 1; 0;; " + big_colour + "} } }"},
      {"stray character", one + "} @"},
      {"no mesh", "Frame f { }"},
      {"nesting too deep", deep},
  };
  for (const auto& [what, body] : cases) {
    EXPECT_NE(xfile::Read(kHeader + body, m), "") << what;
    EXPECT_TRUE(m.groups.empty()) << what;
  }
  for (const std::string& text :
       {std::string("xof 0303txt"), "MZ not a mesh at all" + kSharedCube, "xof 0303abc 0032" + kSharedCube})
    EXPECT_NE(xfile::Read(text, m), "") << text;
}

// Files written by other exporters; skipped where the shared test data is absent.
TEST(XFileReader, ReadsForeignExporterFiles) {
  xfile::Model m;
  const std::string dir = QUORVAL_TESTDATA_DIR "/x/";
  if (!std::filesystem::exists(dir + "test_cube_text.x")) GTEST_SKIP() << "no shared test data";
  const char* kwx_texture = "C:\\\\code\\\\sourceforge\\\\kwxport\\\\trunkMerged\\\\test\\\\data\\\\bottom.tga";
  // Triangles per group, vertices, the lowest and highest y, the first group's texture.
  const std::tuple<const char*, std::vector<size_t>, size_t, float, float, const char*> expected[] = {
      {"test_cube_text.x", {12}, 24, -1.0f, 1.0f, ""},
      {"test.x", {12}, 24, -0.68044f, 0.960307f, ".\\\\test.png"},
      {"kwxport_test_cubewithvcolors.x", {2, 2, 8}, 24, -0.492126f, 0.492126f, kwx_texture},  // frame moves it down
      {"anim_test.x", {840}, 1720, -5.0f, 5.0f, ""},
      {"malformed_skinweights_oob.x", {12}, 24, -1.0f, 1.0f, ""},  // the bad skin data is never used
  };
  for (const auto& [file, triangles, vertices, min_y, max_y, texture] : expected) {
    SCOPED_TRACE(file);
    ASSERT_EQ(xfile::Read_File(dir + file, m), "");
    std::vector<size_t> tris;
    size_t verts = 0;
    for (const xfile::Group& g : m.groups) {
      tris.push_back(Triangles(g));
      verts += g.vertices.size();
    }
    ASSERT_EQ(std::pair(tris, verts), std::pair(triangles, vertices));
    EXPECT_EQ(m.groups[0].texture_name, texture);
    EXPECT_NEAR(std::hypot(m.box_min.y - min_y, m.box_max.y - max_y), 0, 1e-5f);
    if (vertices == 24) Expect_Box_Normals(m);  // cubes; test_cube_text.x's root frame mirrors y and z
  }
  for (const char* refused : {"test_cube_binary.x", "test_cube_compressed.x"})
    EXPECT_EQ(xfile::Read_File(dir + refused, m), "binary and compressed .x files are not supported");
  EXPECT_NE(xfile::Read_File(dir + "no_such_file.x", m), "");
}

TEST(Maths, AnglesUseTheGamesPiSegmentsCrossPlanesAlongTheNormalMatricesTakeRowVectorsAndColoursRoundAndSaturate) {
  // x, z and the angle; the diagonals are atan(x / z) put in range with the game's pi, 3.14159.
  const float angles[][3] = {{0, 0, 0},         {1, 0, 1.570795f},    {-1, 0, 4.712385f},
                             {0, -1, 3.14159f}, {-1, 1, 5.49778175f}, {1, -1, 2.35619187f}};
  for (const auto& [x, z, angle] : angles) EXPECT_FLOAT_EQ(Vector_Angle(x, z), angle) << x << "," << z;
  // The game's own pi, not the true one: heading pi - tiny stays below 6.28318.
  for (float a = -3; a <= 3; a += 0.25f)
    for (float b = -3; b <= 3; b += 0.25f) {
      EXPECT_GE(Vector_Angle(a, b), 0.0f) << a << "," << b;
      EXPECT_LT(Vector_Angle(a, b), 6.2832f) << a << "," << b;
    }

  const Vector3 q{0, 0, 10}, n{0, 0, 1};
  struct Case {
    Vector3 from, to;
    bool hits;
    float hit_x = -7, hit_z = -7;
  };
  const Case cases[] = {
      {{2, 0, 5}, {2, 0, 10}, true, 2, 10},   // ends on the plane
      {{1, 0, 10}, {1, 0, 12}, true, 1, 10},  // starts on it
      {{0, 2, 8}, {4, 2, 12}, true, 2, 10},   // half way
      {{2, 0, 10}, {2, 0, 5}, false},         // against the normal
      {{0, 0, 10}, {5, 0, 10}, false},        // parallel
      {{0, 0, 0}, {0, 0, 9.9f}, false},
      {{0, 0, 10.1f}, {0, 0, 12}, false},
      {{0, 0, 10 - 0.0000025f}, {0, 0, 10 + 0.0000025f}, false},  // half the threshold
      {{0, 0, 9.99f}, {0, 0, 10.01f}, true, 0, 10},
  };
  for (const Case& c : cases) {
    Vector3 hit{-7, -7, -7};
    EXPECT_EQ(Is_Set(Segment_Crosses_Plane(c.from, c.to, q, n, hit)), c.hits) << c.from.z << "->" << c.to.z;
    EXPECT_FLOAT_EQ(hit.x, c.hit_x) << "a miss leaves hit alone";
    EXPECT_FLOAT_EQ(hit.z, c.hit_z);
  }

  // Row vectors: rotate then translate is R x T; the product may write into an operand.
  Matrix4 t, r, rt;
  Make_Translation_Matrix(t, {1, 2, 3});
  Rotate_Y_Matrix(r, 1.570795f);
  Matrix_Multiply(rt, r, t);
  Vector3 p = Transform_Point({0, 0, 1}, rt);  // +Z turns towards -X
  EXPECT_NEAR(std::hypot(p.x, p.z - 3), 0, 1e-5);
  Matrix_Multiply(r, r, t);
  EXPECT_EQ(std::pair(r._41, r._13), std::pair(rt._41, rt._13));
  Rotate_Y_Matrix(r, 0.7f);  // a heading's forward vector is (-sin, 0, cos)
  p = Transform_Point({0, 0, 1}, r);
  EXPECT_NEAR(std::hypot(p.x + std::sin(0.7f), p.z - std::cos(0.7f)), 0, 1e-6);
  Rotate_X_Matrix(r, 1.570795f);
  EXPECT_NEAR(Transform_Point({0, 1, 0}, r).z, -1, 1e-5);
  Rotate_Z_Matrix(r, 1.570795f);
  EXPECT_NEAR(Transform_Point({1, 0, 0}, r).y, -1, 1e-5);

  Matrix4 v;
  View_Matrix(v, {0, 10, -20}, {0, 10, 0}, {0, 1, 0}, 0);
  p = Transform_Point({0, 10, 0}, v);  // the target lies straight ahead on +z
  EXPECT_NEAR(std::hypot(p.y, p.z - 20), 0, 1e-5);
  EXPECT_NEAR(Transform_Point({5, 10, -20}, v).x, 5, 1e-5) << "+x stays to the right (left-handed)";
  Matrix4 proj;
  Projection_Matrix(proj, 1.0f, 1500.0f, 3.14159f / 2);
  auto depth = [&](float z) { return (z * proj._33 + proj._43) / z; };
  EXPECT_NEAR(depth(1.0f), 0.0f, 1e-6);
  EXPECT_NEAR(depth(1500.0f), 1.0f, 1e-6);
  EXPECT_NEAR(proj._11, 1.0f, 1e-5);
  Vector3 unit{3, 0, 4}, zero{};
  Vector_Normalize(unit);
  Vector_Normalize(zero);
  EXPECT_EQ(std::pair(unit.z, zero.x), std::pair(0.8f, 0.0f)) << "no division by zero";
  EXPECT_EQ(Create_Color_RGBA(1, 1, 1, 0.7f), 0xB2FFFFFFu);  // 178.5 rounds to even 178
  EXPECT_EQ(Create_Color_RGBA(0, 0, 1, 2.0f), 0xFF0000FFu);  // saturates
  EXPECT_EQ(Create_Color_RGBA(0.4f, 0.2f, -1, 0), 0x00663300u);
  const ColorValue c = Color_To_Floats(0x80FF4000u);
  EXPECT_EQ((std::array{c.r, c.g, c.b, c.a}), (std::array{1.0f, 64 / 255.0f, 0.0f, 128 / 255.0f}));
}

}  // namespace
