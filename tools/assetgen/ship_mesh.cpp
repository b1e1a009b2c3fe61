#include "ship_mesh.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace assetgen::ship {
namespace {

constexpr float kTwoPi = 6.2831853f;

P3 Sub(const P3& a, const P3& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
P3 Add(const P3& a, const P3& b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
P3 Scale(const P3& a, float s) { return {a.x * s, a.y * s, a.z * s}; }
P3 Cross(const P3& a, const P3& b) { return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x}; }
float Dot(const P3& a, const P3& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
P3 Unit(const P3& a) {
  const float len = std::sqrt(Dot(a, a));
  return len > 0 ? Scale(a, 1 / len) : a;
}

// Signed power: the superellipse profile.
float Shape(float c, float square) { return std::copysign(std::pow(std::fabs(c), 2.0f / square), c); }

int Add_Vertex(Part& part, const P3& p, float u, float v) {
  part.vertices.push_back({p, u, v});
  return int(part.vertices.size()) - 1;
}

// Adds the polygon turned so that its front (the reader's (b - a) x (c - a)) faces `outward`.
void Add_Face(Part& part, std::vector<int> idx, const P3& outward) {
  P3 n;
  const P3& p0 = part.vertices[size_t(idx[0])].p;
  for (size_t k = 1; k + 1 < idx.size(); ++k)
    n = Add(n, Cross(Sub(part.vertices[size_t(idx[k])].p, p0), Sub(part.vertices[size_t(idx[k + 1])].p, p0)));
  if (Dot(n, n) < 1e-12f) return;  // no area
  if (Dot(n, outward) < 0) std::reverse(idx.begin() + 1, idx.end());
  part.faces.push_back(std::move(idx));
}

P3 Centroid(const Part& part, const std::vector<int>& idx) {
  P3 c;
  for (int i : idx) c = Add(c, part.vertices[size_t(i)].p);
  return Scale(c, 1.0f / float(idx.size()));
}

}  // namespace

void Add_Loft(Part& part, const std::vector<Station>& st, int sides, const UvRect& uv, const UvRect* cap_uv) {
  const size_t n = st.size();
  std::vector<float> along(n, 0.0f);
  for (size_t j = 1; j < n; ++j) along[j] = along[j - 1] + std::fabs(st[j].z - st[j - 1].z);
  const float total = along.back() > 0 ? along.back() : 1.0f;
  // Rings carry one extra vertex at the seam so the texture wraps without a jump.
  std::vector<int> first(n);
  for (size_t j = 0; j < n; ++j) {
    first[j] = int(part.vertices.size());
    const float v = uv.v0 + (uv.v1 - uv.v0) * along[j] / total;
    for (int i = 0; i <= sides; ++i) {
      const float t = kTwoPi * float(i) / float(sides);
      const P3 p{st[j].cx + st[j].half_w * Shape(std::sin(t), st[j].square),
                 st[j].cy - st[j].half_h * Shape(std::cos(t), st[j].square), st[j].z};
      Add_Vertex(part, p, uv.u0 + (uv.u1 - uv.u0) * float(i) / float(sides), v);
    }
  }
  for (size_t j = 0; j + 1 < n; ++j) {
    const P3 axis{(st[j].cx + st[j + 1].cx) / 2, (st[j].cy + st[j + 1].cy) / 2, 0};
    for (int i = 0; i < sides; ++i) {
      const int a = first[j] + i, b = first[j] + i + 1, c = first[j + 1] + i + 1, d = first[j + 1] + i;
      std::vector<int> quad;
      if (st[j].half_w == 0 && st[j].half_h == 0) {
        quad = {a, c, d};
      } else if (st[j + 1].half_w == 0 && st[j + 1].half_h == 0) {
        quad = {a, b, d};
      } else {
        quad = {a, b, c, d};
      }
      P3 out = Centroid(part, quad);
      out = Sub(out, P3{axis.x, axis.y, out.z});
      Add_Face(part, quad, out);
    }
  }
  // Flat caps on open ends, facing away from the body.
  for (const size_t j : {size_t(0), n - 1}) {
    if (st[j].half_w == 0 && st[j].half_h == 0) continue;
    std::vector<int> cap;
    for (int i = 0; i < sides; ++i) {
      const Vtx ring = part.vertices[size_t(first[j] + i)];
      if (!cap_uv) {
        cap.push_back(first[j] + i);
        continue;
      }
      const float s = st[j].half_w > 0 ? (ring.p.x - st[j].cx) / (2 * st[j].half_w) + 0.5f : 0.5f;
      const float t = st[j].half_h > 0 ? (st[j].cy - ring.p.y) / (2 * st[j].half_h) + 0.5f : 0.5f;
      cap.push_back(Add_Vertex(part, ring.p, cap_uv->u0 + (cap_uv->u1 - cap_uv->u0) * s,
                               cap_uv->v0 + (cap_uv->v1 - cap_uv->v0) * t));
    }
    const float dir = (j == 0) == (st[0].z > st[n - 1].z) ? 1.0f : -1.0f;
    Add_Face(part, cap, P3{0, 0, dir});
  }
}

void Add_Slab(Part& part, const std::vector<std::pair<float, float>>& outline, const P3& origin, const P3& a_axis,
              const P3& b_axis, float thickness, const UvRect& uv) {
  const P3 normal = Unit(Cross(a_axis, b_axis));
  float a_lo = outline[0].first, a_hi = a_lo, b_lo = outline[0].second, b_hi = b_lo;
  for (const auto& [a, b] : outline) {
    a_lo = std::min(a_lo, a), a_hi = std::max(a_hi, a);
    b_lo = std::min(b_lo, b), b_hi = std::max(b_hi, b);
  }
  const float a_span = a_hi > a_lo ? a_hi - a_lo : 1, b_span = b_hi > b_lo ? b_hi - b_lo : 1;
  const size_t n = outline.size();
  std::vector<int> top, bottom;
  P3 centre;
  for (const auto& [a, b] : outline) {
    const P3 p = Add(origin, Add(Scale(a_axis, a), Scale(b_axis, b)));
    centre = Add(centre, Scale(p, 1.0f / float(n)));
    const float u = uv.u0 + (uv.u1 - uv.u0) * (a - a_lo) / a_span;
    const float v = uv.v0 + (uv.v1 - uv.v0) * (b - b_lo) / b_span;
    top.push_back(Add_Vertex(part, Add(p, Scale(normal, thickness / 2)), u, v));
    bottom.push_back(Add_Vertex(part, Add(p, Scale(normal, -thickness / 2)), u, v));
  }
  Add_Face(part, top, normal);
  Add_Face(part, bottom, Scale(normal, -1));
  for (size_t k = 0; k < n; ++k) {
    const size_t m = (k + 1) % n;
    const std::vector<int> side{top[k], top[m], bottom[m], bottom[k]};
    Add_Face(part, side, Sub(Centroid(part, side), centre));
  }
}

void Mirror_X(Part& part) {
  const int offset = int(part.vertices.size());
  const size_t faces = part.faces.size();
  for (int i = 0; i < offset; ++i) {
    Vtx v = part.vertices[size_t(i)];
    v.p.x = -v.p.x;
    part.vertices.push_back(v);
  }
  for (size_t f = 0; f < faces; ++f) {
    std::vector<int> idx = part.faces[f];
    for (int& i : idx) i += offset;
    std::reverse(idx.begin() + 1, idx.end());  // a mirror turns the winding over
    part.faces.push_back(std::move(idx));
  }
}

void Bounds(const std::vector<Part>& parts, P3& lo, P3& hi) {
  bool first = true;
  for (const Part& part : parts) {
    for (const Vtx& v : part.vertices) {
      if (first) lo = hi = v.p, first = false;
      lo = {std::min(lo.x, v.p.x), std::min(lo.y, v.p.y), std::min(lo.z, v.p.z)};
      hi = {std::max(hi.x, v.p.x), std::max(hi.y, v.p.y), std::max(hi.z, v.p.z)};
    }
  }
}

void Center(std::vector<Part>& parts) {
  P3 lo, hi;
  Bounds(parts, lo, hi);
  const P3 mid = Scale(Add(lo, hi), 0.5f);
  for (Part& part : parts)
    for (Vtx& v : part.vertices) v.p = Sub(v.p, mid);
}

namespace {
std::string Num(float v) {
  if (std::fabs(v) < 5e-6f) v = 0;  // no "-0.00000"
  char buf[32];
  std::snprintf(buf, sizeof buf, "%.5f", double(v));
  return buf;
}
}  // namespace

std::string To_X(const std::vector<Part>& parts, const std::string& mesh_name, const std::string& texture) {
  size_t nv = 0, nf = 0;
  for (const Part& p : parts) nv += p.vertices.size(), nf += p.faces.size();
  std::string x = "xof 0303txt 0032\n\nMesh " + mesh_name + " {\n " + std::to_string(nv) + ";\n";
  size_t k = 0;
  for (const Part& p : parts)
    for (const Vtx& v : p.vertices)
      x += " " + Num(v.p.x) + ";" + Num(v.p.y) + ";" + Num(v.p.z) + ";" + (++k == nv ? ";\n" : ",\n");
  x += " " + std::to_string(nf) + ";\n";
  k = 0;
  size_t base = 0;
  for (const Part& p : parts) {
    for (const auto& f : p.faces) {
      x += " " + std::to_string(f.size()) + ";";
      for (size_t i = 0; i < f.size(); ++i) x += (i ? "," : "") + std::to_string(base + size_t(f[i]));
      x += ++k == nf ? ";;\n" : ";,\n";
    }
    base += p.vertices.size();
  }
  x += "\n MeshTextureCoords {\n  " + std::to_string(nv) + ";\n";
  k = 0;
  for (const Part& p : parts)
    for (const Vtx& v : p.vertices) x += "  " + Num(v.u) + ";" + Num(v.v) + ";" + (++k == nv ? ";\n" : ",\n");
  x += " }\n\n MeshMaterialList {\n  " + std::to_string(parts.size()) + ";\n  " + std::to_string(nf) + ";\n";
  k = 0;
  for (size_t m = 0; m < parts.size(); ++m)
    for (size_t f = 0; f < parts[m].faces.size(); ++f) x += "  " + std::to_string(m) + (++k == nf ? ";\n" : ",\n");
  for (const Part& p : parts) {
    const Material& m = p.material;
    x += "  Material " + std::string(m.name) + " {\n   " + Num(m.r) + ";" + Num(m.g) + ";" + Num(m.b) + ";" + Num(m.a) +
         ";;\n   " + Num(m.power) + ";\n   " + Num(m.spec_r) + ";" + Num(m.spec_g) + ";" + Num(m.spec_b) + ";;\n   " +
         Num(m.emit_r) + ";" + Num(m.emit_g) + ";" + Num(m.emit_b) + ";;\n   TextureFilename {\n    \"" + texture +
         "\";\n   }\n  }\n";
  }
  x += " }\n}\n";
  return x;
}

}  // namespace assetgen::ship
