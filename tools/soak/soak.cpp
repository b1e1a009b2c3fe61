// A long evening in one process: races set up, driven and torn down one after another, four
// computer racers and a self-driving player each, on a 320 x 240 back buffer. Every frame
// moves the racers; every render_every-th is drawn and presented (a drawn frame costs some
// 5 to 10 ms of the software renderer, the rest of a race far less). Prints the resident
// memory after races 1, 10, 100 and 1000 and the GL objects alive, and fails when memory
// after the last race exceeds the hundredth's by more than 8 MB (the software renderer's
// own caches fill for the first hundred races or so: under Mesa's slower renderer, which
// has none, what is allocated is flat from the sixth race on) or the GL objects after the
// last race differ from those after the first (the first race makes what the platform
// keeps for good: the 2D program, the font textures). Built also with LeakSanitizer
// (quorval_soak_lsan), whose verdict comes at exit.
//
//   quorval_soak [races [frames [render_every]]]     defaults: 1000, 200, 8
#include <malloc.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "core/log.h"
#include "core/modMain.h"
#include "core/settings.h"
#include "gfx/mod3Denhance.h"
#include "gfx/modText.h"
#include "platform/platform.h"
#include "platform/testing.h"
#include "race/modGameLoop.h"
#include "vehicle/create_racers.h"
#include "vehicle/players.h"

