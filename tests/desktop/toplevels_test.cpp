// SPDX-License-Identifier: MIT
// The apps of a real wlroots compositor that is asked for its windows only, and never for their processes.
#include "platform/linux/sockets/LocalSocket.h"
#include "platform/linux/windows/joined/JoinedWindows.h"
#include "platform/linux/windows/toplevels/ToplevelWindows.h"
#include "platform/linux/windows/x11/X11Windows.h"
#include "tests/desktop/AppsOnSway.h"
#include "tests/support/Kernel.h"

#include <csignal>
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

class Toplevels : public AppsOnSway {
 protected:
  void watch() {
    std::optional<LocalPeer> peer =
        connectToOwn((m_desktop->runtimeDir() / m_desktop->waylandDisplay()).string());
    ASSERT_TRUE(peer);
    auto toplevels = std::make_unique<ToplevelWindows>(
        m_loop, m_kernel, std::move(peer->socket),
        ToplevelWindows::Options{installedOn(*m_desktop), m_desktop->display()});
    auto joined = std::make_unique<JoinedWindows>(m_loop, std::move(toplevels), [this] {
      ++m_xConnections;
      return std::make_unique<X11Windows>(m_loop, m_desktop->display(), X11Windows::Closing::byClient);
    });
    WatchedApps::watch(*m_desktop, {.name = {}, .windows = std::move(joined), .front = FrontRule::settled});
  }
  bool isKnown(const Program& program) { return m_workspace->runningApplication(program.pid()) != nullptr; }
  bool becomesKnown(const Program& program) {
    return runUntil([&] { return isKnown(program); });
  }

  int m_xConnections = 0;
};

TEST_F(Toplevels, KnowsAtOnceWhatRunsAlready) {
  Program& app = native();
  watch();
  EXPECT_EQ(m_workspace->runningApplications().size(), 1U);
  EXPECT_EQ(front(), app.pid());
  EXPECT_THAT(m_events, IsEmpty());
  EXPECT_EQ(m_xConnections, 0) << "Xwayland is not started for nothing";
}

TEST_F(Toplevels, TellsALaunchThenItsActivationThenItsEnd) {
  watch();
  Program& app = m_desktop->launch(nativeApp("org.example.NoSuchName"));
  ASSERT_TRUE(runUntil([&] { return m_events.size() == 2; }));
  app.signal(SIGKILL);
  ASSERT_TRUE(runUntil([&] { return m_events.size() == 3; }));
  EXPECT_THAT(m_events,
              ElementsAre(event("launched", app), event("activated", app), event("terminated", app)));
}

TEST_F(Toplevels, BringsAnAppToTheFront) {
  Program& app = native();
  watch();
  Program& other = m_desktop->launch(nativeApp("other"));
  ASSERT_TRUE(becomesFront(other));
  const AppRef there = m_workspace->runningApplication(app.pid());
  ASSERT_TRUE(there && there->canComeToFront());
  EXPECT_TRUE(there->bringToFront());
  EXPECT_TRUE(becomesFront(app));
}

TEST_F(Toplevels, FollowsTheFrontThroughNativeAppsXClientsAndEmptyWorkspaces) {
  Program& app = native();
  watch();
  Program& game = m_desktop->launch({testWindow(), "--class", "Game"});
  ASSERT_TRUE(becomesFront(game));
  Program& other = m_desktop->launch(nativeApp("other"));
  ASSERT_TRUE(becomesFront(other));
  m_desktop->focus(app);
  ASSERT_TRUE(becomesFront(app));
  m_desktop->focus(game);
  ASSERT_TRUE(becomesFront(game));
  ASSERT_TRUE(m_desktop->command("fullscreen enable"));
  ASSERT_TRUE(m_desktop->command("workspace empty"));
  ASSERT_TRUE(runUntil([&] { return front() == 0; }));
  m_desktop->focus(other);
  ASSERT_TRUE(becomesFront(other));
  EXPECT_EQ(m_xConnections, 1);
}

