// SPDX-License-Identifier: MIT
// What is made of what sway says, and of what it would never say.
#include "platform/linux/windows/sway/SwayWindows.h"

#include "platform/linux/kernel/ProcKernel.h"
#include "platform/linux/windows/sway/SwayTree.h"
#include "platform/shared/PollEventLoop.h"
#include "tests/support/ForkedProcess.h"
#include "tests/support/User.h"
#include "tests/support/Wait.h"
#include "tests/unit/linux/windows/ScriptedSway.h"

#include <fcntl.h>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <unistd.h>

namespace vantle {
namespace {

using test::ForkedProcess;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

TEST(SwayTree, HoldsWindowsOfBothKindsWithWhatTheySay) {
  const auto json = Json::parse(R"({"id":1,"focus":[2],"nodes":[{"id":2,"focus":[3],"nodes":[
    {"id":3,"focus":[5,4],
     "nodes":[{"id":4,"pid":44,"app_id":"org.example.Native","nodes":[],"focus":[]}],
     "floating_nodes":[{"id":5,"pid":55,"app_id":null,
       "window_properties":{"class":"Game","instance":"game"},"nodes":[],"focus":[]}]}]}]})");
  ASSERT_TRUE(json);
  const auto tree = swayTreeOf(*json);
  ASSERT_TRUE(tree);
  ASSERT_THAT(tree->windows, SizeIs(2));
  EXPECT_EQ(tree->windows[0].facts,
            (WindowFacts{.id = 4, .applicationId = "org.example.Native", .canBeClosed = true}));
  EXPECT_EQ(tree->windows[0].toldPid, 44);
  EXPECT_EQ(tree->windows[1].facts,
            (WindowFacts{.id = 5, .instance = "game", .className = "Game", .canBeClosed = true}));
  EXPECT_EQ(tree->windows[1].toldPid, 55);
  EXPECT_EQ(tree->front, 5U);
}

TEST(SwayTree, IsReadWhateverStandsInIt) {
  struct Case {
    const char* json;
    std::size_t windows;
    WindowId front;
  };
  for (const Case& tried : {
           Case{R"({"nodes":[]})", 0, 0},
           Case{R"({"nodes":{},"focus":[7]})", 0, 0},
           Case{R"({"nodes":[null,5,"x",[]],"focus":["x"]})", 0, 0},
           Case{R"({"nodes":[{"id":7}],"focus":[7]})", 0, 0},
           Case{R"({"nodes":[{"id":0,"pid":7}],"focus":[0]})", 0, 0},
           Case{R"({"nodes":[{"id":-7,"pid":7}],"focus":[-7]})", 0, 0},
           Case{R"({"nodes":[{"id":"7","pid":7}],"focus":[7]})", 0, 0},
           Case{R"({"nodes":[{"id":7,"pid":7,"window_properties":3,"app_id":{}}],"focus":[7]})", 1, 7},
           Case{R"({"nodes":[{"id":7,"pid":"x"}],"focus":[8,7]})", 1, 0},
       }) {
    const auto json = Json::parse(tried.json);
    ASSERT_TRUE(json) << tried.json;
    const auto tree = swayTreeOf(*json);
    ASSERT_TRUE(tree) << tried.json;
    EXPECT_THAT(tree->windows, SizeIs(tried.windows)) << tried.json;
    EXPECT_EQ(tree->front, tried.front) << tried.json;
  }
  EXPECT_FALSE(swayTreeOf(Json()));
  EXPECT_FALSE(swayTreeOf(*Json::parse(R"({"success":false})")));
}

