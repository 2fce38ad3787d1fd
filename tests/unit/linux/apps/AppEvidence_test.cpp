// SPDX-License-Identifier: MIT
#include "platform/linux/apps/AppEvidence.h"

#include "base/Text.h"
#include "platform/linux/apps/InterpretedProgram.h"
#include "platform/linux/windows/WindowKind.h"
#include "platform/linux/windows/x11/X11Windows.h"
#include "tests/support/ForkedProcess.h"
#include "tests/support/Program.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Wait.h"
#include "tests/unit/linux/SilentFileSystem.h"
#include "tests/unit/linux/band/TestProcess.h"

#include <cstddef>
#include <exception>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <optional>
#include <string>
#include <unistd.h>
#include <vector>

namespace vantle {
namespace {

TEST(UnitId, IsTakenFromTheUnitsName) {
  struct Case {
    const char* unit;
    std::optional<UnitId> id;
  };
  const std::vector<Case> cases{
      {"app-gnome-org.gnome.Maps-1234.scope", UnitId{"org.gnome.Maps", "1234"}},
      {"app-org.kde.kate-0f1e2d3c.scope", UnitId{"org.kde.kate", "0f1e2d3c"}},
      {"app-flatpak-org.mozilla.firefox-99.scope", UnitId{"org.mozilla.firefox", "99"}},
      {"app-gnome-gnome\\x2dsystem\\x2dmonitor-7.scope", UnitId{"gnome-system-monitor", "7"}},
      {"app-org.kde.dolphin@abc.service", UnitId{"org.kde.dolphin", "abc"}},
      {"app-org.kde.kclock@autostart.service", UnitId{"org.kde.kclock", "autostart"}},
      {"app-KDE-org.kde.okular.service", UnitId{"org.kde.okular", ""}},
      {"app-nodash.scope", {}},
      {"session-2.scope", {}},
      {"init.scope", {}},
      {"app-broken", {}},
      {"app-.slice", {}},
      {"", {}},
  };
  for (const Case& each : cases) EXPECT_EQ(unitIdOf(each.unit), each.id) << each.unit;
  EXPECT_EQ(unitIdOf("app-a\\x-1.scope")->random, "1") << "a broken escape breaks nothing";
}

TEST(SnapId, IsTakenFromTheUnitsName) {
  EXPECT_EQ(snapIdOf("snap.firefox.firefox-6c1ca021-5d2f-4f0e-9a65-8c4a6e3b2d10.scope"), "firefox_firefox");
  EXPECT_EQ(snapIdOf("snap.obs-studio.obs-6c1ca021-5d2f-4f0e-9a65-8c4a6e3b2d10.scope"), "obs-studio_obs");
  EXPECT_EQ(snapIdOf("snap.firefox.scope"), "");
  EXPECT_EQ(snapIdOf("app-x-1.scope"), "");
  EXPECT_EQ(snapIdOf(""), "");
}

TEST(Interpreter, IsKnownByItsName) {
  for (const char* name : {"python3.11", "perl", "bash", "sh", "java", "wine64-preloader", "electron22"}) {
    EXPECT_TRUE(isInterpreter(name)) << name;
  }
  for (const char* name : {"xterm", "shotwell", "", "galculator"}) EXPECT_FALSE(isInterpreter(name)) << name;
}

// The first words that look like its path; an executable has it near its start.
std::string loaderOf(const std::string& program) {
  std::ifstream file(program, std::ios::binary);
  const std::string bytes((std::istreambuf_iterator<char>(file)), {});
  const std::size_t at = bytes.find("/lib");
  const std::string path = at == std::string::npos ? std::string() : bytes.c_str() + at;
  return isLoader(fileNameOf(path)) ? path : std::string();
}

// An app decides what lies below its root, and when that can be read.
TEST(AppEvidence, WaitsForNoAppThatStandsOnADeadFileSystem) {
  if (::geteuid() != 0) GTEST_SKIP() << "needs a file system of its own";
  const desktop::TemporaryFolder root;
  std::optional<test::SilentFileSystem> silent;
  try {
    silent.emplace(root.folder("mount"));
  } catch (const std::exception& error) {
    GTEST_SKIP() << error.what();
  }
  std::filesystem::create_symlink("mount/info", root.path() / ".flatpak-info");
  const test::ForkedProcess process([&] {
    if (::chroot(root.path().c_str()) != 0) ::_exit(1);
  });
  for (int turn = 0; turn < 30; ++turn) { // the first ones leave a thread behind each
    const AppEvidence evidence = readEvidence(process.pid());
    EXPECT_NE(evidence.executable, "");
    EXPECT_EQ(evidence.program, evidence.executable);
  }
  silent.reset();
  EXPECT_TRUE(desktop::waitUntil([&] { return !readEvidence(process.pid()).arguments.empty(); }));
}

TEST(AppEvidence, KnowsARunningProgram) {
  desktop::Start start{.command = {"sleep", "1000"}};
  start.environment = {{"GIO_LAUNCHED_DESKTOP_FILE", "/x/y.desktop"}, {"GIO_LAUNCHED_DESKTOP_FILE_PID", "1"}};
  desktop::Program program(start);
  // Its arguments are there last of all.
  desktop::require("the program", [&] {
    const AppEvidence evidence = readEvidence(program.pid());
    return evidence.executable.ends_with("/sleep") && !evidence.arguments.empty();
  });
  const AppEvidence evidence = readEvidence(program.pid());
  EXPECT_EQ(evidence.commandName, "sleep");
  EXPECT_EQ(evidence.program, evidence.executable);
  EXPECT_EQ(evidence.arguments, (std::vector<std::string>{"sleep", "1000"}));
  EXPECT_EQ(evidence.launchedFile, "") << "inherited from process 1";
}

TEST(AppEvidence, BelievesTheLaunchedFileOfTheProcessItself) {
  // A shell can give the next program its own pid, as launchers do.
  desktop::Start start{.command = {"sh", "-c",
                                   "GIO_LAUNCHED_DESKTOP_FILE=/x/y.desktop GIO_LAUNCHED_DESKTOP_FILE_PID=$$ "
                                   "exec sleep 1000"}};
  desktop::Program program(start);
  EXPECT_TRUE(desktop::waitUntil([&] { return readEvidence(program.pid()).launchedFile == "/x/y.desktop"; }));
}

// Of a `sleep` whose number is in the file "child" there, as soon as it has become that.
AppEvidence evidenceOfSleep(const desktop::TemporaryFolder& folder) {
  AppEvidence evidence;
  desktop::require("the child", [&] {
    Pid child = 0;
    if (!(std::ifstream(folder.path() / "child") >> child)) return false;
    evidence = readEvidence(child);
    return evidence.commandName == "sleep" && !evidence.arguments.empty();
  });
  return evidence;
}

TEST(AppEvidence, SeesTheWrapperThatWaits) {
  const desktop::TemporaryFolder folder;
  const std::string script =
      folder.write("start.sh", "sleep 1000 & echo $! > new; mv new child; wait; true").string();
  desktop::Start start{.command = {"sh", "-c",
                                   "export GIO_LAUNCHED_DESKTOP_FILE=/x/y.desktop "
                                   "GIO_LAUNCHED_DESKTOP_FILE_PID=$$; exec sh ./start.sh"}};
  start.workingFolder = folder.path();
  const desktop::Program program(start);
  const AppEvidence evidence = evidenceOfSleep(folder);
  ASSERT_EQ(evidence.wrappers.size(), 1U) << "in its session";
  EXPECT_EQ(evidence.wrappers.front().pid, program.pid());
  EXPECT_EQ(evidence.wrappers.front().program, script);
  EXPECT_EQ(evidence.wrappers.front().arguments, (std::vector<std::string>{"sh", "./start.sh"}));
  EXPECT_EQ(evidence.launchedFile, "/x/y.desktop");
  EXPECT_EQ(evidence.launchedProcess, program.pid());
}

TEST(AppEvidence, SeesTheShellThatWasToldAmongOtherOptions) {
  const desktop::TemporaryFolder folder;
  desktop::Start start{.command = {"sh", "-ec", "/bin/sleep 1000 & echo $! > new; mv new child; wait; true"}};
  start.workingFolder = folder.path();
  const desktop::Program program(start);
  const AppEvidence evidence = evidenceOfSleep(folder);
  ASSERT_EQ(evidence.wrappers.size(), 1U) << "nobody types into it";
  EXPECT_EQ(evidence.wrappers.front().pid, program.pid());
  EXPECT_EQ(evidence.wrappers.front().program, "") << "a text is no file";
}

TEST(AppEvidence, SeesTheScriptBehindItsInterpreter) {
  const desktop::TemporaryFolder folder;
  const std::string script = folder.write("tool.sh", "sleep 1000; true").string();
  desktop::Program program({.command = {"sh", "-u", script}});
  EXPECT_TRUE(desktop::waitUntil([&] { return readEvidence(program.pid()).program == script; }));
  desktop::Program inlined({.command = {"sh", "-c", "sleep 1000; true"}});
  desktop::require("the program", [&] {
    const std::vector<std::string> arguments = readEvidence(inlined.pid()).arguments;
    return arguments.size() == 3 && arguments.front() == "sh"; // until then it is a copy of this program
  });
  EXPECT_EQ(readEvidence(inlined.pid()).program, "") << "what stands on the command line is no script";
}

// As bundles do that bring their own.
TEST(AppEvidence, SeesTheProgramBehindTheLoader) {
  const std::string loader = loaderOf("/bin/sleep");
  if (loader.empty()) GTEST_SKIP() << "no loader that is known";
  desktop::Start start{.command = {loader, "--library-path", "/nowhere", "bin/sleep", "1000"}};
  start.workingFolder = "/";
  const desktop::Program program(start);
  EXPECT_TRUE(desktop::waitUntil([&] {
    const AppEvidence evidence = readEvidence(program.pid());
    return evidence.executable == "/usr/bin/sleep" && evidence.program == evidence.executable &&
           evidence.arguments == std::vector<std::string>{"bin/sleep", "1000"};
  }));
}

TEST(AppEvidence, SeesAScriptBesideWhichItWasStarted) {
  const desktop::TemporaryFolder folder;
  const std::string script = folder.write("play.sh", "sleep 1000; true").string();
  desktop::Start start{.command = {"sh", "play.sh"}};
  start.workingFolder = folder.path();
  desktop::Program program(start);
  EXPECT_TRUE(desktop::waitUntil([&] { return readEvidence(program.pid()).program == script; }));
  EXPECT_EQ(readEvidence(program.pid()).names, (std::vector<std::string>{"play"}));
}

// As games with a group's rights are to everybody, root's processes are to an ordinary user.
TEST(AppEvidence, TakesTheCommandLineWhereTheProgramIsHidden) {
  if (!test::runsAsRoot()) GTEST_SKIP() << "needs root's processes";
  const desktop::Program honest({.command = {"sleep", "1000"}});
  const desktop::Program liar({.command = {"bash", "-c", "exec -a xterm sleep 1000"}});
  const auto isStarted = [](const desktop::Program& program, const char* name) {
    const std::vector<std::string> arguments = readEvidence(program.pid()).arguments;
    return arguments.size() == 2 && arguments.front() == name;
  };
  desktop::require("the programs", [&] { return isStarted(honest, "sleep") && isStarted(liar, "xterm"); });
  EXPECT_TRUE(test::passesAsOrdinaryUser([&] {
    EXPECT_EQ(readEvidence(honest.pid()).executable, "/usr/bin/sleep");
    EXPECT_EQ(readEvidence(honest.pid()).program, "/usr/bin/sleep");
    EXPECT_EQ(readEvidence(liar.pid()).executable, "") << "the kernel knows it by another name";
  }));
}

TEST(AppEvidence, TakesACommandLineApartThatIsOneText) {
  const desktop::TemporaryFolder folder;
  const desktop::Program program(
      {.command = {"bash", "-c", "mkfifo pipe; exec -a '/opt/browser --app-id=abc --new' cat <>pipe"},
       .workingFolder = folder.path()});
  EXPECT_TRUE(desktop::waitUntil([&] {
    return readEvidence(program.pid()).arguments ==
           std::vector<std::string>{"/opt/browser", "--app-id=abc", "--new"};
  }));
}

TEST(AppEvidence, KnowsTheStoresNumberOfAGame) {
  const auto addressFor = [](const std::string& number) {
    desktop::Start start{.command = {"sleep", "1000"}};
    start.environment = {{"SteamAppId", number}};
    const desktop::Program program(start);
    desktop::require("the program", [&] {
      const AppEvidence evidence = readEvidence(program.pid());
      return evidence.executable.ends_with("/sleep") && !evidence.arguments.empty();
    });
    return readEvidence(program.pid()).storeAddress;
  };
  EXPECT_EQ(addressFor("42"), "steam://rungameid/42");
  EXPECT_EQ(addressFor("42/.."), "");
  EXPECT_EQ(addressFor(""), "");
}

TEST(AppEvidence, IsEmptyForNobody) {
  const AppEvidence evidence = readEvidence(0x7ffffff0);
  EXPECT_EQ(evidence.executable, "");
  EXPECT_TRUE(evidence.arguments.empty());
}

TEST(WindowKind, FollowsTheFirstKnownType) {
  using Types = std::vector<std::string>;
  EXPECT_EQ(windowKindOf(Types{}), WindowKind::ordinary);
  EXPECT_EQ(windowKindOf(Types{"NORMAL"}), WindowKind::ordinary);
  EXPECT_EQ(windowKindOf(Types{"DIALOG"}), WindowKind::ordinary);
  EXPECT_EQ(windowKindOf(Types{"SOMETHING_NEW", "DOCK"}), WindowKind::shell);
  EXPECT_EQ(windowKindOf(Types{"DESKTOP", "NORMAL"}), WindowKind::shell);
  EXPECT_EQ(windowKindOf(Types{"NOTIFICATION"}), WindowKind::passing);
  EXPECT_EQ(windowKindOf(Types{"POPUP_MENU", "NORMAL"}), WindowKind::passing);
}

TEST(WindowOwner, IsTheServersWordBeforeTheWindows) {
  char host[256] = {};
  ASSERT_EQ(::gethostname(host, sizeof host - 1), 0);
  EXPECT_EQ(ownerOf(500, 1, "elsewhere"), 500);
  EXPECT_EQ(ownerOf(0, ::getpid(), host), ::getpid());
  EXPECT_EQ(ownerOf(0, ::getpid(), "elsewhere"), 0) << "a window of another machine";
  EXPECT_EQ(ownerOf(0, ::getpid(), ""), 0) << "nothing says where it is from";
  EXPECT_EQ(ownerOf(0, 1, host), 0);
  EXPECT_EQ(ownerOf(0, 0x7ffffff0, host), 0) << "no such process";
  EXPECT_EQ(ownerOf(1, 1, host), 0);
  EXPECT_EQ(ownerOf(-1, -1, host), 0);
}

} // namespace
} // namespace vantle
