// The fixed-function 3D device over GL: the game's states are kept as numbers and
// applied when a batch is drawn. Vertices of every format are widened into one layout
// and collected, with triangle-list indices, into buffers kept for the device's life;
// a batch is drawn with one call when a state changes, the buffers fill up, or anything
// else needs the back buffer. Kept geometry lives in buffers of its own, uploaded once; what
// is in view of it, part by part and piece by piece, is drawn with one call for each run of
// neighbours. Uniforms go to GL only when their value changes.
#include <epoxy/gl.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "platform/ff_shader.h"
#include "platform/gl_internal.h"
#include "platform/gl_state.h"
#include "platform/render.h"
#include "platform/testing.h"

namespace platform {
namespace {
using detail::Gl;

struct GpuVertex {
  float pos[4];
  float normal[3];
  uint32_t color, specular;
  float uv[2];
  float pad;
};
static_assert(sizeof(GpuVertex) == 48);

constexpr int kVertexCapacity = 65536;
constexpr int kIndexCapacity = 3 * 65536;
// The GL buffers hold several batches; each flush writes behind the last and only a full
// ring is orphaned, so batches of one frame never wait on each other.
constexpr int kRingBatches = 4;

enum Uniform : int {
  uKind,
  uWvp,
  uNormalMatrix,
  uViewport,
  uLighting,
  uAmbient,
  uMatDiffuse,
  uMatAmbient,
  uMatEmissive,
  uLightOn,
  uLightTo,
  uLightDiffuse,
  uLightAmbient,
  kUniformCount
};
const char* const kUniformNames[kUniformCount] = {
    "u_kind",         "u_wvp",      "u_normal_matrix", "u_viewport",      "u_lighting",     "u_ambient", "u_mat_diffuse",
    "u_mat_ambient", "u_mat_emissive", "u_light_on", "u_light_to", "u_light_diffuse", "u_light_ambient"};

enum Kind : int { kScreen = 0, kLit = 1, kMesh = 2 };

// Render-state numbers are small; a flat table answers without hashing.
constexpr uint32_t kStateSlots = 160;
// Fragment programs a device may build; the game's states need a handful.
constexpr size_t kMaxVariants = 2;  // textured or not

Matrix4 Identity() {
  Matrix4 m;
  m._11 = m._22 = m._33 = m._44 = 1;
  return m;
}

Matrix4 Multiply(const Matrix4& a, const Matrix4& b) {
  const float* x = &a._11;
  const float* y = &b._11;
  Matrix4 out;
  float* o = &out._11;
  for (int r = 0; r < 4; ++r)
    for (int c = 0; c < 4; ++c) {
      float s = 0;
      for (int k = 0; k < 4; ++k) s += x[r * 4 + k] * y[k * 4 + c];
      o[r * 4 + c] = s;
    }
  return out;
}

// Normals follow the inverse transpose of the world's 3x3 part, as the game's
// fixed-function lighting has it (never renormalised).
std::array<float, 9> Normal_Matrix(const Matrix4& w) {
  const float a = w._11, b = w._12, c = w._13, d = w._21, e = w._22, f = w._23, g = w._31, h = w._32, i = w._33;
  const float det = a * (e * i - f * h) - b * (d * i - f * g) + c * (d * h - e * g);
  if (std::fabs(det) < 1e-12f) return {a, b, c, d, e, f, g, h, i};
  const float s = 1.0f / det;
  // Rows of (W^-1)^T, stored row-major: n' = n x result.
  return {(e * i - f * h) * s,  -(d * i - f * g) * s, (d * h - e * g) * s,  -(b * i - c * h) * s, (a * i - c * g) * s,
          -(a * h - b * g) * s, (b * f - c * e) * s,  -(a * f - c * d) * s, (a * e - b * d) * s};
}

GLenum Blend_Factor(uint32_t v) {
  switch (v) {
    case blend::Zero:
      return GL_ZERO;
    case blend::One:
      return GL_ONE;
    case blend::SrcAlpha:
      return GL_SRC_ALPHA;
    case blend::InvSrcAlpha:
      return GL_ONE_MINUS_SRC_ALPHA;
    default:
      return GL_ONE;
  }
}

// Strips as triangles with the game's winding (odd triangles reversed), as DrawPrimitive
// lays them out.
void Append_Strip(std::vector<uint32_t>& out, uint32_t base, int count) {
  for (int t = 0; t + 2 < count; ++t) {
    const uint32_t a = base + uint32_t(t);
    out.insert(out.end(), {a, t % 2 == 0 ? a + 1 : a + 2, t % 2 == 0 ? a + 2 : a + 1});
  }
}

GpuVertex From_Lit(const LitVertex& s) {
  return GpuVertex{{s.x, s.y, s.z, 1}, {0, 0, 0}, s.color, s.specular, {s.tu, s.tv}, 0};
}

GpuVertex From_Mesh(const MeshVertex& s) {
  return GpuVertex{{s.x, s.y, s.z, 1}, {s.nx, s.ny, s.nz}, 0xFFFFFFFFu, 0, {s.tu, s.tv}, 0};
}

// The device's vertex layout, for the bound vertex array and array buffer.
void Describe_Layout() {
  const GLsizei stride = sizeof(GpuVertex);
  glEnableVertexAttribArray(0);
  glVertexAttribPointer(0, 4, GL_FLOAT, GL_FALSE, stride, reinterpret_cast<void*>(offsetof(GpuVertex, pos)));
  glEnableVertexAttribArray(1);
  glVertexAttribPointer(1, 3, GL_FLOAT, GL_FALSE, stride, reinterpret_cast<void*>(offsetof(GpuVertex, normal)));
  // Packed 0xAARRGGBB colours are B, G, R, A in memory: GL reads them as BGRA.
  glEnableVertexAttribArray(2);
  glVertexAttribPointer(2, GL_BGRA, GL_UNSIGNED_BYTE, GL_TRUE, stride,
                        reinterpret_cast<void*>(offsetof(GpuVertex, color)));
  glEnableVertexAttribArray(4);
  glVertexAttribPointer(4, 2, GL_FLOAT, GL_FALSE, stride, reinterpret_cast<void*>(offsetof(GpuVertex, uv)));
}

void Forget_Buffers(const Geometry& g) {
  if (g.vao != 0 && g.generation == Gl().generation && Gl().context != nullptr) {
    glDeleteVertexArrays(1, &g.vao);
    glDeleteBuffers(1, &g.vbo);
    glDeleteBuffers(1, &g.ebo);
  }
  g.vao = g.vbo = g.ebo = 0;
}

// The geometry's buffers in the live context, uploaded the first time it is drawn there;
// false when it has nothing to draw or there is no context.
bool Ready_Buffers(const Geometry& g) {
  if (Gl().context == nullptr || g.triangles.empty()) return false;
  if (g.vao != 0 && g.generation == Gl().generation) return true;
  Forget_Buffers(g);
  std::vector<GpuVertex> vertices;
  vertices.reserve(g.lit.size() + g.mesh.size());
  for (const LitVertex& v : g.lit) vertices.push_back(From_Lit(v));
  for (const MeshVertex& v : g.mesh) vertices.push_back(From_Mesh(v));
  g.generation = Gl().generation;
  glGenVertexArrays(1, &g.vao);
  glGenBuffers(1, &g.vbo);
  glGenBuffers(1, &g.ebo);
  glBindVertexArray(g.vao);
  glBindBuffer(GL_ARRAY_BUFFER, g.vbo);
  glBufferData(GL_ARRAY_BUFFER, GLsizeiptr(vertices.size() * sizeof(GpuVertex)), vertices.data(), GL_STATIC_DRAW);
  glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, g.ebo);
  glBufferData(GL_ELEMENT_ARRAY_BUFFER, GLsizeiptr(g.triangles.size() * sizeof(uint32_t)), g.triangles.data(),
               GL_STATIC_DRAW);
  Describe_Layout();
  glBindVertexArray(0);
  return true;
}

class GlDevice;
GlDevice* g_live_device = nullptr;
uint64_t g_triangles_sent = 0;

class GlDevice final : public Device3D {
 public:
  explicit GlDevice(std::string identifier) : identifier_(std::move(identifier)) {
    vertices_.resize(kVertexCapacity);
    indices_.resize(kIndexCapacity);
    transforms_[0] = transforms_[1] = transforms_[2] = Identity();
    // The device's defaults; the game sets the rest at start-up.
    const std::pair<uint32_t, uint32_t> states[] = {
        {rs::ZEnable, 1},           {rs::ZWriteEnable, 1},
        {rs::TextureMag, filter::Point}, {rs::TextureMin, filter::Point}, {rs::SrcBlend, blend::One},
        {rs::DestBlend, blend::Zero}, {rs::CullMode, cull::CounterClockwise}, {rs::AlphaBlendEnable, 0},
        {rs::Lighting, 1},          {rs::Ambient, 0}};
    for (const auto& [state, value] : states) render_states_[state] = value;
    width_ = Gl().width, height_ = Gl().height;
    Create_Gl_Objects();
    g_live_device = this;
  }

