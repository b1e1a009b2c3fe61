// From the parsed tree to material groups: counts and indices checked against the data,
// frame transforms applied, normals regenerated with the crease angle.
#include "mathmesh/xfile_reader.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <fstream>
#include <map>
#include <sstream>

#include "mathmesh/xfile_tree.h"

namespace xfile {
namespace {

using detail::Kind;
using detail::Node;

// Coordinates beyond this are refused so that normals and boxes stay finite.
constexpr double kMaxCoordinate = 1e7;

// A value a float holds without turning into infinity.
bool Fits_Float(double d) { return std::isfinite(float(d)); }

struct Affine {  // row-vector transform: p' = p x m + t
  double m[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
  double t[3] = {0, 0, 0};
};

// a then b.
Affine Then(const Affine& a, const Affine& b) {
  Affine r;
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) r.m[i][j] = a.m[i][0] * b.m[0][j] + a.m[i][1] * b.m[1][j] + a.m[i][2] * b.m[2][j];
    r.t[i] = a.t[0] * b.m[0][i] + a.t[1] * b.m[1][i] + a.t[2] * b.m[2][i] + b.t[i];
  }
  return r;
}

double Determinant(const Affine& a) {
  const auto& m = a.m;
  return m[0][0] * (m[1][1] * m[2][2] - m[1][2] * m[2][1]) - m[0][1] * (m[1][0] * m[2][2] - m[1][2] * m[2][0]) +
         m[0][2] * (m[1][0] * m[2][1] - m[1][1] * m[2][0]);
}

struct Vec {
  float x = 0, y = 0, z = 0;
};
Vec Sub(const Vec& a, const Vec& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
Vec Cross(const Vec& a, const Vec& b) { return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x}; }
float Dot(const Vec& a, const Vec& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
Vec Unit(const Vec& v) {
  const float len = std::sqrt(Dot(v, v));
  if (!(len > 1e-20f)) return {};
  return {v.x / len, v.y / len, v.z / len};
}

struct Material {
  D3DMaterial material;
  std::string texture;
};

// One mesh after checking: positions already transformed, polygons in front order.
struct MeshData {
  std::vector<Vec> positions;
  std::vector<float> uv;             // two per vertex
  std::vector<uint32_t> face_start;  // into face_index; one extra entry at the end
  std::vector<uint32_t> face_index;
  std::vector<uint32_t> face_material;
  std::vector<Material> materials;
};

// Walks the numbers of one object, checking counts against what is left.
class Numbers {
 public:
  Numbers(const Node& n, std::string& error) : v_(n.numbers), error_(error) {}
  size_t Left() const { return v_.size() - i_; }
  bool Done() const { return i_ == v_.size(); }
  // A whole number in [0, limit].
  bool Count(size_t limit, uint32_t& out, const char* what) {
    if (i_ >= v_.size()) return Fail(std::string("missing ") + what);
    const double d = v_[i_++];
    if (d < 0 || d != std::floor(d) || d > double(limit)) return Fail(std::string("bad ") + what);
    out = uint32_t(d);
    return true;
  }
  bool Real(double& out) {
    if (i_ >= v_.size()) return Fail("missing number");
    out = v_[i_++];
    return true;
  }
  bool Fail(const std::string& what) {
    if (error_.empty()) error_ = what;
    return false;
  }

 private:
  const std::vector<double>& v_;
  size_t i_ = 0;
  std::string& error_;
};

const Node* First_Child(const Node& n, Kind kind) {
  for (const Node& c : n.children)
    if (!c.reference && c.kind == kind) return &c;
  return nullptr;
}

D3DMaterial Default_Material() {
  D3DMaterial m;
  m.diffuse = {1, 1, 1, 1};
  m.ambient = {1, 1, 1, 1};
  m.specular = {0, 0, 0, 1};
  m.emissive = {0, 0, 0, 1};
  return m;
}

class Builder {
 public:
  explicit Builder(Model& model) : model_(model) {}

  std::string Run(const std::vector<Node>& top) {
    for (const Node& n : top) Collect_Materials(n);
    // The first mesh of the file; only a file without one is read as a frame hierarchy,
    // its first, with the frames' transforms.
    const Node *mesh = nullptr, *frame = nullptr;
    for (const Node& n : top) {
      if (n.reference) continue;
      if (n.kind == Kind::Mesh && mesh == nullptr) mesh = &n;
      if (n.kind == Kind::Frame && frame == nullptr) frame = &n;
    }
    if (mesh != nullptr) {
      Mesh(*mesh, Affine{});
    } else if (frame != nullptr) {
      Frame(*frame, Affine{});
    }
    if (!error_.empty()) return error_;
    if (meshes_ == 0) return "no mesh in file";
    if (!box_started_) model_.box_min = model_.box_max = Vector3{};
    return {};
  }

 private:
  void Collect_Materials(const Node& n) {
    if (n.reference) return;
    if (n.kind == Kind::Material && !n.name.empty()) named_.emplace(n.name, &n);  // first one wins
    for (const Node& c : n.children) Collect_Materials(c);
  }

  void Frame(const Node& frame, const Affine& parent) {
    Affine local;
    if (const Node* m = First_Child(frame, Kind::FrameTransformMatrix)) {
      if (m->numbers.size() != 16) return Fail("frame matrix needs 16 numbers");
      for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) local.m[i][j] = m->numbers[size_t(i * 4 + j)];
        local.t[i] = m->numbers[size_t(12 + i)];
      }
    }
    const Affine world = Then(local, parent);
    for (const Node& c : frame.children) {
      if (c.reference) continue;
      if (c.kind == Kind::Mesh) Mesh(c, world);
      if (c.kind == Kind::Frame) Frame(c, world);
      if (!error_.empty()) return;
    }
  }

