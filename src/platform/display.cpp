// The display: the GL context on the game window, the device list, the off-screen back
// buffer with its depth buffer, and presenting it scaled to the window.
#include <SDL.h>
#include <epoxy/gl.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <thread>

#include "platform/gl_internal.h"
#include "platform/gl_state.h"
#include "platform/pacer.h"
#include "platform/platform.h"
#include "platform/render.h"
#include "platform/sdl_internal.h"
#include "platform/testing.h"

namespace platform {
namespace detail {

namespace {
// Plain data with constant initial values: usable from any destructor at exit.
GlDisplay g_display;
}  // namespace

GlDisplay& Gl() { return g_display; }

bool Gl_Ready() { return Gl().context != nullptr; }
int Backbuffer_Width() { return Gl().fbo != 0 ? Gl().width : 0; }
int Backbuffer_Height() { return Gl().fbo != 0 ? Gl().height : 0; }

namespace {
GLuint Compile(GLenum kind, const char* source) {
  const GLuint shader = glCreateShader(kind);
  glShaderSource(shader, 1, &source, nullptr);
  glCompileShader(shader);
  GLint ok = 0;
  glGetShaderiv(shader, GL_COMPILE_STATUS, &ok);
  if (!ok) {
    char log[2048] = {};
    glGetShaderInfoLog(shader, sizeof log, nullptr, log);
    std::fprintf(stderr, "shader compile failed: %s\n", log);
    glDeleteShader(shader);
    return 0;
  }
  return shader;
}
}  // namespace

GLuint Build_Program(const char* vertex_source, const char* fragment_source) {
  const GLuint vs = Compile(GL_VERTEX_SHADER, vertex_source);
  const GLuint fs = Compile(GL_FRAGMENT_SHADER, fragment_source);
  GLuint program = 0;
  if (vs != 0 && fs != 0) {
    program = glCreateProgram();
    glAttachShader(program, vs);
    glAttachShader(program, fs);
    glLinkProgram(program);
    GLint ok = 0;
    glGetProgramiv(program, GL_LINK_STATUS, &ok);
    if (!ok) {
      char log[2048] = {};
      glGetProgramInfoLog(program, sizeof log, nullptr, log);
      std::fprintf(stderr, "shader link failed: %s\n", log);
      glDeleteProgram(program);
      program = 0;
    }
  }
  if (vs != 0) glDeleteShader(vs);
  if (fs != 0) glDeleteShader(fs);
  return program;
}

bool Bind_Backbuffer() {
  GlDisplay& gl = Gl();
  if (gl.context == nullptr || gl.fbo == 0) return false;
  glBindFramebuffer(GL_FRAMEBUFFER, gl.fbo);
  return true;
}

void Forget_Texture(GpuState& gpu) {
  if (gpu.texture != 0 && gpu.generation == Gl().generation && Gl().context != nullptr) {
    Flush_Device();  // a queued blit may still read it
    glDeleteTextures(1, &gpu.texture);
  }
  gpu.texture = 0;
  gpu.stale = true;
}

uint32_t Texture_Of(Image& image) {
  GlDisplay& gl = Gl();
  if (gl.context == nullptr || ImageAccess::Is_Backbuffer(image)) return 0;
  GpuState& gpu = ImageAccess::Gpu(image);
  if (gpu.generation != gl.generation) {
    gpu.texture = 0;  // a name from an earlier context means nothing now
    gpu.stale = true;
  }
  if (gpu.texture == 0) {
    glGenTextures(1, &gpu.texture);
    gpu.generation = gl.generation;
    gpu.stale = true;
  }
  if (!gpu.stale) {
    glBindTexture(GL_TEXTURE_2D, gpu.texture);
    return gpu.texture;
  }
  Flush_Blits();  // queued blits read the pixels as they were
  glBindTexture(GL_TEXTURE_2D, gpu.texture);
  const bool direct = !image.Color_Key() && image.Format() != PixelFormat::X8R8G8B8;
  glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
  glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
  if (direct) {
    // Both memory layouts match a GL packed type bit for bit, so they upload as they stand.
    const GLenum type =
        image.Format() == PixelFormat::A4R4G4B4 ? GL_UNSIGNED_SHORT_4_4_4_4_REV : GL_UNSIGNED_INT_8_8_8_8_REV;
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, image.Width(), image.Height(), 0, GL_BGRA, type,
                 ImageAccess::Pixels(image).data());
  } else {
    // The colour key becomes alpha 0; 2D surfaces are otherwise opaque.
    static std::vector<uint32_t> scratch;
    scratch.resize(size_t(image.Width()) * size_t(image.Height()));
    size_t i = 0;
    for (int y = 0; y < image.Height(); ++y) {
      for (int x = 0; x < image.Width(); ++x, ++i) {
        const uint32_t raw = ImageAccess::Raw(image, x, y);
        scratch[i] = To_Argb(image.Format(), raw) & (ImageAccess::Is_Key(image, raw) ? 0x00FFFFFFu : 0xFFFFFFFFu);
      }
    }
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, image.Width(), image.Height(), 0, GL_BGRA, GL_UNSIGNED_INT_8_8_8_8_REV,
                 scratch.data());
  }
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, 0);
  gpu.stale = false;
  return gpu.texture;
}

}  // namespace detail