  ~GlDevice() override {
    if (g_live_device == this) g_live_device = nullptr;
    if (Gl().context != nullptr && generation_ == Gl().generation) {
      for (const Variant& v : variants_) glDeleteProgram(v.program);
      glDeleteBuffers(1, &vbo_);
      glDeleteBuffers(1, &ebo_);
      glDeleteVertexArrays(1, &vao_);
      glDeleteSamplers(1, &sampler_);
    }
  }

  bool Ready() const { return program_ != 0; }

  const std::string& Identifier() const { return identifier_; }

  void SetTransform(TransformKind kind, const Matrix4& m) override {
    const int slot = Slot(kind);
    if (slot < 0 || std::memcmp(&transforms_[slot], &m, sizeof m) == 0) return;
    Flush();
    transforms_[slot] = m;
    transforms_dirty_ = true;
  }

  void SetMaterial(const D3DMaterial& material) override {
    if (std::memcmp(&material_, &material, sizeof material) == 0) return;
    Flush();
    material_ = material;
  }

  void SetTexture(int stage, const ImageRef& texture) override {
    if (stage != 0) return;  // the game draws with one stage
    if (texture_ == texture) return;
    Flush();
    texture_ = texture;
  }

  void SetRenderState(uint32_t state, uint32_t value) override {
    if (state >= kStateSlots || render_states_[state] == value) return;
    Flush();
    render_states_[state] = value;
  }
  uint32_t Render_State(uint32_t state) const { return state < kStateSlots ? render_states_[state] : 0; }

