#pragma once
// Draws nothing; records transforms, states, textures and draws: frame passes and meshes without a display.
#include <algorithm>
#include <map>
#include <vector>

#include "platform/platform.h"

class RecordingDevice : public platform::Device3D {
 public:
  struct Draw {
    platform::ImageRef texture;
    D3DMaterial material;
    int vertices, indices, max_index;
  };
  std::vector<Matrix4> worlds;
  Matrix4 view{};
  std::vector<platform::ImageRef> textures;  // every SetTexture, in order
  std::vector<float> lit_first_x;            // the first vertex's x of each lit draw
  std::vector<Draw> draws;                   // kept meshes
  int calls = 0;                             // transforms, materials, textures and draws
  std::map<uint32_t, uint32_t> states;       // each render state as last set
  platform::ImageRef bound;                  // the texture bound now

  void SetTransform(platform::TransformKind k, const Matrix4& m) override {
    ++calls;
    if (k == platform::TransformKind::World) worlds.push_back(m);
    if (k == platform::TransformKind::View) view = m;
  }
  void SetMaterial(const D3DMaterial& m) override { ++calls, material_ = m; }
  void SetTexture(int, const platform::ImageRef& t) override {
    ++calls, bound = t;
    textures.push_back(t);
  }
  void SetRenderState(uint32_t s, uint32_t v) override { states[s] = v; }
  void SetLight(int, const platform::D3DLight&) override {}
  void Clear(const Rect*, int, uint32_t, uint32_t, float, uint32_t) override {}
  void DrawPrimitive(platform::Primitive, const ScreenVertex*, int) override {
    ++calls;
    Drawn(nullptr);
  }
  void DrawPrimitive(platform::Primitive, const LitVertex* v, int) override {
    ++calls;
    lit_first_x.push_back(v[0].x);
    Drawn(nullptr);
  }
  platform::GeometryRef MakeGeometry(const MeshVertex* v, int vertex_count, const uint16_t* indices,
                                     int index_count) override {
    platform::GeometryRef g = Device3D::MakeGeometry(v, vertex_count, indices, index_count);
    const int max_index = index_count > 0 ? int(*std::max_element(indices, indices + index_count)) : -1;
    meshes_[g.get()] = {nullptr, {}, vertex_count, index_count, max_index};
    return g;
  }
  using Device3D::MakeGeometry;
  void DrawGeometry(const platform::Geometry& g, int first, int count) override {
    const auto mesh = meshes_.find(&g);
    if (mesh == meshes_.end()) return Device3D::DrawGeometry(g, first, count);
    ++calls;
    draws.push_back(mesh->second);
    draws.back().texture = bound, draws.back().material = material_;
    Drawn("body");
  }
  virtual void Drawn(const char* /*"body" for a kept mesh, else null*/) {}

 private:
  D3DMaterial material_{};
  std::map<const platform::Geometry*, Draw> meshes_;  // what each mesh made here holds
};
