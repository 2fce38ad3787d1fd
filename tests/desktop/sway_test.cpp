// SPDX-License-Identifier: MIT
// The apps of a real sway, native ones and X clients, as the workspace sees them.
#include "tests/desktop/AppsOnSway.h"
#include "tests/support/Kernel.h"

#include <csignal>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vantle::desktop {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Sway : public AppsOnSway {
 protected:
  DesktopSource find() { return WatchedApps::find(*m_desktop, m_desktop->socket()); }
  void watch() {
    DesktopSource source = find();
    ASSERT_EQ(*source.name, "sway (native apps and X11 apps)");
    WatchedApps::watch(*m_desktop, std::move(source));
  }
};

TEST_F(Sway, KnowsAtOnceWhatRunsAlready) {
  Program& first = native();
  Program& second = x11();
  m_desktop->focus(first);
  watch();
  ASSERT_EQ(m_workspace->runningApplications().size(), 2U);
  EXPECT_NE(m_workspace->runningApplication(second.pid()), nullptr);
  EXPECT_EQ(front(), first.pid());
  EXPECT_THAT(m_events, IsEmpty());
}

TEST_F(Sway, IsFoundByItsProcessAsWell) {
  m_desktop->setEnvironment("SWAYSOCK", "/nowhere");
  EXPECT_EQ(*find().name, "sway (native apps and X11 apps)");
}

TEST_F(Sway, TellsALaunchThenItsActivationThenItsEnd) {
  watch();
  Program& app = m_desktop->launch(nativeApp("app"));
  Program& game = m_desktop->launch({testWindow(), "--class", "Game"});
  ASSERT_TRUE(runUntil([&] { return m_events.size() == 4; }));
  app.signal(SIGKILL);
  ASSERT_TRUE(runUntil([&] { return m_events.size() == 5; }));
  game.signal(SIGKILL);
  ASSERT_TRUE(runUntil([&] { return m_events.size() == 6; }));
  EXPECT_EQ(m_events.at(4), event("terminated", app));
  EXPECT_EQ(m_events.at(5), event("terminated", game));
  for (const Program* program : {&app, &game}) {
    const auto launched = std::find(m_events.begin(), m_events.end(), event("launched", *program));
    ASSERT_NE(launched, m_events.end());
    EXPECT_EQ(*(launched + 1), event("activated", *program));
  }
  EXPECT_THAT(m_workspace->runningApplications(), IsEmpty());
}

TEST_F(Sway, FollowsTheFrontThroughNativeAppsXClientsAndEmptyWorkspaces) {
  Program& app = native();
  Program& game = x11();
  Program& other = native("other");
  m_desktop->focus(app);
  watch();
  m_desktop->focus(game);
  ASSERT_TRUE(becomesFront(game));
  m_desktop->focus(other);
  ASSERT_TRUE(becomesFront(other));
  ASSERT_TRUE(m_desktop->command("workspace empty"));
  ASSERT_TRUE(runUntil([&] { return front() == 0; }));
  ASSERT_TRUE(m_desktop->command("workspace 1"));
  ASSERT_TRUE(becomesFront(other));
  ASSERT_TRUE(m_desktop->command("workspace empty"));
  m_desktop->focus(game);
  ASSERT_TRUE(becomesFront(game));
  EXPECT_THAT(m_events, ElementsAre(event("activated", game), event("activated", other),
                                    event("activated", other), event("activated", game)));
}

TEST_F(Sway, ASecondWindowOfTheSameAppIsNoNews) {
  Program& app = native();
  Program& game = x11({"--windows", "2"});
  require("its windows", [&] { return m_desktop->ofProcess(game.pid()).size() == 2; });
  m_desktop->focus(m_desktop->ofProcess(game.pid()).at(0).id);
  watch();
  m_desktop->focus(m_desktop->ofProcess(game.pid()).at(1).id);
  m_desktop->focus(app);
  ASSERT_TRUE(becomesFront(app));
  EXPECT_THAT(m_events, ElementsAre(event("activated", app)));
}

