// SPDX-License-Identifier: MIT
// Two desktops' words as one, and one in the place of another, or until another's. All are a script's, and
// the time is the test's; the processes are real.
#include "platform/linux/windows/joined/JoinedWindows.h"

#include "platform/linux/windows/FallbackWindows.h"
#include "platform/linux/windows/StandInWindows.h"
#include "tests/simulation/linux/SimulatedLoop.h"
#include "tests/support/ForkedProcess.h"
#include "tests/unit/linux/windows/ScriptedWindows.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <utility>
#include <vector>

namespace vantle {
namespace {

using namespace std::chrono_literals;
using test::ForkedProcess;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

// One of which the test keeps hold.
std::unique_ptr<DesktopWindows> scripted(ScriptedWindows*& kept) {
  auto windows = std::make_unique<ScriptedWindows>();
  kept = windows.get();
  return windows;
}

class JoinedWindowsTest : public testing::Test {
 protected:
  JoinedWindowsTest() {
    m_joined.start({.changed = [this] { ++m_changes; }, .lost = [this] { ++m_losses; }});
  }
  // A window that the desktop shows.
  void openNative(WindowId id, const ForkedProcess& process) { m_desktop->open(id, process.pid()); }
  void openX(WindowId id, Pid claimed) { m_desktop->open(id, claimed).isX11 = true; }
  // The process of the window in front: 0 when that is nobody's, absent as long as it is not known.
  std::optional<Pid> front() const {
    if (!m_joined.isActiveKnown()) return std::nullopt;
    const auto found = m_joined.known().find(m_joined.active());
    return found == m_joined.known().end() ? 0 : found->second.pid;
  }
  // An X client's window in front of a native one, with what the desktop says of its process.
  void showX(Pid claimed) {
    openNative(1, m_native);
    m_desktop->show(1);
    openX(2, claimed);
    m_desktop->show(2);
  }

