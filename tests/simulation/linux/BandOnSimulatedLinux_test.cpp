// SPDX-License-Identifier: MIT
// The real band on a simulated Linux: it enters, leaves, recovers, and dies between any two of its changes.
#include "engine/AppTrees.h"
#include "tests/simulation/linux/LinuxDesktop.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <ostream>
#include <sched.h>
#include <set>

namespace vantle {

namespace {

using std::chrono::milliseconds;
using testing::IsEmpty;
using Mood = SimulatedServiceManager::Mood;

constexpr milliseconds guard = std::chrono::minutes(10);

// An app in front and two others, one with a child.
struct Evening {
  explicit Evening(LinuxOptions options) : desktop(machine, std::move(options)) {
    machine.clock.setResolution(10'000);
    front = start("game");
    first = start("mail");
    child = machine.processes.spawn({.parent = first, .executable = "/usr/bin/helper"});
    second = start("notes");
  }

  Pid start(const std::string& name) { return machine.processes.spawn({.executable = "/usr/bin/" + name}); }
  std::set<Pid> everyApp() const {
    std::set<Pid> apps{front, first, second, further};
    apps.insert(everybodyElse.begin(), everybodyElse.end());
    return apps;
  }
  AppTrees look() const { return {desktop.table, {.apps = everyApp(), .self = machine.host.self}}; }
  void enter() { enterOnly({first, second}); }
  void enterOnly(const std::set<Pid>& roots) {
    desktop.band->makeRoomFor(front, [this]() -> const ProcessView& { return trees.emplace(look()); });
    trees.emplace(look());
    std::vector<BandApp> apps;
    for (const Pid root : roots) apps.push_back({root, trees->processesOf(root)});
    answers = desktop.band->enter({*trees, front, apps, {}});
  }
  bool isLookOld() const { return trees->birthMark() != desktop.table.birthMark(); }
  bool hasEntered() const {
    return std::all_of(answers.begin(), answers.end(), [](const std::vector<BandAnswer>& app) {
      return std::all_of(app.begin(), app.end(), [](const BandAnswer& one) { return one.entered(); });
    });
  }
  void leave() {
    const AppTrees now = look();
    const auto leaving = desktop.band->leaving(now);
    for (const Pid pid : {first, child, second}) leaving->leave(pid);
    leaving->finish();
  }
  // The program is killed and started again, and a person waits a while.
  void restart() {
    desktop.endBand();
    machine.restartProgram();
    desktop.startBand().reclaim(nullptr);
    desktop.settle(guard);
  }
  std::vector<Pid> slow() const {
    std::vector<Pid> pids;
    for (const auto& [pid, process] : machine.processes.all()) {
      if (desktop.kernel.isSlow(pid)) pids.push_back(pid);
    }
    return pids;
  }

  SimulatedMachine machine;
  LinuxDesktop desktop;
  Pid front = 0;
  Pid first = 0;
  Pid child = 0;
  Pid second = 0;
  Pid further = 0;
  std::set<Pid> everybodyElse;
  std::optional<AppTrees> trees;
  std::vector<std::vector<BandAnswer>> answers;
};

LinuxOptions sessions() { return {.delegatesCpu = false}; }
LinuxOptions units() { return {.placement = LinuxPlacement::ownUnits}; }
LinuxOptions loginScope() { return {.placement = LinuxPlacement::ownSessions}; }
LinuxOptions rootInOneSession() {
  return {.user = 0, .placement = LinuxPlacement::oneSession, .delegatesCpu = false};
}

struct Setting {
  const char* name;
  LinuxOptions options;
  const char* effect; // on the first app, its number left out
};

std::ostream& operator<<(std::ostream& out, const Setting& setting) { return out << setting.name; }

class EverySetting : public testing::TestWithParam<Setting> {};

TEST_P(EverySetting, AppsAreSlowedAndComeBackExactly) {
  Evening evening(GetParam().options);
  std::set<Pid> slowed;
  evening.desktop.kernel.onTransition = [&slowed](Pid pid, bool isSlow) {
    isSlow ? static_cast<void>(slowed.insert(pid)) : static_cast<void>(slowed.erase(pid));
  };
  evening.desktop.startBand();
  evening.enter();
  EXPECT_TRUE(evening.hasEntered());
  ASSERT_TRUE(evening.desktop.settle(guard));
  EXPECT_THAT(evening.slow(), testing::UnorderedElementsAre(evening.first, evening.child, evening.second));
  EXPECT_THAT(slowed, testing::UnorderedElementsAreArray(evening.slow()));
  EXPECT_THAT(evening.desktop.kernel.effectOf(evening.first), testing::MatchesRegex(GetParam().effect));
  EXPECT_TRUE(evening.desktop.kernel.carriesMark(evening.second));
  EXPECT_EQ(evening.desktop.kernel.effectOf(evening.front), "");

  evening.leave();
  ASSERT_TRUE(evening.desktop.settle(guard));
  EXPECT_THAT(evening.slow(), IsEmpty());
  EXPECT_THAT(slowed, IsEmpty());
  EXPECT_THAT(evening.desktop.kernel.differences(), IsEmpty());
}

TEST_P(EverySetting, ANextRunPutsBackWhatAKilledOneLeft) {
  Evening evening(GetParam().options);
  evening.desktop.startBand();
  evening.enter();
  evening.machine.processes.spawn({.parent = evening.child}); // born slowed, known to nobody
  ASSERT_FALSE(evening.slow().empty());
  evening.restart();
  EXPECT_THAT(evening.slow(), IsEmpty());
  EXPECT_THAT(evening.desktop.kernel.differences(), IsEmpty());
}

// The heart of it: whatever was done before the program died is found and undone.
TEST_P(EverySetting, ItMayDieAtAnyStep) {
  for (const CrashMoment moment : {CrashMoment::beforeEffect, CrashMoment::afterEffect}) {
    std::size_t died = 0;
    for (std::size_t step = 1;; ++step) {
      SCOPED_TRACE("step " + std::to_string(step));
      Evening evening(GetParam().options);
      evening.machine.calls.crashAt(evening.machine.calls.steps() + step, moment);
      bool hasDied = false;
      try {
        evening.desktop.startBand();
        evening.enter();
        evening.desktop.settle(guard);
        evening.leave();
        evening.desktop.settle(guard);
      } catch (const SimulatedCrash&) {
        hasDied = true;
      }
      evening.restart();
      ASSERT_THAT(evening.desktop.kernel.differences(), IsEmpty());
      if (!hasDied) break;
      ++died;
    }
    EXPECT_GT(died, 8U);
  }
}

TEST_P(EverySetting, WhatIsBornBetweenTwoCallsComesBackToo) {
  std::size_t calls = 0;
  {
    Evening evening(GetParam().options);
    evening.desktop.startBand();
    const std::size_t before = evening.desktop.kernel.callCount();
    evening.enter();
    calls = evening.desktop.kernel.callCount() - before;
  }
  ASSERT_GT(calls, 20U);
  for (std::size_t at = 1; at <= calls; ++at) {
    SCOPED_TRACE("call " + std::to_string(at));
    Evening evening(GetParam().options);
    evening.desktop.startBand();
    std::size_t left = at;
    Pid born = 0;
    evening.desktop.kernel.beforeCall = [&] {
      if (--left == 0) born = evening.machine.processes.spawn({.parent = evening.child});
    };
    evening.enter();
    evening.desktop.kernel.beforeCall = nullptr;
    ASSERT_NE(born, 0);
    ASSERT_TRUE(evening.desktop.settle(guard));
    // One that was born between its parent's mark and its parent's change of class has only the mark.
    // One that was born before that is found by whoever looks again, and the look shows that this is due.
    EXPECT_TRUE(evening.desktop.kernel.isSlow(born) || evening.desktop.kernel.carriesMark(born) ||
                evening.isLookOld());
    evening.leave();
    evening.desktop.band->reclaim(nullptr);
    ASSERT_TRUE(evening.desktop.settle(guard));
    EXPECT_THAT(evening.desktop.kernel.differences(), IsEmpty());
  }
}

INSTANTIATE_TEST_SUITE_P(
    Settings, EverySetting,
    testing::Values(Setting{"Sessions", sessions(), "session, processors, mark"},
                    Setting{"Units", units(), "unit app-mail-[0-9]+.scope, processors, mark"},
                    Setting{"LoginScope", loginScope(),
                            "unit app-vantle-mail-[0-9]+.scope, processors, mark"},
                    Setting{"RootInOneSession", rootInOneSession(), "class, processors, mark"}),
    [](const auto& setting) { return setting.param.name; });

TEST(BandOnLinux, AnOrdinaryUsersSessionsFollowOneByOne) {
  Evening evening(sessions());
  evening.desktop.startBand();
  evening.enter();
  EXPECT_TRUE(evening.hasEntered()) << "what waits for its turn has entered";
  const auto isSessionLow = [&](Pid pid) { return evening.desktop.kernel.autogroup(pid)->nice == 19; };
  EXPECT_NE(isSessionLow(evening.first), isSessionLow(evening.second));
  evening.desktop.loop.run(milliseconds(100));
  EXPECT_TRUE(isSessionLow(evening.first) && isSessionLow(evening.second));
  evening.leave();
  evening.desktop.loop.run(milliseconds(300));
  EXPECT_TRUE(evening.desktop.loop.isQuiet());
  EXPECT_THAT(evening.desktop.kernel.differences(), IsEmpty());
}

// It has the mark from its parent, and the full weight of a new session.
TEST(BandOnLinux, WhatASlowedAppHasStartedInANewSessionCanBeSlowedWhole) {
  Evening evening(sessions());
  evening.desktop.startBand();
  evening.enter();
  ASSERT_TRUE(evening.desktop.settle(guard));
  const Pid born = evening.machine.processes.spawn(
      {.parent = evening.first, .executable = "/usr/bin/sleep", .leadsSession = true});
  const auto isSessionLow = [&] { return evening.desktop.kernel.autogroup(born)->nice == 19; };
  EXPECT_TRUE(evening.desktop.band->carriesOwnMark(born));
  EXPECT_FALSE(isSessionLow());
  const AppTrees now = evening.look();
  const BandApp app{evening.first, {born}};
  const auto answers =
      evening.desktop.band->enter({now, evening.front, {&app, 1}, {evening.first, evening.second}});
  EXPECT_TRUE(answers.front().front().entered());
  ASSERT_TRUE(evening.desktop.settle(guard));
  EXPECT_TRUE(isSessionLow());
  const AppTrees last = evening.look();
  const auto leaving = evening.desktop.band->leaving(last);
  for (const Pid pid : {evening.first, evening.child, born, evening.second}) leaving->leave(pid);
  leaving->finish();
  ASSERT_TRUE(evening.desktop.settle(guard));
  EXPECT_FALSE(isSessionLow());
  EXPECT_THAT(evening.desktop.kernel.differences(), IsEmpty());
}

// An app that is busy, one that is not, and one that the person turns to, in the order of their numbers.
TEST(BandOnLinux, OnTheWayBackTheAppInFrontIsFirstAndThenTheHeaviest) {
  for (const bool isAwaited : {true, false}) {
    Evening evening(sessions());
    evening.desktop.startBand();
    std::vector<Pid> others;
    for (const char* name : {"idle", "busy", "busier", "awaited"}) others.push_back(evening.start(name));
    evening.everybodyElse = {others.begin(), others.end()};
    for (const std::size_t busy : {1U, 2U}) {
      SimulatedProcess& process = *evening.machine.processes.find(others[busy]);
      process.isBusy = true;
      process.cpuTime = busy * 100 * evening.machine.clock.resolution();
    }
    evening.enterOnly(evening.everybodyElse);
    ASSERT_TRUE(evening.desktop.settle(guard));
    std::vector<Pid> order;
    evening.desktop.kernel.onTransition = [&](Pid pid, bool isSlow) {
      if (!isSlow) order.push_back(pid);
    };
    const AppTrees now = evening.look();
    const auto leaving = evening.desktop.band->leaving(now);
    for (const Pid pid : others) leaving->leave(pid);
    leaving->finish();
    if (isAwaited) evening.desktop.band->hasten({&others[3], 1});
    ASSERT_TRUE(evening.desktop.settle(guard));
    const std::vector<Pid> expected = isAwaited
                                          ? std::vector<Pid>{others[3], others[2], others[1], others[0]}
                                          : std::vector<Pid>{others[2], others[1], others[0], others[3]};
    EXPECT_EQ(order, expected);
    EXPECT_THAT(evening.desktop.kernel.differences(), IsEmpty());
  }
}

// Every third turn goes to the one of two who both never pause.
struct Rivalry {
  explicit Rivalry(Evening& evening) {
    evening.desktop.kernel.rivalIsFirst = [this] { return ++m_turns % 3 != 0; };
  }

