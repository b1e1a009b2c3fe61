#include "mathmesh/modMATH.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "core/numbers.h"

namespace modMATH {

void Make_Translation_Matrix(Matrix4& m, const Vector3& v) {
  Identity_Matrix(m);
  m._41 = v.x;
  m._42 = v.y;
  m._43 = v.z;
}

double Vector_Length_2D(double a, double b) { return std::sqrt(std::pow(a, 2.0) + std::pow(b, 2.0)); }

float Vector_Angle(float a, float b) {
  double r;
  if (b > 0) {
    r = std::atan(static_cast<double>(a) / b);
  } else if (b < 0) {
    r = std::atan(static_cast<double>(a) / b) + kPi;
  } else if (a > 0) {
    r = kPi / 2;
  } else if (a < 0) {
    r = kThreeHalfPi;
  } else {
    r = 0;
  }
  if (r < 0) r += kTwoPi;
  return static_cast<float>(r);
}

Bool16 Segment_Crosses_Plane(const Vector3& p0, const Vector3& p1, const Vector3& q, const Vector3& n, Vector3& hit) {
  const Vector3 d{p1.x - p0.x, p1.y - p0.y, p1.z - p0.z};
  const float denom = Vector_Dot(d, n);
  // Only movement out along the normal counts; grazing and inward movement never hit.
  if (denom < 0.00001f) return kFalse;
  const Vector3 w{q.x - p0.x, q.y - p0.y, q.z - p0.z};
  const float t = Vector_Dot(w, n) / denom;
  if (t < 0 || t > 1) return kFalse;
  hit = Vector3{d.x * t + p0.x, d.y * t + p0.y, d.z * t + p0.z};
  return kTrue;
}

void Identity_Matrix(Matrix4& m) {
  m = Matrix4{};
  m._11 = m._22 = m._33 = m._44 = 1.0f;
}

void Matrix_Multiply(Matrix4& d, const Matrix4& a, const Matrix4& b) {
  const float* A = &a._11;
  const float* B = &b._11;
  float r[16];
  for (int i = 0; i < 4; ++i)
    for (int j = 0; j < 4; ++j)
      r[i * 4 + j] = A[i * 4 + 0] * B[0 * 4 + j] + A[i * 4 + 1] * B[1 * 4 + j] + A[i * 4 + 2] * B[2 * 4 + j] +
                     A[i * 4 + 3] * B[3 * 4 + j];
  std::copy(r, r + 16, &d._11);
}

void Rotate_X_Matrix(Matrix4& m, float angle) {
  Identity_Matrix(m);
  const float c = std::cos(angle), s = std::sin(angle);
  m._22 = c;
  m._23 = -s;
  m._32 = s;
  m._33 = c;
}

void Rotate_Y_Matrix(Matrix4& m, float angle) {
  Identity_Matrix(m);
  const float c = std::cos(angle), s = std::sin(angle);
  m._11 = c;
  m._13 = s;
  m._31 = -s;
  m._33 = c;
}

void Rotate_Z_Matrix(Matrix4& m, float angle) {
  Identity_Matrix(m);
  const float c = std::cos(angle), s = std::sin(angle);
  m._11 = c;
  m._12 = -s;
  m._21 = s;
  m._22 = c;
}

namespace {
Vector3 Sub(const Vector3& a, const Vector3& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
Vector3 Cross(const Vector3& a, const Vector3& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
}  // namespace

void View_Matrix(Matrix4& m, const Vector3& from, const Vector3& to, const Vector3& up, float /*roll*/) {
  Vector3 zaxis = Sub(to, from);
  Vector_Normalize(zaxis);
  // Up made perpendicular to the view direction.
  const float d = Vector_Dot(up, zaxis);
  Vector3 yaxis{up.x - zaxis.x * d, up.y - zaxis.y * d, up.z - zaxis.z * d};
  Vector_Normalize(yaxis);
  const Vector3 xaxis = Cross(yaxis, zaxis);
  Identity_Matrix(m);
  m._11 = xaxis.x;
  m._12 = yaxis.x;
  m._13 = zaxis.x;
  m._21 = xaxis.y;
  m._22 = yaxis.y;
  m._23 = zaxis.y;
  m._31 = xaxis.z;
  m._32 = yaxis.z;
  m._33 = zaxis.z;
  m._41 = -Vector_Dot(from, xaxis);
  m._42 = -Vector_Dot(from, yaxis);
  m._43 = -Vector_Dot(from, zaxis);
}

void Projection_Matrix(Matrix4& m, float near_plane, float far_plane, float fov) {
  m = Matrix4{};
  const double half = fov / 2.0;
  const float cot = static_cast<float>(std::cos(half) / std::sin(half));
  const float q = far_plane / (far_plane - near_plane);
  m._11 = cot;
  m._22 = cot;
  m._33 = q;
  m._34 = 1.0f;
  m._43 = -q * near_plane;
}

float Vector_Dot(const Vector3& a, const Vector3& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

void Vector_Normalize(Vector3& v) {
  const float len = std::sqrt(v.x * v.x + v.y * v.y + v.z * v.z);
  if (len <= 0.0f) return;
  v.x /= len;
  v.y /= len;
  v.z /= len;
}

uint32_t Create_Color_RGBA(float r, float g, float b, float a) {
  auto channel = [](float f) {
    const double c = std::clamp(static_cast<double>(f), 0.0, 1.0) * 255.0;
    return static_cast<uint32_t>(numbers::Round_Half_Even(c));
  };
  return (channel(a) << 24) | (channel(r) << 16) | (channel(g) << 8) | channel(b);
}

ColorValue Color_To_Floats(uint32_t argb) {
  return {((argb >> 16) & 0xFF) / 255.0f, ((argb >> 8) & 0xFF) / 255.0f, (argb & 0xFF) / 255.0f,
          ((argb >> 24) & 0xFF) / 255.0f};
}

Vector3 Transform_Point(const Vector3& p, const Matrix4& m) {
  return {p.x * m._11 + p.y * m._21 + p.z * m._31 + m._41, p.x * m._12 + p.y * m._22 + p.z * m._32 + m._42,
          p.x * m._13 + p.y * m._23 + p.z * m._33 + m._43};
}

}  // namespace modMATH