  SimulatedCalls m_calls;
  SimulatedClock m_clock{m_calls};
  SimulatedLoop m_loop{m_clock};
  ForkedProcess m_native;
  ForkedProcess m_client;
  ScriptedWindows* m_desktop = nullptr;
  ScriptedWindows* m_xServer = nullptr; // the last that was connected to
  int m_connections = 0;
  int m_changes = 0;
  int m_losses = 0;
  JoinedWindows m_joined{m_loop, scripted(m_desktop), [this] {
                           ++m_connections;
                           return scripted(m_xServer);
                         }};
};

TEST_F(JoinedWindowsTest, WithoutXWindowsTheXServerIsLeftAlone) {
  openNative(1, m_native);
  m_desktop->show(1);
  EXPECT_EQ(front(), m_native.pid());
  m_desktop->show(0);
  EXPECT_EQ(front(), 0);
  EXPECT_EQ(m_connections, 0);
}

TEST_F(JoinedWindowsTest, XWindowsAreAsTheXServerSays) {
  showX(1);
  EXPECT_EQ(m_connections, 1);
  EXPECT_EQ(front(), std::nullopt) << "the X server has not said it yet";
  m_xServer->open(2, m_client.pid()).className = "Client"; // its own number, which may be another's elsewhere
  m_xServer->show(2);
  EXPECT_EQ(front(), m_client.pid());
  EXPECT_THAT(m_joined.known(), SizeIs(2)) << "each window once";
  const WindowFacts& facts = m_joined.known().at(m_joined.active());
  EXPECT_EQ(facts.id, m_joined.active());
  EXPECT_EQ(facts.className, "Client");
  EXPECT_TRUE(facts.isX11);
  m_desktop->show(1);
  EXPECT_EQ(front(), m_native.pid()) << "though the X server still names its own";
}

TEST_F(JoinedWindowsTest, OneConnectionServesAllXWindowsAndEndsWithTheLast) {
  openX(1, 0);
  openX(2, 0);
  m_desktop->tell();
  m_xServer->open(7, m_client.pid());
  m_xServer->tell();
  ASSERT_THAT(m_joined.known(), SizeIs(1));
  m_desktop->windows.erase(1);
  m_desktop->tell();
  m_loop.run(1s);
  EXPECT_THAT(m_joined.known(), SizeIs(1));
  EXPECT_EQ(m_connections, 1);
  m_desktop->windows.erase(2);
  m_desktop->tell();
  m_loop.run(1s);
  EXPECT_THAT(m_joined.known(), IsEmpty());
  openX(3, 0);
  m_desktop->tell();
  EXPECT_EQ(m_connections, 2);
}

TEST_F(JoinedWindowsTest, AnXWindowThatFollowsTheLastOneAtOnceKeepsTheConnection) {
  openX(1, 0);
  m_desktop->tell();
  m_desktop->windows.erase(1);
  m_desktop->tell();
  openX(2, 0);
  m_desktop->tell();
  m_loop.run(1s);
  EXPECT_EQ(m_connections, 1);
}

TEST_F(JoinedWindowsTest, AfterAWhileWhatTheWindowClaimsIsBelieved) {
  showX(m_client.pid());
  m_loop.run(199ms);
  EXPECT_EQ(front(), std::nullopt);
  const int before = m_changes;
  m_loop.run(1ms);
  EXPECT_EQ(front(), m_client.pid());
  EXPECT_GT(m_changes, before);
  EXPECT_THAT(m_joined.known(), SizeIs(2));
  m_xServer->open(9, m_native.pid());
  m_xServer->show(9);
  EXPECT_EQ(front(), m_native.pid()) << "the X server knows better, also later";
}

TEST_F(JoinedWindowsTest, AClaimThatCannotBeTrueIsNobodys) {
  showX(0);
  m_loop.run(200ms);
  EXPECT_EQ(front(), 0);
}

TEST_F(JoinedWindowsTest, EachXWindowHasItsOwnTime) {
  openX(1, m_client.pid());
  openX(2, m_native.pid());
  m_desktop->show(1);
  m_loop.run(150ms);
  m_desktop->show(2);
  m_loop.run(150ms);
  EXPECT_EQ(front(), std::nullopt);
  m_loop.run(50ms);
  EXPECT_EQ(front(), m_native.pid());
  m_desktop->show(1);
  EXPECT_EQ(front(), std::nullopt);
}

TEST_F(JoinedWindowsTest, WhatTheXServerNamesMustBeKnownToIt) {
  showX(m_client.pid());
  m_xServer->show(9); // and its facts are on their way
  EXPECT_EQ(front(), std::nullopt);
  m_xServer->open(9, m_client.pid());
  m_xServer->tell();
  EXPECT_EQ(front(), m_client.pid());
}

TEST_F(JoinedWindowsTest, TheXServersEndIsNotTheDesktops) {
  showX(0);
  m_xServer->open(9, m_client.pid());
  m_xServer->show(9);
  m_xServer->lose();
  m_loop.run(1s);
  EXPECT_EQ(m_losses, 0);
  EXPECT_EQ(front(), 0);
  m_desktop->show(2); // a window that the desktop still shows is no reason to start it again
  EXPECT_EQ(m_connections, 1);
  m_desktop->show(1);
  EXPECT_EQ(front(), m_native.pid());
  openX(3, 0);
  m_desktop->tell();
  EXPECT_EQ(m_connections, 2);
  m_xServer->open(9, m_client.pid());
  m_xServer->show(9);
  m_desktop->show(3);
  EXPECT_EQ(front(), m_client.pid());
}

TEST_F(JoinedWindowsTest, TheDesktopsEndIsTheEnd) {
  showX(0);
  m_xServer->open(9, m_client.pid());
  m_xServer->show(9);
  m_desktop->lose();
  EXPECT_EQ(m_losses, 1);
  EXPECT_THAT(m_joined.known(), IsEmpty());
  EXPECT_EQ(m_joined.active(), 0U);
}

TEST_F(JoinedWindowsTest, EachSourceClosesItsOwn) {
  showX(0);
  m_xServer->open(9, m_client.pid());
  m_xServer->show(9);
  for (const auto& [id, facts] : m_joined.known()) EXPECT_TRUE(m_joined.requestClose(facts));
  EXPECT_THAT(m_desktop->askedToClose, ElementsAre(1U));
  EXPECT_THAT(m_xServer->askedToClose, ElementsAre(9U));
}

TEST_F(JoinedWindowsTest, EachSourceBringsItsOwnToTheFront) {
  showX(0);
  m_xServer->open(9, m_client.pid());
  m_xServer->show(9);
  for (const auto& [id, facts] : m_joined.known()) {
    EXPECT_TRUE(m_joined.canBringToFront(facts));
    EXPECT_TRUE(m_joined.requestFront(facts));
  }
  EXPECT_THAT(m_desktop->askedToFront, ElementsAre(1U));
  EXPECT_THAT(m_xServer->askedToFront, ElementsAre(9U));
}

TEST_F(JoinedWindowsTest, BothForgetAProcess) {
  showX(0);
  m_xServer->open(9, m_client.pid());
  m_xServer->show(9);
  m_joined.forget(m_client.pid());
  EXPECT_THAT(m_desktop->forgotten, ElementsAre(m_client.pid()));
  EXPECT_THAT(m_xServer->forgotten, ElementsAre(m_client.pid()));
  EXPECT_THAT(m_joined.known(), SizeIs(1));
}

TEST_F(JoinedWindowsTest, BothAreWaitedForAtTheStart) {
  m_desktop->whenSettling = [this] { showX(0); };
  EXPECT_TRUE(m_joined.settle(200ms));
  EXPECT_EQ(m_desktop->settledFor, 200ms);
  EXPECT_GT(m_xServer->settledFor, 0ms);
  EXPECT_LE(m_xServer->settledFor, 200ms);
}

class FallbackWindowsTest : public testing::Test {
 protected:
  FallbackWindowsTest() {
    m_windows.start({.changed = [this] { ++m_changes; }, .lost = [this] { ++m_losses; }});
  }

