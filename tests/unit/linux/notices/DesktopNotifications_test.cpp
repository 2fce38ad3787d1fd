// SPDX-License-Identifier: MIT
#include "platform/linux/notices/DesktopNotifications.h"

#include "platform/shared/PollEventLoop.h"
#include "tests/support/FakeService.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/Wait.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace vantle {
namespace {

using desktop::FakeService;
using desktop::guardLimit;
using desktop::PrivateBus;

struct Shown {
  std::string app;
  std::uint32_t replaces = 0;
  std::string icon;
  std::string title;
  std::string body;
};

// Remembers what it was asked to show, and numbers notices from 41 on.
class Daemon {
 public:
  Daemon(const std::string& address, bool readsMarkup) : m_service(address, "org.freedesktop.Notifications") {
    m_service.answer("", "Notify",
                     [this](sd_bus_message* call, sd_bus_message* reply) { show(call, reply); });
    m_service.answer("", "GetCapabilities", [readsMarkup](sd_bus_message*, sd_bus_message* reply) {
      if (readsMarkup) {
        sd_bus_message_append(reply, "as", 3, "actions", "body-markup", "body");
      } else {
        sd_bus_message_append(reply, "as", 1, "body");
      }
    });
  }

  std::vector<Shown> shown() const {
    const std::lock_guard lock(m_mutex);
    return m_shown;
  }
  FakeService& service() { return m_service; }

 private:
  void show(sd_bus_message* call, sd_bus_message* reply) {
    const char* app = "";
    const char* icon = "";
    const char* title = "";
    const char* body = "";
    std::uint32_t replaces = 0;
    sd_bus_message_read(call, "susss", &app, &replaces, &icon, &title, &body);
    const std::lock_guard lock(m_mutex);
    m_shown.push_back({app, replaces, icon, title, body});
    sd_bus_message_append(reply, "u", replaces == 0 ? m_next++ : replaces);
  }

  mutable std::mutex m_mutex;
  std::vector<Shown> m_shown;
  std::uint32_t m_next = 41;
  FakeService m_service; // the last: its thread uses the others
};

struct Notices : testing::Test {
  PrivateBus bus;
  PollEventLoop loop;
  BusConnection session{loop, bus.address()};
  DesktopNotifications notices{session};

