// SPDX-License-Identifier: MIT
// The apps of a real labwc, as they are found there.
#include "tests/desktop/WatchedApps.h"
#include "tests/support/LabwcDesktop.h"
#include "tests/support/Props.h"
#include "tests/support/User.h"

#include <csignal>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <vector>

namespace vantle::desktop {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Labwc : public WatchedApps {
 protected:
  void SetUp() override {
    if (!LabwcDesktop::isInstalled()) GTEST_SKIP() << "no labwc here";
    ASSERT_FALSE(test::runsAsRoot()) << "another user's apps are none of the program's";
    m_desktop.emplace();
  }

  Program& native(const std::string& name) {
    return m_desktop->launch({"foot", "--app-id", name, "--title", name, "sleep", "1000"});
  }
  Program& x11(const std::string& name) { return m_desktop->launch({testWindow(), "--class", name}); }
  void watch() {
    DesktopSource source = find(*m_desktop);
    EXPECT_EQ(*source.name, "wlroots (X11 apps, and native apps where it is certain which they are)");
    WatchedApps::watch(*m_desktop, std::move(source));
  }

  std::optional<LabwcDesktop> m_desktop;
};

TEST_F(Labwc, KnowsAtOnceWhatRunsAlready) {
  Program& app = native("foot");
  m_desktop->waitForWindow("foot");
  watch();
  EXPECT_EQ(m_workspace->runningApplications().size(), 1U);
  EXPECT_EQ(front(), app.pid());
  EXPECT_THAT(m_events, IsEmpty());
}

TEST_F(Labwc, TellsALaunchThenItsActivationThenItsEnd) {
  watch();
  Program& app = native("org.example.NoSuchName");
  ASSERT_TRUE(runUntil([&] { return m_events.size() == 2; }));
  app.signal(SIGKILL);
  ASSERT_TRUE(runUntil([&] { return m_events.size() == 3; }));
  EXPECT_THAT(m_events,
              ElementsAre(event("launched", app), event("activated", app), event("terminated", app)));
}

TEST_F(Labwc, FollowsTheFrontThroughNativeAppsAndXClients) {
  Program& app = native("foot");
  m_desktop->waitForWindow("foot");
  watch();
  Program& game = x11("Game");
  ASSERT_TRUE(becomesFront(game));
  Program& other = native("other");
  ASSERT_TRUE(becomesFront(other));
  for (int round = 0; round < 5; ++round) {
    m_desktop->focus("Game");
    ASSERT_TRUE(becomesFront(game));
    m_desktop->focus("foot");
    ASSERT_TRUE(becomesFront(app));
  }
}

TEST_F(Labwc, XClientsThatClaimAWrongProcessAreKnownByTheirs) {
  watch();
  Program& silent = x11("silent");
  ASSERT_TRUE(becomesFront(silent));
  Program& wrong =
      m_desktop->launch({testWindow(), "--class", "wrong", "--claim-pid", std::to_string(silent.pid())});
  ASSERT_TRUE(becomesFront(wrong));
  EXPECT_EQ(m_workspace->runningApplications().size(), 2U);
}

TEST_F(Labwc, ClosesPolitely) {
  Program& app = native("foot");
  m_desktop->waitForWindow("foot");
  watch();
  Program& polite = x11("Polite");
  for (const Program* program : {&polite, &app}) EXPECT_TRUE(appOf(*program)->terminate());
  ASSERT_TRUE(runUntil([&] { return m_workspace->runningApplications().empty(); }));
  EXPECT_EQ(polite.exitStatus(), 0);
}

TEST_F(Labwc, ItsDeathIsTheEndOfTheDesktop) {
  Program& app = native("foot");
  m_desktop->waitForWindow("foot");
  watch();
  ASSERT_EQ(front(), app.pid());
  m_desktop->compositor().signal(SIGKILL);
  ASSERT_TRUE(runUntil([&] { return m_losses == 1; }));
  EXPECT_EQ(front(), 0);
}

} // namespace
} // namespace vantle::desktop
