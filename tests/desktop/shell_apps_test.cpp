// SPDX-License-Identifier: MIT
// What every shell has to tell of its windows, native ones and those of X clients.
#include "tests/desktop/ShellApps.h"

#include <csignal>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace vantle::desktop {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST_P(OnEachShell, KnowsAtOnceWhatRunsAlready) {
  Program& first = native();
  Program& second = x11();
  focus(first);
  watch();
  ASSERT_TRUE(becomesFront(first));
  ASSERT_NE(appOf(second), nullptr);
  EXPECT_EQ(m_workspace->runningApplications().size(), 2U);
}

TEST_P(OnEachShell, TellsALaunchThenItsActivationThenItsEnd) {
  watch();
  for (const bool isNative : {true, false}) {
    m_events.clear();
    Program& app = isNative ? native() : x11();
    ASSERT_TRUE(runUntil([&] { return m_events.size() == 2; }));
    app.signal(SIGKILL);
    ASSERT_TRUE(runUntil([&] { return m_events.size() == 3; }));
    EXPECT_THAT(m_events,
                ElementsAre(event("launched", app), event("activated", app), event("terminated", app)));
  }
  EXPECT_THAT(m_workspace->runningApplications(), IsEmpty());
}

TEST_P(OnEachShell, FollowsTheFrontThroughNativeAppsXClientsAndNothing) {
  Program& app = native();
  Program& game = x11();
  Program& other = native();
  focus(app);
  watch();
  ASSERT_TRUE(becomesFront(app));
  ASSERT_NE(appOf(game), nullptr);
  m_events.clear();
  focus(game);
  ASSERT_TRUE(becomesFront(game));
  focus(other);
  ASSERT_TRUE(becomesFront(other));
  m_desktop->script("all.forEach(function(w) { minimize(w, true); });");
  ASSERT_TRUE(runUntil([&] { return front() == 0; }));
  m_desktop->script("all.forEach(function(w) { minimize(w, false); });");
  focus(app);
  ASSERT_TRUE(becomesFront(app));
  focus(game);
  ASSERT_TRUE(becomesFront(game));
  // One that has said only late what it is has been launched once more.
  std::erase(m_events, event("launched", game));
  EXPECT_EQ(m_events.at(0), event("activated", game));
  EXPECT_EQ(m_events.at(1), event("activated", other));
  EXPECT_EQ(m_events.back(), event("activated", game));
}

TEST_P(OnEachShell, ASecondWindowOfTheSameAppIsNoNews) {
  Program& app = native();
  Program& game = x11({"--windows", "2"});
  watch();
  ASSERT_NE(appOf(game), nullptr);
  focus(app);
  ASSERT_TRUE(becomesFront(app));
  m_events.clear();
  const std::string title = "w.caption.indexOf(\"" + m_titlesOf.at(game.pid()) + "\") === 0";
  require("its windows", [&] { return m_desktop->windowsWhere(title) == 2; });
  for (const int which : {0, 1, 0}) {
    m_desktop->script("var w = all.filter(function(w) { return " + title + "; })[" + std::to_string(which) +
                      "]; activate(w);");
    ASSERT_TRUE(becomesFront(game));
  }
  EXPECT_THAT(m_events, ElementsAre(event("activated", game)));
}

TEST_P(OnEachShell, AHundredChangesEndWithTheLast) {
  Program& app = native();
  Program& game = x11();
  focus(app);
  watch();
  ASSERT_TRUE(becomesFront(app));
  ASSERT_NE(appOf(game), nullptr);
  m_events.clear();
  const std::string isApp = "w.pid === " + std::to_string(app.pid());
  m_desktop->script("var app = all.filter(function(w) { return " + isApp +
                    "; })[0];"
                    "var game = all.filter(function(w) { return w.caption === \"" +
                    m_titlesOf.at(game.pid()) +
                    "\"; })[0];"
                    "for (var at = 0; at < 99; ++at) {"
                    "  var w = at % 2 === 0 ? game : app;"
                    "  activate(w);"
                    "}");
  ASSERT_TRUE(becomesFront(game));
  for (std::size_t at = 1; at < m_events.size(); ++at) EXPECT_NE(m_events.at(at), m_events.at(at - 1));
  EXPECT_EQ(m_events.back(), event("activated", game));
}

TEST_P(OnEachShell, AnXGameInFullScreenIsInFront) {
  Program& app = native();
  Program& game = x11();
  focus(app);
  watch();
  focus(game);
  m_desktop->script("fillScreen(front());");
  ASSERT_TRUE(becomesFront(game));
  focus(app);
  ASSERT_TRUE(becomesFront(app));
}

TEST_P(OnEachShell, ALauncherMayCloseBehindItsGame) {
  Program& launcher = native();
  watch();
  Program& game = x11();
  ASSERT_TRUE(becomesFront(game));
  launcher.kill();
  ASSERT_TRUE(runUntil([&] { return m_workspace->runningApplications().size() == 1; }));
  EXPECT_EQ(front(), game.pid());
}

