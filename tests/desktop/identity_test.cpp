// SPDX-License-Identifier: MIT
// The program itself, with apps that are more than one, or whose games are somebody else's processes.
#include "tests/support/KernelState.h"
#include "tests/support/Props.h"
#include "tests/support/VirtualDesktop.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <unistd.h>
#include <vector>

namespace vantle::desktop {
namespace {

constexpr uid_t somebody = 65534;
constexpr auto everybodys = std::filesystem::perms::owner_all | std::filesystem::perms::others_all;

VirtualDesktop::Options asSomebody() {
  VirtualDesktop::Options options;
  if (::geteuid() == 0) options.user = somebody;
  return options;
}

class Identities : public testing::Test {
 protected:
  Identities() : m_desktop(asSomebody()) {}

  void install(const std::string& id, const std::string& windowClass, const std::string& categories) {
    m_desktop.installDesktopFile(id, "[Desktop Entry]\nType=Application\nExec=true\nName=" + id +
                                         "\nCategories=" + categories + "\nStartupWMClass=" + windowClass +
                                         "\n");
  }
  Program& app(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), testWindow());
    Program& program = m_desktop.launch(std::move(arguments));
    m_desktop.waitForWindow(program.pid());
    return program;
  }
  void startVantle() {
    Program& vantle = m_desktop.launch({VANTLE_PROGRAM});
    require("Vantle", [&] { return m_desktop.hasBusName("com.halvo.vantle") || !vantle.isRunning(); });
    ASSERT_TRUE(vantle.isRunning());
  }
  std::string copyOf(const std::filesystem::path& program, const std::string& name) {
    const std::filesystem::path copy = m_desktop.home() / "apps" / "Browser" / name;
    std::filesystem::create_directories(copy.parent_path());
    std::filesystem::copy_file(program, copy);
    std::filesystem::permissions(copy, everybodys);
    return copy.string();
  }
  XWindows::Window window(const std::string& windowClass) {
    XWindows::Window found;
    require(windowClass.c_str(), [&] {
      for (const XWindows::Window& each : m_desktop.windows().list()) {
        if (m_desktop.windows().classOf(each.id) == windowClass) found = each;
      }
      return found.id != 0;
    });
    return found;
  }
  static bool becomesSlowed(Pid pid) {
    return waitUntil([&] { return isSlowed(pid); });
  }
  static bool becomesFast(Pid pid) {
    return waitUntil([&] { return isAtFullSpeed(pid); });
  }

  VirtualDesktop m_desktop;
};

// A browser and its web apps are one process.
TEST_F(Identities, AWebGamesBoostIsThatOfItsWindow) {
  install("web-browser", "Browser", "Network;WebBrowser;");
  install("web-browser-game", "crx_game", "Game;");
  Program& plain = app({});
  Program& browser = app({"--class", "Browser", "--next-class", "crx_game"});
  const KernelState before = kernelState(plain.pid());
  startVantle();
  browser.signal(SIGUSR2);
  const XWindows::Window game = window("crx_game");
  require("it is in front", [&] { return m_desktop.windows().active() == game.id; });
  EXPECT_TRUE(becomesSlowed(plain.pid()));
  EXPECT_TRUE(isAtFullSpeed(browser.pid()));
  m_desktop.activate(window("Browser").id);
  m_desktop.activate(plain);
  EXPECT_TRUE(becomesFast(plain.pid()));
  EXPECT_TRUE(isAtFullSpeed(browser.pid())) << "the game goes on in there";
  m_desktop.activate(game.id);
  EXPECT_TRUE(becomesSlowed(plain.pid()));
  browser.signal(SIGWINCH); // its window closes
  EXPECT_TRUE(waitUntil([&] { return kernelState(plain.pid()) == before; }));
  EXPECT_TRUE(browser.isRunning());
  Program& other = app({"--background"});
  m_desktop.activate(window("Browser").id);
  EXPECT_TRUE(isAtFullSpeed(other.pid()));
  EXPECT_TRUE(isAtFullSpeed(plain.pid()));
}