// What came and went between two turns of the loop needs nobody's attention.
TEST_F(Sway, AHundredChangesEndWithTheLast) {
  Program& app = native();
  Program& game = x11();
  m_desktop->focus(app);
  watch();
  std::string changes;
  for (int change = 0; change < 99; ++change) {
    const Program& next = change % 2 == 0 ? game : app;
    changes += "[pid=" + std::to_string(next.pid()) + "] focus;";
  }
  ASSERT_TRUE(m_desktop->command(changes));
  ASSERT_TRUE(becomesFront(game));
  for (std::size_t at = 0; at < m_events.size(); ++at) {
    EXPECT_EQ(m_events.at(at), event("activated", at % 2 == 0 ? game : app));
  }
  EXPECT_EQ(m_events.size() % 2, 1U);
}

TEST_F(Sway, AWindowThatLeavesItsWorkspaceLeavesTheFront) {
  Program& app = native();
  watch();
  ASSERT_EQ(front(), app.pid());
  ASSERT_TRUE(m_desktop->command("move container to workspace 2"));
  ASSERT_TRUE(runUntil([&] { return front() == 0; }));
  ASSERT_TRUE(m_desktop->command("workspace 2"));
  ASSERT_TRUE(becomesFront(app));
}

TEST_F(Sway, AnXGameInFullScreenIsInFront) {
  Program& app = native();
  Program& game = x11();
  m_desktop->focus(app);
  watch();
  m_desktop->focus(game);
  ASSERT_TRUE(m_desktop->command("fullscreen enable"));
  ASSERT_TRUE(becomesFront(game));
  ASSERT_TRUE(m_desktop->command("fullscreen disable"));
  m_desktop->focus(app);
  ASSERT_TRUE(becomesFront(app));
  EXPECT_THAT(m_events, ElementsAre(event("activated", game), event("activated", app)));
}

TEST_F(Sway, ALauncherMayCloseBehindItsGame) {
  Program& launcher = native("launcher");
  watch();
  Program& game = m_desktop->launch({testWindow()});
  ASSERT_TRUE(becomesFront(game));
  launcher.kill();
  ASSERT_TRUE(runUntil([&] { return m_workspace->runningApplications().size() == 1; }));
  EXPECT_EQ(front(), game.pid());
  EXPECT_EQ(m_events.back(), event("terminated", launcher));
}

TEST_F(Sway, ClientsThatClaimNoProcessOrAWrongOneAreKnownByTheirs) {
  const Program& silent = x11({"--title", "silent"});
  const Program& first = x11({"--title", "first", "--claim-pid", "1"});
  const Program& wrong = x11({"--title", "wrong", "--claim-pid", std::to_string(silent.pid())});
  watch();
  EXPECT_EQ(m_workspace->runningApplications().size(), 3U);
  for (const Program* program : {&silent, &first, &wrong}) EXPECT_NE(appOf(*program), nullptr);
}

TEST_F(Sway, IsNotDeceivedInsidePidNamespaces) {
  const std::vector<std::string> inside{"unshare", "--map-root-user", "--user",
                                        "--pid",   "--fork",          "--kill-child"};
  if (!m_desktop->run({"unshare", "--map-root-user", "--user", "--pid", "--fork", "true"}))
    GTEST_SKIP() << "no user namespaces here";
  std::vector<std::string> nativeInside = inside;
  for (const std::string& part : nativeApp("inside-native")) nativeInside.push_back(part);
  std::vector<std::string> x11Inside = inside;
  for (const std::string& part : {testWindow(), std::string("--claim-pid"), std::string("1"),
                                  std::string("--title"), std::string("inside-x11")}) {
    x11Inside.push_back(part);
  }
  for (const auto& [command, title] :
       {std::pair{nativeInside, "inside-native"}, std::pair{x11Inside, "inside-x11"}}) {
    const Program& wrapper = m_desktop->launch(command);
    const Pid pid = m_desktop->waitForWindowTitled(title).pid;
    EXPECT_NE(pid, wrapper.pid());
    EXPECT_TRUE(processesOf({wrapper.pid()}).contains(pid)) << title;
  }
  watch();
  EXPECT_EQ(m_workspace->runningApplications().size(), 2U);
}