  SimulatedCalls m_calls;
  SimulatedClock m_clock{m_calls};
  SimulatedLoop m_loop{m_clock};
  ForkedProcess m_process;
  ScriptedWindows* m_first = nullptr;
  ScriptedWindows* m_second = nullptr; // null as long as nobody asked for it
  int m_changes = 0;
  int m_losses = 0;
  FallbackWindows m_windows{m_loop, scripted(m_first), [this] { return scripted(m_second); }};
};

TEST_F(FallbackWindowsTest, TheFirstThatTellsAnythingStays) {
  m_first->open(1, m_process.pid());
  m_first->show(1);
  EXPECT_EQ(m_windows.known(), m_first->known());
  EXPECT_EQ(m_windows.active(), 1U);
  m_first->lose();
  m_loop.run(1s);
  EXPECT_EQ(m_losses, 1);
  EXPECT_EQ(m_second, nullptr);
}

TEST_F(FallbackWindowsTest, OneThatIsLostBeforeIsReplaced) {
  m_first->lose();
  m_loop.run(1s);
  ASSERT_NE(m_second, nullptr);
  EXPECT_EQ(m_losses, 0);
  m_second->open(2, m_process.pid());
  m_second->show(2);
  EXPECT_EQ(m_changes, 1);
  EXPECT_EQ(m_windows.active(), 2U);
  EXPECT_TRUE(m_windows.requestClose(m_windows.known().at(2)));
  EXPECT_THAT(m_second->askedToClose, ElementsAre(2U));
  m_windows.forget(m_process.pid());
  EXPECT_THAT(m_windows.known(), IsEmpty());
  m_second->lose();
  EXPECT_EQ(m_losses, 1);
}

TEST_F(FallbackWindowsTest, AtTheStartTheNextIsWaitedForAsWell) {
  m_first->whenSettling = [this] { m_first->lose(); };
  EXPECT_TRUE(m_windows.settle(200ms));
  ASSERT_NE(m_second, nullptr);
  EXPECT_LE(m_second->settledFor, 200ms);
  m_loop.run(1s);
  EXPECT_EQ(m_losses, 0);
}

class StandInWindowsTest : public testing::Test {
 protected:
  void start() {
    m_windows.start({.changed = [this] { ++m_changes; },
                     .startedOver = [this] { ++m_starts; },
                     .lost = [this] { ++m_losses; }});
    m_loop.run(1ms);
  }
  // The awaited one begins to tell of two windows, the second in front.
  void tellOfAll() {
    m_awaited->open(11, m_process.pid());
    m_awaited->open(12, m_other.pid());
    m_isTelling = true;
    m_awaited->show(12);
  }