// Some say who they are only when they have been in front for a while.
TEST_F(Identities, AGameThatSaysLateWhatItIsStartsABoost) {
  install("late-game", "Late", "Game;");
  const Program& plain = app({});
  Program& game = app({"--class", "early", "--next-class", "Late"});
  m_desktop.activate(game);
  startVantle();
  EXPECT_TRUE(isAtFullSpeed(plain.pid()));
  game.signal(SIGURG);
  EXPECT_TRUE(becomesSlowed(plain.pid()));
  EXPECT_TRUE(isAtFullSpeed(game.pid()));
}

// The shell of its desktop file has become it, and leaves nothing behind that would tell.
TEST_F(Identities, AGameThatAShellHasBecomeStartsABoost) {
  const std::string program = copyOf(testWindow(), "odd-name");
  m_desktop.installDesktopFile("told-game", "[Desktop Entry]\nType=Application\nName=Told\nCategories=Game;\n"
                                            "Exec=bash -lc \"export A=1; exec '" +
                                                program + "' >/dev/null\" %U\n");
  const Program& plain = app({});
  startVantle();
  const Program& game = m_desktop.launch({program, "--class", "zz"});
  m_desktop.waitForWindow(game.pid());
  m_desktop.activate(game);
  EXPECT_TRUE(becomesSlowed(plain.pid()));
  EXPECT_TRUE(isAtFullSpeed(game.pid()));
}

// What has left an app's tree and session is slowed with it, if it came with that app alone.
TEST_F(Identities, WhatAnAppBringsAlongIsSlowedWithIt) {
  install("stage-game", "StageGame", "Game;");
  const Program& browser = m_desktop.launch({copyOf(testWindow(), "browser")});
  const Program& crashHelper = m_desktop.launch({copyOf("/bin/sleep", "crash_helper"), "1000"});
  const Program& stranger = m_desktop.launch({"sleep", "1000"});
  m_desktop.waitForWindow(browser.pid());
  const KernelState before = kernelState(crashHelper.pid());
  startVantle();
  Program& game = app({"--class", "StageGame"});
  m_desktop.activate(game);
  EXPECT_TRUE(becomesSlowed(browser.pid()));
  EXPECT_TRUE(becomesSlowed(crashHelper.pid()));
  EXPECT_TRUE(isAtFullSpeed(stranger.pid()));
  game.kill();
  EXPECT_TRUE(waitUntil([&] { return kernelState(crashHelper.pid()) == before; }));
}

