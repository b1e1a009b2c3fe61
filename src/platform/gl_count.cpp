// The count of live GL objects for the long-run checks: GL's own answer, name by name.
#include <epoxy/gl.h>

#include "platform/gl_internal.h"
#include "platform/testing.h"

namespace platform {
namespace {

// Names of a kind that GL says are objects, below the next name it would hand out.
int Count(GLuint next, GLboolean (*is)(GLuint)) {
  int n = 0;
  for (GLuint name = 1; name < next; ++name) n += is(name) == GL_TRUE;
  return n;
}

template <class Gen, class Del>
GLuint Next_Name(Gen gen, Del del) {
  GLuint name = 0;
  gen(1, &name);
  del(1, &name);
  return name;
}

}  // namespace

GlObjectCount Live_Gl_Objects() {
  GlObjectCount n;
  if (!detail::Gl_Ready()) return n;
  // A name counts once it has been bound or created; every object the platform makes is.
  n.textures = Count(Next_Name(glGenTextures, glDeleteTextures), [](GLuint x) { return glIsTexture(x); });
  n.buffers = Count(Next_Name(glGenBuffers, glDeleteBuffers), [](GLuint x) { return glIsBuffer(x); });
  n.vertex_arrays =
      Count(Next_Name(glGenVertexArrays, glDeleteVertexArrays), [](GLuint x) { return glIsVertexArray(x); });
  n.samplers = Count(Next_Name(glGenSamplers, glDeleteSamplers), [](GLuint x) { return glIsSampler(x); });
  n.framebuffers =
      Count(Next_Name(glGenFramebuffers, glDeleteFramebuffers), [](GLuint x) { return glIsFramebuffer(x); });
  n.renderbuffers =
      Count(Next_Name(glGenRenderbuffers, glDeleteRenderbuffers), [](GLuint x) { return glIsRenderbuffer(x); });
  // Programs and shaders share one set of names.
  const GLuint next = glCreateShader(GL_VERTEX_SHADER);
  glDeleteShader(next);
  n.programs = Count(next, [](GLuint x) { return glIsProgram(x); });
  n.shaders = Count(next, [](GLuint x) { return glIsShader(x); });
  return n;
}

}  // namespace platform
