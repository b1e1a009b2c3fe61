// 2D work on the back buffer: pixel-exact blits of images, colour fills and read-back.
// Blits from one image wait and go together in one draw (a line of text is one), until a
// blit from another image or anything else that touches the back buffer.
#include <epoxy/gl.h>

#include <array>
#include <cstddef>

#include "platform/gl_internal.h"
#include "platform/gl_state.h"

namespace platform::detail {
namespace {

// One quad per blit, made from the vertex number; the fragment stage fetches texels by
// integer position, so texel i lands on pixel x + i with no filtering at any size.
const char* kBlitVertex = R"(#version 330 core
layout(location = 0) in vec4 a_dst;     // x, y, width, height in pixels
layout(location = 1) in ivec2 a_offset; // source texel minus destination pixel
uniform vec2 u_target;   // back-buffer size
flat out ivec2 v_offset;
void main() {
  vec2 corner = vec2(gl_VertexID & 1, gl_VertexID >> 1);
  vec2 p = a_dst.xy + corner * a_dst.zw;
  gl_Position = vec4(p.x / u_target.x * 2.0 - 1.0, 1.0 - p.y / u_target.y * 2.0, 0.0, 1.0);
  v_offset = a_offset;
}
)";

const char* kBlitFragment = R"(#version 330 core
uniform sampler2D u_image;
flat in ivec2 v_offset;
uniform bool u_keyed;
uniform bool u_opaque;
out vec4 colour;
void main() {
  vec4 texel = texelFetch(u_image, ivec2(gl_FragCoord.xy) + v_offset, 0);
  if (u_keyed && texel.a == 0.0) discard;
  colour = u_opaque ? vec4(texel.rgb, 1.0) : texel;
}
)";

struct BlitProgram {
  GLuint program = 0, vao = 0, instances = 0;
  GLint target = -1, keyed = -1, opaque = -1;
  uint64_t generation = 0;
} g_blit;

struct BlitInstance {
  float dst[4];
  int32_t offset[2];
};
constexpr int kQueueCapacity = 512;

// Blits waiting to be drawn: all from one texture, keyed and opaque alike.
struct BlitQueue {
  GLuint texture = 0;
  bool keyed = false, opaque = false;
  int count = 0;
  std::array<BlitInstance, kQueueCapacity> items;
} g_queue;

bool Ready_Blit_Program() {
  if (g_blit.program != 0 && g_blit.generation == Gl().generation) return true;
  g_blit = BlitProgram{};
  g_blit.program = Build_Program(kBlitVertex, kBlitFragment);
  if (g_blit.program == 0) return false;
  glGenVertexArrays(1, &g_blit.vao);
  glGenBuffers(1, &g_blit.instances);
  glBindVertexArray(g_blit.vao);
  glBindBuffer(GL_ARRAY_BUFFER, g_blit.instances);
  glBufferData(GL_ARRAY_BUFFER, GLsizeiptr(sizeof g_queue.items), nullptr, GL_STREAM_DRAW);
  glEnableVertexAttribArray(0);
  glVertexAttribPointer(0, 4, GL_FLOAT, GL_FALSE, sizeof(BlitInstance),
                        reinterpret_cast<void*>(offsetof(BlitInstance, dst)));
  glVertexAttribDivisor(0, 1);
  glEnableVertexAttribArray(1);
  glVertexAttribIPointer(1, 2, GL_INT, sizeof(BlitInstance), reinterpret_cast<void*>(offsetof(BlitInstance, offset)));
  glVertexAttribDivisor(1, 1);
  glBindVertexArray(0);
  g_blit.generation = Gl().generation;
  g_blit.target = glGetUniformLocation(g_blit.program, "u_target");
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
  Flush_Blits();
  if (g_blit.program != 0 && g_blit.generation == Gl().generation && Gl().context != nullptr) {
    glDeleteProgram(g_blit.program);
    glDeleteVertexArrays(1, &g_blit.vao);
    glDeleteBuffers(1, &g_blit.instances);
  }
  g_blit = BlitProgram{};
}

void Flush_Blits() {
  const int count = g_queue.count;
  if (count == 0) return;
  g_queue.count = 0;
  if (g_blit.generation != Gl().generation || !Bind_Backbuffer()) return;
  Plain_2D_State();
  glActiveTexture(GL_TEXTURE0);
  glBindSampler(0, 0);
  glBindTexture(GL_TEXTURE_2D, g_queue.texture);
  glUseProgram(g_blit.program);
  glBindVertexArray(g_blit.vao);
  glBindBuffer(GL_ARRAY_BUFFER, g_blit.instances);
  // Fresh storage each time, so the driver need not wait for the last batch.
  glBufferData(GL_ARRAY_BUFFER, GLsizeiptr(sizeof g_queue.items), nullptr, GL_STREAM_DRAW);
  glBufferSubData(GL_ARRAY_BUFFER, 0, GLsizeiptr(size_t(count) * sizeof(BlitInstance)), g_queue.items.data());
  glUniform2f(g_blit.target, float(Gl().width), float(Gl().height));
  glUniform1i(g_blit.keyed, g_queue.keyed ? 1 : 0);
  glUniform1i(g_blit.opaque, g_queue.opaque ? 1 : 0);
  glDrawArraysInstanced(GL_TRIANGLE_STRIP, 0, 4, count);
  glBindVertexArray(0);
}

bool Gpu_Blit_To_Backbuffer(Image& src, const Rect& r, int x, int y, bool keyed) {
  Flush_3D();
  if (!Bind_Backbuffer() || !Ready_Blit_Program()) return false;
  const GLuint texture = Texture_Of(src);
  if (texture == 0) return false;
  keyed = keyed && src.Color_Key().has_value();
  const bool opaque = src.Format() == PixelFormat::X8R8G8B8;
  if (g_queue.count == kQueueCapacity || g_queue.texture != texture || g_queue.keyed != keyed ||
      g_queue.opaque != opaque)
    Flush_Blits();
  g_queue.texture = texture;
  g_queue.keyed = keyed;
  g_queue.opaque = opaque;
  g_queue.items[size_t(g_queue.count++)] =
      BlitInstance{{float(x), float(y), float(r.right - r.left), float(r.bottom - r.top)}, {r.left - x, r.top - y}};
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
