#include <gtest/gtest.h>

#include <cmath>

#include "gfx/mod3Denhance.h"
#include "mathmesh/modMATH.h"

using namespace modMATH;

TEST(VectorAngle, AxesAndQuadrants) {
  EXPECT_FLOAT_EQ(Vector_Angle(0, 0), 0.0f);
  EXPECT_FLOAT_EQ(Vector_Angle(1, 0), 1.570795f);
  EXPECT_FLOAT_EQ(Vector_Angle(-1, 0), 4.712385f);
  EXPECT_FLOAT_EQ(Vector_Angle(0, -1), 3.14159f);
  EXPECT_FLOAT_EQ(Vector_Angle(0, 1), 0.0f);
  EXPECT_FLOAT_EQ(Vector_Angle(-1, 1), static_cast<float>(std::atan(-1.0) + 6.28318));
  EXPECT_FLOAT_EQ(Vector_Angle(1, 1), static_cast<float>(std::atan(1.0)));
  EXPECT_FLOAT_EQ(Vector_Angle(1, -1), static_cast<float>(std::atan(-1.0) + 3.14159));
  // The game's own pi, not the true one: heading pi - tiny stays below 6.28318.
  for (float a = -3; a <= 3; a += 0.25f)
    for (float b = -3; b <= 3; b += 0.25f) {
      const float r = Vector_Angle(a, b);
      EXPECT_GE(r, 0.0f);
      EXPECT_LT(r, 6.2832f);
    }
}

TEST(VectorLength2D, Pythagoras) {
  EXPECT_DOUBLE_EQ(Vector_Length_2D(3, 4), 5.0);
  EXPECT_DOUBLE_EQ(Vector_Length_2D(-3, 0), 3.0);
}

TEST(SegmentCrossesPlane, DirectionAndEnds) {
  const Vector3 q{0, 0, 10}, n{0, 0, 1};
  Vector3 hit{-1, -1, -1};
  // Ends exactly on the plane: t = 1 counts.
  ASSERT_EQ(Segment_Crosses_Plane({2, 0, 5}, {2, 0, 10}, q, n, hit), kTrue);
  EXPECT_FLOAT_EQ(hit.x, 2);
  EXPECT_FLOAT_EQ(hit.z, 10);
  // Starts on it: t = 0 counts too.
  ASSERT_EQ(Segment_Crosses_Plane({1, 0, 10}, {1, 0, 12}, q, n, hit), kTrue);
  EXPECT_FLOAT_EQ(hit.z, 10);
  // Crossing half way.
  ASSERT_EQ(Segment_Crosses_Plane({0, 2, 8}, {4, 2, 12}, q, n, hit), kTrue);
  EXPECT_FLOAT_EQ(hit.x, 2);
  EXPECT_FLOAT_EQ(hit.y, 2);

  // Reversed: against the normal never hits, and hit is left alone.
  hit = {-7, -7, -7};
  EXPECT_EQ(Segment_Crosses_Plane({2, 0, 10}, {2, 0, 5}, q, n, hit), kFalse);
  EXPECT_FLOAT_EQ(hit.x, -7);
  // Parallel, and short of or beyond the plane.
  EXPECT_EQ(Segment_Crosses_Plane({0, 0, 10}, {5, 0, 10}, q, n, hit), kFalse);
  EXPECT_EQ(Segment_Crosses_Plane({0, 0, 0}, {0, 0, 9.9f}, q, n, hit), kFalse);
  EXPECT_EQ(Segment_Crosses_Plane({0, 0, 10.1f}, {0, 0, 12}, q, n, hit), kFalse);
  // A movement along n of half the threshold is ignored even though it crosses.
  EXPECT_EQ(Segment_Crosses_Plane({0, 0, 10 - 0.0000025f}, {0, 0, 10 + 0.0000025f}, q, n, hit), kFalse);
  EXPECT_EQ(Segment_Crosses_Plane({0, 0, 9.99f}, {0, 0, 10.01f}, q, n, hit), kTrue);
}