  void Fail(const std::string& what) {
    if (error_.empty()) error_ = what;
  }

  bool Read_Material(const Node& n, Material& out) {
    if (n.numbers.size() != 11) return Fail("material needs 11 numbers"), false;
    for (double d : n.numbers)
      if (!Fits_Float(d)) return Fail("material value out of range"), false;
    const auto f = [&](size_t i) { return float(n.numbers[i]); };
    D3DMaterial& m = out.material;
    m.diffuse = {f(0), f(1), f(2), f(3)};
    m.ambient = {f(0), f(1), f(2), 1};  // the file has no ambient colour: the face colour serves
    m.power = f(4);
    m.specular = {f(5), f(6), f(7), 1};
    m.emissive = {f(8), f(9), f(10), 1};
    out.texture.clear();
    if (const Node* t = First_Child(n, Kind::TextureFilename))
      if (!t->strings.empty()) out.texture = t->strings.front();
    return true;
  }

  void Mesh(const Node& n, const Affine& xf) {
    ++meshes_;
    MeshData mesh;
    if (!Read_Geometry(n, xf, mesh) || !Read_Texture_Coords(n, mesh) || !Read_Materials(n, mesh)) return;
    Emit_Groups(mesh);
  }

  bool Read_Geometry(const Node& n, const Affine& xf, MeshData& mesh) {
    Numbers in(n, error_);
    uint32_t nv = 0, nf = 0;
    if (!in.Count(in.Left() / 3, nv, "vertex count")) return false;
    mesh.positions.resize(nv);
    for (Vec& p : mesh.positions) {
      double v[3] = {0, 0, 0};
      for (double& c : v) in.Real(c);
      double w[3];
      for (int j = 0; j < 3; ++j) {
        w[j] = v[0] * xf.m[0][j] + v[1] * xf.m[1][j] + v[2] * xf.m[2][j] + xf.t[j];
        if (!(std::fabs(w[j]) <= kMaxCoordinate)) return in.Fail("vertex out of range");
      }
      p = {float(w[0]), float(w[1]), float(w[2])};
      Grow_Box(p);
    }
    if (!in.Count(in.Left(), nf, "face count")) return false;
    const bool mirrored = Determinant(xf) < 0;
    mesh.face_start.reserve(size_t(nf) + 1);
    for (uint32_t f = 0; f < nf; ++f) {
      uint32_t count = 0;
      if (!in.Count(in.Left(), count, "face size")) return false;
      mesh.face_start.push_back(uint32_t(mesh.face_index.size()));
      const size_t first = mesh.face_index.size();
      for (uint32_t k = 0; k < count; ++k) {
        uint32_t index = 0;
        if (nv == 0) return in.Fail("face in a mesh without vertices");
        if (!in.Count(nv - 1, index, "vertex index")) return false;
        mesh.face_index.push_back(index);
      }
      // Keep the first corner, reverse the rest: the same polygon seen from its other side.
      if (mirrored && count > 2) std::reverse(mesh.face_index.begin() + long(first) + 1, mesh.face_index.end());
    }
    mesh.face_start.push_back(uint32_t(mesh.face_index.size()));
    if (!in.Done()) return in.Fail("mesh has more numbers than its counts say");
    mesh.uv.assign(size_t(nv) * 2, 0.0f);
    return true;
  }

