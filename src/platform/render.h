#pragma once
// The platform's display, images and fixed-function 3D device, over OpenGL.
// Game code reaches the device through the Device3D interface only; no GL types leak.
// (The graphics layer completes this header; the declarations below are the contract
// other modules already rely on.)
#include <cstdint>
#include <memory>
#include <string>

#include "platform/records.h"

namespace platform {

// One picture: a CPU copy of its pixels and a GL texture uploaded on demand.
class Image;
using ImageRef = std::shared_ptr<Image>;

// Transform slots, numbered as the game passes them.
enum class TransformKind : int { World = 1, View = 2, Projection = 3 };

// The fixed-function 3D device the game draws with.
class Device3D {
 public:
  virtual ~Device3D() = default;
  virtual std::string Identifier() const = 0;
  virtual void SetTransform(TransformKind kind, const Matrix4& m) = 0;
  virtual void SetMaterial(const D3DMaterial& material) = 0;
  // nullptr: no texture on that stage.
  virtual void SetTexture(int stage, const ImageRef& texture) = 0;
  // Indexed triangle list of mesh vertices (format 274).
  virtual void DrawIndexedMesh(const MeshVertex* vertices, int vertex_count, const uint16_t* indices,
                               int index_count) = 0;
};

}  // namespace platform