TEST(Matrices, TranslationAndProduct) {
  Matrix4 t;
  Make_Translation_Matrix(t, {1, 2, 3});
  EXPECT_FLOAT_EQ(t._41, 1);
  EXPECT_FLOAT_EQ(t._43, 3);
  EXPECT_FLOAT_EQ(t._14, 0);
  EXPECT_FLOAT_EQ(t._24, 0);
  EXPECT_FLOAT_EQ(t._34, 0);
  EXPECT_FLOAT_EQ(t._44, 1);

  // Row vectors: rotate then translate is R x T.
  Matrix4 r, rt;
  Rotate_Y_Matrix(r, 1.570795f);
  Matrix_Multiply(rt, r, t);
  const Vector3 p = Transform_Point({0, 0, 1}, rt);
  EXPECT_NEAR(p.x, -1 + 1, 1e-5);
  EXPECT_NEAR(p.y, 2, 1e-5);
  EXPECT_NEAR(p.z, 3, 1e-5);
  // The product may write into one of its operands.
  Matrix_Multiply(r, r, t);
  EXPECT_FLOAT_EQ(r._41, rt._41);
  EXPECT_FLOAT_EQ(r._13, rt._13);
}

TEST(Matrices, RotationsFollowTheHeadingSense) {
  Matrix4 m;
  Rotate_Y_Matrix(m, 1.570795f);
  Vector3 p = Transform_Point({0, 0, 1}, m);  // +Z turns towards -X
  EXPECT_NEAR(p.x, -1, 1e-5);
  EXPECT_NEAR(p.z, 0, 1e-5);
  const float theta = 0.7f;  // a heading's forward vector is (-sin, 0, cos)
  Rotate_Y_Matrix(m, theta);
  p = Transform_Point({0, 0, 1}, m);
  EXPECT_NEAR(p.x, -std::sin(theta), 1e-6);
  EXPECT_NEAR(p.z, std::cos(theta), 1e-6);
  Rotate_X_Matrix(m, 1.570795f);
  p = Transform_Point({0, 1, 0}, m);
  EXPECT_NEAR(p.z, -1, 1e-5);
  Rotate_Z_Matrix(m, 1.570795f);
  p = Transform_Point({1, 0, 0}, m);
  EXPECT_NEAR(p.y, -1, 1e-5);
}

TEST(Matrices, LookAtAndProjection) {
  Matrix4 v;
  View_Matrix(v, {0, 10, -20}, {0, 10, 0}, {0, 1, 0}, 0);
  Vector3 p = Transform_Point({0, 10, 0}, v);  // the target lies straight ahead on +z
  EXPECT_NEAR(p.x, 0, 1e-5);
  EXPECT_NEAR(p.y, 0, 1e-5);
  EXPECT_NEAR(p.z, 20, 1e-5);
  p = Transform_Point({5, 10, -20}, v);  // +x stays to the right (left-handed)
  EXPECT_NEAR(p.x, 5, 1e-5);

  Matrix4 proj;
  Projection_Matrix(proj, 1.0f, 1500.0f, 3.14159f / 2);
  EXPECT_NEAR(proj._11, 1.0f, 1e-5);
  EXPECT_FLOAT_EQ(proj._11, proj._22);
  EXPECT_FLOAT_EQ(proj._34, 1.0f);
  EXPECT_FLOAT_EQ(proj._44, 0.0f);
  // Depth maps near -> 0 and far -> 1.
  auto depth = [&](float z) { return (z * proj._33 + proj._43) / z; };
  EXPECT_NEAR(depth(1.0f), 0.0f, 1e-6);
  EXPECT_NEAR(depth(1500.0f), 1.0f, 1e-6);
}

TEST(Vectors, DotNormaliseColours) {
  EXPECT_FLOAT_EQ(Vector_Dot({1, 2, 3}, {4, -5, 6}), 12);
  Vector3 v{3, 0, 4};
  Vector_Normalize(v);
  EXPECT_FLOAT_EQ(v.x, 0.6f);
  EXPECT_FLOAT_EQ(v.z, 0.8f);
  Vector3 zero{};
  Vector_Normalize(zero);
  EXPECT_FLOAT_EQ(zero.x, 0);

  EXPECT_EQ(Create_Color_RGBA(1, 1, 1, 0.7f), 0xB2FFFFFFu);  // 178.5 rounds to even 178
  EXPECT_EQ(Create_Color_RGBA(0, 0, 1, 2.0f), 0xFF0000FFu);  // saturates
  EXPECT_EQ(Create_Color_RGBA(0.4f, 0.2f, -1, 0), 0x00663300u);
  const ColorValue c = Color_To_Floats(0x80FF4000u);
  EXPECT_FLOAT_EQ(c.r, 1.0f);
  EXPECT_FLOAT_EQ(c.g, 64 / 255.0f);
  EXPECT_FLOAT_EQ(c.b, 0);
  EXPECT_FLOAT_EQ(c.a, 128 / 255.0f);

  Vector3 made;
  mod3Denhance::Make_Vector(made, 1, 2, 3);
  EXPECT_FLOAT_EQ(made.y, 2);
}