  bool Read_Texture_Coords(const Node& n, MeshData& mesh) {
    const Node* tc = First_Child(n, Kind::MeshTextureCoords);
    if (!tc) return true;
    Numbers in(*tc, error_);
    uint32_t count = 0;
    if (!in.Count(in.Left() / 2, count, "texture coordinate count")) return false;
    if (count != mesh.positions.size()) return in.Fail("texture coordinate count differs from vertex count");
    for (float& c : mesh.uv) {
      double d = 0;
      in.Real(d);
      if (!Fits_Float(d)) return in.Fail("texture coordinate out of range");
      c = float(d);
    }
    if (!in.Done()) return in.Fail("texture coordinates have more numbers than their count says");
    return true;
  }

  bool Read_Materials(const Node& n, MeshData& mesh) {
    const size_t nf = mesh.face_start.size() - 1;
    const Node* list = First_Child(n, Kind::MeshMaterialList);
    if (!list) {
      mesh.materials.push_back({Default_Material(), {}});
      mesh.face_material.assign(nf, 0);
      return true;
    }
    Numbers in(*list, error_);
    uint32_t nm = 0, ni = 0;
    if (!in.Count(list->children.size(), nm, "material count")) return false;
    if (!in.Count(nf, ni, "material index count")) return false;
    if (nf > 0 && (nm == 0 || ni == 0)) return in.Fail("faces without materials");
    mesh.face_material.reserve(nf);
    for (uint32_t i = 0; i < ni; ++i) {
      uint32_t m = 0;
      if (!in.Count(nm - 1, m, "material index")) return false;
      mesh.face_material.push_back(m);
    }
    if (!in.Done()) return in.Fail("material list has more numbers than its counts say");
    // Fewer indices than faces: the last one carries on (files often give a single index).
    while (mesh.face_material.size() < nf) mesh.face_material.push_back(mesh.face_material.back());
    for (const Node& c : list->children) {
      if (mesh.materials.size() == nm) break;
      const Node* mat = &c;
      if (c.reference) {
        const auto it = named_.find(c.name);
        if (it == named_.end()) return in.Fail("unknown material '" + c.name + "'");
        mat = it->second;
      } else if (c.kind != Kind::Material) {
        continue;
      }
      Material m;
      if (!Read_Material(*mat, m)) return false;
      mesh.materials.push_back(std::move(m));
    }
    if (mesh.materials.size() != nm) return in.Fail("material list holds fewer materials than its count");
    return true;
  }

  void Grow_Box(const Vec& p) {
    Vector3& lo = model_.box_min;
    Vector3& hi = model_.box_max;
    if (!box_started_) {
      lo = hi = Vector3{p.x, p.y, p.z};
      box_started_ = true;
      return;
    }
    lo = {std::min(lo.x, p.x), std::min(lo.y, p.y), std::min(lo.z, p.z)};
    hi = {std::max(hi.x, p.x), std::max(hi.y, p.y), std::max(hi.z, p.z)};
  }

  // One normal per face corner: the mean of the normals of the faces at that position
  // which lie within the crease angle of this face.
  std::vector<Vec> Corner_Normals(const MeshData& mesh) const {
    const size_t nf = mesh.face_start.size() - 1;
    std::vector<Vec> face_normal(nf);
    for (size_t f = 0; f < nf; ++f) {
      const uint32_t s = mesh.face_start[f], e = mesh.face_start[f + 1];
      Vec sum;
      if (e - s >= 3) {
        const Vec& p0 = mesh.positions[mesh.face_index[s]];
        for (uint32_t k = s + 1; k + 1 < e; ++k) {
          const Vec c =
              Cross(Sub(mesh.positions[mesh.face_index[k]], p0), Sub(mesh.positions[mesh.face_index[k + 1]], p0));
          sum = {sum.x + c.x, sum.y + c.y, sum.z + c.z};
        }
      }
      face_normal[f] = Unit(sum);
    }
    // Vertices at the same place share smoothing even when the file split them (seams).
    std::vector<uint32_t> place(mesh.positions.size());
    {
      std::map<std::array<uint32_t, 3>, uint32_t> ids;
      for (size_t v = 0; v < mesh.positions.size(); ++v) {
        const Vec& p = mesh.positions[v];
        std::array<uint32_t, 3> key;
        const float c[3] = {p.x + 0.0f, p.y + 0.0f, p.z + 0.0f};  // -0 and +0 alike
        std::memcpy(key.data(), c, sizeof c);
        place[v] = ids.emplace(key, uint32_t(ids.size())).first->second;
      }
    }
    // Faces touching each place (compressed lists).
    std::vector<uint32_t> start(mesh.positions.size() + 1, 0);
    for (uint32_t v : mesh.face_index) ++start[place[v] + 1];
    for (size_t i = 1; i < start.size(); ++i) start[i] += start[i - 1];
    std::vector<uint32_t> faces(mesh.face_index.size());
    {
      std::vector<uint32_t> fill(start.begin(), start.end() - 1);
      for (size_t f = 0; f < nf; ++f)
        for (uint32_t k = mesh.face_start[f]; k < mesh.face_start[f + 1]; ++k)
          faces[fill[place[mesh.face_index[k]]]++] = uint32_t(f);
    }
    const float limit = std::cos(kCreaseAngle);
    std::vector<Vec> normals(mesh.face_index.size());
    for (size_t f = 0; f < nf; ++f) {
      const Vec& nf_ = face_normal[f];
      for (uint32_t k = mesh.face_start[f]; k < mesh.face_start[f + 1]; ++k) {
        const uint32_t p = place[mesh.face_index[k]];
        Vec sum;
        uint32_t last = UINT32_MAX;
        for (uint32_t j = start[p]; j < start[p + 1]; ++j) {
          const uint32_t g = faces[j];
          if (g == last) continue;  // a face touching the place twice counts once
          last = g;
          const Vec& ng = face_normal[g];
          if (Dot(nf_, ng) >= limit) sum = {sum.x + ng.x, sum.y + ng.y, sum.z + ng.z};
        }
        const Vec n = Unit(sum);
        normals[k] = (n.x == 0 && n.y == 0 && n.z == 0) ? Vec{0, 1, 0} : n;
      }
    }
    return normals;
  }

