// The dialog window: SDL window, its GL 3.3 context and ImGui with its SDL2 and OpenGL3
// backends (compiled from the system's ImGui package).
#include <SDL.h>
#include <backends/imgui_impl_opengl3.h>
#include <backends/imgui_impl_sdl.h>
#include <epoxy/gl.h>
#include <imgui.h>

#include <filesystem>

#include "platform/dialog.h"
#include "platform/sdl_internal.h"
#include "platform/testing.h"

namespace platform {
namespace {
SDL_Window* g_window = nullptr;
SDL_GLContext g_context = nullptr;
std::function<bool(uint64_t, DialogPointer&)> g_script;
uint64_t g_frame = 0;
bool g_keep = false;
std::vector<uint32_t> g_pixels;
int g_pixels_w = 0, g_pixels_h = 0;

void Load_Fonts(const std::string& font_file, const std::string& title_font_file) {
  ImGuiIO& io = ImGui::GetIO();
  std::error_code ec;
  if (!font_file.empty() && std::filesystem::is_regular_file(font_file, ec))
    io.Fonts->AddFontFromFileTTF(font_file.c_str(), 15.0f);
  else
    io.Fonts->AddFontDefault();
  if (!title_font_file.empty() && std::filesystem::is_regular_file(title_font_file, ec))
    io.Fonts->AddFontFromFileTTF(title_font_file.c_str(), 24.0f);
  else
    io.Fonts->AddFontDefault();
}
}  // namespace

bool Open_Dialog(const char* caption, int width, int height, const std::string& font_file,
                 const std::string& title_font_file) {
  if (g_window != nullptr) return true;
  if (!detail::Prepare_GL_Window()) return false;
  g_window = SDL_CreateWindow(caption, SDL_WINDOWPOS_CENTERED, SDL_WINDOWPOS_CENTERED, width, height,
                              SDL_WINDOW_OPENGL | SDL_WINDOW_SHOWN);
  if (g_window == nullptr) return false;
  g_context = SDL_GL_CreateContext(g_window);
  if (g_context == nullptr) {
    SDL_DestroyWindow(g_window);
    g_window = nullptr;
    return false;
  }
  SDL_GL_MakeCurrent(g_window, g_context);
  SDL_GL_SetSwapInterval(1);
  IMGUI_CHECKVERSION();
  ImGui::CreateContext();
  ImGui::GetIO().IniFilename = nullptr;  // nothing of the dialog's layout is saved
  ImGui::GetIO().LogFilename = nullptr;
  Load_Fonts(font_file, title_font_file);
  ImGui_ImplSDL2_InitForOpenGL(g_window, g_context);
  ImGui_ImplOpenGL3_Init("#version 330 core");
  g_frame = 0;
  return true;
}

bool Dialog_Open() { return g_window != nullptr; }

namespace {
// Collects events and starts an ImGui frame; false when the window has been asked to close.
bool Begin_Frame() {
  if (g_window == nullptr) return false;
  // Idle until something happens or a short while has passed: a dialog need not spin.
  SDL_WaitEventTimeout(nullptr, 15);
  SDL_Event e;
  bool close = false;
  while (SDL_PollEvent(&e)) {
    ImGui_ImplSDL2_ProcessEvent(&e);
    if (e.type == SDL_QUIT) close = true;
    if (e.type == SDL_WINDOWEVENT && e.window.event == SDL_WINDOWEVENT_CLOSE &&
        e.window.windowID == SDL_GetWindowID(g_window))
      close = true;
  }
  if (close) return false;
  ImGui_ImplOpenGL3_NewFrame();
  ImGui_ImplSDL2_NewFrame();
  if (g_script) {
    ImGuiIO& io = ImGui::GetIO();
    DialogPointer p{io.MousePos.x, io.MousePos.y, io.MouseDown[0], false};
    if (g_script(g_frame, p)) {
      if (p.close) return false;
      io.MousePos = ImVec2(p.x, p.y);
      io.MouseDown[0] = p.down;
    }
  }
  ImGui::NewFrame();
  return true;
}

// Renders the frame and shows it.
void End_Frame() {
  if (g_window == nullptr) return;
  ImGui::Render();
  int w = 0, h = 0;
  SDL_GL_GetDrawableSize(g_window, &w, &h);
  glBindFramebuffer(GL_FRAMEBUFFER, 0);
  glViewport(0, 0, w, h);
  glClearColor(0.06f, 0.07f, 0.10f, 1.0f);
  glClear(GL_COLOR_BUFFER_BIT);
  ImGui_ImplOpenGL3_RenderDrawData(ImGui::GetDrawData());
  if (g_keep && w > 0 && h > 0) {
    std::vector<uint32_t> rows(size_t(w) * size_t(h));
    glPixelStorei(GL_PACK_ALIGNMENT, 4);
    glReadBuffer(GL_BACK);
    glReadPixels(0, 0, w, h, GL_BGRA, GL_UNSIGNED_INT_8_8_8_8_REV, rows.data());
    g_pixels.resize(rows.size());
    // GL's first row is the bottom one.
    for (int y = 0; y < h; ++y) std::copy_n(rows.begin() + long(h - 1 - y) * w, w, g_pixels.begin() + long(y) * w);
    g_pixels_w = w;
    g_pixels_h = h;
  }
  SDL_GL_SwapWindow(g_window);
  ++g_frame;
}
}  // namespace

bool Dialog_Frame(const std::function<void()>& draw) {
  if (!Begin_Frame()) return false;
  draw();
  End_Frame();
  return true;
}

void Close_Dialog() {
  if (g_window == nullptr) return;
  ImGui_ImplOpenGL3_Shutdown();
  ImGui_ImplSDL2_Shutdown();
  ImGui::DestroyContext();
  SDL_GL_MakeCurrent(g_window, nullptr);
  SDL_GL_DeleteContext(g_context);
  SDL_DestroyWindow(g_window);
  g_context = nullptr;
  g_window = nullptr;
}

void Set_Dialog_Script(std::function<bool(uint64_t, DialogPointer&)> script) { g_script = std::move(script); }

void Keep_Dialog_Frames(bool keep) {
  g_keep = keep;
  if (!keep) {
    g_pixels.clear();
    g_pixels_w = g_pixels_h = 0;
  }
}

const std::vector<uint32_t>& Dialog_Frame(int& width, int& height) {
  width = g_pixels_w;
  height = g_pixels_h;
  return g_pixels;
}

}  // namespace platform