class SwayWindowsTest : public testing::Test {
 protected:
  void connect() {
    m_windows = std::make_unique<SwayWindows>(m_loop, m_kernel, m_sway.takeClientsEnd());
    m_windows->start({.changed = [this] { ++m_changes; }, .lost = [this] { ++m_losses; }});
  }
  // Lets sway answer until the condition holds.
  bool serveUntil(const std::function<bool()>& condition) {
    return m_loop.runUntil(
        [&] {
          m_questions += m_sway.serve();
          return condition();
        },
        desktop::guardLimit);
  }
  // Lets sway answer until nothing more is asked. Both ends are in this process: nothing is under way.
  void serve() {
    for (bool isQuiet = false; !isQuiet && m_losses == 0;) {
      const int answered = m_sway.serve();
      m_questions += answered;
      isQuiet = m_windows->settle(std::chrono::milliseconds(0)) && answered == 0;
    }
  }
  void connectTo(std::vector<ScriptedWindow> windows) {
    m_sway.windows = std::move(windows);
    connect();
    serve();
    m_questions = 0;
    m_changes = 0;
  }
  bool isKnown(WindowId id) const { return m_windows->known().contains(id); }
  // 0 for nobody's as well as for none.
  Pid ownerOf(WindowId id) const { return isKnown(id) ? m_windows->known().at(id).pid : 0; }
  static ScriptedWindow window(WindowId id, Pid pid) { return {.id = id, .pid = std::to_string(pid)}; }

  ForkedProcess m_first;
  ForkedProcess m_second;
  ProcKernel m_kernel;
  PollEventLoop m_loop;
  ScriptedSway m_sway;
  std::unique_ptr<SwayWindows> m_windows;
  int m_changes = 0;
  int m_losses = 0;
  int m_questions = 0;
};

TEST_F(SwayWindowsTest, KnowsWhatIsThereAlready) {
  connectTo(
      {{.id = 5, .pid = std::to_string(m_first.pid()), .className = "Game"}, window(4, m_second.pid())});
  ASSERT_THAT(m_windows->known(), SizeIs(2));
  EXPECT_EQ(ownerOf(4), m_second.pid());
  EXPECT_EQ(ownerOf(5), m_first.pid());
  EXPECT_EQ(m_windows->known().at(5).className, "Game");
  EXPECT_TRUE(m_windows->known().at(5).process);
  EXPECT_EQ(m_windows->active(), 5U);
}

TEST_F(SwayWindowsTest, AChangeOfFocusIsAnEventAndNoQuestion) {
  connectTo({window(4, m_first.pid()), window(5, m_second.pid())});
  m_sway.tell("focus", window(5, m_second.pid()));
  ASSERT_TRUE(serveUntil([&] { return m_windows->active() == 5; }));
  m_sway.tell("focus", window(5, m_second.pid())); // as sway does when a lock goes
  m_sway.tell("focus", window(4, m_first.pid()));
  ASSERT_TRUE(serveUntil([&] { return m_windows->active() == 4; }));
  EXPECT_EQ(m_questions, 0);
  EXPECT_LE(m_changes, 2);
}

TEST_F(SwayWindowsTest, AHundredChangesEndWithTheLast) {
  connectTo({window(4, m_first.pid()), window(5, m_second.pid())});
  for (int change = 0; change < 100; ++change) {
    m_sway.tell("focus", change % 2 == 0 ? window(5, m_second.pid()) : window(4, m_first.pid()));
  }
  m_sway.windows.push_back({.id = 6, .pid = "0"});
  m_sway.tell("new", m_sway.windows.back());
  ASSERT_TRUE(serveUntil([&] { return isKnown(6); }));
  EXPECT_EQ(m_windows->active(), 4U);
  EXPECT_EQ(m_questions, 0) << "what is nobody's needs no second word";
}

