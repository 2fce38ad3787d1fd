// SPDX-License-Identifier: MIT
// Notices on a real notification daemon.
#include "platform/linux/notices/DesktopNotifications.h"
#include "platform/shared/PollEventLoop.h"
#include "tests/support/NotificationDaemon.h"
#include "tests/support/VirtualDesktop.h"
#include "tests/support/Wait.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

namespace vantle::desktop {
namespace {

using testing::HasSubstr;

struct RealNotices : testing::Test {
  // The parts of this process run while it waits for those of others.
  bool waitFor(const std::function<bool()>& condition) {
    return waitUntil([&] {
      loop.runUntil([] { return false; }, std::chrono::milliseconds(1));
      return condition();
    });
  }
  bool isShown(const std::string& line) {
    return waitFor([&] { return daemon.shown().find(line) != std::string::npos; });
  }

  VirtualDesktop desktop{{.user = {}, .screen = "640x480x24", .windowManager = false, .environment = {}}};
  NotificationDaemon daemon{desktop};
  PollEventLoop loop;
  BusConnection session{loop, desktop.busAddress()};
  DesktopNotifications notices{session};
};

TEST_F(RealNotices, TheNextReplacesTheLast) {
  notices.post("ram", "Memory is running low", "Using the most memory: Web & Co 1.5 GB.");
  EXPECT_TRUE(isShown("Vantle|Memory is running low|"));
  notices.post("ram", "Memory almost full", "Quit Web & Co to free up memory.");
  EXPECT_TRUE(isShown("Vantle|Memory almost full|"));
  EXPECT_EQ(daemon.displayed(), 1);
  notices.post("other", "Something else", "");
  EXPECT_TRUE(isShown("Something else"));
  EXPECT_EQ(daemon.displayed(), 2);
}

TEST_F(RealNotices, ANameIsNoMarkup) {
  notices.post("ram", "title", "<b>bold</b> & <i>more</i>");
  ASSERT_TRUE(isShown("|title|"));
  // What the daemon would draw as markup it hands on as it came: escaped.
  EXPECT_THAT(daemon.shown(), HasSubstr("&lt;b&gt;bold&lt;/b&gt; &amp; &lt;i&gt;more&lt;/i&gt;"));
}

TEST_F(RealNotices, TheDaemonsDeathIsSurvived) {
  notices.post("ram", "before", "body");
  ASSERT_TRUE(isShown("|before|"));
  daemon.program().kill();
  ASSERT_TRUE(waitUntil([&] { return !desktop.hasBusName("org.freedesktop.Notifications"); }));
  notices.post("ram", "to nobody", "body");
  EXPECT_TRUE(waitFor([&] { return session.isOpen(); }));

  daemon.start();
  notices.post("ram", "after", "body");
  EXPECT_TRUE(isShown("|after|"));
  EXPECT_EQ(daemon.displayed(), 1);
  EXPECT_EQ(daemon.shown().find("to nobody"), std::string::npos);
}

} // namespace
} // namespace vantle::desktop
