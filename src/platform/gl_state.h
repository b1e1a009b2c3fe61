#pragma once
// Internal to the platform layer: the live GL objects of the display, shared by the
// display, 2D and 3D device files.
#include <epoxy/gl.h>

#include <cstdint>
#include <vector>

#include "platform/render.h"

namespace platform {

// Kept geometry: the CPU copy any device can draw from, and the GL buffers of the context
// it was last uploaded to (triangle-list indices, one range per part).
class Geometry {
 public:
  struct Part {
    int first_vertex = 0, vertices = 0;  // into lit or mesh
    int first_index = 0, indices = 0;    // into the triangle list
    Vector3 lo{}, hi{};                  // the box round its vertices
    int first_piece = 0, pieces = 0;     // into pieces
  };
  // A run of a part's triangles and the box round them: of a long strip (the ground goes
  // round the whole track) only the runs that may be in sight are sent.
  struct Piece {
    int first_index = 0, indices = 0;
    Vector3 lo{}, hi{};
  };
  std::vector<LitVertex> lit;  // strips, end to end
  std::vector<MeshVertex> mesh;
  std::vector<uint32_t> triangles;  // the parts as one triangle list
  std::vector<Part> parts;
  std::vector<Piece> pieces;
  mutable uint32_t vao = 0, vbo = 0, ebo = 0;
  mutable uint64_t generation = 0;
  Geometry() = default;
  Geometry(const Geometry&) = delete;
  Geometry& operator=(const Geometry&) = delete;
  ~Geometry();
};

}  // namespace platform

namespace platform::detail {

struct GlDisplay {
  void* context = nullptr;  // SDL_GLContext
  uint64_t generation = 0;  // bumps with every context, so stale texture names are never freed
  GLuint fbo = 0;           // the back buffer
  GLuint color = 0;         // its colour texture
  GLuint depth = 0;         // its depth renderbuffer (the z-buffer)
  int width = 0, height = 0;
};
GlDisplay& Gl();

// Compiles and links a vertex + fragment program; 0 on failure (the log goes to stderr).
GLuint Build_Program(const char* vertex_source, const char* fragment_source);
// Binds the back buffer as the draw target with the full viewport (false without one).
bool Bind_Backbuffer();

}  // namespace platform::detail