  void Emit_Groups(const MeshData& mesh) {
    const std::vector<Vec> normals = Corner_Normals(mesh);
    const size_t nf = mesh.face_start.size() - 1;
    for (size_t m = 0; m < mesh.materials.size(); ++m) {
      Group g;
      g.material = mesh.materials[m].material;
      g.texture_name = mesh.materials[m].texture;
      // Output vertices are (file vertex, normal) pairs; chained per file vertex.
      std::vector<int32_t> first(mesh.positions.size(), -1);
      std::vector<int32_t> next;
      int32_t common_size = -1;
      std::vector<uint32_t> sizes;
      for (size_t f = 0; f < nf; ++f) {
        if (mesh.face_material[f] != m) continue;
        const uint32_t s = mesh.face_start[f], e = mesh.face_start[f + 1];
        if (e - s < 3) continue;  // no area, nothing to draw
        sizes.push_back(e - s);
        common_size = (common_size == -1 || common_size == int32_t(e - s)) ? int32_t(e - s) : 0;
        g.face_data.push_back(int32_t(e - s));
        for (uint32_t k = s; k < e; ++k) {
          const uint32_t v = mesh.face_index[k];
          const Vec& n = normals[k];
          int32_t found = first[v];
          while (found >= 0) {
            const MeshVertex& o = g.vertices[size_t(found)];
            if (o.nx == n.x && o.ny == n.y && o.nz == n.z) break;
            found = next[size_t(found)];
          }
          if (found < 0) {
            if (g.vertices.size() == 65536) return Fail("a material group needs more than 65536 vertices");
            found = int32_t(g.vertices.size());
            const Vec& p = mesh.positions[v];
            g.vertices.push_back({p.x, p.y, p.z, n.x, n.y, n.z, mesh.uv[size_t(v) * 2], mesh.uv[size_t(v) * 2 + 1]});
            next.push_back(first[v]);
            first[v] = found;
          }
          g.face_data.push_back(found);
        }
      }
      if (sizes.empty()) continue;
      if (common_size > 0) {
        // Every face the same size: the counts are implied.
        std::vector<int32_t> plain;
        plain.reserve(g.face_data.size() - sizes.size());
        for (size_t i = 0; i < g.face_data.size(); i += size_t(common_size) + 1)
          plain.insert(plain.end(), g.face_data.begin() + long(i) + 1, g.face_data.begin() + long(i) + 1 + common_size);
        g.face_data.swap(plain);
      }
      g.vertices_per_face = common_size;
      model_.groups.push_back(std::move(g));
    }
  }

  Model& model_;
  std::string error_;
  std::map<std::string, const Node*> named_;
  int meshes_ = 0;
  bool box_started_ = false;
};

}  // namespace

std::string Read(std::string_view bytes, Model& model) {
  model = Model{};
  std::vector<Node> top;
  std::string error = detail::Parse(bytes, top);
  if (error.empty()) error = Builder(model).Run(top);
  if (!error.empty()) model = Model{};
  return error;
}

std::string Read_File(const std::string& path, Model& model) {
  model = Model{};
  std::ifstream in(path, std::ios::binary);
  if (!in) return "cannot open " + path;
  std::ostringstream bytes;
  bytes << in.rdbuf();
  if (in.bad()) return "cannot read " + path;
  return Read(bytes.str(), model);
}

}  // namespace xfile