namespace {

constexpr i32 kFrameMs = 16;
constexpr long kMaxGrowthKb = 8 * 1024;
constexpr int kWarmRaces = 100;  // memory is judged from here on

long Resident_Kb() {
  long pages = 0, resident = 0;
  if (std::FILE* f = std::fopen("/proc/self/statm", "r")) {
    if (std::fscanf(f, "%ld %ld", &pages, &resident) != 2) resident = 0;
    std::fclose(f);
  }
  return resident * (::sysconf(_SC_PAGESIZE) / 1024);
}

void Print_Gl(const char* when, const platform::GlObjectCount& n) {
  std::printf(
      "GL objects %s: %d (textures %d, buffers %d, vertex arrays %d, samplers %d, framebuffers %d, "
      "renderbuffers %d, programs %d, shaders %d)\n",
      when, n.Total(), n.textures, n.buffers, n.vertex_arrays, n.samplers, n.framebuffers, n.renderbuffers, n.programs,
      n.shaders);
}

// The game's folders, read from the game folder; the log is written in a scratch folder.
struct Scratch {
  std::string dir;
  explicit Scratch(const std::string& game) {
    dir = (std::filesystem::temp_directory_path() / ("quorval-soak-" + std::to_string(::getpid()))).string();
    std::filesystem::create_directories(dir);
    for (const char* folder : {"Gfx", "Textures", "Objects", "Tracks", "Data", "Sm"})
      std::filesystem::create_directory_symlink(std::filesystem::absolute(game) / folder,
                                                std::filesystem::path(dir) / folder);
    platform::Set_App_Dir(dir);
  }
  ~Scratch() {
    std::error_code ec;
    std::filesystem::remove_all(dir, ec);
  }
};

bool Open_Display() {
  modMain::Default_Settings();
  modMain::ScreenWidth = 320;  // a small back buffer: the evening is long enough
  modMain::ScreenHeight = 240;
  modMain::ScaleX = modMain::ScaleY = 0.5f;
  if (!platform::Open_Window("soak")) return false;
  if (!mod3Denhance::Init_DDraw(modMain::ScreenWidth, modMain::ScreenHeight, modMain::ScreenBPP)) return false;
  std::string error;
  return modText::Load_Fonts(error);
}

bool Race(int seed, int frames, int render_every) {
  modMain::Randomize(static_cast<u32>(seed));
  modMain::NumOpponents = 4;
  modMain::Create_Racers(modMain::NumOpponents);
  modMain::Players[0]->RacerKind = 2;  // the player's ship drives itself
  if (!modGameLoop::Set_Up_Race()) return false;
  // Start past the countdown: every frame moves the racers.
  const i32 race_start = platform::Tick_Count() - modGameLoop::kCountdownMs;
  bool first_go = true;
  for (int f = 0; f < frames; ++f) {
    platform::Advance_Manual_Clock(kFrameMs);
    modMain::Update_Frame_Timer();
    modGameLoop::Update_Racers(platform::Tick_Count() - race_start, first_go);
    modMain::Players[0]->Get_Race_Position();
    if (f % render_every != render_every - 1) continue;
    modGameLoop::Render_Race_Frame();
    modGameLoop::Draw_HUD();
    mod3Denhance::Flip();
    platform::Pump_Messages();
  }
  modGameLoop::Destroy_Race();
  modMain::Players.clear();
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  const int races = argc > 1 ? std::atoi(argv[1]) : 1000;
  const int frames = argc > 2 ? std::atoi(argv[2]) : 200;
  const int render_every = argc > 3 ? std::atoi(argv[3]) : 8;
  if (races < 10 || frames < 1 || render_every < 1) {
    std::fprintf(stderr, "usage: quorval_soak [races (10 or more) [frames [render_every]]]\n");
    return 2;
  }
  int failures = 0;
  {
    Scratch scratch(QUORVAL_GAME_DIR);
    modMain::Create_Log();
    platform::Use_Manual_Clock(true);
    if (!Open_Display()) {
      std::fprintf(stderr, "soak: no display (see %s)\n", modMain::Log_Path().c_str());
      return 2;
    }
    Print_Gl("before the first race", platform::Live_Gl_Objects());
    platform::GlObjectCount gl_first;
    long warm = 0, last = 0;
    for (int r = 1; r <= races; ++r) {
      if (!Race(r, frames, render_every)) {
        std::fprintf(stderr, "soak: race %d could not be set up (see %s)\n", r, modMain::Log_Path().c_str());
        return 2;
      }
      // The sky stays for the next race; between races nothing else of one is held.
      modGameLoop::SkySurf.reset();
      // Free memory the allocator still holds is handed back first: what is left is held.
      malloc_trim(0);
      last = Resident_Kb();
      if (r == 1) {
        gl_first = platform::Live_Gl_Objects();
        Print_Gl("after the first race", gl_first);
      }
      if (r == kWarmRaces) warm = last;
      if (r == 1 || r == 10 || r == 100 || r == 1000 || r == races) {
        std::printf("resident memory after race %d: %.1f MB (%.1f MB of it allocated)\n", r, double(last) / 1024,
                    double(mallinfo2().uordblks) / 1048576);
        std::fflush(stdout);
      }
    }
    const platform::GlObjectCount gl_end = platform::Live_Gl_Objects();
    Print_Gl("after the last race", gl_end);
    if (races <= kWarmRaces) {
      std::printf("memory not judged: it is from race %d on\n", kWarmRaces);
    } else if (last - warm > kMaxGrowthKb) {
      std::printf("FAIL: memory grew %.1f MB from race %d to race %d (at most %.1f allowed)\n",
                  double(last - warm) / 1024, kWarmRaces, races, double(kMaxGrowthKb) / 1024);
      ++failures;
    }
    if (!(gl_end == gl_first)) {
      std::printf("FAIL: the GL objects alive after the last race differ from those after the first\n");
      ++failures;
    }
    modText::Release_Fonts();
    mod3Denhance::Release_D3DDevice();
    mod3Denhance::Release_D3D();
    mod3Denhance::Release_BackBuffer();
    mod3Denhance::Release_DD();
    platform::Close_Window();
    platform::Use_Manual_Clock(false);
  }
  std::printf("%s: %d races of %d frames, every %d drawn\n", failures == 0 ? "PASS" : "FAIL", races, frames,
              render_every);
  return failures == 0 ? 0 : 1;
}