namespace {
using detail::Gl;

bool Is_Software_Renderer(const std::string& renderer) {
  for (const char* name : {"llvmpipe", "softpipe", "swrast", "Software Rasterizer"})
    if (renderer.find(name) != std::string::npos) return true;
  return false;
}

// The renderer of a context made the default way: from the live context when there is
// one, otherwise from a hidden probe window. Empty when GL cannot be had at all.
std::optional<std::string> g_default_renderer;

std::string Probe_Default_Renderer() {
  if (g_default_renderer) return *g_default_renderer;
  std::string renderer;
  if (Gl().context != nullptr) {
    renderer = reinterpret_cast<const char*>(glGetString(GL_RENDERER));
  } else if (detail::Prepare_GL_Window()) {
    SDL_Window* probe = SDL_CreateWindow("probe", 0, 0, 16, 16, SDL_WINDOW_OPENGL | SDL_WINDOW_HIDDEN);
    if (probe != nullptr) {
      SDL_GLContext context = SDL_GL_CreateContext(probe);
      if (context != nullptr) {
        if (const auto* name = glGetString(GL_RENDERER)) renderer = reinterpret_cast<const char*>(name);
        SDL_GL_DeleteContext(context);
      }
      SDL_DestroyWindow(probe);
    }
  }
  g_default_renderer = renderer;
  return renderer;
}
}  // namespace

std::vector<DeviceInfo> Device_List() {
  std::vector<DeviceInfo> list;
  const std::string renderer = Probe_Default_Renderer();
  if (renderer.empty()) return list;
  if (!Is_Software_Renderer(renderer)) {
    list.push_back({kTnLHardwareDevice, "Hardware T&L - " + renderer, false});
    list.push_back({kHardwareDevice, "Hardware - " + renderer, false});
  }
  // The software device is Mesa's rasteriser; when it is the default its own name is known.
  list.push_back({kSoftwareDevice,
                  "Software - " + (Is_Software_Renderer(renderer) ? renderer : std::string("llvmpipe (Mesa)")), true});
  return list;
}

std::string Resolve_Device(const std::string& identifier) {
  const std::vector<DeviceInfo> list = Device_List();
  for (const DeviceInfo& d : list)
    if (d.identifier == identifier) return identifier;
  return list.empty() ? std::string() : list.front().identifier;
}

namespace {
bool Start_Context(const std::string& device_identifier, std::string& error) {
  detail::GlDisplay& gl = Gl();
  const std::string device = Resolve_Device(device_identifier);
  if (device.empty()) {
    error = "No OpenGL 3.3 device could be found on this computer.";
    return false;
  }
  if (detail::Window() == nullptr && !Open_Window("Brindlex Quorval")) {
    error = "The game window could not be opened.";
    return false;
  }
  if (device == kSoftwareDevice && !Is_Software_Renderer(Probe_Default_Renderer())) {
    // Mesa picks its rasteriser when the GL library starts up, so the window's GL
    // library is reloaded with the software rasteriser asked for.
    const std::string title = SDL_GetWindowTitle(detail::Window());
    Close_Window();
    SDL_GL_UnloadLibrary();
    setenv("LIBGL_ALWAYS_SOFTWARE", "1", 1);
    if (!Open_Window(title.c_str())) {
      error = "The game window could not be opened.";
      return false;
    }
  }
  detail::Prepare_GL_Window();
  SDL_GLContext context = SDL_GL_CreateContext(detail::Window());
  if (context == nullptr) {
    error = std::string("OpenGL 3.3 could not be started: ") + SDL_GetError();
    return false;
  }
  if (epoxy_gl_version() < 45 && !epoxy_has_gl_extension("GL_ARB_clip_control")) {
    SDL_GL_DeleteContext(context);
    error = "The OpenGL driver lacks clip control (OpenGL 4.5 or GL_ARB_clip_control is needed).";
    return false;
  }
  gl.context = context;
  ++gl.generation;
  SDL_GL_SetSwapInterval(1);
  // The game's screen orientation and depth range: y down, depth 0..1.
  glClipControl(GL_UPPER_LEFT, GL_ZERO_TO_ONE);
  return true;
}

void Release_Backbuffer() {
  detail::GlDisplay& gl = Gl();
  if (gl.fbo != 0) detail::Flush_Device();
  if (gl.depth != 0) glDeleteRenderbuffers(1, &gl.depth);
  if (gl.fbo != 0) glDeleteFramebuffers(1, &gl.fbo);
  if (gl.color != 0) glDeleteTextures(1, &gl.color);
  gl.fbo = 0;
  gl.color = 0;
  gl.depth = 0;
  gl.width = gl.height = 0;
}

// The colour texture and the 24-bit depth buffer the game draws into, cleared.
bool Make_Backbuffer(int width, int height) {
  detail::GlDisplay& gl = Gl();
  glGenTextures(1, &gl.color);
  glBindTexture(GL_TEXTURE_2D, gl.color);
  glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, width, height, 0, GL_BGRA, GL_UNSIGNED_BYTE, nullptr);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, 0);
  glGenFramebuffers(1, &gl.fbo);
  glBindFramebuffer(GL_FRAMEBUFFER, gl.fbo);
  glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, gl.color, 0);
  glGenRenderbuffers(1, &gl.depth);
  glBindRenderbuffer(GL_RENDERBUFFER, gl.depth);
  glRenderbufferStorage(GL_RENDERBUFFER, GL_DEPTH_COMPONENT24, width, height);
  glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, gl.depth);
  if (glCheckFramebufferStatus(GL_FRAMEBUFFER) != GL_FRAMEBUFFER_COMPLETE) {
    Release_Backbuffer();
    return false;
  }
  gl.width = width;
  gl.height = height;
  glViewport(0, 0, width, height);
  glClearColor(0, 0, 0, 1);
  glClearDepth(1.0);
  glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  detail::Set_Backbuffer_Size(width, height);
  return true;
}
}  // namespace