  void SetLight(int index, const D3DLight& light) override {
    if (index != 0) return;  // one light is all the game uses
    Flush();
    light_ = light;
    light_on_ = true;
  }

  void Clear(const Rect* rects, int count, uint32_t flags, uint32_t argb, float z, uint32_t stencil) override {
    detail::Flush_Device();
    if (!detail::Bind_Backbuffer()) return;
    GLbitfield mask = 0;
    if (flags & kClearTarget) mask |= GL_COLOR_BUFFER_BIT;
    if ((flags & kClearZBuffer) && Gl().depth != 0) mask |= GL_DEPTH_BUFFER_BIT;
    if (mask == 0) return;
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    glDepthMask(GL_TRUE);
    glClearColor(float((argb >> 16) & 0xFF) / 255.0f, float((argb >> 8) & 0xFF) / 255.0f, float(argb & 0xFF) / 255.0f,
                 float(argb >> 24) / 255.0f);
    glClearDepth(z);
    glEnable(GL_SCISSOR_TEST);
    const Rect whole{0, 0, width_, height_};
    for (int i = 0; i < (count > 0 ? count : 1); ++i) {
      // Clears stay inside the back buffer.
      const Rect& r = count > 0 && rects != nullptr ? rects[i] : whole;
      const int l = std::max(r.left, whole.left), t = std::max(r.top, whole.top);
      const int rr = std::min(r.right, whole.right), b = std::min(r.bottom, whole.bottom);
      if (rr <= l || b <= t) continue;
      glScissor(l, t, rr - l, b - t);
      glClear(mask);
    }
    glDisable(GL_SCISSOR_TEST);
    (void)stencil;  // the game has no stencil buffer
  }

  void DrawPrimitive(Primitive, const ScreenVertex* v, int count) override {
    Draw(kScreen, count, [&](int i, GpuVertex& g) {
      const ScreenVertex& s = v[i];
      g = GpuVertex{{s.sx, s.sy, s.sz, s.rhw}, {0, 0, 0}, s.color, s.specular, {s.tu, s.tv}, 0};
    });
  }
  void DrawPrimitive(Primitive, const LitVertex* v, int count) override {
    Draw(kLit, count, [&](int i, GpuVertex& g) { g = From_Lit(v[i]); });
  }

