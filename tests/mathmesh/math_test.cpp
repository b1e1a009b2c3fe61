#include <gtest/gtest.h>

#include <cmath>

#include "mathmesh/modMATH.h"

using namespace modMATH;

TEST(VectorAngle, QuadrantsUseTheGamesPiAndStayInRange) {
  const std::pair<std::array<float, 2>, float> cases[] = {{{0, 0}, 0.0f},
                                                          {{1, 0}, 1.570795f},
                                                          {{-1, 0}, 4.712385f},
                                                          {{0, -1}, 3.14159f},
                                                          {{-1, 1}, float(std::atan(-1.0) + 6.28318)},
                                                          {{1, -1}, float(std::atan(-1.0) + 3.14159)}};
  for (const auto& [v, angle] : cases) EXPECT_FLOAT_EQ(Vector_Angle(v[0], v[1]), angle) << v[0] << "," << v[1];
  // The game's own pi, not the true one: heading pi - tiny stays below 6.28318.
  for (float a = -3; a <= 3; a += 0.25f)
    for (float b = -3; b <= 3; b += 0.25f) {
      EXPECT_GE(Vector_Angle(a, b), 0.0f) << a << "," << b;
      EXPECT_LT(Vector_Angle(a, b), 6.2832f) << a << "," << b;
    }
}

TEST(SegmentCrossesPlane, OnlyAlongTheNormalWithBothEndsCountingAndATinyMoveIgnored) {
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
}

TEST(Matrices, RowVectorsHeadingSenseLookAtDepthNormaliseOfZeroAndColours) {
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
  Vector3 n{3, 0, 4}, zero{};
  Vector_Normalize(n);
  Vector_Normalize(zero);
  EXPECT_EQ(std::pair(n.z, zero.x), std::pair(0.8f, 0.0f)) << "no division by zero";
  EXPECT_EQ(Create_Color_RGBA(1, 1, 1, 0.7f), 0xB2FFFFFFu);  // 178.5 rounds to even 178
  EXPECT_EQ(Create_Color_RGBA(0, 0, 1, 2.0f), 0xFF0000FFu);  // saturates
  EXPECT_EQ(Create_Color_RGBA(0.4f, 0.2f, -1, 0), 0x00663300u);
  const ColorValue c = Color_To_Floats(0x80FF4000u);
  EXPECT_EQ((std::array{c.r, c.g, c.b, c.a}), (std::array{1.0f, 64 / 255.0f, 0.0f, 128 / 255.0f}));
}