  SimulatedCalls m_calls;
  SimulatedClock m_clock{m_calls};
  SimulatedLoop m_loop{m_clock};
  ForkedProcess m_process;
  ForkedProcess m_other;
  ScriptedWindows* m_awaited = nullptr;
  ScriptedWindows* m_standIn = nullptr; // the last that was made
  bool m_isTelling = false;
  int m_made = 0;
  int m_changes = 0;
  int m_starts = 0;
  int m_losses = 0;
  std::vector<bool> m_turns; // to the stand-in, or from it
  StandInWindows m_windows{
      m_loop,
      {.source = scripted(m_awaited), .isTelling = [this] { return m_isTelling; }, .patience = 30ms},
      [this] {
        ++m_made;
        return scripted(m_standIn);
      },
      [this](bool isStandIn) { m_turns.push_back(isStandIn); }};
};

TEST_F(StandInWindowsTest, TheOtherIsLookedAtUntilTheAwaitedOneTells) {
  start();
  ASSERT_EQ(m_made, 1);
  m_standIn->open(1, m_process.pid());
  m_standIn->show(1);
  EXPECT_EQ(m_windows.active(), 1U);
  EXPECT_EQ(m_changes, 1);
  m_awaited->open(11, m_process.pid());
  m_awaited->show(11); // and there are more
  EXPECT_EQ(m_windows.active(), 1U);
  EXPECT_EQ(m_changes, 1);
  tellOfAll();
  EXPECT_EQ(m_windows.known(), m_awaited->known());
  EXPECT_EQ(m_windows.active(), 12U);
  EXPECT_EQ(m_changes, 2);
  EXPECT_EQ(m_starts, 0) << "it knows no less than the other";
  m_awaited->show(11);
  EXPECT_EQ(m_changes, 3);
  EXPECT_THAT(m_turns, ElementsAre(true, false));
}

TEST_F(StandInWindowsTest, WhoeverTellsIsAskedToClose) {
  start();
  m_standIn->open(1, m_process.pid());
  EXPECT_TRUE(m_windows.requestClose(m_windows.known().at(1)));
  EXPECT_THAT(m_standIn->askedToClose, ElementsAre(1U));
  EXPECT_TRUE(m_windows.canBringToFront(m_windows.known().at(1)));
  EXPECT_TRUE(m_windows.requestFront(m_windows.known().at(1)));
  EXPECT_THAT(m_standIn->askedToFront, ElementsAre(1U));
  tellOfAll();
  EXPECT_TRUE(m_windows.requestClose(m_windows.known().at(11)));
  EXPECT_THAT(m_awaited->askedToClose, ElementsAre(11U));
}

TEST_F(StandInWindowsTest, AnEndOfTheTellingIsAStartWithTheOther) {
  start();
  tellOfAll();
  m_isTelling = false;
  m_awaited->windows.clear();
  m_awaited->show(0);
  EXPECT_EQ(m_made, 2);
  EXPECT_EQ(m_starts, 1);
  EXPECT_THAT(m_windows.known(), IsEmpty());
  m_standIn->open(1, m_process.pid());
  m_standIn->show(1);
  EXPECT_EQ(m_windows.active(), 1U);
  tellOfAll();
  EXPECT_EQ(m_windows.active(), 12U);
  EXPECT_EQ(m_losses, 0);
}

TEST_F(StandInWindowsTest, BothForgetAProcess) {
  start();
  m_awaited->open(11, m_process.pid()); // which it may tell of next
  m_windows.forget(m_process.pid());
  EXPECT_THAT(m_awaited->forgotten, ElementsAre(m_process.pid()));
  EXPECT_THAT(m_standIn->forgotten, ElementsAre(m_process.pid()));
}

TEST_F(StandInWindowsTest, TheEndOfTheOneThatTellsIsTheDesktops) {
  start();
  tellOfAll();
  m_awaited->lose();
  EXPECT_EQ(m_losses, 1);
}

TEST_F(StandInWindowsTest, WithoutTheAwaitedOneTheOtherGoesOn) {
  start();
  m_awaited->lose();
  EXPECT_EQ(m_losses, 0);
  m_standIn->open(1, m_process.pid());
  m_standIn->show(1);
  EXPECT_EQ(m_windows.active(), 1U);
  m_standIn->lose();
  EXPECT_EQ(m_losses, 1);
}

TEST_F(StandInWindowsTest, WithoutTheOtherTheAwaitedOneIsWaitedFor) {
  start();
  m_standIn->open(1, m_process.pid());
  m_standIn->show(1);
  m_standIn->lose();
  EXPECT_EQ(m_losses, 0);
  EXPECT_EQ(m_starts, 1) << "what it knew is known no more";
  tellOfAll();
  EXPECT_EQ(m_windows.active(), 12U);
  m_isTelling = false;
  m_awaited->show(0);
  EXPECT_EQ(m_made, 2) << "and then the other gets another chance";
  m_standIn->lose();
  m_awaited->lose();
  EXPECT_EQ(m_losses, 1);
}

TEST_F(StandInWindowsTest, AtTheStartTheAwaitedOneComesFirst) {
  m_awaited->whenSettling = [this] { tellOfAll(); };
  m_windows.start({});
  EXPECT_TRUE(m_windows.settle(200ms));
  EXPECT_EQ(m_awaited->settledFor, 30ms);
  EXPECT_EQ(m_windows.active(), 12U);
  m_loop.run(1s);
  EXPECT_EQ(m_made, 0) << "a connection starts the X server where there is none yet";
  EXPECT_THAT(m_turns, ElementsAre(false));
}

TEST_F(StandInWindowsTest, AtTheStartTheOtherHasTheRestOfTheTime) {
  m_windows.start({});
  EXPECT_TRUE(m_windows.settle(20ms));
  EXPECT_EQ(m_awaited->settledFor, 20ms);
  ASSERT_EQ(m_made, 1);
  EXPECT_LE(m_standIn->settledFor, 20ms);
  m_loop.run(1s);
  EXPECT_EQ(m_made, 1);
  EXPECT_THAT(m_turns, ElementsAre(true));
}

} // namespace
} // namespace vantle