  GeometryRef MakeGeometry(const LitVertex* v, const int* lengths, int strips) override {
    GeometryRef g = Device3D::MakeGeometry(v, lengths, strips);
    Ready_Buffers(*g);
    return g;
  }
  GeometryRef MakeGeometry(const MeshVertex* v, int vertex_count, const uint16_t* indices, int index_count) override {
    GeometryRef g = Device3D::MakeGeometry(v, vertex_count, indices, index_count);
    Ready_Buffers(*g);
    return g;
  }

  void DrawGeometry(const Geometry& g, int first, int count) override {
    const int parts = int(g.parts.size());
    if (program_ == 0 || first < 0 || count <= 0 || first >= parts || !Ready_Buffers(g)) return;
    if (index_used_ > 0) Flush();
    Begin_Kind(g.mesh.empty() ? kLit : kMesh);
    for (int i = first; i < std::min(first + count, parts); ++i) {
      const Geometry::Part& p = g.parts[size_t(i)];
      // A part out of sight costs the rasteriser nothing but would still be transformed.
      if (p.indices <= 0 || Out_Of_View(p.lo, p.hi)) continue;
      for (int k = p.first_piece; k < p.first_piece + p.pieces; ++k) {
        const Geometry::Piece& piece = g.pieces[size_t(k)];
        if (p.pieces > 1 && Out_Of_View(piece.lo, piece.hi)) continue;
        const int begin = piece.first_index, end = begin + piece.indices;
        // The next pieces of what is pending join it.
        if (kept_ == &g && kept_end_ == begin) {
          kept_end_ = end;
          continue;
        }
        Flush();
        kept_ = &g;
        kept_begin_ = begin;
        kept_end_ = end;
      }
    }
  }

  // Draws what is pending, if anything.
  void Flush() {
    if (kept_ != nullptr) {
      Draw_Kept();
      return;
    }
    if (index_used_ == 0) {
      vertex_used_ = 0;
      return;
    }
    if (Gl().context != nullptr && generation_ == Gl().generation && detail::Bind_Backbuffer()) {
      detail::Flush_Blits();  // queued before this
      if (!Apply_State()) {
        vertex_used_ = index_used_ = 0;
        return;
      }
      glBindVertexArray(vao_);
      glBindBuffer(GL_ARRAY_BUFFER, vbo_);
      glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, ebo_);
      if (ring_vertex_ + vertex_used_ > kRingBatches * kVertexCapacity ||
          ring_index_ + index_used_ > kRingBatches * kIndexCapacity) {
        // Orphaning gives fresh storage while the driver finishes with the old.
        glBufferData(GL_ARRAY_BUFFER, GLsizeiptr(size_t(kRingBatches) * kVertexCapacity * sizeof(GpuVertex)), nullptr,
                     GL_STREAM_DRAW);
        glBufferData(GL_ELEMENT_ARRAY_BUFFER, GLsizeiptr(size_t(kRingBatches) * kIndexCapacity * sizeof(uint32_t)),
                     nullptr, GL_STREAM_DRAW);
        ring_vertex_ = ring_index_ = 0;
      }
      glBufferSubData(GL_ARRAY_BUFFER, GLintptr(size_t(ring_vertex_) * sizeof(GpuVertex)),
                      GLsizeiptr(size_t(vertex_used_) * sizeof(GpuVertex)), vertices_.data());
      glBufferSubData(GL_ELEMENT_ARRAY_BUFFER, GLintptr(size_t(ring_index_) * sizeof(uint32_t)),
                      GLsizeiptr(size_t(index_used_) * sizeof(uint32_t)), indices_.data());
      g_triangles_sent += uint64_t(index_used_ / 3);
      glDrawElementsBaseVertex(GL_TRIANGLES, index_used_, GL_UNSIGNED_INT,
                               reinterpret_cast<void*>(size_t(ring_index_) * sizeof(uint32_t)), ring_vertex_);
      ring_vertex_ += vertex_used_;
      ring_index_ += index_used_;
      glBindVertexArray(0);
    }
    vertex_used_ = 0;
    index_used_ = 0;
  }

 private:
  static int Slot(TransformKind kind) {
    const int k = static_cast<int>(kind);
    return k >= 1 && k <= 3 ? k - 1 : -1;
  }

  void Update_Transforms() {
    if (!transforms_dirty_) return;
    wvp_ = Multiply(Multiply(transforms_[0], transforms_[1]), transforms_[2]);
    normal_matrix_ = Normal_Matrix(transforms_[0]);
    transforms_dirty_ = false;
  }

