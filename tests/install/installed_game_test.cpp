// A read-only install under a scratch /usr, played with a scratch home: the player's files go to the user's folder.
#include <signal.h>
#include <spawn.h>
#include <stb_image.h>
#include <sys/wait.h>

#include <chrono>
#include <iterator>
#include <thread>

#include "app/game_script.h"
#include "frontend/frmSetup.h"
#include "screens/modHiScore.h"

extern char** environ;
namespace fs = std::filesystem;

namespace {

// Every entry below root with its size and modification time, in order.
std::vector<std::string> Listing(const fs::path& root) {
  std::vector<std::string> lines;
  for (const auto& e : fs::recursive_directory_iterator(root)) {
    const auto stamp = fs::last_write_time(e.path()).time_since_epoch().count();
    lines.push_back(e.path().string() + " " + (e.is_regular_file() ? std::to_string(e.file_size()) : "-") + " " +
                    std::to_string(stamp));
  }
  std::sort(lines.begin(), lines.end());
  return lines;
}

constexpr fs::perms kAllWrite = fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write;

void Set_Writable(const fs::path& root, bool writable) {
  const auto how = writable ? fs::perm_options::add : fs::perm_options::remove;
  std::error_code ec;
  fs::permissions(root, kAllWrite, how, ec);
  for (const auto& e : fs::recursive_directory_iterator(root, ec))
    if (!e.is_symlink()) fs::permissions(e.path(), kAllWrite, how, ec);
}

// Gives the write permissions back when it goes, so that the scratch folder can be removed.
struct WritableAgain {
  fs::path root;
  ~WritableAgain() { Set_Writable(root, true); }
};

// Starts the installed game, waits for its main loop, stops it as a desktop session would; its exit status, or -1.
int Run_Until_Looping(const std::string& exe, const std::string& log) {
  char* argv[] = {const_cast<char*>(exe.c_str()), nullptr};
  pid_t pid = 0;
  if (posix_spawn(&pid, exe.c_str(), nullptr, nullptr, argv, environ) != 0) return -1;
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  bool looping = false;
  while (!looping && std::chrono::steady_clock::now() < deadline) {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    looping = testenv::Read_File(log).find("Starting Main loop") != std::string::npos;
  }
  if (looping) std::this_thread::sleep_for(std::chrono::milliseconds(500));  // some frames
  kill(pid, looping ? SIGTERM : SIGKILL);
  int status = 0;
  waitpid(pid, &status, 0);
  return looping && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace

TEST(InstalledGame, ReadOnlyInstallKeepsThePlayersFilesInTheUsersDataFolder) {
  const testenv::ScratchAppDir scratch;
  const fs::path root = scratch.path(), usr = root / "usr", share = usr / "share";
  const WritableAgain writable_again{usr};
  fs::create_directories(root / "home");
  const std::string install = std::string("DESTDIR='") + root.string() + "' '" + QUORVAL_CMAKE + "' --install '" +
                              QUORVAL_BUILD_DIR + "' --prefix /usr > /dev/null";
  ASSERT_EQ(std::system(install.c_str()), 0) << install;

  // What the install holds: the data beside bin, no hi-score table of its own, the desktop files.
  const fs::path data = share / "games/brindlex-quorval";
  for (const char* file : {"Gfx/Font0.bmp", "Gfx/Setup.ttf", "Data/Ships.Dat", "Tracks/test.MXT", "Sm/ASounds.raw"})
    EXPECT_TRUE(fs::is_regular_file(data / file)) << file << " not installed";
  for (const char* file : {"bin/quorval", "share/applications/org.brindlex.quorval.desktop",
                           "share/metainfo/org.brindlex.quorval.metainfo.xml", "share/man/man6/quorval.6.gz"})
    EXPECT_TRUE(fs::is_regular_file(usr / file)) << file << " not installed";
  EXPECT_FALSE(fs::exists(data / "Data/Hiscores.Dat"));
  for (int size : {16, 22, 24, 32, 48, 64, 128, 256}) {
    const std::string name = std::to_string(size) + "x" + std::to_string(size);
    const std::string png = (share / "icons/hicolor" / name / "apps/org.brindlex.quorval.png").string();
    int w = 0, h = 0, channels = 0;
    unsigned char* pixels = stbi_load(png.c_str(), &w, &h, &channels, 4);
    ASSERT_NE(pixels, nullptr) << png << ": " << stbi_failure_reason();
    EXPECT_EQ(std::tuple(w, h, channels), std::tuple(size, size, 4)) << png;
    EXPECT_EQ(pixels[3], 0) << png << " corner";
    EXPECT_EQ(pixels[((size / 2) * size + size / 2) * 4 + 3], 255) << png << " middle";
    stbi_image_free(pixels);
  }

  Set_Writable(usr, false);
  const auto installed = Listing(usr);
  setenv("HOME", (root / "home").c_str(), 1);
  unsetenv("XDG_DATA_HOME");
  const fs::path pref = root / "home/.local/share/brindlex-quorval";

  // A new player's first run, in process from the installed bin: the dialog's Start, Enter past the intro, menu quit.
  platform::Set_App_Dir((usr / "bin").string());
  platform::Set_Dialog_Script([](uint64_t frame, platform::DialogPointer& p) {
    const Rect start = frmSetup::Control_Rect("lblStart");
    p.x = float(start.left + start.right) / 2;
    p.y = float(start.top + start.bottom) / 2;
    p.down = frame == 3;
    return frame >= 2;
  });
  Tour tour;
  tour.menu_buttons = {3};  // quit
  Run_Tour(tour);
  platform::Set_Dialog_Script(nullptr);
  modHiScore::Load_HiScores();  // the hi-score table's first read creates it

  EXPECT_EQ(modMain::Settings_Path(), (pref / "Quorval.ini").string());
  EXPECT_EQ(modMain::Log_Path(), (pref / "Brindlex Log File.txt").string());
  EXPECT_EQ(modHiScore::HiScore_Path(), (pref / "Data/Hiscores.Dat").string());
  const auto ini = testenv::Read_Lines_CRLF(modMain::Settings_Path());
  ASSERT_EQ(ini.size(), 13u) << "settings";
  EXPECT_EQ(std::vector<std::string>(ini.begin(), ini.begin() + 5),
            (std::vector<std::string>{"0", "640", "480", "16", platform::Device_List().front().identifier}))
      << "the dialog's Start writes the defaults";
  const auto log = testenv::Read_Lines_CRLF(modMain::Log_Path());
  ASSERT_GE(log.size(), 6u) << "log";
  EXPECT_EQ(log.front(), "Program Started");
  EXPECT_EQ(log[3], "Quorval.ini not found, Using Default Settings");
  EXPECT_EQ(log[5], "Initialising DDraw...");
  EXPECT_NE(std::find(log.begin(), log.end(), "Starting Main loop"), log.end()) << "the data was not found";
  EXPECT_EQ(log.back(), "Bye Bye");
  EXPECT_TRUE(fs::is_regular_file(pref / "Data/Hiscores.Dat"));

  // The installed executable, dialog off, finds its data by its own path, logs in the player's folder, ends in order.
  std::string settings = testenv::Read_File(modMain::Settings_Path());
  settings[0] = '1';
  testenv::Write_File(modMain::Settings_Path(), settings);
  EXPECT_EQ(Run_Until_Looping((usr / "bin/quorval").string(), modMain::Log_Path()), 0);
  const auto second = testenv::Read_Lines_CRLF(modMain::Log_Path());
  ASSERT_GE(second.size(), 4 + kShutdownLines.size()) << "second log";
  EXPECT_EQ(second[2], "Reading Quorval.ini...");
  EXPECT_EQ(second[3], "...Done") << "the settings were not read from the player's folder";
  EXPECT_EQ(std::vector<std::string>(second.end() - long(kShutdownLines.size()), second.end()), kShutdownLines);

  const auto after = Listing(usr);
  std::vector<std::string> changed;
  std::ranges::set_symmetric_difference(installed, after, std::back_inserter(changed));
  EXPECT_EQ(changed, std::vector<std::string>{}) << "the game wrote into its install";
  std::vector<std::string> players;
  for (const auto& e : fs::recursive_directory_iterator(pref)) players.push_back(fs::relative(e.path(), pref).string());
  std::sort(players.begin(), players.end());
  EXPECT_EQ(players, (std::vector<std::string>{"Brindlex Log File.txt", "Data", "Data/Hiscores.Dat", "Quorval.ini"}));
}
