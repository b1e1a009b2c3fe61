// Whole runs of the game: in process with scripted input, and the real executable.
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <functional>
#include <thread>

#include "app/startup.h"
#include "audio_input/frmMain.h"
#include "core/modMain.h"
#include "frontend/frmSetup.h"
#include "platform/dialog.h"
#include "platform/platform.h"
#include "platform/render.h"
#include "platform/testing.h"
#include "run_log.h"
#include "support/test_env.h"

extern char** environ;

namespace {

// Runs the game in process on the manual clock; hook(pump) runs at every pumped frame.
void Run_Main(std::function<void(uint64_t)> hook) {
  platform::Use_Manual_Clock(true);
  platform::Set_Pump_Hook(std::move(hook));
  EXPECT_EQ(modMain::Main(), 0);
  platform::Set_Pump_Hook(nullptr);
  platform::Use_Manual_Clock(false);
}

void Write_Ini(const std::string& skip_setup, const std::string& device) {
  testenv::Write_File(modMain::Settings_Path(), skip_setup + "\r\n640\r\n480\r\n16\r\n" + device +
                                                    "\r\n<none>\r\n1\r\n\r\n0\r\n38\r\n40\r\n37\r\n39\r\n");
}

}  // namespace

TEST(WholeRun, IntroThenMenuThenQuitLeavesTheCompleteLog) {
  testenv::ScratchAppDir dir;
  dir.Copy_From_Game("Gfx");
  Write_Ini("1", "<none>");
  std::vector<uint8_t> states_seen;
  // One scripted step per pumped frame: 16 ms pass, and the script presses its keys.
  Run_Main([&](uint64_t pump) {
    platform::Advance_Manual_Clock(16);
    if (states_seen.empty() || states_seen.back() != modMain::GameState) states_seen.push_back(modMain::GameState);
    // Enter held over two frames skips both intro pictures.
    if (pump == 3) platform::Post_Event({platform::EventKind::KeyDown, 13});
    if (pump == 5) platform::Post_Event({platform::EventKind::KeyUp, 13});
    // The menu's buttons slide in for 1040 ms; then the quit button (fourth row) is clicked.
    if (pump == 8) platform::Post_Event({platform::EventKind::MouseMove, 0, 0, 0, 320, 320});
    if (pump == 100) platform::Post_Event({platform::EventKind::MouseDown, 0, 1, 0, 320, 320});
  });

  EXPECT_EQ(states_seen, (std::vector<uint8_t>{5, 0}));
  std::vector<std::string> expected = {"Program Started", " ", "Reading Quorval.ini...", "...Done"};
  for (const auto& l : Start_Up_Lines("<none>")) expected.push_back(l);
  for (const auto& l : kShutdownLines) expected.push_back(l);
  EXPECT_EQ(testenv::Read_Lines_CRLF(modMain::Log_Path()), expected);
  EXPECT_EQ(modMain::FrameTime, 16);
}

TEST(WholeRun, NoSettingsFileRunsThroughTheSetupDialogWhoseStartWritesTheDefaults) {
  testenv::ScratchAppDir dir;
  dir.Copy_From_Game("Gfx");
  // The dialog's Start is pressed through the window once it has been drawn.
  platform::Set_Dialog_Script([](uint64_t frame, platform::DialogPointer& p) {
    const Rect start = frmSetup::Control_Rect("lblStart");
    p.x = float(start.left + start.right) / 2;
    p.y = float(start.top + start.bottom) / 2;
    p.down = frame == 3;
    return frame >= 2;
  });
  Run_Main([](uint64_t pump) {
    platform::Advance_Manual_Clock(16);
    if (pump == 2) platform::Post_Event({platform::EventKind::Quit});  // the window is closed
  });
  platform::Set_Dialog_Script(nullptr);
  const auto lines = testenv::Read_Lines_CRLF(modMain::Log_Path());
  ASSERT_GE(lines.size(), 5u);
  EXPECT_EQ(lines[3], "Quorval.ini not found, Using Default Settings");
  EXPECT_EQ(lines[5], "Initialising DDraw...");
  EXPECT_EQ(lines.back(), "Bye Bye");
  const auto ini = testenv::Read_Lines_CRLF(modMain::Settings_Path());
  ASSERT_EQ(ini.size(), 13u);
  EXPECT_EQ(std::vector<std::string>(ini.begin(), ini.begin() + 5),
            (std::vector<std::string>{"0", "640", "480", "16", platform::Device_List().front().identifier}));
}

TEST(WholeRun, ExecutableStartsAndEndsCleanlyWhenToldTo) {
  testenv::ScratchAppDir dir;
  dir.Copy_From_Game("Gfx");
  std::filesystem::copy_file(QUORVAL_EXE, dir.path() + "/quorval");
  Write_Ini("1", "<none>");
  const std::string log = dir.path() + "/Brindlex Log File.txt";

  const std::string exe = dir.path() + "/quorval";
  char* argv[] = {const_cast<char*>(exe.c_str()), nullptr};
  pid_t pid = 0;
  ASSERT_EQ(posix_spawn(&pid, exe.c_str(), nullptr, nullptr, argv, environ), 0);

  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  bool looping = false;
  while (!looping && std::chrono::steady_clock::now() < deadline) {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    looping = testenv::Read_File(log).find("Starting Main loop") != std::string::npos;
  }
  // Let it run some frames, then ask it to stop as a desktop session would.
  std::this_thread::sleep_for(std::chrono::milliseconds(500));
  kill(pid, SIGTERM);
  int status = 0;
  bool exited = false;
  while (std::chrono::steady_clock::now() < deadline + std::chrono::seconds(10)) {
    if (waitpid(pid, &status, WNOHANG) == pid) {
      exited = true;
      break;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  if (!exited) {
    kill(pid, SIGKILL);
    waitpid(pid, &status, 0);
  }
  ASSERT_TRUE(looping) << testenv::Read_File(log);
  ASSERT_TRUE(exited);
  EXPECT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 0);
  const auto lines = testenv::Read_Lines_CRLF(log);
  ASSERT_GE(lines.size(), kShutdownLines.size());
  EXPECT_EQ(std::vector<std::string>(lines.end() - static_cast<long>(kShutdownLines.size()), lines.end()),
            kShutdownLines);
}

TEST(WholeRun, MissingFontPictureIsNamedAndTheGameEndsInOrder) {
  testenv::ScratchAppDir dir;
  dir.Copy_From_Game("Gfx");
  std::filesystem::remove(dir.path() + "/Gfx/Font1.bmp");
  Write_Ini("1", "<none>");
  bool looped = false;
  Run_Main([&](uint64_t) {
    looped = true;
    platform::Post_Event({platform::EventKind::Quit});
  });

  EXPECT_FALSE(looped);  // no screen ran without its text
  const auto lines = testenv::Read_Lines_CRLF(modMain::Log_Path());
  const auto fonts = std::find(lines.begin(), lines.end(), "Making Fonts...");
  ASSERT_NE(fonts, lines.end());
  const std::vector<std::string> after(fonts, lines.end());
  std::vector<std::string> expected = {"Making Fonts...", "Loading Font0.bmp...", "...Done", "Loading Font1.bmp...",
                                       "Font file " + dir.path() + "/Gfx/Font1.bmp could not be loaded"};
  for (const auto& l : kShutdownLines) expected.push_back(l);
  EXPECT_EQ(after, expected);
}