  // Whether the box, through world x view x projection, lies wholly beyond one side of the
  // view volume (depth 0..w). A box grazing a side by rounding counts as in view.
  bool Out_Of_View(const Vector3& lo, const Vector3& hi) {
    Update_Transforms();
    const float* m = &wvp_._11;
    std::array<int, 6> outside{};
    for (int c = 0; c < 8; ++c) {
      const float x = c & 1 ? hi.x : lo.x, y = c & 2 ? hi.y : lo.y, z = c & 4 ? hi.z : lo.z;
      float clip[4];
      for (int j = 0; j < 4; ++j) clip[j] = x * m[j] + y * m[4 + j] + z * m[8 + j] + m[12 + j];
      const float w = clip[3], margin = 1e-3f * std::fabs(w) + 1e-4f;
      outside[0] += clip[0] < -w - margin;
      outside[1] += clip[0] > w + margin;
      outside[2] += clip[1] < -w - margin;
      outside[3] += clip[1] > w + margin;
      outside[4] += clip[2] < -margin;
      outside[5] += clip[2] > w + margin;
    }
    return std::find(outside.begin(), outside.end(), 8) != outside.end();
  }

  void Draw_Kept() {
    const Geometry& g = *kept_;
    kept_ = nullptr;
    if (Gl().context == nullptr || generation_ != Gl().generation || g.generation != Gl().generation || g.vao == 0 ||
        !detail::Bind_Backbuffer())
      return;
    detail::Flush_Blits();  // queued before this
    if (!Apply_State()) return;
    glBindVertexArray(g.vao);
    g_triangles_sent += uint64_t((kept_end_ - kept_begin_) / 3);
    glDrawElements(GL_TRIANGLES, kept_end_ - kept_begin_, GL_UNSIGNED_INT,
                   reinterpret_cast<void*>(size_t(kept_begin_) * sizeof(uint32_t)));
    glBindVertexArray(0);
  }

  void Begin_Kind(int kind) {
    if (kind != kind_) {
      Flush();
      kind_ = kind;
    }
  }

  // Appends a strip as triangles, keeping the game's winding (odd triangles reversed).
  template <class Fill>
  void Draw(int kind, int count, Fill fill) {
    if (count < 3 || program_ == 0) return;
    if (kept_ != nullptr) Flush();
    Begin_Kind(kind);
    int start = 0;
    while (start + 2 < count) {
      int n = std::min(count - start, kVertexCapacity);
      const bool last = start + n == count;
      // A strip cut short restarts at its first undrawn triangle, at an even offset
      // so the triangles after it keep their winding.
      if (!last && n % 2 != 0) --n;
      const int triangles = n - 2;
      if (vertex_used_ + n > kVertexCapacity || index_used_ + triangles * 3 > kIndexCapacity) Flush();
      const uint32_t base = uint32_t(vertex_used_);
      for (int i = 0; i < n; ++i) fill(start + i, vertices_[size_t(vertex_used_ + i)]);
      vertex_used_ += n;
      for (int t = 0; t < triangles; ++t) {
        const uint32_t a = uint32_t(t), b = t % 2 == 0 ? a + 1 : a + 2, c = t % 2 == 0 ? a + 2 : a + 1;
        indices_[size_t(index_used_++)] = base + a;
        indices_[size_t(index_used_++)] = base + b;
        indices_[size_t(index_used_++)] = base + c;
      }
      start += n - 2;
    }
  }