// A store as they are built: windows by a helper, games in containers, all in one tree.
class StoreOfGames : public Identities {
 protected:
  StoreOfGames() {
    m_desktop.installDesktopFile("steam",
                                 "[Desktop Entry]\nType=Application\nName=Steam\nExec=" + path("steam.sh") +
                                     " %U\nCategories=Network;FileTransfer;Game;\n");
    m_desktop.installDesktopFile(
        "Fine Game", "[Desktop Entry]\nType=Application\nName=Fine Game\nExec=" + path("steam.sh") +
                         " steam://rungameid/42\nIcon=steam_icon_42\nCategories=Game;\n");
    write("steam.sh", "#!/bin/sh\n" + path("ubuntu12_32/steam") + " &\nwait\n");
    write("ubuntu12_32/steam",
          "#!/bin/sh\n" + path("ubuntu12_64/steamwebhelper") +
              " --class steam &\n"
              "while read id game; do\n"
              "  SteamAppId=$id " +
              path("ubuntu12_32/reaper") +
              " SteamLaunch AppId=$id -- bwrap --dev-bind / / --unshare-pid --proc /proc " +
              path("steamapps/common") +
              "/$game/$game --class steam_app_$id &\n"
              "done < " +
              asked() + "\n");
    write("ubuntu12_32/reaper", "#!/bin/sh\nshift 3\n\"$@\"\nexit 0\n");
    for (const char* program :
         {"ubuntu12_64/steamwebhelper", "steamapps/common/Fine/Fine", "steamapps/common/Next/Next"}) {
      std::filesystem::create_directories(std::filesystem::path(path(program)).parent_path());
      std::filesystem::copy_file(testWindow(), path(program));
      std::filesystem::permissions(path(program), everybodys);
    }
  }
  std::string path(const std::string& name) const { return (m_desktop.home() / "Steam" / name).string(); }
  // Where the store hears what to play.
  std::string asked() const { return m_desktop.folder().path() / "tmp/asked"; }
  void write(const std::string& name, const std::string& text) const {
    std::filesystem::create_directories(std::filesystem::path(path(name)).parent_path());
    std::ofstream(path(name)) << text;
    std::filesystem::permissions(path(name), everybodys);
  }
  // Returns the process of its window once that is in front.
  Pid play(const std::string& id, const std::string& name) {
    EXPECT_TRUE(m_desktop.run({"sh", "-c", "echo " + id + " " + name + " > '" + asked() + "'"}));
    const XWindows::Window window = this->window("steam_app_" + id);
    require("the game is in front", [&] { return m_desktop.windows().active() == window.id; });
    return window.pid;
  }
  std::string status() {
    const std::string file = m_desktop.folder().path() / "tmp/status.json";
    m_desktop.run({"sh", "-c", std::string("'") + VANTLE_PROGRAM + "' status --json > '" + file + "'"});
    std::ifstream answer(file);
    std::string text;
    std::getline(answer, text, '\0');
    return text;
  }
};

TEST_F(StoreOfGames, IsSparedAndItsGamesAreKnownOneAfterAnother) {
  if (!m_desktop.run({"bwrap", "--dev-bind", "/", "/", "--unshare-pid", "--proc", "/proc", "true"})) {
    GTEST_SKIP() << "no containers here";
  }
  Program& plain = app({});
  ASSERT_TRUE(m_desktop.run({"mkfifo", asked()}));
  Program& keepsOpen = m_desktop.launch({"sh", "-c", "sleep 1000 > '" + asked() + "'"});
  Program& store = m_desktop.launch({path("steam.sh")});
  const Pid helper = window("steam").pid;
  std::map<Pid, KernelState> before;
  for (const Pid pid : processesOf({store.pid(), plain.pid()})) before[pid] = kernelState(pid);
  ASSERT_TRUE(before.contains(helper));
  startVantle();

  const Pid first = play("42", "Fine");
  EXPECT_TRUE(becomesSlowed(plain.pid()));
  EXPECT_NE(status().find("\"name\":\"Fine Game\""), std::string::npos) << status();
  for (const Pid pid : processesOf({store.pid()})) EXPECT_TRUE(isAtFullSpeed(pid)) << pid;
  const Pid second = play("43", "Next");
  EXPECT_TRUE(isAtFullSpeed(first));
  EXPECT_TRUE(isAtFullSpeed(second));
  m_desktop.activate(plain);
  EXPECT_TRUE(becomesFast(plain.pid()));
  EXPECT_TRUE(isAtFullSpeed(helper)) << "it is the store's, and the store has started the game";
  m_desktop.activate(window("steam_app_43").id);
  EXPECT_TRUE(becomesSlowed(plain.pid()));
  ::kill(first, SIGKILL);
  Program& later = app({"--background"});
  EXPECT_TRUE(becomesSlowed(later.pid())) << "the second game's Boost";
  EXPECT_TRUE(isSlowed(plain.pid()));
  EXPECT_TRUE(isAtFullSpeed(helper));
  ::kill(second, SIGKILL);
  EXPECT_TRUE(becomesFast(later.pid()));
  for (const auto& [pid, state] : before) {
    EXPECT_TRUE(waitUntil([&, pid = pid, &state = state] { return kernelState(pid) == state; })) << pid;
  }
  EXPECT_TRUE(keepsOpen.isRunning());
}

} // namespace
} // namespace vantle::desktop
