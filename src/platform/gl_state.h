#pragma once
// Internal to the platform layer: the live GL objects of the display, shared by the
// display, 2D and 3D device files.
#include <epoxy/gl.h>

#include <cstdint>

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