  void Create_Gl_Objects() {
    generation_ = Gl().generation;
    variants_.reserve(kMaxVariants);
    if (Variant_For(Fragment_Key()) == nullptr) return;
    program_ = variants_.front().program;
    glGenVertexArrays(1, &vao_);
    glGenBuffers(1, &vbo_);
    glGenBuffers(1, &ebo_);
    glGenSamplers(1, &sampler_);
    glBindVertexArray(vao_);
    glBindBuffer(GL_ARRAY_BUFFER, vbo_);
    glBufferData(GL_ARRAY_BUFFER, GLsizeiptr(size_t(kRingBatches) * kVertexCapacity * sizeof(GpuVertex)), nullptr,
                 GL_STREAM_DRAW);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, ebo_);
    glBufferData(GL_ELEMENT_ARRAY_BUFFER, GLsizeiptr(size_t(kRingBatches) * kIndexCapacity * sizeof(uint32_t)), nullptr,
                 GL_STREAM_DRAW);
    Describe_Layout();
    glBindVertexArray(0);
  }

  // What picks the fragment program: a texture or none.
  uint32_t Fragment_Key() const { return texture_ && detail::Texture_Of(*texture_) != 0 ? 1 : 0; }

  // The program for a key, built the first time it is asked for; null when it cannot be
  // built or too many have been.
  struct Variant {
    uint32_t key = 0;
    GLuint program = 0;
    std::array<GLint, kUniformCount> at{};
    std::array<std::array<float, 16>, kUniformCount> sent{};  // the values the program holds
    std::array<bool, kUniformCount> known{};
  };
  Variant* Variant_For(uint32_t key) {
    for (Variant& v : variants_)
      if (v.key == key) return &v;
    if (variants_.size() == kMaxVariants) return nullptr;
    const std::string fragment =
        std::string("#version 330 core\nconst bool u_textured = ") + (key != 0 ? "true" : "false") + ";\n" +
        detail::kFixedFunctionFragment;
    const GLuint program = detail::Build_Program(detail::kFixedFunctionVertex, fragment.c_str());
    if (program == 0) return nullptr;
    Variant& v = variants_.emplace_back();
    v.key = key;
    v.program = program;
    for (int i = 0; i < kUniformCount; ++i) v.at[size_t(i)] = glGetUniformLocation(program, kUniformNames[i]);
    glUseProgram(program);
    glUniform1i(glGetUniformLocation(program, "u_texture"), 0);
    return &v;
  }

  // A program keeps its uniforms between draws: each is sent only when its value differs
  // from what was sent to that program last.
  bool Changed(Uniform u, const void* value, size_t bytes) {
    auto& sent = current_->sent[size_t(u)];
    if (current_->known[size_t(u)] && std::memcmp(sent.data(), value, bytes) == 0) return false;
    std::memcpy(sent.data(), value, bytes);
    current_->known[size_t(u)] = true;
    return current_->at[size_t(u)] >= 0;
  }
  void Send_Int(Uniform u, int v) {
    if (Changed(u, &v, sizeof v)) glUniform1i(current_->at[size_t(u)], v);
  }
  // Vectors of fewer than four go as their first components.
  void Send_Float4(Uniform u, const std::array<float, 4>& v) {
    if (!Changed(u, v.data(), sizeof v)) return;
    const GLint at = current_->at[size_t(u)];
    if (u == uLightTo)
      glUniform3f(at, v[0], v[1], v[2]);
    else
      glUniform4f(at, v[0], v[1], v[2], v[3]);
  }
  void Send_Color(Uniform u, const ColorValue& c) { Send_Float4(u, {c.r, c.g, c.b, c.a}); }
  void Send_Matrix4(Uniform u, const float* m) {
    if (Changed(u, m, 16 * sizeof(float))) glUniformMatrix4fv(current_->at[size_t(u)], 1, GL_FALSE, m);
  }
  void Send_Matrix3(Uniform u, const float* m) {
    if (Changed(u, m, 9 * sizeof(float))) glUniformMatrix3fv(current_->at[size_t(u)], 1, GL_FALSE, m);
  }
  uint32_t R(uint32_t state) const { return Render_State(state); }

  // False when no program can draw the state.
  bool Apply_State() {
    glActiveTexture(GL_TEXTURE0);
    current_ = Variant_For(Fragment_Key());
    if (current_ == nullptr) return false;
    glUseProgram(current_->program);
    glViewport(0, 0, width_, height_);
    glDisable(GL_SCISSOR_TEST);
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    if (R(rs::ZEnable) != 0 && Gl().depth != 0) {
      glEnable(GL_DEPTH_TEST);
      glDepthFunc(GL_LEQUAL);
    } else {
      glDisable(GL_DEPTH_TEST);
    }
    glDepthMask(R(rs::ZWriteEnable) != 0 ? GL_TRUE : GL_FALSE);
    if (R(rs::AlphaBlendEnable) != 0) {
      glEnable(GL_BLEND);
      glBlendFunc(Blend_Factor(R(rs::SrcBlend)), Blend_Factor(R(rs::DestBlend)));
    } else {
      glDisable(GL_BLEND);
    }
    // With the upper-left clip origin GL judges winding as the player sees the screen, so
    // the game's front faces (clockwise on screen) are GL's clockwise ones.
    const uint32_t cull_mode = R(rs::CullMode);
    if (cull_mode == cull::Clockwise || cull_mode == cull::CounterClockwise) {
      glEnable(GL_CULL_FACE);
      glFrontFace(GL_CW);
      glCullFace(cull_mode == cull::CounterClockwise ? GL_BACK : GL_FRONT);
    } else {
      glDisable(GL_CULL_FACE);
    }

    Update_Transforms();
    Send_Matrix4(uWvp, &wvp_._11);
    Send_Matrix3(uNormalMatrix, normal_matrix_.data());
    Send_Int(uKind, kind_);
    Send_Float4(uViewport, {0, 0, float(width_), float(height_)});
    Send_Int(uLighting, R(rs::Lighting) != 0);
    const uint32_t ambient = R(rs::Ambient);
    Send_Float4(uAmbient, {float((ambient >> 16) & 0xFF) / 255.0f, float((ambient >> 8) & 0xFF) / 255.0f,
                           float(ambient & 0xFF) / 255.0f, float(ambient >> 24) / 255.0f});
    Send_Color(uMatDiffuse, material_.diffuse);
    Send_Color(uMatAmbient, material_.ambient);
    Send_Color(uMatEmissive, material_.emissive);
    Send_Int(uLightOn, light_on_);
    Vector3 d = light_.direction;
    const float len = std::sqrt(d.x * d.x + d.y * d.y + d.z * d.z);
    if (len > 0) d = {-d.x / len, -d.y / len, -d.z / len};
    Send_Float4(uLightTo, {d.x, d.y, d.z, 0});
    Send_Color(uLightDiffuse, light_.diffuse);
    Send_Color(uLightAmbient, light_.ambient);

    glActiveTexture(GL_TEXTURE0);
    const GLuint texture = texture_ ? detail::Texture_Of(*texture_) : 0;
    glBindTexture(GL_TEXTURE_2D, texture);
    const std::array<GLint, 2> sampling = {R(rs::TextureMag) == filter::Linear ? GL_LINEAR : GL_NEAREST,
                                           R(rs::TextureMin) == filter::Linear ? GL_LINEAR : GL_NEAREST};
    if (sampling != sampling_) {
      sampling_ = sampling;
      glSamplerParameteri(sampler_, GL_TEXTURE_MAG_FILTER, sampling[0]);
      glSamplerParameteri(sampler_, GL_TEXTURE_MIN_FILTER, sampling[1]);
    }
    glBindSampler(0, sampler_);
    return true;
  }

  std::string identifier_;
  uint64_t generation_ = 0;
  GLuint program_ = 0, vao_ = 0, vbo_ = 0, ebo_ = 0, sampler_ = 0;
  std::vector<Variant> variants_;  // reserved once, so pointers into it stay good
  Variant* current_ = nullptr;
  std::array<GLint, 2> sampling_{};  // magnify, minify as the sampler has them
  Matrix4 wvp_;
  std::array<float, 9> normal_matrix_{};
  bool transforms_dirty_ = true;
  int ring_vertex_ = 0, ring_index_ = 0;  // where the next batch goes in the GL buffers
  std::vector<GpuVertex> vertices_;
  std::vector<uint32_t> indices_;
  int vertex_used_ = 0, index_used_ = 0;
  int kind_ = kScreen;
  const Geometry* kept_ = nullptr;     // kept geometry waiting to be drawn: its triangles
  int kept_begin_ = 0, kept_end_ = 0;  // [begin, end) of its index list

  std::array<Matrix4, 3> transforms_;
  D3DMaterial material_;
  ImageRef texture_;
  std::array<uint32_t, kStateSlots> render_states_{};
  int width_ = 0, height_ = 0;  // the back buffer's
  D3DLight light_;
  bool light_on_ = false;
};
}  // namespace

