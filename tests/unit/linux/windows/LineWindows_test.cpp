// SPDX-License-Identifier: MIT
// What is made of what Hyprland and niri say, and of what they would never say.
#include "platform/linux/kernel/ProcKernel.h"
#include "platform/linux/windows/hyprland/HyprlandWindows.h"
#include "platform/linux/windows/niri/NiriWindows.h"
#include "platform/shared/PollEventLoop.h"
#include "tests/support/ForkedProcess.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/User.h"
#include "tests/support/Wait.h"
#include "tests/unit/linux/windows/ScriptedLines.h"

#include <fcntl.h>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <sys/prctl.h>
#include <unistd.h>
#include <vector>

namespace vantle {
namespace {

using test::ForkedProcess;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

using Window = ScriptedLines::Window;

class LineWindows : public testing::Test {
 protected:
  explicit LineWindows(bool isHyprland) : m_isHyprland(isHyprland) {
    const std::string questions = (m_folder.path() / "questions").string();
    if (isHyprland) {
      m_desktop = std::make_unique<ScriptedHyprland>(questions);
    } else {
      m_desktop = std::make_unique<ScriptedNiri>(questions);
    }
  }

  void connect(Pid pid = ::getpid()) {
    const std::string& questions = m_desktop->questions();
    Descriptor events = m_desktop->takeClientsEnd();
    if (m_isHyprland) {
      m_windows = std::make_unique<HyprlandWindows>(m_loop, m_kernel, std::move(events), questions, pid);
    } else {
      m_windows = std::make_unique<NiriWindows>(m_loop, m_kernel, std::move(events), questions, pid);
    }
    m_windows->start({.changed = [this] { ++m_changes; }, .lost = [this] { ++m_losses; }});
  }
  // Lets the desktop answer until the condition holds.
  bool serveUntil(const std::function<bool()>& condition) {
    return m_loop.runUntil(
        [&] {
          m_questions += m_desktop->serve();
          return condition();
        },
        desktop::guardLimit);
  }
  // Lets it answer until nothing more is asked. Both ends are in this process: nothing is under way.
  void serve() {
    for (bool isQuiet = false; !isQuiet && m_losses == 0;) {
      const int answered = m_desktop->serve();
      m_questions += answered;
      isQuiet = m_windows->settle(std::chrono::milliseconds(0)) && answered == 0;
    }
  }
  void connectTo(std::vector<Window> windows) {
    m_desktop->windows = std::move(windows);
    connect();
    if (!m_isHyprland) dynamic_cast<ScriptedNiri&>(*m_desktop).agree();
    serve();
    m_questions = 0;
    m_changes = 0;
  }
  void open(const Window& window) {
    m_desktop->windows.push_back(window);
    m_desktop->tellOpened(window);
  }
  bool isKnown(WindowId id) const { return m_windows->known().contains(id); }
  // 0 for nobody's as well as for none.
  Pid ownerOf(WindowId id) const { return isKnown(id) ? m_windows->known().at(id).pid : 0; }
  static Window window(WindowId id, Pid pid) { return {.id = id, .pid = std::to_string(pid)}; }

