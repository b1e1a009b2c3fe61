#pragma once
// Vector and matrix routines: the game's own four
// and the matrix, vector and colour operations the game takes from the platform's root
// object. Pure functions: no state, no allocation. Row vectors, y up, heading theta faces
// (-sin theta, 0, cos theta).
#include <cstdint>

#include "core/types.h"
#include "platform/records.h"

namespace modMATH {

// The game's own pi and its multiples, exactly as the game writes them.
inline constexpr double kPi = 3.14159;
inline constexpr double kHalfPi = 3.14159 / 2;  // 1.570795
inline constexpr double kThreeHalfPi = 4.712385;
inline constexpr double kTwoPi = 6.28318;

// m = identity with the translation v in _41.._43.
void Make_Translation_Matrix(Matrix4& m, const Vector3& v);
// sqrt(a^2 + b^2) in double precision.
double Vector_Length_2D(double a, double b);
// Direction of (a, b) measured from the b axis towards the a axis, in [0, 6.28318).
float Vector_Angle(float a, float b);
// True when p0 -> p1 crosses the plane through q with normal n, moving along n
// (t in [0, 1], both ends inclusive); hit is written only then.
Bool16 Segment_Crosses_Plane(const Vector3& p0, const Vector3& p1, const Vector3& q, const Vector3& n, Vector3& hit);

// --- root-object operations ------------------------------------------------------
void Identity_Matrix(Matrix4& m);
// d = a x b; d may alias a or b.
void Matrix_Multiply(Matrix4& d, const Matrix4& a, const Matrix4& b);
// Rotations; about Y a point (x, y, z) goes to (x cos a - z sin a, y, x sin a + z cos a),
// so +Z turns towards -X as the angle grows (the heading sense). X and Z turn the same way
// round their axes (y towards -z, x towards -y).
void Rotate_X_Matrix(Matrix4& m, float angle);
void Rotate_Y_Matrix(Matrix4& m, float angle);
void Rotate_Z_Matrix(Matrix4& m, float angle);
// Left-handed look-at view matrix; roll is unused (always 0 in the game).
void View_Matrix(Matrix4& m, const Vector3& from, const Vector3& to, const Vector3& up, float roll);
// Perspective projection with square aspect: _11 = _22 = cot(fov / 2), _33 = far / (far - near),
// _34 = 1, _43 = -near * far / (far - near), everything else 0.
void Projection_Matrix(Matrix4& m, float near_plane, float far_plane, float fov);
float Vector_Dot(const Vector3& a, const Vector3& b);
// Scales v to unit length in place; a zero vector stays zero.
void Vector_Normalize(Vector3& v);
// Packs four 0..1 floats (saturated) into ARGB, each channel rounded half to even.
uint32_t Create_Color_RGBA(float r, float g, float b, float a);
// Splits an ARGB colour into 0..1 floats.
ColorValue Color_To_Floats(uint32_t argb);
// Transforms a point as a row vector (w = 1), ignoring the resulting w.
Vector3 Transform_Point(const Vector3& p, const Matrix4& m);

}  // namespace modMATH
