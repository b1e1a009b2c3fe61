// The fixed-function 3D device over GL: the game's states are kept as numbers and
// applied when a batch is drawn. Vertices of every format are widened into one layout
// and collected, with triangle-list indices, into buffers kept for the device's life;
// a batch is drawn with one call when a state changes, the buffers fill up, or anything
// else needs the back buffer.
#include <epoxy/gl.h>

#include <array>
#include <cmath>
#include <cstring>
#include <unordered_map>

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
  uTextured,
  uFlat,
  uAlphaModulate,
  kUniformCount
};
const char* const kUniformNames[kUniformCount] = {
    "u_kind",          "u_wvp",         "u_normal_matrix", "u_viewport",      "u_lighting", "u_ambient",
    "u_mat_diffuse",   "u_mat_ambient", "u_mat_emissive",  "u_light_on",      "u_light_to", "u_light_diffuse",
    "u_light_ambient", "u_textured",    "u_flat",          "u_alpha_modulate"};

enum Kind : int { kScreen = 0, kLit = 1, kMesh = 2 };

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

void Set_Color(GLint location, const ColorValue& c) { glUniform4f(location, c.r, c.g, c.b, c.a); }

void Set_Argb(GLint location, uint32_t argb) {
  glUniform4f(location, float((argb >> 16) & 0xFF) / 255.0f, float((argb >> 8) & 0xFF) / 255.0f,
              float(argb & 0xFF) / 255.0f, float(argb >> 24) / 255.0f);
}

class GlDevice;
GlDevice* g_live_device = nullptr;

class GlDevice final : public Device3D {
 public:
  explicit GlDevice(std::string identifier) : identifier_(std::move(identifier)) {
    vertices_.resize(kVertexCapacity);
    indices_.resize(kIndexCapacity);
    transforms_[0] = transforms_[1] = transforms_[2] = Identity();
    // The device's defaults; the game sets the rest at start-up.
    render_states_ = {{rs::ZEnable, 1},
                      {rs::ShadeMode, 2},
                      {rs::ZWriteEnable, 1},
                      {rs::SrcBlend, blend::One},
                      {rs::DestBlend, blend::Zero},
                      {rs::CullMode, cull::CounterClockwise},
                      {rs::AlphaBlendEnable, 0},
                      {rs::Lighting, 1},
                      {rs::Ambient, 0}};
    stage_ = {{tss::AlphaOp, tss::OpSelectArg1}, {tss::MagFilter, tss::Point}, {tss::MinFilter, tss::Point}};
    viewport_ = {0, 0, Gl().width, Gl().height, 0, 1};
    Create_Gl_Objects();
    g_live_device = this;
  }

