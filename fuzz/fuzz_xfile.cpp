// Fuzzes the text .x reader and the fans built from what it returns. Besides memory
// safety it checks the promises callers rely on: indices in range, finite unit normals,
// finite texture coordinates and material values.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "gfx/XFileClass.h"
#include "mathmesh/xfile_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  xfile::Model model;
  if (!xfile::Read(std::string_view(reinterpret_cast<const char*>(data), size), model).empty()) return 0;
  std::vector<uint16_t> indices;
  for (const xfile::Group& g : model.groups) {
    if (g.vertices.empty() || g.vertices.size() > 65536) __builtin_trap();
    const D3DMaterial& m = g.material;
    if (!std::isfinite(m.power)) __builtin_trap();
    for (const ColorValue& c : {m.diffuse, m.ambient, m.specular, m.emissive})
      for (float f : {c.r, c.g, c.b, c.a})
        if (!std::isfinite(f)) __builtin_trap();
    indices.clear();
    if (!XFileClass::Append_Fan_Indices(g.face_data, g.vertices_per_face, int32_t(g.vertices.size()), indices))
      __builtin_trap();
    for (const MeshVertex& v : g.vertices) {
      const float len = v.nx * v.nx + v.ny * v.ny + v.nz * v.nz;
      // One by one: texture coordinates near a float's limit are accepted, their sum may not be finite.
      for (float f : {v.x, v.y, v.z, v.tu, v.tv})
        if (!std::isfinite(f)) __builtin_trap();
      if (std::fabs(len - 1.0f) > 1e-3f) __builtin_trap();
      if (v.x < model.box_min.x || v.x > model.box_max.x || v.z < model.box_min.z || v.z > model.box_max.z)
        __builtin_trap();
    }
  }
  return 0;
}