TEST_F(SwayWindowsTest, ANewWindowIsKnownOnceItsProcessWasNamedAgain) {
  connectTo({window(4, m_first.pid())});
  const ScriptedWindow opened{.id = 5, .pid = std::to_string(m_second.pid())};
  m_sway.tell("new", opened);
  m_sway.tell("focus", opened);
  ASSERT_TRUE(m_loop.runUntil([&] { return m_windows->active() == 5; }, desktop::guardLimit));
  EXPECT_FALSE(isKnown(5));
  EXPECT_FALSE(m_windows->isActiveKnown());
  // By then it has said what it is.
  m_sway.windows = {{.id = 5, .pid = opened.pid, .applicationId = "org.example.Late"}, m_sway.windows[0]};
  ASSERT_TRUE(serveUntil([&] { return isKnown(5); }));
  EXPECT_EQ(m_windows->known().at(5).applicationId, "org.example.Late");
  EXPECT_EQ(ownerOf(5), m_second.pid());
  EXPECT_EQ(m_windows->active(), 5U);
  EXPECT_LE(m_questions, 2);
}

TEST_F(SwayWindowsTest, AReadingUnderWayIsNoSecondWord) {
  m_sway.windows = {window(4, m_first.pid())};
  connect();
  ASSERT_TRUE(serveUntil([&] { return m_questions == 3; })); // version, events, tree
  const ScriptedWindow opened = window(5, m_second.pid());
  m_sway.tell("new", opened); // after the answer was written, before the next question
  m_sway.windows.push_back(opened);
  serve();
  EXPECT_EQ(ownerOf(5), m_second.pid());
  // One more serves both windows, unless this process had to wait for a processor in the middle of a turn.
  EXPECT_THAT(m_questions, testing::AnyOf(4, 5));
}

TEST_F(SwayWindowsTest, AnEmptyWorkspaceHasNothingInFront) {
  connectTo({window(4, m_first.pid())});
  m_sway.tellWorkspace("init", true);
  m_sway.tellWorkspace("focus", true);
  ASSERT_TRUE(serveUntil([&] { return m_windows->active() == 0; }));
  EXPECT_TRUE(isKnown(4));
  EXPECT_EQ(m_questions, 0);
  // Back again: the workspace is told first, then its window.
  m_sway.tellWorkspace("focus", false);
  m_sway.tell("focus", window(4, m_first.pid()));
  ASSERT_TRUE(serveUntil([&] { return m_windows->active() == 4; }));
}

TEST_F(SwayWindowsTest, AWorkspaceThatKeepsTheFocusItselfIsRead) {
  connectTo({window(4, m_first.pid()), window(5, m_second.pid())});
  m_sway.windows = {window(5, m_second.pid()), window(4, m_first.pid())};
  m_sway.tellWorkspace("focus", false);
  ASSERT_TRUE(serveUntil([&] { return m_windows->active() == 5; }));
}

// Nothing else tells that the last window of a workspace was closed, or taken to another one.
TEST_F(SwayWindowsTest, WhereTheFocusWentWithoutAnEventIsRead) {
  connectTo({window(4, m_first.pid()), window(5, m_second.pid())});
  m_sway.windows.erase(m_sway.windows.begin());
  m_sway.tell("close", window(4, m_first.pid()));
  ASSERT_TRUE(serveUntil([&] { return !isKnown(4) && m_windows->active() == 5; }));
  m_sway.windows = {window(6, m_first.pid()), window(5, m_second.pid())};
  m_sway.tell("move", window(5, m_second.pid()));
  ASSERT_TRUE(serveUntil([&] { return m_windows->active() == 6 && isKnown(6); }));
}

TEST_F(SwayWindowsTest, AContainerOfSeveralInFrontIsItsWindow) {
  connectTo({window(4, m_first.pid()), window(5, m_second.pid())});
  m_sway.windows = {window(5, m_second.pid()), window(4, m_first.pid())};
  m_sway.send(ScriptedSway::windowEvent,
              R"({"change":"focus","container":{"id":77,"type":"con","nodes":[]}})");
  ASSERT_TRUE(serveUntil([&] { return m_windows->active() == 5; }));
}

