// SPDX-License-Identifier: MIT
// The apps of a real KWin.
#include "tests/desktop/ShellApps.h"
#include "tests/support/KWinDesktop.h"
#include "tests/support/Kernel.h"

#include <csignal>
#include <gtest/gtest.h>
#include <memory>
#include <set>

namespace vantle::desktop {
namespace {

constexpr const char* plasma = "Plasma (native apps and X11 apps)";

INSTANTIATE_TEST_SUITE_P(KWin, OnEachShell,
                         testing::Values(ShellStage{"KWin", plasma,
                                                    [] { return std::make_unique<KWinDesktop>(); }}));

class KWin : public ShellApps {
 protected:
  KWin() : ShellApps(std::make_unique<KWinDesktop>(), plasma) {}
  bool hasScript() { return static_cast<KWinDesktop&>(*m_desktop).hasScript(feedName); }
  std::set<Pid> xServers() {
    std::set<Pid> found;
    for (const Pid pid : processesOf({m_desktop->compositor().pid()})) {
      const auto state = test::processState(pid);
      if (state && state->name == "Xwayland") found.insert(pid);
    }
    return found;
  }
};

TEST_F(KWin, KeepsTheScriptAsLongAsItIsLookedAt) {
  Program& app = native();
  watch();
  ASSERT_TRUE(becomesFront(app));
  EXPECT_TRUE(hasScript());
  m_workspace.reset();
  EXPECT_TRUE(waitUntil([&] { return !hasScript(); })) << "and leaves nothing behind";
}

TEST_F(KWin, NativeAppsGoOnWithoutXwayland) {
  Program& app = native();
  Program& other = native();
  Program& client = x11();
  watch();
  ASSERT_NE(appOf(client), nullptr);
  for (const Pid pid : xServers()) ::kill(pid, SIGKILL);
  ASSERT_TRUE(runUntil([&] { return !m_workspace->runningApplication(client.pid()); }));
  focus(app);
  ASSERT_TRUE(becomesFront(app));
  focus(other);
  ASSERT_TRUE(becomesFront(other));
  EXPECT_EQ(m_losses, 0);
}

} // namespace
} // namespace vantle::desktop