TEST_F(Sway, AppsAreKnownByTheirDesktopFiles) {
  m_desktop->installDesktopFile("org.example.Native",
                                "[Desktop Entry]\nType=Application\nExec=true\nName=By app id\n");
  m_desktop->installDesktopFile(
      "org.example.X11",
      "[Desktop Entry]\nType=Application\nExec=true\nName=By class\nStartupWMClass=Game\n");
  watch();
  const AppRef byId = appOf(m_desktop->launch(nativeApp("org.example.Native")));
  const AppRef byClass = appOf(m_desktop->launch({testWindow(), "--class", "Game"}));
  ASSERT_TRUE(runUntil([&] { return m_events.size() == 4; })); // launched and activated, both
  EXPECT_EQ(byId->localizedName(), "By app id");
  EXPECT_EQ(byId->bundleIdentifier(), "org.example.Native");
  EXPECT_EQ(byClass->localizedName(), "By class");
  EXPECT_EQ(byClass->bundleIdentifier(), "org.example.X11");
}

TEST_F(Sway, ClosesPolitely) {
  Program& app = native();
  Program& polite = x11({"--windows", "2"});
  Program& stubborn = x11({"--ignore-close"});
  watch();
  for (const Program* program : {&stubborn, &polite, &app}) EXPECT_TRUE(appOf(*program)->terminate());
  ASSERT_TRUE(runUntil([&] { return m_workspace->runningApplications().size() == 1; }));
  EXPECT_EQ(polite.exitStatus(), 0);
  EXPECT_TRUE(app.exitStatus().has_value());
  EXPECT_TRUE(stubborn.isRunning());
}

TEST_F(Sway, UnsavedWorkIsAskedAbout) {
  Program& editor = shown({"mousepad", "--disable-server"});
  m_desktop->focus(editor);
  require("unsaved text", [&] {
    m_desktop->run({"wtype", "unsaved"});
    return m_desktop->ofProcess(editor.pid()).at(0).title.starts_with("*");
  });
  watch();
  ASSERT_TRUE(appOf(editor)->terminate());
  require("the question", [&] {
    m_loop.runUntil([] { return false; }, std::chrono::milliseconds(0)); // sends
    return m_desktop->ofProcess(editor.pid()).size() == 2;
  });
  EXPECT_TRUE(editor.isRunning());
}

TEST_F(Sway, GoesOnWhenItIsReloaded) {
  Program& app = native();
  Program& other = native("other");
  m_desktop->focus(app);
  watch();
  ASSERT_TRUE(m_desktop->command("reload"));
  m_desktop->focus(other);
  ASSERT_TRUE(becomesFront(other));
  EXPECT_EQ(m_losses, 0);
}

TEST_F(Sway, NativeAppsGoOnWithoutXwayland) {
  if (m_desktop->run({"sh", "-c", "sway --version | grep -q ' 1\\.[0-8]\\>'"})) {
    GTEST_SKIP() << "sway 1.7 itself crashes or hangs now and then when its Xwayland is killed";
  }
  Program& app = native();
  Program& other = native("other");
  Program& client = x11();
  watch();
  for (const Pid pid : processesOf({m_desktop->compositor().pid()})) {
    if (test::processState(pid)->name == "Xwayland") ::kill(pid, SIGKILL);
  }
  ASSERT_TRUE(runUntil([&] { return !m_workspace->runningApplication(client.pid()); }));
  m_desktop->focus(app);
  ASSERT_TRUE(becomesFront(app));
  m_desktop->focus(other);
  ASSERT_TRUE(becomesFront(other));
  EXPECT_EQ(m_losses, 0);
}

TEST_F(Sway, ItsDeathIsTheEndOfTheDesktop) {
  Program& app = native();
  watch();
  ASSERT_EQ(front(), app.pid());
  m_desktop->compositor().signal(SIGKILL);
  ASSERT_TRUE(runUntil([&] { return m_losses == 1; }));
  EXPECT_EQ(front(), 0);
}

TEST_F(Sway, IsNotWaitedForWhenItHangs) {
  Program& app = native();
  watch();
  m_desktop->compositor().signal(SIGSTOP);
  EXPECT_TRUE(appOf(app)->terminate());
  EXPECT_EQ(front(), app.pid());
  {
    DesktopSource source = find();
    EXPECT_EQ(*source.name, "sway (native apps and X11 apps)") << "only slow";
    const WindowedWorkspace another(m_loop, std::move(source.windows), {});
    EXPECT_TRUE(another.runningApplications().empty());
  }
  m_desktop->compositor().signal(SIGCONT);
  ASSERT_TRUE(runUntil([&] { return !m_workspace->runningApplication(app.pid()); })) << "asked to close";
  EXPECT_EQ(m_losses, 0);
}

} // namespace
} // namespace vantle::desktop