TEST_F(SwayWindowsTest, AnEventForAWindowThatIsNowhereChangesNothing) {
  connectTo({window(4, m_first.pid())});
  m_sway.tell("focus", window(99, m_second.pid()));
  ASSERT_TRUE(serveUntil([&] { return m_questions > 0 && m_windows->active() == 4; }));
  EXPECT_FALSE(isKnown(99));
  m_sway.tell("title", window(98, m_second.pid()));
  m_sway.tell("close", window(97, m_second.pid()));
  serve();
  EXPECT_THAT(m_windows->known(), SizeIs(1));
}

TEST_F(SwayWindowsTest, ProcessesThatCannotBeItsOwnAreNobodys) {
  ForkedProcess ended;
  ended.kill();
  std::vector<ScriptedWindow> windows{window(1, ended.pid())};
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

TEST_F(SwayWindowsTest, AnotherUsersProcessIsNobodys) {
  if (!test::runsAsRoot()) GTEST_SKIP() << "only root can start one";
  const ForkedProcess stranger([] { test::becomeUser(test::ordinaryUser); });
  connectTo({window(4, stranger.pid()), window(5, m_first.pid())});
  EXPECT_EQ(ownerOf(4), 0);
  EXPECT_EQ(ownerOf(5), m_first.pid());
}

TEST_F(SwayWindowsTest, ANumberThatSwayLearnsLaterCounts) {
  connectTo({{.id = 4, .pid = "0"}});
  EXPECT_EQ(ownerOf(4), 0);
  m_sway.windows = {window(4, m_first.pid())};
  m_sway.tell("title", m_sway.windows[0]);
  ASSERT_TRUE(serveUntil([&] { return ownerOf(4) == m_first.pid(); }));
  m_sway.windows = {window(4, m_second.pid())};
  m_sway.tell("title", m_sway.windows[0]);
  ASSERT_TRUE(serveUntil([&] { return ownerOf(4) == m_second.pid(); }));
}

// A window can outlive the process that opened it, and the number go to somebody else, for whom the first
// process stands here.
TEST_F(SwayWindowsTest, TheNumberOfAProcessThatHasEndedIsNotBelievedAgain) {
  connectTo({window(4, m_first.pid()), window(5, m_second.pid())});
  m_windows->forget(m_first.pid());
  EXPECT_EQ(ownerOf(4), 0);
  ASSERT_TRUE(serveUntil([&] { return m_questions > 0 && isKnown(4); }));
  m_sway.tell("focus", window(4, m_first.pid()));
  serve();
  EXPECT_EQ(ownerOf(4), 0);
  EXPECT_EQ(ownerOf(5), m_second.pid());
  // That somebody's own window is.
  m_sway.windows.push_back(window(6, m_first.pid()));
  m_sway.tell("new", m_sway.windows.back());
  ASSERT_TRUE(serveUntil([&] { return ownerOf(6) == m_first.pid(); }));
  EXPECT_EQ(ownerOf(4), 0);
}

TEST_F(SwayWindowsTest, AProcessThatEndsBeforeTheSecondWordIsNobody) {
  connectTo({window(4, m_first.pid())});
  ForkedProcess brief;
  m_sway.windows.push_back(window(5, brief.pid()));
  m_sway.tell("new", m_sway.windows.back());
  m_sway.tell("focus", m_sway.windows.back());
  ASSERT_TRUE(m_loop.runUntil([&] { return m_windows->active() == 5; }, desktop::guardLimit));
  brief.kill();
  ASSERT_TRUE(serveUntil([&] { return isKnown(5); }));
  EXPECT_EQ(ownerOf(5), 0);
}

TEST_F(SwayWindowsTest, AsksForEachWindowToBeClosed) {
  connectTo({window(4, m_first.pid())});
  EXPECT_TRUE(m_windows->requestClose(m_windows->known().at(4)));
  ASSERT_TRUE(serveUntil([&] { return !m_sway.commands.empty(); }));
  EXPECT_THAT(m_sway.commands, ElementsAre("[con_id=4] kill"));
}

TEST_F(SwayWindowsTest, AsksForAWindowToComeToTheFront) {
  connectTo({window(4, m_first.pid())});
  EXPECT_TRUE(m_windows->canBringToFront(m_windows->known().at(4)));
  EXPECT_TRUE(m_windows->requestFront(m_windows->known().at(4)));
  ASSERT_TRUE(serveUntil([&] { return !m_sway.commands.empty(); }));
  EXPECT_THAT(m_sway.commands, ElementsAre("[con_id=4] focus"));
}

TEST_F(SwayWindowsTest, ASwayThatHangsIsAskedSoMuchAndNoMore) {
  connectTo({window(4, m_first.pid())});
  int asked = 0;
  while (asked < 100'000 && m_windows->requestClose(m_windows->known().at(4))) ++asked;
  EXPECT_GT(asked, 100);
  EXPECT_LT(asked, 1'000);
  ASSERT_TRUE(serveUntil([&] { return static_cast<int>(m_sway.commands.size()) == asked; }));
  EXPECT_EQ(m_losses, 0);
}

// What ends a connection: nothing that follows could be told apart.
class BrokenSway : public SwayWindowsTest, public testing::WithParamInterface<const char*> {};

std::string brokenBytes(const std::string& kind) {
  using Sway = ScriptedSway;
  const std::string header = Sway::message(Sway::windowEvent, "");
  if (kind == "Garbage") return "HTTP/1.1 400 Bad Request\r\n\r\n";
  if (kind == "GarbageOfOneByte") return "I";
  if (kind == "Zeros") return std::string(100, '\0');
  if (kind == "HundredMegabytes")
    return header.substr(0, 6) + std::string("\x00\xe1\xf5\x05", 4) + header.substr(10);
  if (kind == "FourGigabytes") return header.substr(0, 6) + "\xff\xff\xff\xff" + header.substr(10);
  if (kind == "AnswerNobodyAskedFor") return Sway::message(Sway::getTree, "{}");
  return Sway::message(42, "{}");
}
INSTANTIATE_TEST_SUITE_P(Kinds, BrokenSway,
                         testing::Values("Garbage", "GarbageOfOneByte", "Zeros", "HundredMegabytes",
                                         "FourGigabytes", "AnswerNobodyAskedFor", "UnknownAnswer"),
                         [](const auto& tested) { return std::string(tested.param); });

TEST_P(BrokenSway, IsLetGo) {
  connectTo({window(4, m_first.pid())});
  m_sway.sendBytes(brokenBytes(GetParam()));
  m_sway.tell("focus", window(4, m_first.pid()));
  ASSERT_TRUE(m_loop.runUntil([&] { return m_losses > 0; }, desktop::guardLimit));
  EXPECT_EQ(m_losses, 1);
  EXPECT_THAT(m_windows->known(), IsEmpty());
  EXPECT_EQ(m_windows->active(), 0U);
  EXPECT_FALSE(m_windows->isPlausible());
  EXPECT_FALSE(m_windows->requestClose({.id = 4, .canBeClosed = true}));
  m_windows->forget(m_first.pid());
  EXPECT_EQ(m_losses, 1);
}

TEST_F(SwayWindowsTest, AnAnswerToAnotherQuestionEndsIt) {
  connect();
  m_sway.send(ScriptedSway::getTree, m_sway.tree());
  EXPECT_TRUE(m_loop.runUntil([&] { return m_losses == 1; }, desktop::guardLimit));
}

TEST_F(SwayWindowsTest, WhoeverIsNotSwayIsLetGo) {
  m_sway.version = R"({"human_readable":"something else"})";
  connect();
  EXPECT_TRUE(serveUntil([&] { return m_losses == 1; }));
}

TEST_F(SwayWindowsTest, WithoutEventsItIsOfNoUse) {
  m_sway.subscription = R"({"success":false})";
  connect();
  EXPECT_TRUE(serveUntil([&] { return m_losses == 1; }));
}

TEST_F(SwayWindowsTest, TheEndOfTheSocketIsTheEndOfTheDesktop) {
  connectTo({window(4, m_first.pid())});
  m_sway.tell("focus", window(4, m_first.pid()));
  m_sway.end();
  ASSERT_TRUE(m_loop.runUntil([&] { return m_losses > 0; }, desktop::guardLimit));
  EXPECT_EQ(m_losses, 1);
  EXPECT_THAT(m_windows->known(), IsEmpty());
}

TEST_F(SwayWindowsTest, HalfAMessageIsAwaited) {
  connectTo({window(4, m_first.pid()), window(5, m_second.pid())});
  const std::string message = ScriptedSway::message(
      ScriptedSway::windowEvent,
      R"({"change":"focus","container":)" + ScriptedSway::windowNode(window(5, m_second.pid())) + "}");
  for (const char byte : message) {
    EXPECT_EQ(m_windows->active(), 4U);
    m_sway.sendBytes({&byte, 1});
    m_windows->settle(std::chrono::milliseconds(0)); // takes what is there
  }
  EXPECT_EQ(m_windows->active(), 5U);
  EXPECT_EQ(m_losses, 0);
}

TEST_F(SwayWindowsTest, WhatNobodyUnderstandsChangesNothing) {
  connectTo({window(4, m_first.pid()), window(5, m_second.pid())});
  const std::string deep(10'000, '[');
  for (const std::string& body :
       {std::string(), std::string("{"), std::string("null"), std::string("[]"),
        std::string(R"({"change":7,"container":[]})"), std::string("\xff\xfe"), deep}) {
    m_sway.send(ScriptedSway::windowEvent, body);
    m_sway.send(ScriptedSway::workspaceEvent, body);
    m_sway.send(0x80000007, body);
  }
  m_sway.windows = {window(5, m_second.pid()), window(4, m_first.pid())};
  m_sway.tell("focus", window(5, m_second.pid()));
  ASSERT_TRUE(serveUntil([&] { return m_windows->active() == 5; }));
  serve();
  EXPECT_EQ(m_windows->active(), 5U);
  EXPECT_EQ(ownerOf(4), m_first.pid());
  EXPECT_EQ(ownerOf(5), m_second.pid());
  EXPECT_EQ(m_losses, 0);
}

TEST_F(SwayWindowsTest, ATreeNobodyUnderstandsTakesNothingAway) {
  connectTo({window(4, m_first.pid())});
  for (const std::string& tree : {std::string("no JSON"), std::string("[1]"), std::string(1000, '[')}) {
    m_sway.brokenTree = tree;
    m_questions = 0;
    m_sway.tell("move", window(4, m_first.pid()));
    serve();
    EXPECT_EQ(m_questions, 1) << tree;
    EXPECT_EQ(ownerOf(4), m_first.pid());
  }
  m_sway.tell("new", window(5, m_second.pid()));
  serve();
  EXPECT_EQ(ownerOf(5), 0) << "never named again";
}

TEST_F(SwayWindowsTest, OneWindowUnderTwoProcessesIsAnsweredOnce) {
  connectTo({window(4, m_first.pid())});
  m_sway.windows = {window(4, m_first.pid()), window(4, m_second.pid())};
  m_sway.tell("move", window(4, m_first.pid()));
  serve();
  EXPECT_EQ(m_questions, 1);
  EXPECT_EQ(ownerOf(4), m_first.pid());
}

TEST_F(SwayWindowsTest, AFloodLeavesOthersTheirTurns) {
  connectTo({window(4, m_first.pid()), window(5, m_second.pid())});
  const std::string message = ScriptedSway::message(
      ScriptedSway::windowEvent,
      R"({"change":"title","container":)" + ScriptedSway::windowNode(window(4, m_first.pid())) + "}");
  const ForkedProcess flooder({}, [&] {
    ::fcntl(m_sway.descriptor(), F_SETFL, 0); // each message whole, however slowly it is taken
    for (;;) m_sway.sendBytes(message);
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

} // namespace
} // namespace vantle
