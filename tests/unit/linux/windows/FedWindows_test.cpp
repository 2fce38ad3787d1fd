// SPDX-License-Identifier: MIT
// What a script in KWin tells, what is made of it, and who else is not heard.
#include "platform/linux/windows/fed/FedWindows.h"

#include "platform/linux/kernel/ProcKernel.h"
#include "platform/linux/windows/kwin/KWinScript.h"
#include "platform/shared/PollEventLoop.h"
#include "tests/support/ForkedProcess.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/User.h"
#include "tests/support/Wait.h"
#include "tests/unit/linux/windows/ScriptedKWin.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace vantle {
namespace {

using namespace std::chrono_literals;
using desktop::FakeService;
using desktop::PrivateBus;
using desktop::TemporaryFolder;
using test::ForkedProcess;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Edition = ScriptedKWin::Edition;
using Window = ScriptedKWin::Window;
using Manners = ScriptedKWin::Manners;

constexpr const char* scriptName = "com.halvo.vantle.test.feed";

// A copy of the program on the bus.
class Copy {
 public:
  Copy(PollEventLoop& loop, const std::string& address, const TemporaryFolder& folder,
       std::chrono::milliseconds longestAbsence, std::chrono::milliseconds longestWait)
      : m_bus(loop, address),
        windows(
            loop, m_kernel, m_bus,
            {.shell = "org.kde.KWin", .ownName = scriptName, .longestAbsence = longestAbsence},
            std::make_unique<KWinScript>(
                loop, m_bus,
                KWinScript::Place{.name = scriptName, .folder = folder.path(), .longestWait = longestWait})) {
    windows.start({.changed = [this] { ++changes; }, .lost = [this] { ++losses; }});
  }

 private:
  ProcKernel m_kernel;
  BusConnection m_bus;

 public:
  FedWindows windows;
  int changes = 0;
  int losses = 0;
};

class FedWindowsTest : public testing::Test {
 protected:
  void startKWin(Manners manners) { m_kwin.emplace(m_bus.address(), std::move(manners)); }
  void startCopy() {
    m_copy = std::make_unique<Copy>(m_loop, m_bus.address(), m_folder, m_longestAbsence, m_longestWait);
  }
  void start(Manners manners) {
    startKWin(std::move(manners));
    startCopy();
    EXPECT_TRUE(windows().settle(desktop::guardLimit));
  }
  FedWindows& windows() { return m_copy->windows; }
  bool runUntil(const std::function<bool()>& condition) {
    return m_loop.runUntil(condition, desktop::guardLimit);
  }
  // For what others know, and tell nobody.
  bool serveUntil(const std::function<bool()>& condition) {
    return desktop::waitUntil([&] {
      m_loop.runUntil([] { return false; }, 1ms);
      return condition();
    });
  }
  bool becomesLost() {
    return runUntil([this] { return m_copy->losses == 1; });
  }
  // The facts of the window whose class is this, once they are known.
  WindowFacts factsOf(const std::string& className) {
    WindowFacts found;
    EXPECT_TRUE(runUntil([&] {
      for (const auto& [id, facts] : windows().known()) {
        if (facts.className == className) found = facts;
      }
      return found.id != 0;
    })) << className;
    return found;
  }
  std::string front() {
    const auto found = windows().known().find(windows().active());
    return found == windows().known().end() ? "" : found->second.className;
  }
  bool becomesFront(const std::string& className) {
    return runUntil([&] { return front() == className; });
  }
  bool hasFiles() const { return !std::filesystem::is_empty(m_folder.path()); }

