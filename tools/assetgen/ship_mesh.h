#pragma once
// Building blocks of the generated ships: lofted bodies and flat slabs with texture
// coordinates, grouped by material, written as a text .x mesh. Faces are wound so that
// they are clockwise seen from outside (the front side of the game's device).
#include <string>
#include <vector>

namespace assetgen::ship {

struct P3 {
  float x = 0, y = 0, z = 0;
};

struct Vtx {
  P3 p;
  float u = 0, v = 0;
};

// A rectangle of the skin texture, 0..1.
struct UvRect {
  float u0, v0, u1, v1;
};

struct Material {
  const char* name;
  float r, g, b, a;
  float power;
  float spec_r, spec_g, spec_b;
  float emit_r, emit_g, emit_b;
};

struct Part {
  Material material;
  std::vector<Vtx> vertices;
  std::vector<std::vector<int>> faces;
};

// One cross-section of a loft: centre (cx, cy) at z, half sizes, and squareness
// (2 = ellipse; larger is boxier).
struct Station {
  float z, cx, cy, half_w, half_h, square;
};

// A closed body through the stations (any z order). The ring starts at the bottom and
// runs over the +x side to the top, so u across the rect goes belly, right, top, left,
// belly; v runs from the first station to the last. A station of zero size closes the
// end in a point; otherwise the end is capped with one polygon, mapped from above its
// ring's bounds into `cap_uv` when given (else it reuses the ring's coordinates).
void Add_Loft(Part& part, const std::vector<Station>& stations, int sides, const UvRect& uv,
              const UvRect* cap_uv = nullptr);

// A flat convex polygon given in the plane (origin, a_axis, b_axis) by (a, b) points,
// thickened by `thickness` along the plane's normal. Both faces map the outline into the
// rect (a along u, b along v, over the outline's bounds).
void Add_Slab(Part& part, const std::vector<std::pair<float, float>>& outline, const P3& origin, const P3& a_axis,
              const P3& b_axis, float thickness, const UvRect& uv);

// Adds a mirror image across x = 0 of everything the part holds (keeping texture coordinates).
void Mirror_X(Part& part);

// Moves every part so the box of all vertices is centred on the origin.
void Center(std::vector<Part>& parts);

// The box of all vertices.
void Bounds(const std::vector<Part>& parts, P3& lo, P3& hi);

// The parts as one text .x mesh, one material per part, each naming `texture`.
std::string To_X(const std::vector<Part>& parts, const std::string& mesh_name, const std::string& texture);

}  // namespace assetgen::ship