TEST_P(OnEachShell, ClientsThatClaimNoProcessOrAWrongOneAreKnownByTheirs) {
  Program& app = native();
  Program& none = x11(); // its window says nothing of it
  Program& wrong = x11({"--claim-pid", std::to_string(app.pid())});
  Program& first = x11({"--claim-pid", "1"});
  watch();
  for (const Program* program : {&none, &wrong, &first, &app}) ASSERT_NE(appOf(*program), nullptr);
  EXPECT_EQ(m_workspace->runningApplications().size(), 4U);
  for (const Program* program : {&none, &app, &wrong, &app, &first}) {
    focus(*program);
    EXPECT_TRUE(becomesFront(*program));
  }
}

TEST_P(OnEachShell, IsNotDeceivedInsidePidNamespaces) {
  const std::vector<std::string> inside{
      "unshare", "--user", "--pid", "--fork", "--map-current-user", "--mount-proc", "--kill-child"};
  const auto within = [&](std::vector<std::string> command) {
    command.insert(command.begin(), inside.begin(), inside.end());
    return command;
  };
  if (!m_desktop->run(within({"true"}))) GTEST_SKIP() << "no user namespaces here";
  watch();
  for (const auto& command : {within({"weston-terminal", "--shell=/bin/cat"}),
                              within({testWindow(), "--claim-pid", "1", "--title", "inside"})}) {
    Program& wrapper = m_desktop->launch(command);
    const auto isOfIt = [&] { return processesOf({wrapper.pid()}).contains(front()); };
    EXPECT_TRUE(runUntil(isOfIt)) << command.at(7);
    EXPECT_NE(front(), wrapper.pid());
  }
  EXPECT_EQ(m_workspace->runningApplications().size(), 2U);
}

TEST_P(OnEachShell, ClosesPolitely) {
  Program& app = native();
  Program& second = native();
  Program& polite = x11({"--windows", "2"});
  Program& stubborn = x11({"--ignore-close"});
  watch();
  for (const Program* program : {&stubborn, &polite, &app, &second})
    EXPECT_TRUE(appOf(*program)->terminate());
  ASSERT_TRUE(runUntil([&] { return m_workspace->runningApplications().size() == 1; }));
  EXPECT_EQ(polite.exitStatus(), 0);
  EXPECT_TRUE(app.exitStatus().has_value());
  EXPECT_TRUE(stubborn.isRunning());
}

TEST_P(OnEachShell, BringsAnAppToTheFrontAlsoFromBeingMinimized) {
  Program& app = native();
  Program& game = x11();
  watch();
  for (const Program* program : {&game, &app, &game, &app}) {
    const AppRef there = appOf(*program);
    ASSERT_TRUE(there && there->canComeToFront());
    EXPECT_TRUE(there->bringToFront());
    ASSERT_TRUE(becomesFront(*program));
  }
  m_desktop->script("minimize(front(), true);");
  ASSERT_TRUE(becomesFront(game));
  EXPECT_TRUE(appOf(app)->bringToFront());
  EXPECT_TRUE(becomesFront(app));
}

TEST_P(OnEachShell, UnsavedWorkIsAskedAbout) {
  const auto file = m_desktop->home() / "text";
  ASSERT_TRUE(m_desktop->run({"sh", "-c", "echo unsaved >" + file.string()}));
  Program& editor = shown({"mousepad", file.string()});
  const std::string isChanged =
      "w.pid === " + std::to_string(editor.pid()) + " && w.caption.indexOf(\"*\") === 0";
  // As if somebody had typed: a second line like the first.
  require("unsaved text", [&] {
    m_desktop->run({"gdbus", "call", "--session", "--dest", "org.xfce.mousepad", "--object-path",
                    "/org/xfce/mousepad/window/1", "--method", "org.gtk.Actions.Activate",
                    "edit.duplicate-line-selection", "[]", "{}"});
    return m_desktop->windowsWhere(isChanged) == 1;
  });
  watch();
  ASSERT_TRUE(appOf(editor)->terminate());
  require("the question", [&] {
    m_loop.runUntil([] { return false; }, std::chrono::milliseconds(1));
    return windowsOf(editor) == 2;
  });
  EXPECT_TRUE(editor.isRunning());
}

TEST_P(OnEachShell, ItsDeathIsTheEndOfTheDesktop) {
  Program& app = native();
  watch();
  ASSERT_TRUE(becomesFront(app));
  m_desktop->compositor().signal(SIGKILL);
  ASSERT_TRUE(runUntil([&] { return m_losses == 1; }));
  EXPECT_EQ(front(), 0);
}

TEST_P(OnEachShell, IsNotWaitedForWhenItHangs) {
  Program& app = native();
  watch();
  ASSERT_TRUE(becomesFront(app));
  m_desktop->compositor().signal(SIGSTOP);
  EXPECT_TRUE(appOf(app)->terminate());
  EXPECT_EQ(front(), app.pid());
  m_desktop->compositor().signal(SIGCONT);
  ASSERT_TRUE(runUntil([&] { return !m_workspace->runningApplication(app.pid()); })) << "asked to close";
  EXPECT_EQ(m_losses, 0);
}

} // namespace
} // namespace vantle::desktop