  ~GlDevice() override {
    if (g_live_device == this) g_live_device = nullptr;
    if (Gl().context != nullptr && generation_ == Gl().generation) {
      glDeleteProgram(program_);
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
    auto it = render_states_.find(state);
    if (it != render_states_.end() && it->second == value) return;
    Flush();
    render_states_[state] = value;
  }
  uint32_t Render_State(uint32_t state) const {
    auto it = render_states_.find(state);
    return it == render_states_.end() ? 0 : it->second;
  }

  void SetTextureStageState(int stage, uint32_t state, uint32_t value) override {
    if (stage != 0) return;
    auto it = stage_.find(state);
    if (it != stage_.end() && it->second == value) return;
    Flush();
    stage_[state] = value;
  }

  void SetViewport(const Viewport& viewport) override {
    Flush();
    viewport_ = viewport;
  }

  void SetLight(int index, const D3DLight& light) override {
    if (index != 0) return;  // one light is all the game uses
    Flush();
    light_ = light;
    light_on_ = true;
  }

  void Clear(const Rect* rects, int count, uint32_t flags, uint32_t argb, float z, uint32_t stencil) override {
    Flush();
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
    const Rect whole{viewport_.x, viewport_.y, viewport_.x + viewport_.width, viewport_.y + viewport_.height};
    for (int i = 0; i < (count > 0 ? count : 1); ++i) {
      // Clears stay inside the viewport, as the game expects.
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

  void BeginScene() override {}
  void EndScene() override { Flush(); }

  void DrawPrimitive(Primitive, const ScreenVertex* v, int count) override {
    Draw(kScreen, count, [&](int i, GpuVertex& g) {
      const ScreenVertex& s = v[i];
      g = GpuVertex{{s.sx, s.sy, s.sz, s.rhw}, {0, 0, 0}, s.color, s.specular, {s.tu, s.tv}, 0};
    });
  }
  void DrawPrimitive(Primitive, const LitVertex* v, int count) override {
    Draw(kLit, count, [&](int i, GpuVertex& g) {
      const LitVertex& s = v[i];
      g = GpuVertex{{s.x, s.y, s.z, 1}, {0, 0, 0}, s.color, s.specular, {s.tu, s.tv}, 0};
    });
  }

  void DrawIndexedMesh(const MeshVertex* v, int vertex_count, const uint16_t* indices, int index_count) override {
    if (v == nullptr || indices == nullptr || vertex_count <= 0 || index_count < 3 || program_ == 0) return;
    if (vertex_count > kVertexCapacity) return;
    Begin_Kind(kMesh);
    index_count -= index_count % 3;
    // Whole triangles per pass; a list longer than the index buffer goes in several.
    for (int first = 0; first < index_count;) {
      const int n = std::min(index_count - first, kIndexCapacity - kIndexCapacity % 3);
      if (vertex_used_ + vertex_count > kVertexCapacity || index_used_ + n > kIndexCapacity) Flush();
      const uint32_t base = uint32_t(vertex_used_);
      for (int i = 0; i < vertex_count; ++i) vertices_[size_t(vertex_used_ + i)] = From_Mesh(v[i]);
      vertex_used_ += vertex_count;
      for (int i = 0; i < n; i += 3) {
        const uint16_t a = indices[first + i], b = indices[first + i + 1], c = indices[first + i + 2];
        if (a >= vertex_count || b >= vertex_count || c >= vertex_count) continue;  // a bad index draws nothing
        indices_[size_t(index_used_++)] = base + a;
        indices_[size_t(index_used_++)] = base + b;
        indices_[size_t(index_used_++)] = base + c;
      }
      first += n;
    }
  }

  void Flush() {
    if (index_used_ == 0) {
      vertex_used_ = 0;
      return;
    }
    if (Gl().context != nullptr && generation_ == Gl().generation && detail::Bind_Backbuffer()) {
      Apply_State();
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

  static GpuVertex From_Mesh(const MeshVertex& s) {
    return GpuVertex{{s.x, s.y, s.z, 1}, {s.nx, s.ny, s.nz}, 0xFFFFFFFFu, 0, {s.tu, s.tv}, 0};
  }

  void Begin_Kind(int kind) {
    if (kind != kind_) {
      Flush();
      kind_ = kind;
    }
  }

  // Appends a strip as triangles, keeping the game's winding (odd triangles reversed) and
  // each triangle's first vertex first, which flat shading takes.
  template <class Fill>
  void Draw(int kind, int count, Fill fill) {
    if (count < 3 || program_ == 0) return;
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
        uint32_t a, b, c;
        if (t % 2 == 0) {
          a = t;
          b = t + 1;
          c = t + 2;
        } else {
          a = t;
          b = t + 2;
          c = t + 1;
        }
        indices_[size_t(index_used_++)] = base + a;
        indices_[size_t(index_used_++)] = base + b;
        indices_[size_t(index_used_++)] = base + c;
      }
      start += n - 2;
    }
  }

  void Create_Gl_Objects() {
    generation_ = Gl().generation;
    program_ = detail::Build_Program(detail::kFixedFunctionVertex, detail::kFixedFunctionFragment);
    if (program_ == 0) return;
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
    glBindVertexArray(0);
    for (int i = 0; i < kUniformCount; ++i) uniforms_[size_t(i)] = glGetUniformLocation(program_, kUniformNames[i]);
    glUseProgram(program_);
    glUniform1i(glGetUniformLocation(program_, "u_texture"), 0);
    glProvokingVertex(GL_FIRST_VERTEX_CONVENTION);
  }

  GLint U(Uniform u) const { return uniforms_[size_t(u)]; }
  uint32_t R(uint32_t state) const { return Render_State(state); }
  uint32_t S(uint32_t state) const {
    auto it = stage_.find(state);
    return it == stage_.end() ? 0 : it->second;
  }

  void Apply_State() {
    glUseProgram(program_);
    glViewport(viewport_.x, viewport_.y, viewport_.width, viewport_.height);
    glDepthRange(viewport_.min_z, viewport_.max_z);
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

    const Matrix4 wvp = Multiply(Multiply(transforms_[0], transforms_[1]), transforms_[2]);
    glUniformMatrix4fv(U(uWvp), 1, GL_FALSE, &wvp._11);
    const std::array<float, 9> nm = Normal_Matrix(transforms_[0]);
    glUniformMatrix3fv(U(uNormalMatrix), 1, GL_FALSE, nm.data());
    glUniform1i(U(uKind), kind_);
    glUniform4f(U(uViewport), float(viewport_.x), float(viewport_.y), float(viewport_.width), float(viewport_.height));
    glUniform1i(U(uLighting), R(rs::Lighting) != 0);
    Set_Argb(U(uAmbient), R(rs::Ambient));
    Set_Color(U(uMatDiffuse), material_.diffuse);
    Set_Color(U(uMatAmbient), material_.ambient);
    Set_Color(U(uMatEmissive), material_.emissive);
    glUniform1i(U(uLightOn), light_on_);
    Vector3 d = light_.direction;
    const float len = std::sqrt(d.x * d.x + d.y * d.y + d.z * d.z);
    if (len > 0) d = {-d.x / len, -d.y / len, -d.z / len};
    glUniform3f(U(uLightTo), d.x, d.y, d.z);
    Set_Color(U(uLightDiffuse), light_.diffuse);
    Set_Color(U(uLightAmbient), light_.ambient);
    glUniform1i(U(uFlat), R(rs::ShadeMode) == 1);
    glUniform1i(U(uAlphaModulate), S(tss::AlphaOp) == tss::OpModulate);

    glActiveTexture(GL_TEXTURE0);
    const GLuint texture = texture_ ? detail::Texture_Of(*texture_) : 0;
    glUniform1i(U(uTextured), texture != 0);
    glBindTexture(GL_TEXTURE_2D, texture);
    glSamplerParameteri(sampler_, GL_TEXTURE_MAG_FILTER, S(tss::MagFilter) == tss::Linear ? GL_LINEAR : GL_NEAREST);
    glSamplerParameteri(sampler_, GL_TEXTURE_MIN_FILTER, S(tss::MinFilter) == tss::Linear ? GL_LINEAR : GL_NEAREST);
    glBindSampler(0, sampler_);
  }

  std::string identifier_;
  uint64_t generation_ = 0;
  GLuint program_ = 0, vao_ = 0, vbo_ = 0, ebo_ = 0, sampler_ = 0;
  std::array<GLint, kUniformCount> uniforms_{};
  int ring_vertex_ = 0, ring_index_ = 0;  // where the next batch goes in the GL buffers
  std::vector<GpuVertex> vertices_;
  std::vector<uint32_t> indices_;
  int vertex_used_ = 0, index_used_ = 0;
  int kind_ = kScreen;

  std::array<Matrix4, 3> transforms_;
  D3DMaterial material_;
  ImageRef texture_;
  std::unordered_map<uint32_t, uint32_t> render_states_;
  std::unordered_map<uint32_t, uint32_t> stage_;
  Viewport viewport_;
  D3DLight light_;
  bool light_on_ = false;
};
}  // namespace

namespace detail {
void Flush_Device() {
  if (g_live_device != nullptr) g_live_device->Flush();
}
}  // namespace detail

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

uint32_t Render_State(const Device3D& device, uint32_t state) {
  const auto* gl = dynamic_cast<const GlDevice*>(&device);
  return gl != nullptr ? gl->Render_State(state) : 0;
}

}  // namespace platform