TEST_F(Toplevels, AHundredChangesEndWithTheLast) {
  Program& app = native();
  watch();
  Program& other = m_desktop->launch(nativeApp("other"));
  ASSERT_TRUE(becomesFront(other));
  std::string changes;
  for (int change = 0; change < 99; ++change) {
    const Program& next = change % 2 == 0 ? app : other;
    changes += "[pid=" + std::to_string(next.pid()) + "] focus;";
  }
  ASSERT_TRUE(m_desktop->command(changes));
  ASSERT_TRUE(becomesFront(app));
}

TEST_F(Toplevels, OfTwoThatFitNobodyIsBelievedUntilOneIsLeft) {
  Program& first = native();
  Program& second = native();
  watch();
  EXPECT_THAT(m_workspace->runningApplications(), IsEmpty());
  EXPECT_EQ(front(), 0);
  second.kill();
  ASSERT_TRUE(becomesKnown(first));
  EXPECT_FALSE(isKnown(second));
  // From then on the next one is told by its coming.
  Program& third = m_desktop->launch(nativeApp("foot"));
  ASSERT_TRUE(becomesFront(third));
  EXPECT_TRUE(isKnown(first));
}

TEST_F(Toplevels, XClientsThatClaimAWrongProcessAreKnownByTheirs) {
  const Program& silent = x11({"--title", "silent"});
  const Program& wrong = x11({"--title", "wrong", "--claim-pid", std::to_string(silent.pid())});
  watch();
  EXPECT_TRUE(becomesKnown(silent));
  EXPECT_TRUE(becomesKnown(wrong));
  EXPECT_EQ(m_workspace->runningApplications().size(), 2U);
}

TEST_F(Toplevels, IsNotDeceivedInsidePidNamespaces) {
  if (!m_desktop->run({"unshare", "--map-root-user", "--user", "--pid", "--fork", "true"}))
    GTEST_SKIP() << "no user namespaces here";
  std::vector<std::string> command{"unshare", "--map-root-user", "--user", "--pid", "--fork", "--kill-child"};
  for (const std::string& part : nativeApp("foot")) command.push_back(part);
  const Program& wrapper = m_desktop->launch(command);
  const Pid pid = m_desktop->waitForWindowTitled("foot").pid;
  EXPECT_NE(pid, wrapper.pid());
  watch();
  ASSERT_EQ(m_workspace->runningApplications().size(), 1U);
  EXPECT_NE(m_workspace->runningApplication(pid), nullptr);
}

TEST_F(Toplevels, ClosesPolitely) {
  Program& app = native();
  watch();
  Program& polite = m_desktop->launch({testWindow()});
  for (const Program* program : {&polite, &app}) EXPECT_TRUE(appOf(*program)->terminate());
  ASSERT_TRUE(runUntil([&] { return m_workspace->runningApplications().empty(); }));
  EXPECT_EQ(polite.exitStatus(), 0);
}

TEST_F(Toplevels, UnsavedWorkIsAskedAbout) {
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

TEST_F(Toplevels, NativeAppsGoOnWithoutXwayland) {
  Program& app = native();
  watch();
  Program& client = m_desktop->launch({testWindow()});
  ASSERT_TRUE(becomesFront(client));
  for (const Pid pid : processesOf({m_desktop->compositor().pid()})) {
    if (test::processState(pid)->name == "Xwayland") ::kill(pid, SIGKILL);
  }
  ASSERT_TRUE(runUntil([&] { return !isKnown(client); }));
  Program& other = m_desktop->launch(nativeApp("other"));
  ASSERT_TRUE(becomesFront(other));
  m_desktop->focus(app);
  ASSERT_TRUE(becomesFront(app));
  EXPECT_EQ(m_losses, 0);
}

TEST_F(Toplevels, TheCompositorsDeathIsTheEndOfTheDesktop) {
  Program& app = native();
  watch();
  ASSERT_EQ(front(), app.pid());
  m_desktop->compositor().signal(SIGKILL);
  ASSERT_TRUE(runUntil([&] { return m_losses == 1; }));
  EXPECT_EQ(front(), 0);
}

} // namespace
} // namespace vantle::desktop