ImageRef Open_Display(const std::string& device_identifier, int width, int height, std::string& error) {
  if (width < 1 || height < 1 || width > 16384 || height > 16384) {
    error = "The screen could not be set to " + std::to_string(width) + "x" + std::to_string(height) + ".";
    return nullptr;
  }
  if (Gl().context == nullptr && !Start_Context(device_identifier, error)) return nullptr;
  Release_Backbuffer();
  if (!Make_Backbuffer(width, height)) {
    error = "Surface creation failed.";
    return nullptr;
  }
  return detail::ImageAccess::Backbuffer(width, height);
}

namespace {
FramePacer g_pacer;
int g_test_refresh_hz = 0;

int Refresh_Rate() {
  if (g_test_refresh_hz > 0) return g_test_refresh_hz;
  SDL_DisplayMode mode{};
  const int index = detail::Window() != nullptr ? SDL_GetWindowDisplayIndex(detail::Window()) : -1;
  if (index >= 0 && SDL_GetCurrentDisplayMode(index, &mode) == 0 && mode.refresh_rate > 0) return mode.refresh_rate;
  return 60;
}

bool Minimised() {
  SDL_Window* window = detail::Window();
  return window != nullptr && (SDL_GetWindowFlags(window) & (SDL_WINDOW_MINIMIZED | SDL_WINDOW_HIDDEN)) != 0;
}

// The game steps its menus, bars and camera once per frame, so frames must come at the
// display's rate: the swap's own wait does that, and where swaps return early the pacer
// sleeps instead. Tests on the manual clock never sleep.
void Pace_To_Refresh() {
  using namespace std::chrono;
  if (Manual_Clock()) return;
  const double now = duration<double, std::milli>(steady_clock::now().time_since_epoch()).count();
  const double wait = g_pacer.After_Swap(now, 1000.0 / Refresh_Rate());
  if (wait > 0) std::this_thread::sleep_for(duration<double, std::milli>(wait));
}
}  // namespace

void Set_Refresh_Rate(int hz) { g_test_refresh_hz = hz; }

double Design_Steps_Per_Frame() { return std::min(1.0, 60.0 / Refresh_Rate()); }

void Present() {
  detail::GlDisplay& gl = Gl();
  if (gl.context == nullptr || detail::Window() == nullptr) return;
  detail::Flush_Device();
  if (Minimised()) return;  // nothing to show it on; the pump waits for the window
  int ww = 0, wh = 0;
  SDL_GL_GetDrawableSize(detail::Window(), &ww, &wh);
  const detail::Letterbox& lb = detail::Current_Letterbox();
  glBindFramebuffer(GL_DRAW_FRAMEBUFFER, 0);
  glDisable(GL_SCISSOR_TEST);
  glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
  glViewport(0, 0, ww, wh);
  glClearColor(0, 0, 0, 1);
  glClear(GL_COLOR_BUFFER_BIT);
  if (gl.fbo != 0 && lb.width > 0 && lb.height > 0) {
    const int w = lb.width, h = lb.height, x0 = lb.x0, y0 = wh - lb.y0 - h;
    glBindFramebuffer(GL_READ_FRAMEBUFFER, gl.fbo);
    // Our row 0 is the top; the window's row 0 is the bottom, so the blit turns it over.
    const bool exact = w % gl.width == 0 && h % gl.height == 0;
    glBlitFramebuffer(0, 0, gl.width, gl.height, x0, y0 + h, x0 + w, y0, GL_COLOR_BUFFER_BIT,
                      exact ? GL_NEAREST : GL_LINEAR);
  }
  SDL_GL_SwapWindow(detail::Window());
  glBindFramebuffer(GL_FRAMEBUFFER, gl.fbo);
  Pace_To_Refresh();
}

void Close_Display() {
  detail::GlDisplay& gl = Gl();
  if (gl.context == nullptr) return;
  Release_Backbuffer();
  detail::Release_Blit_Program();
  SDL_GL_MakeCurrent(detail::Window(), nullptr);
  SDL_GL_DeleteContext(static_cast<SDL_GLContext>(gl.context));
  gl.context = nullptr;
}

}  // namespace platform