 private:
  int m_turns = 0;
};

TEST(BandOnLinux, ARivalWhoNeverPausesKeepsNobodySlowed) {
  for (const bool isAtTheEnd : {true, false}) {
    Evening evening(sessions());
    evening.desktop.startBand();
    evening.enter();
    ASSERT_TRUE(evening.desktop.settle(guard));
    ASSERT_THAT(evening.slow(), testing::SizeIs(3));
    const Rivalry rivalry(evening);
    evening.leave();
    if (isAtTheEnd) {
      EXPECT_TRUE(evening.desktop.band->settle(std::chrono::seconds(20)));
      EXPECT_EQ(evening.desktop.band->owed(), 0U);
    } else {
      evening.desktop.loop.run(std::chrono::seconds(20));
    }
    EXPECT_THAT(evening.desktop.kernel.differences(), IsEmpty());
  }
}

TEST(BandOnLinux, NoCallHoldsUpTheLoopWhileARivalNeverPauses) {
  Evening evening(sessions());
  evening.desktop.startBand();
  evening.enter();
  ASSERT_TRUE(evening.desktop.settle(guard));
  evening.desktop.kernel.rivalIsFirst = [] { return true; };
  evening.leave();
  int calls = 0;
  auto last = evening.machine.clock.now();
  evening.desktop.kernel.beforeCall = [&] {
    ++calls;
    EXPECT_LE(evening.machine.clock.now() - last, milliseconds(200));
    last = evening.machine.clock.now();
  };
  evening.desktop.loop.run(std::chrono::seconds(10));
  EXPECT_GT(calls, 50);
  EXPECT_LT(calls, 5000) << "asking without a pause is the kernel's part";
  evening.desktop.kernel.beforeCall = nullptr;
}

// What processes remember they can lose, also all of them, while their session waits for its turn.
TEST(BandOnLinux, WhatIsOwedAtADeathIsOnDisk) {
  LinuxOptions options = sessions();
  options.processors = 1; // where a thread may run is remembered by its mark alone
  Evening evening(options);
  std::set<Pid> apps{evening.first, evening.second};
  for (int count = 0; count < 248; ++count) apps.insert(evening.start("app" + std::to_string(count)));
  evening.everybodyElse = apps;
  evening.desktop.startBand();
  evening.enterOnly(apps);
  ASSERT_TRUE(evening.desktop.settle(guard));
  const AppTrees now = evening.look();
  const auto leaving = evening.desktop.band->leaving(now);
  for (const Pid pid : apps) leaving->leave(pid);
  leaving->leave(evening.child);
  leaving->finish();
  EXPECT_EQ(evening.desktop.band->owed(), 250U);
  EXPECT_FALSE(evening.desktop.band->settle(std::chrono::seconds(5)));
  EXPECT_THAT(evening.slow(), testing::SizeIs(testing::AllOf(testing::Gt(150U), testing::Lt(250U))));
  for (const auto& [pid, process] : evening.machine.processes.all()) {
    evening.desktop.kernel.byOthers(pid, [](ThreadState& state) { state.ioPriority = 2 << 13; });
  }
  evening.restart();
  EXPECT_THAT(evening.slow(), IsEmpty());
  EXPECT_THAT(evening.desktop.kernel.differences(), IsEmpty());
}

// A program with the rights of another user, which it gives up again, as password prompts do.
TEST(BandOnLinux, WhoIsAnotherUserWhenItShouldLeaveIsTriedAgain) {
  Evening evening(sessions());
  evening.desktop.startBand();
  evening.enter();
  ASSERT_TRUE(evening.desktop.settle(guard));
  evening.desktop.kernel.process(evening.child).user = 0;
  evening.leave();
  ASSERT_TRUE(evening.desktop.band->settle(guard));
  evening.desktop.loop.run(std::chrono::seconds(5));
  EXPECT_FALSE(evening.desktop.kernel.differences().empty());
  evening.desktop.kernel.process(evening.child).user = evening.desktop.kernel.options.user;
  evening.desktop.loop.run(std::chrono::minutes(2));
  EXPECT_THAT(evening.desktop.kernel.differences(), IsEmpty());
  EXPECT_TRUE(evening.desktop.loop.isQuiet());
}

TEST(BandOnLinux, AnAppThatHasOverwrittenItsMarkEntersAgain) {
  Evening evening(sessions());
  evening.desktop.startBand();
  evening.enter();
  ASSERT_TRUE(evening.desktop.settle(guard));
  evening.desktop.kernel.byOthers(evening.second,
                                  [](ThreadState& state) { state = {.ioPriority = 2 << 13}; });
  evening.enterOnly({evening.second});
  EXPECT_TRUE(evening.hasEntered()) << "the weight of its session is this program's all the same";
  EXPECT_TRUE(evening.desktop.kernel.carriesMark(evening.second));
  evening.leave();
  ASSERT_TRUE(evening.desktop.settle(guard));
  EXPECT_THAT(evening.desktop.kernel.differences(), IsEmpty());
}

// Every thread keeps the set of processors of its moment, and they come and go.
TEST(BandOnLinux, ThreadsLeaveWhicheverSetTheyWereNarrowedTo) {
  for (const bool restarts : {false, true}) {
    for (const unsigned atTheEnd : {2U, 3U, 4U, 8U, 16U}) {
      SCOPED_TRACE(std::to_string(atTheEnd) + " processors" + (restarts ? ", another program" : ""));
      Evening evening(sessions());
      evening.desktop.kernel.options.processors = 8; // the last two
      evening.desktop.startBand();
      evening.enterOnly({evening.first});
      evening.desktop.kernel.options.processors = 4; // the last one
      evening.desktop.kernel.startThread(evening.second);
      evening.enterOnly({evening.second});
      ASSERT_THAT(evening.desktop.kernel.effectOf(evening.second), testing::HasSubstr("processors"));
      evening.desktop.kernel.options.processors = atTheEnd;
      restarts ? evening.restart() : evening.leave();
      ASSERT_TRUE(evening.desktop.settle(guard));
      for (const unsigned later : {2U, 4U, 8U, 16U}) {
        evening.desktop.kernel.options.processors = later;
        EXPECT_THAT(evening.desktop.kernel.differences(), IsEmpty());
      }
    }
  }
}

TEST(BandOnLinux, WhereSomebodyElseHasPutAThreadItStays) {
  Evening evening(sessions());
  evening.desktop.kernel.options.processors = 8;
  evening.desktop.startBand();
  evening.enterOnly({evening.first});
  evening.desktop.kernel.options.processors = 4;
  evening.enterOnly({evening.second});
  evening.desktop.kernel.byOthers(evening.first, [](ThreadState& state) { state.processors = 3; });
  evening.leave();
  ASSERT_TRUE(evening.desktop.settle(guard));
  EXPECT_EQ(evening.desktop.kernel.find(evening.first)->threads.front().state.now.processors, 3U);
  EXPECT_THAT(evening.desktop.kernel.differences(), IsEmpty());
}

TEST(BandOnLinux, AnOrdinaryUserIsNeverTrappedInTheIdleClass) {
  Evening evening({.placement = LinuxPlacement::oneSession, .delegatesCpu = false});
  evening.desktop.startBand();
  evening.enter();
  EXPECT_FALSE(evening.answers.front().front().entered());
  EXPECT_THAT(evening.slow(), IsEmpty());
  EXPECT_THAT(evening.desktop.kernel.differences(), IsEmpty());
}

TEST(BandOnLinux, NoMoodOfTheManagerLeavesAnythingBehind) {
  for (const Mood mood : {Mood::lying, Mood::refusing, Mood::silent, Mood::late}) {
    SCOPED_TRACE(static_cast<int>(mood));
    Evening evening(units());
    evening.desktop.startBand();
    evening.desktop.manager.mood = mood;
    evening.enter();
    EXPECT_FALSE(evening.answers.front().front().entered());
    evening.desktop.loop.run(std::chrono::seconds(2));
    evening.leave();
    evening.desktop.manager.mood = Mood::obedient;
    evening.desktop.loop.run(std::chrono::seconds(90));
    evening.desktop.settle(guard);
    EXPECT_THAT(evening.slow(), IsEmpty());
    EXPECT_THAT(evening.desktop.kernel.differences(), IsEmpty());
  }
}

TEST(BandOnLinux, AServiceThatWasRestartedComesBackFromTheLedger) {
  Evening evening(units());
  const Pid service = evening.start("sync");
  evening.desktop.kernel.place(service, evening.desktop.kernel.units.appSlice() + "/sync.service");
  evening.desktop.manager.setWeightByOthers("sync.service", 300);
  evening.desktop.startBand();
  evening.further = service;
  evening.enterOnly({service});
  ASSERT_TRUE(evening.desktop.kernel.isSlow(service));
  const Pid next = evening.desktop.manager.restartService("sync.service", "/usr/bin/sync");
  ASSERT_TRUE(evening.desktop.kernel.isSlow(next));
  evening.restart();
  EXPECT_FALSE(evening.desktop.kernel.isSlow(next));
  EXPECT_EQ(evening.desktop.kernel.units.units().at(*evening.desktop.kernel.units.pathOf(next)).weight, 300U);
}

} // namespace

} // namespace vantle
