// 2D work on the back buffer: pixel-exact blits of images, colour fills and read-back.
#include <epoxy/gl.h>

#include "platform/gl_internal.h"
#include "platform/gl_state.h"

namespace platform::detail {
namespace {

// A quad made from the vertex number; the fragment stage fetches texels by integer
// position, so texel i lands on pixel x + i with no filtering at any size.
const char* kBlitVertex = R"(#version 330 core
uniform vec4 u_dst;      // x, y, width, height in pixels
uniform vec2 u_target;   // back-buffer size
void main() {
  vec2 corner = vec2(gl_VertexID & 1, gl_VertexID >> 1);
  vec2 p = u_dst.xy + corner * u_dst.zw;
  gl_Position = vec4(p.x / u_target.x * 2.0 - 1.0, 1.0 - p.y / u_target.y * 2.0, 0.0, 1.0);
}
)";

const char* kBlitFragment = R"(#version 330 core
uniform sampler2D u_image;
uniform ivec2 u_offset;  // source texel minus destination pixel
uniform bool u_keyed;
uniform bool u_opaque;
out vec4 colour;
void main() {
  vec4 texel = texelFetch(u_image, ivec2(gl_FragCoord.xy) + u_offset, 0);
  if (u_keyed && texel.a == 0.0) discard;
  colour = u_opaque ? vec4(texel.rgb, 1.0) : texel;
}
)";

struct BlitProgram {
  GLuint program = 0, vao = 0;
  GLint dst = -1, target = -1, offset = -1, keyed = -1, opaque = -1;
  uint64_t generation = 0;
} g_blit;

bool Ready_Blit_Program() {
  if (g_blit.program != 0 && g_blit.generation == Gl().generation) return true;
  g_blit = BlitProgram{};
  g_blit.program = Build_Program(kBlitVertex, kBlitFragment);
  if (g_blit.program == 0) return false;
  glGenVertexArrays(1, &g_blit.vao);
  g_blit.generation = Gl().generation;
  g_blit.dst = glGetUniformLocation(g_blit.program, "u_dst");
  g_blit.target = glGetUniformLocation(g_blit.program, "u_target");
  g_blit.offset = glGetUniformLocation(g_blit.program, "u_offset");
  g_blit.keyed = glGetUniformLocation(g_blit.program, "u_keyed");
  g_blit.opaque = glGetUniformLocation(g_blit.program, "u_opaque");
  glUseProgram(g_blit.program);
  glUniform1i(glGetUniformLocation(g_blit.program, "u_image"), 0);
  return true;
}

// The fixed-function state the 2D path must not inherit from the 3D device.
void Plain_2D_State() {
  const GlDisplay& gl = Gl();
  glViewport(0, 0, gl.width, gl.height);
  glDisable(GL_BLEND);
  glDisable(GL_DEPTH_TEST);
  glDisable(GL_CULL_FACE);
  glDisable(GL_SCISSOR_TEST);
  glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
}
}  // namespace

void Release_Blit_Program() {
  if (g_blit.program != 0 && g_blit.generation == Gl().generation && Gl().context != nullptr) {
    glDeleteProgram(g_blit.program);
    glDeleteVertexArrays(1, &g_blit.vao);
  }
  g_blit = BlitProgram{};
}

bool Gpu_Blit_To_Backbuffer(Image& src, const Rect& r, int x, int y, bool keyed) {
  Flush_Device();
  if (!Bind_Backbuffer() || !Ready_Blit_Program()) return false;
  glActiveTexture(GL_TEXTURE0);
  glBindSampler(0, 0);
  if (Texture_Of(src) == 0) return false;
  Plain_2D_State();
  glUseProgram(g_blit.program);
  glBindVertexArray(g_blit.vao);
  glUniform4f(g_blit.dst, float(x), float(y), float(r.right - r.left), float(r.bottom - r.top));
  glUniform2f(g_blit.target, float(Gl().width), float(Gl().height));
  glUniform2i(g_blit.offset, r.left - x, r.top - y);
  glUniform1i(g_blit.keyed, keyed && src.Color_Key() ? 1 : 0);
  glUniform1i(g_blit.opaque, src.Format() == PixelFormat::X8R8G8B8 ? 1 : 0);
  glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
  return true;
}

bool Gpu_Fill_Backbuffer(const Rect& r, uint32_t argb) {
  Flush_Device();
  if (!Bind_Backbuffer()) return false;
  Plain_2D_State();
  glEnable(GL_SCISSOR_TEST);
  glScissor(r.left, r.top, r.right - r.left, r.bottom - r.top);
  glClearColor(float((argb >> 16) & 0xFF) / 255.0f, float((argb >> 8) & 0xFF) / 255.0f, float(argb & 0xFF) / 255.0f,
               float(argb >> 24) / 255.0f);
  glClear(GL_COLOR_BUFFER_BIT);
  glDisable(GL_SCISSOR_TEST);
  return true;
}

bool Gpu_Read_Backbuffer(const Rect& r, uint32_t* argb_out) {
  Flush_Device();
  if (!Bind_Backbuffer()) return false;
  glPixelStorei(GL_PACK_ALIGNMENT, 4);
  glPixelStorei(GL_PACK_ROW_LENGTH, 0);
  glBindFramebuffer(GL_READ_FRAMEBUFFER, Gl().fbo);
  // Row 0 in memory is the top row, so the rows come back in screen order.
  glReadPixels(r.left, r.top, r.right - r.left, r.bottom - r.top, GL_BGRA, GL_UNSIGNED_INT_8_8_8_8_REV, argb_out);
  return true;
}

}  // namespace platform::detail