namespace detail {
void Flush_3D() {
  if (g_live_device != nullptr) g_live_device->Flush();
}
void Flush_Device() {
  Flush_3D();
  Flush_Blits();
}
}  // namespace detail

Geometry::~Geometry() {
  detail::Flush_Device();  // it may be waiting to be drawn
  Forget_Buffers(*this);
}

namespace {
constexpr int kPieceTriangles = 32;

template <class Vertex>
void Grow(Vector3& lo, Vector3& hi, const Vertex& v) {
  lo = Vector3{std::min(lo.x, v.x), std::min(lo.y, v.y), std::min(lo.z, v.z)};
  hi = Vector3{std::max(hi.x, v.x), std::max(hi.y, v.y), std::max(hi.z, v.z)};
}

// The box round the part's vertices, and its triangles cut into pieces with boxes of their own.
template <class Vertex>
void Box_Round(Geometry& g, Geometry::Part& part, const Vertex* v) {
  if (part.vertices > 0) {
    const Vertex& first = v[part.first_vertex];
    part.lo = part.hi = Vector3{first.x, first.y, first.z};
    for (int i = 1; i < part.vertices; ++i) Grow(part.lo, part.hi, v[part.first_vertex + i]);
  }
  part.first_piece = int(g.pieces.size());
  const int end = part.first_index + part.indices;
  for (int begin = part.first_index; begin < end; begin += 3 * kPieceTriangles) {
    Geometry::Piece piece{begin, std::min(3 * kPieceTriangles, end - begin)};
    const Vertex& first = v[g.triangles[size_t(begin)]];
    piece.lo = piece.hi = Vector3{first.x, first.y, first.z};
    for (int i = begin + 1; i < begin + piece.indices; ++i) Grow(piece.lo, piece.hi, v[g.triangles[size_t(i)]]);
    g.pieces.push_back(piece);
  }
  part.pieces = int(g.pieces.size()) - part.first_piece;
}
}  // namespace

