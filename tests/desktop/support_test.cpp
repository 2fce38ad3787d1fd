// SPDX-License-Identifier: MIT
// The stage itself: what other tests take for granted.
#include "tests/support/Props.h"
#include "tests/support/SwayDesktop.h"
#include "tests/support/VirtualDesktop.h"

#include <csignal>
#include <gtest/gtest.h>
#include <unistd.h>

namespace {

using namespace vantle;
using namespace vantle::desktop;

TEST(VirtualDesktop, ShowsWindowsWithTheirProcesses) {
  VirtualDesktop desktop;
  Program& first = desktop.launch({testWindow(), "--title", "first"});
  Program& second = desktop.launch({testWindow(), "--title", "second", "--claim-pid", "1"});
  const XWindows::Window window = desktop.waitForWindow(first.pid());
  EXPECT_EQ(window.title, "first");
  EXPECT_EQ(desktop.waitForWindowTitled("second").pid, second.pid());
  desktop.activate(second);
  desktop.activate(first);
  EXPECT_EQ(desktop.windows().active(), window.id);
}

TEST(VirtualDesktop, EndsEverythingItStarted) {
  Pid leader = 0;
  std::set<Pid> all;
  {
    VirtualDesktop desktop;
    Program& program = desktop.launch({testWindow(), "--children", "3"});
    desktop.waitForWindow(program.pid());
    // An orphan in a session of its own, which nothing but its environment ties to the desktop.
    EXPECT_TRUE(desktop.run({"setsid", "-f", "sleep", "1000"}));
    leader = program.pid();
    require("children", [&] {
      all = processesOf({leader}, "VANTLE_TEST_DESKTOP=" + desktop.folder().path().string());
      return all.size() >= 8; // X server, bus, window manager, the program with three children, the orphan
    });
    EXPECT_TRUE(isAlive(leader));
  }
  for (const Pid pid : all) EXPECT_FALSE(isAlive(pid)) << pid;
}

TEST(VirtualDesktop, HasAPrivateBus) {
  VirtualDesktop desktop({.windowManager = false});
  EXPECT_TRUE(desktop.hasBusName("org.freedesktop.DBus"));
  EXPECT_FALSE(desktop.hasBusName("org.freedesktop.Notifications"));
}

TEST(VirtualDesktop, TakesPictures) {
  VirtualDesktop desktop;
  const auto picture = desktop.folder().path() / "picture.png";
  ASSERT_TRUE(desktop.screenshot(picture));
  EXPECT_GT(std::filesystem::file_size(picture), 100U);
}

TEST(VirtualDesktop, BelongsToSomebodyElseWhenRootSaysSo) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can";
  VirtualDesktop desktop({.user = 65534});
  Program& program = desktop.launch({testWindow()});
  desktop.waitForWindow(program.pid());
  EXPECT_TRUE(desktop.run({"test", "-O", desktop.home()}));
  EXPECT_FALSE(desktop.run({"test", "-w", "/etc/passwd"}));
}

TEST(VirtualDesktop, NoticesARestartedWindowManager) {
  VirtualDesktop desktop;
  desktop.windowManager().kill();
  Program& early = desktop.launch({testWindow()});
  desktop.startWindowManager();
  EXPECT_NE(desktop.waitForWindow(early.pid()).id, 0U);
}

TEST(SwayDesktop, ShowsWindowsWithTheirProcesses) {
  SwayDesktop desktop;
  Program& native = desktop.launch({"foot", "--title", "native", "sleep", "1000"});
  Program& other = desktop.launch({testWindow(), "--title", "other"});
  const SwayDesktop::Window window = desktop.waitForWindow(native.pid());
  EXPECT_EQ(window.applicationId, "foot");
  EXPECT_FALSE(window.isX11);
  EXPECT_TRUE(desktop.waitForWindow(other.pid()).isX11);
  EXPECT_EQ(desktop.waitForWindowTitled("other").pid, other.pid());
  desktop.focus(other);
  desktop.focus(native);
  EXPECT_TRUE(desktop.command("workspace 2; workspace 1"));
  EXPECT_FALSE(desktop.command("no command of its"));
}

TEST(SwayDesktop, HasScreensOfTheSizeThatIsWanted) {
  SwayDesktop desktop({.screen = "800x600", .screens = 2});
  const auto picture = desktop.folder().path() / "picture.png";
  ASSERT_TRUE(desktop.screenshot(picture));
  EXPECT_TRUE(desktop.run({"sh", "-c", "identify '" + picture.string() + "' | grep -q 1600x600"}));
}

TEST(SwayDesktop, BelongsToAnOrdinaryUserAndLeavesNothingBehind) {
  std::set<Pid> all;
  std::string display;
  {
    SwayDesktop desktop;
    EXPECT_NE(desktop.user(), 0U);
    display = desktop.display();
    desktop.waitForWindow(desktop.launch({testWindow()}).pid()); // with XWayland
    EXPECT_TRUE(desktop.hasBusName("org.freedesktop.DBus"));
    all = processesOf({desktop.compositor().pid()});
    EXPECT_GE(all.size(), 2U);
  }
  for (const Pid pid : all) EXPECT_FALSE(isAlive(pid)) << pid;
  EXPECT_FALSE(std::filesystem::exists("/tmp/.X" + display.substr(1) + "-lock"));
}

TEST(Program, ReportsHowItEnded) {
  Start start{.command = {"sh", "-c", "exit 7"}};
  EXPECT_EQ(Program(start).exitStatus(), 7);
  start.command = {"sleep", "1000"};
  Program sleeper(start);
  sleeper.signal(SIGTERM);
  EXPECT_EQ(sleeper.exitStatus(), -SIGTERM);
}

} // namespace
