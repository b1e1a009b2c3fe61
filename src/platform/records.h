#pragma once
// The plain records shared by the game and the platform's 3D device. Their layouts are
// what the device consumes: vertex buffers and matrices upload byte for byte.
#include <cstdint>

struct Vector3 {
  float x = 0, y = 0, z = 0;
};

// Row-major, row vectors: p' = p x M; translation in _41.._43.
struct Matrix4 {
  float _11 = 0, _12 = 0, _13 = 0, _14 = 0;
  float _21 = 0, _22 = 0, _23 = 0, _24 = 0;
  float _31 = 0, _32 = 0, _33 = 0, _34 = 0;
  float _41 = 0, _42 = 0, _43 = 0, _44 = 0;
};

// Pre-transformed vertex (format 452): screen pixels, depth 0..1, 1/w.
struct ScreenVertex {
  float sx = 0, sy = 0, sz = 0, rhw = 0;
  uint32_t color = 0, specular = 0;
  float tu = 0, tv = 0;
};

// Untransformed pre-lit vertex (format 482).
struct LitVertex {
  float x = 0, y = 0, z = 0;
  uint32_t reserved = 0;
  uint32_t color = 0, specular = 0;
  float tu = 0, tv = 0;
};

// Untransformed lit vertex (format 274): position, normal, one texture coordinate set.
struct MeshVertex {
  float x = 0, y = 0, z = 0;
  float nx = 0, ny = 0, nz = 0;
  float tu = 0, tv = 0;
};

static_assert(sizeof(Vector3) == 12 && sizeof(Matrix4) == 64);
static_assert(sizeof(ScreenVertex) == 32 && sizeof(LitVertex) == 32 && sizeof(MeshVertex) == 32);

struct ColorValue {
  float r = 0, g = 0, b = 0, a = 0;
};

// The device material: colours, then the specular power.
struct D3DMaterial {
  ColorValue diffuse, ambient, specular, emissive;
  float power = 0;
};

// Right and bottom are exclusive.
struct Rect {
  int32_t left = 0, top = 0, right = 0, bottom = 0;
};