  PrivateBus m_bus;
  TemporaryFolder m_folder;
  PollEventLoop m_loop;
  ForkedProcess m_first;
  ForkedProcess m_second;
  std::chrono::milliseconds m_longestAbsence = desktop::guardLimit;
  std::chrono::milliseconds m_longestWait = desktop::guardLimit;
  std::optional<ScriptedKWin> m_kwin;
  std::unique_ptr<Copy> m_copy;
};

class OnEachKWin : public FedWindowsTest, public testing::WithParamInterface<Edition> {};
INSTANTIATE_TEST_SUITE_P(Editions, OnEachKWin, testing::Values(Edition::five, Edition::six),
                         [](const testing::TestParamInfo<Edition>& tested) {
                           return std::string(tested.param == Edition::five ? "Five" : "Six");
                         });

TEST_P(OnEachKWin, KnowsAtOnceWhatIsThereAlready) {
  start({.edition = GetParam(),
         .windows = {{"{1}", m_first.pid(), "First", "org.example.First"},
                     {"{2}", m_second.pid(), "Second", "", "shell", true},
                     {"{3}", m_second.pid(), "Third", "", "passing"}}});
  ASSERT_THAT(windows().known(), SizeIs(3));
  const WindowFacts first = factsOf("First");
  EXPECT_EQ(first.pid, m_first.pid());
  ASSERT_TRUE(first.process);
  EXPECT_EQ(first.kind, WindowKind::ordinary);
  EXPECT_EQ(first.instance, "instance");
  EXPECT_EQ(first.applicationId, "org.example.First");
  EXPECT_TRUE(first.canBeClosed);
  EXPECT_FALSE(first.isX11);
  EXPECT_EQ(windows().active(), first.id);
  const WindowFacts second = factsOf("Second");
  EXPECT_EQ(second.kind, WindowKind::shell);
  EXPECT_TRUE(second.isX11);
  EXPECT_EQ(factsOf("Third").kind, WindowKind::passing);
  EXPECT_EQ(second.process, factsOf("Third").process) << "one descriptor for all windows of a process";
}

TEST_P(OnEachKWin, ReadsTheScriptFromAFileThatNobodyElseSeesAndThatIsGoneThen) {
  start({.edition = GetParam()});
  const ScriptedKWin::Seen seen = m_kwin->seen();
  EXPECT_EQ(seen.runs, 1);
  EXPECT_EQ(std::filesystem::path(seen.path).parent_path(), m_folder.path());
  EXPECT_EQ(seen.mode, 0600U);
  EXPECT_TRUE(seen.listener.starts_with(":"))
      << "a well-known name would start its program: " << seen.listener;
  EXPECT_TRUE(serveUntil([this] { return !hasFiles(); }));
}

TEST_F(FedWindowsTest, HearsWhatHappens) {
  start({.windows = {{"{1}", m_first.pid(), "First"}}});
  EXPECT_EQ(m_copy->changes, 1) << "the whole desktop in one piece of news";
  m_kwin->open({"{2}", m_second.pid(), "Second"});
  m_kwin->front("{2}");
  ASSERT_TRUE(becomesFront("Second"));
  EXPECT_EQ(factsOf("Second").pid, m_second.pid());
  m_kwin->gone("{2}");
  ASSERT_TRUE(runUntil([this] { return windows().known().size() == 1; }));
  EXPECT_EQ(windows().active(), 0U);
  m_kwin->front("{1}");
  EXPECT_TRUE(becomesFront("First"));
}

TEST_F(FedWindowsTest, AnEmptyFrontIsNone) {
  start({.windows = {{"{1}", m_first.pid(), "First"}}});
  m_kwin->front("");
  EXPECT_TRUE(runUntil([this] { return windows().active() == 0; }));
  EXPECT_TRUE(windows().isActiveKnown());
}

TEST_F(FedWindowsTest, AWindowMayBeInFrontBeforeItIsToldOf) {
  start({.windows = {{"{1}", m_first.pid(), "First"}}});
  m_kwin->front("{2}");
  ASSERT_TRUE(runUntil([this] { return !windows().isActiveKnown(); }));
  EXPECT_NE(windows().active(), 0U);
  m_kwin->open({"{2}", m_second.pid(), "Second"});
  EXPECT_TRUE(becomesFront("Second"));
}

TEST_F(FedWindowsTest, OfABurstTheLastCounts) {
  start({.windows = {{"{1}", m_first.pid(), "First"}, {"{2}", m_second.pid(), "Second"}}});
  for (int change = 0; change < 100; ++change) {
    m_kwin->front("");
    m_kwin->front(change % 2 == 0 ? "{2}" : "{1}");
  }
  m_kwin->front("{2}");
  m_kwin->open({"{3}", m_second.pid(), "Last"});
  factsOf("Last");
  EXPECT_EQ(front(), "Second");
  EXPECT_EQ(windows().refusedCalls(), 0U);
}

TEST_F(FedWindowsTest, AClassMayBeToldLater) {
  start({.windows = {{"{1}", m_first.pid(), "", ""}}});
  m_kwin->open({"{1}", m_first.pid(), "First", "org.example.First"});
  EXPECT_EQ(factsOf("First").applicationId, "org.example.First");
  EXPECT_THAT(windows().known(), SizeIs(1));
}

TEST_F(FedWindowsTest, StrangersAreRefusedAndCounted) {
  start({.windows = {{"{1}", m_first.pid(), "First"}}});
  FakeService stranger(m_bus.address(), "org.example.Stranger");
  const std::string listener = m_kwin->seen().listener;
  int refused = 0;
  stranger.perform([&](sd_bus* bus) {
    for (const char* member : {"Ready", "Front", "Gone"}) {
      sd_bus_message* call = nullptr;
      sd_bus_message_new_method_call(bus, &call, listener.c_str(), FedWindows::path, FedWindows::interface,
                                     member);
      sd_bus_message_append(call, "s", "{1}");
      sd_bus_call_async(
          bus, nullptr, call,
          [](sd_bus_message* reply, void* count, sd_bus_error*) {
            *static_cast<int*>(count) += sd_bus_message_is_method_error(reply, SD_BUS_ERROR_ACCESS_DENIED);
            return 1;
          },
          &refused, 0);
      sd_bus_message_unref(call);
    }
  });
  ASSERT_TRUE(runUntil([this] { return windows().refusedCalls() == 3; }));
  EXPECT_TRUE(serveUntil([&] {
    bool areAnswered = false;
    stranger.perform([&](sd_bus*) { areAnswered = refused == 3; });
    return areAnswered;
  }));
  EXPECT_EQ(front(), "First");
}

TEST_F(FedWindowsTest, AStrangersLongMessageIsRefusedUnread) {
  start({.windows = {{"{1}", m_first.pid(), "First"}}});
  FakeService stranger(m_bus.address(), "org.example.Stranger");
  const std::string text(16 * 1024 * 1024, 'x');
  stranger.perform([&](sd_bus* bus) {
    sd_bus_call_method_async(bus, nullptr, m_kwin->seen().listener.c_str(), FedWindows::path,
                             FedWindows::interface, "Front", nullptr, nullptr, "s", text.c_str());
  });
  ASSERT_TRUE(runUntil([this] { return windows().refusedCalls() == 1; }));
  EXPECT_EQ(front(), "First");
}

TEST_F(FedWindowsTest, GarbageIsRefusedAndCounted) {
  start({.windows = {{"{1}", m_first.pid(), "First"}}});
  m_kwin->call("Front");
  m_kwin->call("Ready");
  m_kwin->callWith("Stopped", "text");
  m_kwin->callWith("Left", "text");
  m_kwin->callWith("Window", "{1}");
  m_kwin->callWith("NoSuchMethod", "");
  m_kwin->callWith("Front", std::string(100'000, 'x'));
  m_kwin->open({"", m_first.pid()});
  m_kwin->open({std::string(129, 'x'), m_first.pid()});
  m_kwin->open({"{2}", m_first.pid(), "class", "", "no kind"});
  m_kwin->send("Window", [](sd_bus_message* call) {
    sd_bus_message_append(call, "sxssssb", "{1}", std::int64_t{7}, "", "", "", "ordinary", 0);
  });
  ASSERT_TRUE(runUntil([this] { return windows().refusedCalls() == 11; }));
  m_kwin->open({"{2}", m_second.pid(), std::string(5'000, 'x')});
  m_kwin->front("{2}");
  EXPECT_TRUE(becomesFront(std::string(1024, 'x'))) << "cut, and everything goes on";
  m_kwin->gone("{no such window}");
  m_kwin->front("{1}");
  EXPECT_TRUE(becomesFront("First"));
}

TEST_F(FedWindowsTest, PidsThatNobodyHasAreNobodys) {
  ForkedProcess ended;
  ended.kill();
  start({.windows = {{"{1}", 0, "0"},
                     {"{2}", 1, "1"},
                     {"{3}", -1, "-1"},
                     {"{4}", std::numeric_limits<std::int32_t>::min(), "least"},
                     {"{5}", ended.pid(), "ended"}}});
  for (const char* name : {"0", "1", "-1", "least", "ended"}) {
    EXPECT_EQ(factsOf(name).pid, 0) << name;
    EXPECT_FALSE(factsOf(name).process) << name;
  }
}

TEST_F(FedWindowsTest, AnotherUsersProcessIsNobodys) {
  if (!test::runsAsRoot()) GTEST_SKIP() << "only root can start one";
  const ForkedProcess foreign([] { test::becomeUser(test::ordinaryUser); });
  start({.windows = {{"{1}", foreign.pid(), "foreign"}}});
  EXPECT_EQ(factsOf("foreign").pid, 0);
}

// Between what KWin says and the descriptor the process may have ended, and the number be somebody else's.
TEST_F(FedWindowsTest, AProcessThatEndsBeforeKWinStandsByItIsNobodys) {
  start({.windows = {{"{1}", m_first.pid(), "First"}}, .whenAsked = [this] { m_second.kill(); }});
  m_kwin->open({"{2}", m_second.pid(), "Second"});
  EXPECT_EQ(factsOf("Second").pid, 0);
}

TEST_F(FedWindowsTest, AWindowThatGoesBeforeKWinStandsByItIsNotKnown) {
  Manners manners{.windows = {{"{1}", m_first.pid(), "First"}}};
  start(manners);
  m_kwin->open({"{2}", m_second.pid(), "Second"});
  m_kwin->gone("{2}");
  m_kwin->open({"{3}", m_second.pid(), "Third"});
  factsOf("Third");
  EXPECT_THAT(windows().known(), SizeIs(2));
}

TEST_F(FedWindowsTest, AWindowWhoseProcessHasEndedIsNobodysWhoeverHasItsNumber) {
  start({.windows = {{"{1}", m_first.pid(), "First"}}});
  ASSERT_EQ(factsOf("First").pid, m_first.pid());
  windows().forget(m_first.pid()); // though it lives, as one would that has got the number since
  EXPECT_EQ(factsOf("First").pid, 0);
  m_kwin->open({"{1}", m_first.pid(), "Renamed"});
  EXPECT_EQ(factsOf("Renamed").pid, 0);
  m_kwin->open({"{2}", m_first.pid(), "New"});
  EXPECT_EQ(factsOf("New").pid, m_first.pid()) << "a window that has come since is the new process's";
}

TEST_F(FedWindowsTest, WhileNothingIsToldEverythingStays) {
  start({.windows = {{"{1}", m_first.pid(), "First"}, {"{2}", m_second.pid(), "Second"}}});
  m_kwin->call("Stopped");
  m_kwin->front("");
  m_kwin->gone("{2}");
  m_kwin->callWith("Ready", "kwin");
  m_kwin->open({"{1}", m_first.pid(), "First"});
  m_kwin->open({"{3}", m_second.pid(), "Third"});
  EXPECT_EQ(factsOf("Third").pid, m_second.pid());
  EXPECT_EQ(front(), "First");
  EXPECT_THAT(windows().known(), SizeIs(3));
  m_kwin->front("{3}");
  ASSERT_TRUE(becomesFront("Third"));
  EXPECT_THAT(windows().known(), SizeIs(2)) << "what was not told of again is gone";
}

TEST_F(FedWindowsTest, ACallerThatLeavesAndComesBackSoonChangesNothing) {
  start({.windows = {{"{1}", m_first.pid(), "First"}}});
  EXPECT_TRUE(windows().isComplete());
  m_kwin->call("Left");
  m_kwin->gone("{1}"); // nobody's word any more
  m_kwin->callWith("Ready", "kwin");
  m_kwin->open({"{1}", m_first.pid(), "Renamed"});
  EXPECT_EQ(factsOf("Renamed").pid, m_first.pid());
  EXPECT_TRUE(windows().isComplete());
  m_kwin->front("{1}");
  EXPECT_TRUE(becomesFront("Renamed"));
}

TEST_F(FedWindowsTest, WhatACallerKnewThatLeavesForGoodIsKnownNoMore) {
  m_longestAbsence = 1ms;
  start({.windows = {{"{1}", m_first.pid(), "First"}}});
  m_kwin->call("Stopped");
  m_kwin->call("Left");
  ASSERT_TRUE(runUntil([this] { return windows().known().empty(); }));
  EXPECT_FALSE(windows().isComplete());
  EXPECT_EQ(windows().active(), 0U);
  EXPECT_EQ(m_copy->losses, 0);
  m_kwin->callWith("Ready", "kwin");
  m_kwin->open({"{1}", m_first.pid(), "First"});
  ASSERT_TRUE(runUntil([this] { return windows().known().size() == 1; }));
  EXPECT_FALSE(windows().isComplete()) << "there may be more";
  m_kwin->front("{1}");
  ASSERT_TRUE(becomesFront("First"));
  EXPECT_TRUE(windows().isComplete());
}

TEST_F(FedWindowsTest, TakesThePlaceOfAScriptThatAKilledCopyLeft) {
  m_folder.write(".vantle-999999999-0.tmp", "what it left");
  start({.windows = {{"{1}", m_first.pid(), "First"}}, .scripts = {{scriptName, 0}}});
  EXPECT_EQ(front(), "First");
  EXPECT_TRUE(serveUntil([this] { return !hasFiles(); }));
}

TEST_F(FedWindowsTest, TakesTheScriptOutAtTheEnd) {
  start({});
  ASSERT_THAT(m_kwin->seen().scripts, SizeIs(1));
  m_copy.reset();
  desktop::require("no script", [this] { return m_kwin->seen().scripts.empty(); });
}

TEST_F(FedWindowsTest, OneCopyAtATimeIsFed) {
  start({.windows = {{"{1}", m_first.pid(), "First"}, {"{2}", m_second.pid(), "Second"}}});
  {
    Copy second(m_loop, m_bus.address(), m_folder, m_longestAbsence, m_longestWait);
    ASSERT_TRUE(runUntil([&] { return second.losses == 1; }));
    EXPECT_THAT(second.windows.known(), IsEmpty());
  }
  m_kwin->front("{2}");
  EXPECT_TRUE(becomesFront("Second")) << "the first one still is";
  EXPECT_EQ(m_kwin->seen().runs, 1);
  m_copy.reset();
  startCopy();
  EXPECT_TRUE(windows().settle(desktop::guardLimit)) << "and then the next";
}

TEST_F(FedWindowsTest, AKWinThatComesBackGetsTheScriptAgain) {
  start({.windows = {{"{1}", m_first.pid(), "First"}, {"{2}", m_second.pid(), "Second"}}});
  m_kwin.reset();
  startKWin({.edition = Edition::five,
             .windows = {{"{8}", m_second.pid(), "Eighth"}, {"{9}", m_first.pid(), "Ninth"}}});
  EXPECT_TRUE(becomesFront("Eighth"));
  EXPECT_EQ(factsOf("Ninth").pid, m_first.pid());
  EXPECT_THAT(windows().known(), SizeIs(2));
  EXPECT_EQ(m_copy->losses, 0);
}

TEST_F(FedWindowsTest, AKWinThatStaysAwayIsTheEndOfTheDesktop) {
  m_longestAbsence = 1ms;
  start({.windows = {{"{1}", m_first.pid(), "First"}}});
  m_kwin.reset();
  ASSERT_TRUE(becomesLost());
  EXPECT_THAT(windows().known(), IsEmpty());
  EXPECT_EQ(windows().active(), 0U);
  windows().forget(m_first.pid());
  EXPECT_FALSE(windows().requestClose({.id = 1, .canBeClosed = true}));
  EXPECT_FALSE(windows().canBringToFront({.id = 1}));
  EXPECT_FALSE(windows().requestFront({.id = 1}));
}

// An extension waits for the name, and nothing puts it in place.
class WaitingCaller final : public FeedCaller {
 public:
  void meet(const std::string&, std::function<void()>) override {}
  void begin() override {}
  void ask(std::function<void(bool)> answered) override { m_answered = std::move(answered); }
  bool requestClose(const std::string&) override { return false; }
  bool requestFront(const std::string&) override { return false; }
  bool isAsked() const { return m_answered != nullptr; }
  void answer(bool isAnswered) { std::exchange(m_answered, {})(isAnswered); }

 private:
  std::function<void(bool)> m_answered;
};

// Tells of an empty desktop as soon as there is a new owner of the name.
void callWhenTheNameComes(FakeService& shell) {
  const auto whenItIsThere = [](sd_bus_message* signal, void*, sd_bus_error*) {
    sd_bus* const bus = sd_bus_message_get_bus(signal);
    for (const char* member : {"Ready", "Front"}) {
      sd_bus_call_method_async(bus, nullptr, scriptName, FedWindows::path, FedWindows::interface, member,
                               nullptr, nullptr, "s", "");
    }
    return 0;
  };
  shell.perform([&](sd_bus* bus) {
    const std::string rule = "type='signal',member='NameOwnerChanged',arg0='" + std::string(scriptName) + "'";
    sd_bus_add_match(bus, nullptr, rule.c_str(), whenItIsThere, nullptr);
  });
}

TEST_F(FedWindowsTest, WaitsForItsNameWhereTheCallerComesByItself) {
  FakeService shell(m_bus.address(), "org.gnome.Shell");
  auto stranger = std::make_unique<FakeService>(m_bus.address(), scriptName);
  callWhenTheNameComes(shell);
  const ProcKernel kernel;
  BusConnection connection(m_loop, m_bus.address());
  FedWindows fed(m_loop, kernel, connection,
                 {.shell = "org.gnome.Shell", .ownName = scriptName, .waitsForName = true},
                 std::make_unique<WaitingCaller>());
  int losses = 0;
  fed.start({.lost = [&] { ++losses; }});
  const auto isQueued = [&] {
    m_loop.runUntil([] { return false; }, 1ms);
    bool isThere = false;
    shell.perform([&](sd_bus* bus) {
      sd_bus_message* reply = nullptr;
      sd_bus_call_method(bus, "org.freedesktop.DBus", "/", "org.freedesktop.DBus", "ListQueuedOwners",
                         nullptr, &reply, "s", scriptName);
      char** owners = nullptr;
      isThere = sd_bus_message_read_strv(reply, &owners) > 0 && owners[1] != nullptr;
      for (char** owner = owners; owner != nullptr && *owner != nullptr; ++owner) std::free(*owner);
      std::free(owners);
      sd_bus_message_unref(reply);
    });
    return isThere;
  };
  desktop::require("its place behind the stranger", isQueued);
  EXPECT_FALSE(fed.settle(1ms));
  stranger.reset();
  EXPECT_TRUE(fed.settle(desktop::guardLimit));
  EXPECT_EQ(losses, 0);
}

TEST_F(FedWindowsTest, WhoCallsTheMomentTheNameIsThereIsHeard) {
  FakeService shell(m_bus.address(), "org.gnome.Shell");
  callWhenTheNameComes(shell);
  const ProcKernel kernel;
  BusConnection connection(m_loop, m_bus.address());
  FedWindows fed(m_loop, kernel, connection, {.shell = "org.gnome.Shell", .ownName = scriptName},
                 std::make_unique<WaitingCaller>());
  EXPECT_TRUE(fed.settle(desktop::guardLimit));
  EXPECT_EQ(fed.refusedCalls(), 0U);
}

TEST_F(FedWindowsTest, AQuestionWithoutAnAnswerIsAskedAgainWithTheNextEvent) {
  FakeService shell(m_bus.address(), "org.gnome.Shell");
  const ProcKernel kernel;
  BusConnection connection(m_loop, m_bus.address());
  auto owned = std::make_unique<WaitingCaller>();
  WaitingCaller& caller = *owned;
  FedWindows fed(m_loop, kernel, connection, {.shell = "org.gnome.Shell", .ownName = scriptName},
                 std::move(owned));
  EXPECT_FALSE(fed.settle(1ms)) << "nobody has called";
  desktop::require("the name", [&] {
    m_loop.runUntil([] { return false; }, 1ms);
    int hasOwner = 0;
    shell.perform([&](sd_bus* bus) {
      sd_bus_message* reply = nullptr;
      sd_bus_call_method(bus, "org.freedesktop.DBus", "/", "org.freedesktop.DBus", "NameHasOwner", nullptr,
                         &reply, "s", scriptName);
      sd_bus_message_read(reply, "b", &hasOwner);
      sd_bus_message_unref(reply);
    });
    return hasOwner != 0;
  });
  const auto tell = [&](const char* member, const char* text) {
    shell.perform([&](sd_bus* bus) {
      sd_bus_call_method_async(bus, nullptr, scriptName, FedWindows::path, FedWindows::interface, member,
                               nullptr, nullptr, "s", text);
    });
  };
  tell("Ready", "45");
  shell.perform([&](sd_bus* bus) {
    sd_bus_call_method_async(bus, nullptr, scriptName, FedWindows::path, FedWindows::interface, "Window",
                             nullptr, nullptr, "sissssb", "1", m_first.pid(), "", "", "", "ordinary", 0);
  });
  ASSERT_TRUE(runUntil([&] { return caller.isAsked(); }));
  caller.answer(false);
  EXPECT_FALSE(caller.isAsked()) << "not at once, and again and again";
  EXPECT_THAT(fed.known(), IsEmpty());
  tell("Front", "1");
  ASSERT_TRUE(runUntil([&] { return caller.isAsked(); }));
  EXPECT_THAT(fed.known(), IsEmpty());
  caller.answer(true);
  EXPECT_THAT(fed.known(), SizeIs(1));
  EXPECT_FALSE(caller.isAsked()) << "nothing is open";
}

TEST_F(FedWindowsTest, ABusThatEndsIsTheEndOfTheDesktop) {
  start({.windows = {{"{1}", m_first.pid(), "First"}}});
  m_bus.kill();
  ASSERT_TRUE(becomesLost());
  EXPECT_THAT(windows().known(), IsEmpty());
  m_bus.start(); // for KWin, which leaves it
  m_kwin.reset();
}

TEST_F(FedWindowsTest, WithoutAKWinThereIsNothing) {
  startCopy();
  EXPECT_FALSE(windows().settle(desktop::guardLimit));
  EXPECT_EQ(m_copy->losses, 1);
  EXPECT_EQ(m_copy->changes, 0);
}

TEST_F(FedWindowsTest, WithoutABusThereIsNothing) {
  m_bus.kill();
  startCopy();
  EXPECT_FALSE(windows().settle(desktop::guardLimit));
  EXPECT_TRUE(becomesLost());
}

TEST_F(FedWindowsTest, AScriptThatNeverCallsIsGivenUp) {
  m_longestWait = 1ms;
  startKWin({.isSilent = true});
  startCopy();
  ASSERT_TRUE(becomesLost());
  EXPECT_EQ(m_copy->changes, 0);
  m_copy.reset();
  desktop::require("no script", [this] { return m_kwin->seen().scripts.empty(); });
  EXPECT_FALSE(hasFiles());
}

TEST_F(FedWindowsTest, AKWinThatTakesNoScriptIsGivenUpAtOnce) {
  startKWin({.takesScripts = false});
  startCopy();
  EXPECT_TRUE(becomesLost());
  EXPECT_FALSE(hasFiles());
}

TEST_F(FedWindowsTest, AKWinThatRunsNoScriptIsGivenUpAtOnce) {
  startKWin({.runsScripts = false});
  startCopy();
  EXPECT_TRUE(becomesLost());
  m_copy.reset();
  EXPECT_FALSE(hasFiles());
}

// KWin would run what somebody else puts in its place.
TEST_F(FedWindowsTest, AFolderThatOthersMayWriteToHoldsNoScript) {
  std::filesystem::permissions(m_folder.path(), std::filesystem::perms::all);
  startKWin({});
  startCopy();
  EXPECT_TRUE(becomesLost());
  EXPECT_EQ(m_kwin->seen().runs, 0);
}

TEST_F(FedWindowsTest, ClosesWindowsByAScriptOfItsOwn) {
  start({.windows = {{"{1}", m_first.pid(), "First"},
                     {"{2}", m_second.pid(), "Second"},
                     {"{3}", m_second.pid(), "Third"}}});
  for (const char* name : {"First", "Second", "Third"}) EXPECT_TRUE(windows().requestClose(factsOf(name)));
  ASSERT_TRUE(serveUntil([this] { return m_kwin->seen().closing.size() == 2; }));
  EXPECT_THAT(m_kwin->seen().closing, ElementsAre(R"(["{1}"])", R"(["{2}","{3}"])"))
      << "what is asked meanwhile is done together";
  EXPECT_TRUE(serveUntil([this] { return m_kwin->seen().scripts.size() == 1 && !hasFiles(); }));
  m_kwin->front("{2}");
  EXPECT_TRUE(becomesFront("Second")) << "and the feed goes on";
}

TEST_F(FedWindowsTest, BringsAWindowToTheFrontByAScriptOfItsOwn) {
  start({.windows = {{"{1}", m_first.pid(), "First"}, {"{2}", m_second.pid(), "Second"}}});
  EXPECT_TRUE(windows().canBringToFront(factsOf("Second")));
  EXPECT_TRUE(windows().requestFront(factsOf("Second")));
  EXPECT_TRUE(windows().requestClose(factsOf("First")));
  EXPECT_TRUE(windows().requestFront(factsOf("Second")));
  EXPECT_TRUE(windows().requestFront(factsOf("First")));
  ASSERT_TRUE(serveUntil([this] { return m_kwin->seen().toFront.size() == 2; }));
  EXPECT_THAT(m_kwin->seen().toFront, ElementsAre(R"("{2}")", R"("{1}")")) << "the last word counts";
  EXPECT_THAT(m_kwin->seen().closing, ElementsAre("[]", R"(["{1}"])"));
  EXPECT_TRUE(serveUntil([this] { return m_kwin->seen().scripts.size() == 1 && !hasFiles(); }));
}

TEST_F(FedWindowsTest, AHostileNameIsTextInTheScriptThatCloses) {
  start({.windows = {{"\"]; workspace.windowList()[0].closeWindow(); \"\\\n</js", m_first.pid(), "First"}}});
  EXPECT_TRUE(windows().requestClose(factsOf("First")));
  ASSERT_TRUE(serveUntil([this] { return m_kwin->seen().closing.size() == 1; }));
  EXPECT_TRUE(m_kwin->seen().closing.front().starts_with(R"(["\"])")) << m_kwin->seen().closing.front();
}

} // namespace
} // namespace vantle