  bool m_isHyprland;
  desktop::TemporaryFolder m_folder;
  ForkedProcess m_first;
  ForkedProcess m_second;
  ProcKernel m_kernel;
  PollEventLoop m_loop;
  std::unique_ptr<ScriptedLines> m_desktop;
  std::unique_ptr<DesktopWindows> m_windows;
  int m_changes = 0;
  int m_losses = 0;
  int m_questions = 0;
};

class EachLineWindows : public LineWindows, public testing::WithParamInterface<const char*> {
 protected:
  EachLineWindows() : LineWindows(GetParam() == std::string("Hyprland")) {}
};
INSTANTIATE_TEST_SUITE_P(Desktops, EachLineWindows, testing::Values("Hyprland", "Niri"),
                         [](const auto& tested) { return std::string(tested.param); });

TEST_P(EachLineWindows, KnowsWhatIsThereAlready) {
  connectTo({{.id = 5, .pid = std::to_string(m_first.pid()), .applicationId = "org.example.Game"},
             window(4, m_second.pid())});
  ASSERT_THAT(m_windows->known(), SizeIs(2));
  EXPECT_EQ(ownerOf(4), m_second.pid());
  EXPECT_EQ(ownerOf(5), m_first.pid());
  EXPECT_EQ(m_windows->known().at(5).applicationId, "org.example.Game");
  EXPECT_TRUE(m_windows->known().at(5).process);
  EXPECT_FALSE(m_windows->known().at(5).isX11);
  EXPECT_EQ(m_windows->active(), 5U);
}

TEST_P(EachLineWindows, AChangeOfFocusIsAnEventAndNoQuestion) {
  connectTo({window(4, m_first.pid()), window(5, m_second.pid())});
  m_desktop->tellFocus(5);
  ASSERT_TRUE(serveUntil([&] { return m_windows->active() == 5; }));
  m_desktop->tellFocus(0); // an empty workspace
  ASSERT_TRUE(serveUntil([&] { return m_windows->active() == 0; }));
  for (int change = 0; change < 101; ++change) m_desktop->tellFocus(change % 2 == 0 ? 4 : 5);
  ASSERT_TRUE(serveUntil([&] { return m_windows->active() == 4; }));
  serve();
  EXPECT_EQ(m_windows->active(), 4U);
  EXPECT_EQ(m_questions, 0);
}

TEST_P(EachLineWindows, ANewWindowIsKnownOnceItsProcessWasNamedAgain) {
  connectTo({window(4, m_first.pid())});
  open(window(0x55d0c8a3f6e0, m_second.pid()));
  m_desktop->tellFocus(0x55d0c8a3f6e0);
  ASSERT_TRUE(m_loop.runUntil([&] { return m_windows->active() == 0x55d0c8a3f6e0; }, desktop::guardLimit));
  EXPECT_FALSE(isKnown(0x55d0c8a3f6e0));
  EXPECT_FALSE(m_windows->isActiveKnown());
  ASSERT_TRUE(serveUntil([&] { return isKnown(0x55d0c8a3f6e0); }));
  EXPECT_EQ(ownerOf(0x55d0c8a3f6e0), m_second.pid());
  EXPECT_GT(m_questions, 0);
}

TEST_P(EachLineWindows, AClosedWindowIsGone) {
  connectTo({window(4, m_first.pid()), window(5, m_second.pid())});
  m_desktop->windows.erase(m_desktop->windows.begin());
  m_desktop->tellClosed(4);
  ASSERT_TRUE(serveUntil([&] { return !isKnown(4); }));
  EXPECT_EQ(m_windows->active(), 0U);
  serve();
  EXPECT_FALSE(isKnown(4));
  EXPECT_EQ(ownerOf(5), m_second.pid());
}

// The answer comes on another connection than the event, and may have been written before it.
TEST_P(EachLineWindows, AnAnswerFromBeforeAnEndIsOutlivedByTheNext) {
  connectTo({window(4, m_first.pid())});
  open(window(5, m_second.pid()));
  ASSERT_TRUE(serveUntil([&] { return m_questions == 1; })); // answered, and not read yet
  m_desktop->windows.pop_back();
  m_desktop->tellClosed(5);
  serve();
  EXPECT_FALSE(isKnown(5));
  EXPECT_TRUE(isKnown(4));
}

TEST_P(EachLineWindows, ProcessesThatCannotBeItsOwnAreNobodys) {
  ForkedProcess ended;
  ended.kill();
  std::vector<Window> windows{window(1, ended.pid())};
  for (const char* pid : {"0", "1", "-1", "null", "\"12\"", "1.5", "4294967298", "2147483647",
                          "9223372036854775807", "18446744073709551615", "-9223372036854775808"}) {
    windows.push_back({.id = windows.size() + 1, .pid = pid});
  }
  connectTo(windows);
  ASSERT_THAT(m_windows->known(), SizeIs(windows.size()));
  for (const auto& [id, facts] : m_windows->known()) {
    EXPECT_EQ(facts.pid, 0) << windows.at(id - 1).pid;
    EXPECT_FALSE(facts.process);
  }
  EXPECT_TRUE(m_windows->isActiveKnown());
}

TEST_P(EachLineWindows, AnotherUsersProcessIsNobodys) {
  if (!test::runsAsRoot()) GTEST_SKIP() << "only root can start one";
  const ForkedProcess stranger([] { test::becomeUser(test::ordinaryUser); });
  connectTo({window(4, stranger.pid()), window(5, m_first.pid())});
  EXPECT_EQ(ownerOf(4), 0);
  EXPECT_EQ(ownerOf(5), m_first.pid());
}

TEST_P(EachLineWindows, TheNumberOfAProcessThatHasEndedIsNotBelievedAgain) {
  connectTo({window(4, m_first.pid()), window(5, m_second.pid())});
  m_windows->forget(m_first.pid());
  ASSERT_TRUE(serveUntil([&] { return m_questions > 0 && isKnown(4); }));
  EXPECT_EQ(ownerOf(4), 0);
  EXPECT_EQ(ownerOf(5), m_second.pid());
}

TEST_P(EachLineWindows, NumbersThatAreNoWindowsChangeNothing) {
  connectTo({window(4, m_first.pid())});
  m_desktop->windows.push_back(window(0, m_second.pid()));
  m_desktop->windows.push_back(window(~std::uint64_t{0}, m_second.pid()));
  m_desktop->tellOpened(m_desktop->windows.back());
  m_desktop->tellClosed(99);
  serve();
  EXPECT_THAT(m_windows->known(), SizeIs(1));
  EXPECT_EQ(m_windows->active(), 4U);
  m_desktop->tellFocus(99); // never told of
  ASSERT_TRUE(serveUntil([&] { return m_windows->active() == 99; }));
  EXPECT_FALSE(m_windows->isActiveKnown());
  serve(); // and not asked about for ever
}

TEST_P(EachLineWindows, AsksForEachWindowToBeClosed) {
  connectTo({window(0xabc, m_first.pid())});
  EXPECT_TRUE(m_windows->requestClose(m_windows->known().at(0xabc)));
  ASSERT_TRUE(serveUntil([&] { return !m_desktop->others.empty(); }));
  EXPECT_THAT(m_desktop->others, ElementsAre(m_desktop->closing(0xabc)));
}

TEST_P(EachLineWindows, AsksForAWindowToComeToTheFront) {
  connectTo({window(0xabc, m_first.pid())});
  EXPECT_TRUE(m_windows->canBringToFront(m_windows->known().at(0xabc)));
  EXPECT_TRUE(m_windows->requestFront(m_windows->known().at(0xabc)));
  ASSERT_TRUE(serveUntil([&] { return !m_desktop->others.empty(); }));
  EXPECT_THAT(m_desktop->others, ElementsAre(m_desktop->fronting(0xabc)));
}

TEST_P(EachLineWindows, OneThatHangsIsAskedSoMuchAndNoMore) {
  connectTo({window(4, m_first.pid())});
  std::size_t asked = 0;
  while (asked < 100'000 && m_windows->requestClose(m_windows->known().at(4))) ++asked;
  EXPECT_GT(asked, 100U);
  EXPECT_LT(asked, 1'000U);
  ASSERT_TRUE(serveUntil([&] { return m_desktop->others.size() == asked; }));
  EXPECT_THAT(m_desktop->others, Each(m_desktop->closing(4)));
  EXPECT_EQ(m_losses, 0);
}

TEST_P(EachLineWindows, AStrangersAnswersAreNotAskedFor) {
  m_desktop->windows = {window(4, m_first.pid())};
  connect(m_second.pid()); // as if the socket were somebody else's by now
  serve();
  EXPECT_EQ(m_questions, 0);
  EXPECT_FALSE(isKnown(4));
}

TEST_P(EachLineWindows, AnAnswerNobodyUnderstandsTakesNothingAway) {
  connectTo({window(4, m_first.pid())});
  for (const std::string& answer :
       {std::string("no JSON\n"), std::string("{}\n"), std::string("null\n"),
        std::string(R"({"Err":"no such request"})") + "\n", std::string(1000, '[') + "\n"}) {
    m_desktop->brokenAnswer = answer;
    m_desktop->tellClosed(99);
    serve();
    EXPECT_EQ(ownerOf(4), m_first.pid()) << answer;
  }
  EXPECT_EQ(m_losses, 0);
  m_desktop->brokenAnswer.clear();
  open(window(5, m_second.pid()));
  serve();
  EXPECT_EQ(ownerOf(5), m_second.pid());
}

TEST_P(EachLineWindows, LinesNobodyUnderstandsChangeNothing) {
  connectTo({window(4, m_first.pid()), window(5, m_second.pid())});
  for (const std::string& line :
       {std::string(), std::string(">>"), std::string("activewindow>>"), std::string("activewindowv3>>5"),
        std::string("{"), std::string("null"), std::string("[]"), std::string(R"({"WindowClosed":{}})"),
        std::string(R"({"WindowClosed":7})"), std::string(R"({"WindowOpenedOrChanged":{"window":[]}})"),
        std::string(R"({"SomethingNew":{"id":4}})"), std::string("\xff\xfe"), std::string(10'000, '[')}) {
    m_desktop->sendBytes(line + "\n");
  }
  m_desktop->tellFocus(5);
  ASSERT_TRUE(serveUntil([&] { return m_windows->active() == 5; }));
  serve();
  EXPECT_EQ(ownerOf(4), m_first.pid());
  EXPECT_EQ(ownerOf(5), m_second.pid());
  EXPECT_EQ(m_losses, 0);
}

TEST_P(EachLineWindows, HalfALineIsAwaited) {
  connectTo({window(4, m_first.pid()), window(5, m_second.pid())});
  const std::string line = m_isHyprland ? "activewindowv2>>5\n" : "{\"WindowFocusChanged\":{\"id\":5}}\n";
  for (const char byte : line) {
    EXPECT_EQ(m_windows->active(), 4U);
    m_desktop->sendBytes({&byte, 1});
    m_windows->settle(std::chrono::milliseconds(0)); // takes what is there
  }
  EXPECT_EQ(m_windows->active(), 5U);
}

TEST_P(EachLineWindows, ALineWithoutEndIsTheEnd) {
  connectTo({window(4, m_first.pid())});
  const ForkedProcess flooder({}, [&] {
    ::fcntl(m_desktop->events(), F_SETFL, 0);
    for (;;) m_desktop->sendBytes(std::string(65'536, 'x'));
  });
  ASSERT_TRUE(m_loop.runUntil([&] { return m_losses > 0; }, desktop::guardLimit));
  EXPECT_EQ(m_losses, 1);
  EXPECT_THAT(m_windows->known(), IsEmpty());
}

TEST_P(EachLineWindows, TheEndOfTheSocketIsTheEndOfTheDesktop) {
  connectTo({window(4, m_first.pid())});
  open(window(5, m_second.pid())); // with a question under way
  m_desktop->end();
  ASSERT_TRUE(m_loop.runUntil([&] { return m_losses > 0; }, desktop::guardLimit));
  EXPECT_EQ(m_losses, 1);
  EXPECT_THAT(m_windows->known(), IsEmpty());
  EXPECT_EQ(m_windows->active(), 0U);
  EXPECT_FALSE(m_windows->requestClose({.id = 4, .canBeClosed = true}));
  m_windows->forget(m_first.pid());
  EXPECT_FALSE(m_windows->settle(std::chrono::milliseconds(0)));
  EXPECT_EQ(m_losses, 1);
}

TEST_P(EachLineWindows, AFloodLeavesOthersTheirTurns) {
  connectTo({window(4, m_first.pid()), window(5, m_second.pid())});
  const ForkedProcess flooder({}, [&] {
    ::fcntl(m_desktop->events(), F_SETFL, 0); // each line whole, however slowly it is taken
    for (;;) m_desktop->tellFocus(4);
  });
  int turns = 0;
  std::unique_ptr<EventLoop::Handle> timer;
  const std::function<void()> again = [&] {
    if (++turns < 20) timer = m_loop.after(std::chrono::milliseconds(0), again);
  };
  again();
  EXPECT_TRUE(m_loop.runUntil([&] { return turns == 20; }, desktop::guardLimit));
  EXPECT_EQ(m_losses, 0);
}

struct HyprlandWindowsTest : LineWindows {
  HyprlandWindowsTest() : LineWindows(true) {}
};

TEST_F(HyprlandWindowsTest, WhoeverIsNotHyprlandIsLetGo) {
  dynamic_cast<ScriptedHyprland&>(*m_desktop).version = R"({"human_readable":"something else"})";
  connect();
  EXPECT_TRUE(serveUntil([&] { return m_losses == 1; }));
}

TEST_F(HyprlandWindowsTest, KnowsXClientsAsSuch) {
  connectTo({{.id = 4, .pid = std::to_string(m_first.pid()), .applicationId = "Game", .isX11 = true}});
  ASSERT_TRUE(isKnown(4));
  EXPECT_TRUE(m_windows->known().at(4).isX11);
  EXPECT_EQ(m_windows->known().at(4).className, "Game");
}

// It is the state of when it was asked for; the event is later.
TEST_F(HyprlandWindowsTest, AnEventCountsMoreThanTheAnswerOfTheStart) {
  m_desktop->windows = {window(4, m_first.pid()), window(5, m_second.pid())};
  connect();
  m_desktop->tellFocus(5);
  serve();
  EXPECT_EQ(m_windows->active(), 5U);
}

TEST_F(HyprlandWindowsTest, AWindowThatIsNotShownIsNone) {
  EXPECT_THAT(*hyprlandWindowsOf(R"([{"address":"0x4","mapped":false,"pid":7},{"address":"0x5","pid":7},
                                     {"address":"0x6","mapped":true},{"address":"6x","mapped":true},7])"),
              SizeIs(1));
}

struct NiriWindowsTest : LineWindows {
  NiriWindowsTest() : LineWindows(false) {}
};

TEST_F(NiriWindowsTest, WhoeverTellsOfNoEventsIsLetGo) {
  connect();
  dynamic_cast<ScriptedNiri&>(*m_desktop).agree(R"({"Err":"unknown request"})");
  EXPECT_TRUE(serveUntil([&] { return m_losses == 1; }));
}

TEST_F(NiriWindowsTest, TheBridgesWindowsAreTheXServers) {
  const ForkedProcess bridge({}, [] {
    ::prctl(PR_SET_NAME, "xwayland-satell");
    ::pause();
  });
  desktop::require("its name", [&] { return m_kernel.stat(bridge.pid())->shortName() == "xwayland-satell"; });
  connectTo({window(4, bridge.pid()), window(5, m_first.pid())});
  ASSERT_TRUE(isKnown(4));
  EXPECT_TRUE(m_windows->known().at(4).isX11);
  EXPECT_EQ(ownerOf(4), 0);
  EXPECT_FALSE(m_windows->known().at(5).isX11);
}

// As it does when it has been away.
TEST_F(NiriWindowsTest, AListThatIsToldAnewReplacesWhatWasThere) {
  connectTo({window(4, m_first.pid()), window(5, m_second.pid())});
  m_desktop->windows = {window(5, m_second.pid())};
  dynamic_cast<ScriptedNiri&>(*m_desktop).agree();
  serve();
  EXPECT_FALSE(isKnown(4));
  EXPECT_EQ(m_windows->active(), 5U);
}

} // namespace
} // namespace vantle