GeometryRef Device3D::MakeGeometry(const LitVertex* v, const int* lengths, int strips) {
  auto g = std::make_shared<Geometry>();
  if (v == nullptr || lengths == nullptr) return g;
  for (int i = 0; i < strips; ++i) {
    const int n = std::max(0, lengths[i]);
    Geometry::Part part{int(g->lit.size()), n, int(g->triangles.size()), 0};
    g->lit.insert(g->lit.end(), v, v + n);
    v += n;
    Append_Strip(g->triangles, uint32_t(part.first_vertex), n);
    part.indices = int(g->triangles.size()) - part.first_index;
    Box_Round(*g, part, g->lit.data());
    g->parts.push_back(part);
  }
  return g;
}

GeometryRef Device3D::MakeGeometry(const MeshVertex* v, int vertex_count, const uint16_t* indices, int index_count) {
  auto g = std::make_shared<Geometry>();
  g->parts.resize(1);
  if (v == nullptr || indices == nullptr || vertex_count <= 0 || index_count < 3) return g;
  g->mesh.assign(v, v + vertex_count);
  if (vertex_count <= kVertexCapacity)
    for (int i = 0; i + 2 < index_count; i += 3) {
      const uint16_t a = indices[i], b = indices[i + 1], c = indices[i + 2];
      if (a >= vertex_count || b >= vertex_count || c >= vertex_count) continue;  // a bad index draws nothing
      g->triangles.insert(g->triangles.end(), {a, b, c});
    }
  g->parts[0] = {0, vertex_count, 0, int(g->triangles.size())};
  Box_Round(*g, g->parts[0], v);
  return g;
}

void Device3D::DrawGeometry(const Geometry& g, int first, int count) {
  if (!g.mesh.empty()) return;
  for (int i = std::max(first, 0); i < first + count && i < int(g.parts.size()); ++i) {
    const Geometry::Part& p = g.parts[size_t(i)];
    if (p.vertices >= 3) DrawPrimitive(Primitive::TriangleStrip, g.lit.data() + p.first_vertex, p.vertices);
  }
}

std::unique_ptr<Device3D> Create_Device(const std::string& identifier) {
  if (Gl().context == nullptr || Gl().fbo == 0) return nullptr;
  auto device = std::make_unique<GlDevice>(Resolve_Device(identifier));
  if (!device->Ready()) return nullptr;
  return device;
}

std::string Device_Identifier(const Device3D& device) {
  const auto* gl = dynamic_cast<const GlDevice*>(&device);
  return gl != nullptr ? gl->Identifier() : std::string();
}

uint64_t Triangles_Sent() { return g_triangles_sent; }

uint32_t Render_State(const Device3D& device, uint32_t state) {
  const auto* gl = dynamic_cast<const GlDevice*>(&device);
  return gl != nullptr ? gl->Render_State(state) : 0;
}

}  // namespace platform
