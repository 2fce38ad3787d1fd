// SPDX-License-Identifier: MIT
// The apps of a real desktop, as the workspace sees them.
#include "platform/linux/workspace/X11Workspace.h"

#include "platform/shared/PollEventLoop.h"
#include "tests/desktop/harness/VirtualDesktop.h"

#include <csignal>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

namespace vantle {
namespace {

using desktop::Program;
using desktop::VirtualDesktop;
using testing::ElementsAre;
using testing::IsEmpty;

class X11WorkspaceTest : public testing::Test {
 protected:
  Program& window(std::vector<std::string> arguments = {}) {
    arguments.insert(arguments.begin(), VANTLE_TEST_WINDOW);
    Program& program = m_desktop.launch(std::move(arguments));
    m_desktop.waitForWindow(program.pid());
    return program;
  }

  X11Workspace& watch() {
    m_workspace = std::make_unique<X11Workspace>(
        m_loop, X11Workspace::Options{.display = m_desktop.display(),
                                      .dataFolders = {m_desktop.dataHome(), "/usr/share"},
                                      .onConnectionLost = [this] { m_isLost = true; }});
    for (const auto& [event, name] : {std::pair{WorkspaceEvent::activated, "activated "},
                                      std::pair{WorkspaceEvent::launched, "launched "},
                                      std::pair{WorkspaceEvent::terminated, "terminated "}}) {
      m_registrations.push_back(
          m_workspace->observe(event, [this, name = std::string(name)](const AppRef& app) {
            m_events.push_back(name + std::to_string(app->processIdentifier()) +
                               (app->isActive() ? " active" : ""));
          }));
    }
    return *m_workspace;
  }

  bool runUntil(const std::function<bool()>& condition) {
    return m_loop.runUntil(condition, desktop::guardLimit);
  }
  bool isFront(const Program& program) {
    const AppRef front = m_workspace->frontmostApplication();
    return front && front->processIdentifier() == program.pid();
  }
  AppRef appOf(const Program& program) {
    AppRef app;
    runUntil([&] { return (app = m_workspace->runningApplication(program.pid())) != nullptr; });
    return app;
  }
  static std::string event(const char* name, const Program& program, bool isActive = false) {
    return std::string(name) + " " + std::to_string(program.pid()) + (isActive ? " active" : "");
  }

  VirtualDesktop m_desktop;
  PollEventLoop m_loop;
  std::unique_ptr<X11Workspace> m_workspace;
  std::vector<std::unique_ptr<Registration>> m_registrations;
  std::vector<std::string> m_events;
  bool m_isLost = false;
};

TEST_F(X11WorkspaceTest, KnowsAtOnceWhatRunsAlready) {
  const Program& first = window();
  const Program& second = window();
  m_desktop.activate(first);
  watch();
  ASSERT_EQ(m_workspace->runningApplications().size(), 2U);
  EXPECT_EQ(m_workspace->runningApplications()[0]->processIdentifier(), first.pid());
  EXPECT_EQ(m_workspace->runningApplications()[1]->processIdentifier(), second.pid());
  EXPECT_TRUE(isFront(first));
  EXPECT_TRUE(m_workspace->runningApplication(first.pid())->isActive());
  EXPECT_FALSE(m_workspace->runningApplication(second.pid())->isActive());
  EXPECT_EQ(m_workspace->runningApplication(1), nullptr);
  EXPECT_THAT(m_events, IsEmpty());
}

TEST_F(X11WorkspaceTest, TellsTheFrontAppOnceAChange) {
  Program& first = window({"--windows", "2"});
  Program& second = window();
  watch();
  m_desktop.activate(first);
  ASSERT_TRUE(runUntil([&] { return isFront(first); }));
  // The other window of the same app changes nothing.
  m_desktop.activate(m_desktop.windows().ofProcess(first.pid()).at(1).id);
  m_desktop.activate(second);
  ASSERT_TRUE(runUntil([&] { return isFront(second); }));
  EXPECT_THAT(m_events, ElementsAre(event("activated", first, true), event("activated", second, true)));
}

TEST_F(X11WorkspaceTest, TellsALaunchThenItsActivationThenItsEnd) {
  watch();
  Program& program = m_desktop.launch({VANTLE_TEST_WINDOW});
  ASSERT_TRUE(runUntil([&] { return m_events.size() == 2; }));
  program.signal(SIGKILL);
  ASSERT_TRUE(runUntil([&] { return m_events.size() == 3; }));
  EXPECT_THAT(m_events, ElementsAre(event("launched", program, true), event("activated", program, true),
                                    event("terminated", program)));
  EXPECT_THAT(m_workspace->runningApplications(), IsEmpty());
  EXPECT_EQ(m_workspace->frontmostApplication(), nullptr);
}

} // namespace
} // namespace vantle