  void expectShown(const Daemon& daemon, std::size_t count) {
    ASSERT_TRUE(loop.runUntil([&] { return daemon.shown().size() >= count; }, guardLimit));
    ASSERT_EQ(daemon.shown().size(), count);
  }
  // Until everything that is under way has arrived, replies included.
  void settle() {
    bool done = false;
    session.callAsync(
        session.methodCall({"org.freedesktop.Notifications", "/", "org.freedesktop.DBus.Peer", "Ping"}),
        guardLimit, [&](sd_bus_message*) { done = true; });
    ASSERT_TRUE(loop.runUntil([&] { return done; }, guardLimit));
  }
};

TEST(EscapedMarkup, LeavesNothingThatMarkupWouldRead) {
  EXPECT_EQ(escapedMarkup("<b>A & B</b> \"x\" 'y'"),
            "&lt;b&gt;A &amp; B&lt;/b&gt; &quot;x&quot; &#39;y&#39;");
  EXPECT_EQ(escapedMarkup("plain · text"), "plain · text");
  EXPECT_EQ(escapedMarkup(""), "");
}

TEST_F(Notices, ShowsTitleAndBodyUnderVantlesName) {
  const Daemon daemon(bus.address(), false);
  notices.requestAuthorization();
  notices.post("ram", "Memory is running low", "Using the most memory: A 1 GB.");
  expectShown(daemon, 1);
  const Shown shown = daemon.shown().front();
  EXPECT_EQ(shown.app, "Vantle");
  EXPECT_EQ(shown.icon, "com.halvo.vantle");
  EXPECT_EQ(shown.title, "Memory is running low");
  EXPECT_EQ(shown.body, "Using the most memory: A 1 GB.");
  EXPECT_EQ(shown.replaces, 0);
}

TEST_F(Notices, TheNextReplacesTheLastOfItsIdentifier) {
  const Daemon daemon(bus.address(), false);
  for (const char* identifier : {"ram", "ram", "other", "ram"}) {
    notices.post(identifier, "title", "body");
    settle();
    settle(); // the first notice asks what the daemon can do, and goes out with the answer
  }
  const std::vector<Shown> shown = daemon.shown();
  ASSERT_EQ(shown.size(), 4);
  EXPECT_EQ(shown[0].replaces, 0);
  EXPECT_EQ(shown[1].replaces, 41);
  EXPECT_EQ(shown[2].replaces, 0);
  EXPECT_EQ(shown[3].replaces, 41);
}

TEST_F(Notices, ThoseThatComeTooFastAreOneNotice) {
  const Daemon daemon(bus.address(), false);
  for (const char* body : {"one", "two", "three"}) notices.post("ram", "title", body);
  expectShown(daemon, 1); // nothing had been shown yet: only the last is worth it
  EXPECT_EQ(daemon.shown().front().body, "three");
  for (const char* body : {"four", "five", "six"}) notices.post("ram", "title", body);
  ASSERT_TRUE(loop.runUntil([&] { return daemon.shown().back().body == "six"; }, guardLimit));
  for (const Shown& shown : daemon.shown()) EXPECT_EQ(shown.replaces, shown.body == "three" ? 0 : 41);
}

TEST_F(Notices, HostileNamesAreTextWhereTheBodyIsMarkup) {
  const Daemon daemon(bus.address(), true);
  notices.post("ram", "<i>title</i>", "<img src=\"file:///x\"/> & <b>bold</b>");
  expectShown(daemon, 1);
  EXPECT_EQ(daemon.shown().front().title, "<i>title</i>"); // never markup
  EXPECT_EQ(daemon.shown().front().body,
            "&lt;img src=&quot;file:///x&quot;/&gt; &amp; &lt;b&gt;bold&lt;/b&gt;");
}

TEST_F(Notices, ANewDaemonKnowsNothingOfTheOldOnesNotices) {
  auto first = std::make_unique<Daemon>(bus.address(), true);
  notices.post("ram", "title", "<1>");
  expectShown(*first, 1);
  settle();
  first.reset();
  const Daemon second(bus.address(), false);
  settle();
  notices.post("ram", "title", "<2>");
  expectShown(second, 1);
  EXPECT_EQ(second.shown().front().replaces, 0);
  EXPECT_EQ(second.shown().front().body, "<2>");
}

TEST_F(Notices, WithoutADaemonThereIsSilenceAndNothingIsShownLater) {
  notices.post("ram", "title", "lost");
  settle();
  const Daemon daemon(bus.address(), false);
  notices.post("ram", "title", "shown");
  expectShown(daemon, 1);
  EXPECT_EQ(daemon.shown().front().body, "shown");
}

TEST_F(Notices, ABusThatDiesIsSurvived) {
  auto daemon = std::make_unique<Daemon>(bus.address(), false);
  notices.post("ram", "title", "one");
  expectShown(*daemon, 1);
  daemon.reset();
  bus.kill();
  notices.post("ram", "title", "lost");
  bus.start();
  daemon = std::make_unique<Daemon>(bus.address(), false);
  notices.post("ram", "title", "two");
  expectShown(*daemon, 1);
  EXPECT_EQ(daemon->shown().front().replaces, 0);
}

// As when memory is short: the kernel ends the bus, the session starts another one, and then comes the
// notice.
TEST_F(Notices, ABusThatIsReplacedBeforeTheLoopNoticesLosesNoNotice) {
  auto daemon = std::make_unique<Daemon>(bus.address(), false);
  notices.post("ram", "title", "one");
  expectShown(*daemon, 1);
  settle(); // its number is known: nothing is under way
  bus.kill();
  daemon.reset();
  bus.start();
  daemon = std::make_unique<Daemon>(bus.address(), true);
  notices.post("ram", "title", "<two>");
  expectShown(*daemon, 1);
  EXPECT_EQ(daemon->shown().front().body, "&lt;two&gt;") << "the new daemon is asked what it can do";
  EXPECT_EQ(daemon->shown().front().replaces, 0);
}

// Nothing was heard of the bus's end when the next notice came.
TEST_F(Notices, ABusThatDiesBeforeItsReplyHoldsUpNoNotice) {
  auto daemon = std::make_unique<Daemon>(bus.address(), false);
  daemon->service().ignore("Notify");
  notices.post("ram", "title", "one");
  ASSERT_TRUE(desktop::waitUntil([&] {
    loop.runUntil([] { return false; }, std::chrono::milliseconds(1));
    return daemon->service().calls("Notify") == 1;
  }));
  bus.kill();
  daemon.reset();
  bus.start();
  daemon = std::make_unique<Daemon>(bus.address(), false);
  notices.post("ram", "title", "two");
  expectShown(*daemon, 1);
  EXPECT_EQ(daemon->shown().front().body, "two");
}

TEST_F(Notices, WithoutABusThereIsSilence) {
  BusConnection nowhere(loop, "unix:path=/nonexistent/bus");
  DesktopNotifications silent(nowhere);
  silent.post("ram", "title", "body");
  silent.post("ram", "title", "body");
  loop.runUntil([&] { return !nowhere.isOpen(); }, guardLimit);
}

TEST_F(Notices, ADaemonThatHangsIsNotWaitedFor) {
  Daemon daemon(bus.address(), false);
  daemon.service().ignore("Notify");
  notices.post("ram", "title", "one");
  // No reply comes that would wake the loop.
  ASSERT_TRUE(desktop::waitUntil([&] {
    loop.runUntil([] { return false; }, std::chrono::milliseconds(1));
    return daemon.service().calls("Notify") == 1;
  }));
  const auto start = std::chrono::steady_clock::now();
  for (int at = 0; at < 1000; ++at) notices.post("ram", "title", "more");
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
  settle();
  EXPECT_EQ(daemon.service().calls("Notify"), 1); // the rest waits for its number
}

TEST_F(Notices, MayGoBeforeTheirReplies) {
  const Daemon daemon(bus.address(), false);
  {
    DesktopNotifications shortLived(session);
    shortLived.post("ram", "title", "body");
  }
  settle();
  settle();
}

} // namespace
} // namespace vantle
