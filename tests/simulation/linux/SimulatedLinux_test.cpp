// SPDX-License-Identifier: MIT
// The simulated kernel does what docs/band.md says that Linux does.
#include "tests/simulation/linux/LinuxDesktop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>

namespace vantle {

namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr int idleClass = 3 << 13;

struct Kernels : testing::Test {
  SimulatedMachine machine;
  SimulatedLinux& boot(LinuxOptions options = {}) { return kernel.emplace(machine, std::move(options)); }
  Pid start(Pid parent = 1) { return machine.processes.spawn({.parent = parent}); }
  Autogroup group(Pid pid) { return kernel->autogroup(pid).value(); }

  std::optional<SimulatedLinux> kernel;
};

TEST_F(Kernels, ChildrenAndThreadsInheritWhatAThreadIs) {
  SimulatedLinux& linux = boot({.user = 0});
  const Pid app = start();
  ProcessorSet last;
  last.add(3);
  ASSERT_EQ(linux.setIoPriority(app, idleClass | 0x1abc), Change::done);
  ASSERT_EQ(linux.setScheduling(app, {SCHED_IDLE, false}), Change::done);
  ASSERT_EQ(linux.setAffinity(app, last), Change::done);
  const Pid thread = linux.startThread(app);
  const Pid child = start(app);
  const Pid grandchild = start(child);
  for (const Pid heir : {thread, child, grandchild}) {
    EXPECT_EQ(linux.ioPriority(heir), idleClass | 0x1abc);
    EXPECT_EQ(linux.scheduling(heir)->policy, SCHED_IDLE);
    EXPECT_EQ(linux.affinity(heir), last);
  }
  EXPECT_THAT(linux.threads(app), ElementsAre(app, thread));
  EXPECT_EQ(linux.stat(app)->threads, 2);
  EXPECT_EQ(linux.stat(child)->session, linux.stat(app)->session);
  linux.endThread(thread);
  EXPECT_TRUE(linux.ioPriority(thread).isGone);
  EXPECT_EQ(linux.setIoPriority(thread, 0), Change::gone);
}

TEST_F(Kernels, ANewSessionHasItsOwnWeightAndTheOldIoPriority) {
  SimulatedLinux& linux = boot();
  const Pid app = start();
  const Pid child = start(app);
  ASSERT_EQ(linux.setAutogroupNice(app, group(app), 19), SessionChange::done);
  EXPECT_EQ(group(child), group(app));
  ASSERT_EQ(linux.setIoPriority(child, idleClass | 5), Change::done);
  linux.startSession(child);
  EXPECT_NE(group(child).id, group(app).id);
  EXPECT_EQ(group(child).nice, 0);
  EXPECT_EQ(linux.ioPriority(child), idleClass | 5);
  EXPECT_EQ(linux.stat(child)->session, child);
}

TEST_F(Kernels, AnOrdinaryUserWeighsOneSessionInATenthOfASecond) {
  SimulatedLinux& linux = boot();
  const Pid first = start();
  const Pid second = start();
  EXPECT_EQ(linux.setAutogroupNice(first, group(first), 19), SessionChange::done);
  EXPECT_EQ(linux.setAutogroupNice(second, group(second), 19), SessionChange::later);
  machine.clock.advance(milliseconds(99));
  EXPECT_EQ(linux.setAutogroupNice(second, group(second), 19), SessionChange::later);
  machine.clock.advance(milliseconds(1));
  EXPECT_EQ(linux.setAutogroupNice(second, group(second), 19), SessionChange::done);
  machine.clock.advance(milliseconds(100));
  linux.takeSessionTurn();
  EXPECT_EQ(linux.setAutogroupNice(first, group(first), 0), SessionChange::later);
}

TEST_F(Kernels, RootWeighsSessionsAtOnce) {
  SimulatedLinux& linux = boot({.user = 0});
  const Pid first = start();
  const Pid second = start();
  EXPECT_EQ(linux.setAutogroupNice(first, group(first), 19), SessionChange::done);
  EXPECT_EQ(linux.setAutogroupNice(second, group(second), 19), SessionChange::done);
}

TEST_F(Kernels, AWriteNamesTheSessionAndTheWeightThatItExpects) {
  SimulatedLinux& linux = boot();
  const Pid app = start();
  const Autogroup before = group(app);
  linux.weighSessionByOthers(app, 5);
  EXPECT_EQ(linux.setAutogroupNice(app, before, 19), SessionChange::chosen);
  linux.startSession(app);
  EXPECT_EQ(linux.setAutogroupNice(app, {before.id, 5}, 19), SessionChange::elsewhere);
  machine.exit(app);
  EXPECT_EQ(linux.setAutogroupNice(app, before, 19), SessionChange::elsewhere);
}

TEST_F(Kernels, AnOrdinaryUserChangesNothingOfOthers) {
  SimulatedLinux& linux = boot();
  const Pid theirs = start();
  linux.process(theirs).user = 1001;
  EXPECT_FALSE(linux.isOwn(theirs));
  EXPECT_EQ(linux.setIoPriority(theirs, idleClass), Change::refused);
  EXPECT_EQ(linux.setScheduling(theirs, {SCHED_BATCH, false}), Change::refused);
  EXPECT_EQ(linux.setAffinity(theirs, ProcessorSet::everything()), Change::refused);
  EXPECT_FALSE(linux.writableAutogroup(theirs));
  EXPECT_TRUE(linux.autogroup(theirs));
  EXPECT_EQ(linux.ioPriority(theirs), 0);
  EXPECT_THAT(linux.differences(), IsEmpty());
}

TEST_F(Kernels, TheIdleClassIsATrapForAnOrdinaryUser) {
  SimulatedLinux& linux = boot();
  const Pid app = start();
  EXPECT_FALSE(linux.mayLeaveIdleClass(app));
  EXPECT_EQ(linux.setScheduling(app, {SCHED_IDLE, false}), Change::done);
  EXPECT_EQ(linux.setScheduling(app, {SCHED_OTHER, false}), Change::refused);
  linux.process(app).niceLimit = 20;
  EXPECT_TRUE(linux.mayLeaveIdleClass(app));
  EXPECT_EQ(linux.setScheduling(app, {SCHED_OTHER, false}), Change::done);
  EXPECT_FALSE(linux.hasNiceCapability());
}

TEST_F(Kernels, ZombiesAreListedAndNothingCanBeDoneToThem) {
  SimulatedLinux& linux = boot({.user = 0});
  const Pid app = start();
  const Pid session = linux.stat(app)->session;
  machine.processes.exitAsZombie(app);
  const auto zombie = linux.stat(app);
  ASSERT_TRUE(zombie);
  EXPECT_FALSE(zombie->isAlive());
  EXPECT_EQ(zombie->session, session);
  EXPECT_EQ(linux.setIoPriority(app, 0), Change::gone);
  EXPECT_FALSE(linux.autogroup(app));
  EXPECT_THAT(linux.units.processesIn(linux.loginScope()), testing::Not(testing::Contains(app)));
}

TEST_F(Kernels, EveryBirthChangesTheMarkAndMayHappenBetweenTwoCalls) {
  SimulatedLinux& linux = boot();
  const Pid app = start();
  const auto before = linux.birthMark();
  linux.startThread(app);
  const auto afterThread = linux.birthMark();
  EXPECT_NE(before, afterThread);
  linux.beforeCall = [&] {
    linux.beforeCall = nullptr;
    start(app);
  };
  EXPECT_NE(linux.birthMark(), afterThread);
  EXPECT_EQ(linux.scan().size(), machine.processes.all().size());
}

TEST_F(Kernels, AReusedPidIsAnotherProcess) {
  SimulatedLinux& linux = boot();
  const Pid app = start();
  ASSERT_EQ(linux.setIoPriority(app, idleClass), Change::done);
  const Autogroup before = group(app);
  machine.exit(app);
  machine.clock.advance(std::chrono::microseconds(1));
  machine.processes.spawn({.pid = app});
  EXPECT_EQ(linux.ioPriority(app), 0);
  EXPECT_NE(group(app).id, before.id);
}

TEST_F(Kernels, ThePidOfASessionThatStillHasMembersIsNotGivenOut) {
  SimulatedLinux& linux = boot();
  const Pid leader = start();
  start(leader);
  EXPECT_TRUE(linux.mayReuse(leader + 100));
  machine.exit(leader);
  EXPECT_FALSE(linux.mayReuse(leader));
  machine.processes.setHighestPid(leader + 1);
  machine.clock.advance(std::chrono::microseconds(1));
  machine.exit(leader + 1); // the session's last member
  EXPECT_TRUE(linux.mayReuse(leader));
}

TEST_F(Kernels, AKernelThatKeepsFewerBitsLosesTheOthers) {
  SimulatedLinux& linux = boot({.keepsMarks = false});
  const Pid app = start();
  ASSERT_EQ(linux.setIoPriority(app, idleClass | 0x1ab7), Change::done);
  EXPECT_EQ(linux.ioPriority(app), idleClass | 7);
}

TEST_F(Kernels, WhatOthersChangeIsTheirsAndWhatIsInheritedIsNot) {
  SimulatedLinux& linux = boot({.user = 0});
  const Pid app = start();
  ASSERT_EQ(linux.setScheduling(app, {SCHED_IDLE, false}), Change::done);
  const Pid child = start(app);
  EXPECT_TRUE(linux.isSlow(child));
  EXPECT_EQ(linux.effectOf(child), "class");
  EXPECT_EQ(linux.differences().size(), 2U);
  linux.byOthers(app, [](ThreadState& state) { state.policy = SCHED_BATCH; });
  EXPECT_FALSE(linux.isSlow(app));
  ASSERT_EQ(linux.setScheduling(child, {SCHED_OTHER, false}), Change::done);
  EXPECT_THAT(linux.differences(), IsEmpty());
}

TEST_F(Kernels, ASessionSaysNothingInsideAControlGroupWithAWeight) {
  SimulatedLinux& linux = boot({.delegatesCpu = false});
  const Pid app = start();
  ASSERT_EQ(linux.setAutogroupNice(app, group(app), 19), SessionChange::done);
  EXPECT_EQ(linux.effectOf(app), "session");
  linux.options.hasAutogroups = false;
  EXPECT_FALSE(linux.isSlow(app));

  kernel.reset();
  SimulatedLinux& weighed = boot();
  ASSERT_EQ(weighed.setAutogroupNice(app, group(app), 19), SessionChange::done);
  EXPECT_FALSE(weighed.isSlow(app)) << "the login's scope has the controller";
  EXPECT_THAT(weighed.differences(), testing::SizeIs(1));
}

TEST_F(Kernels, RefusedCallsAndCrashesAreTheMachines) {
  SimulatedLinux& linux = boot();
  const Pid app = start();
  machine.calls.refuse(Operation::setIoPriority, app);
  EXPECT_EQ(linux.setIoPriority(app, idleClass), Change::refused);
  EXPECT_EQ(linux.ioPriority(app), 0);
  machine.calls.grantAll();
  machine.calls.crashAt(machine.calls.steps() + 1, CrashMoment::afterEffect);
  EXPECT_THROW(linux.setIoPriority(app, idleClass), SimulatedCrash);
  EXPECT_EQ(linux.ioPriority(app), idleClass);
}

TEST(SimulatedLoop, TimersAreCalledAtTheirMomentsUntilTheyAreDropped) {
  SimulatedMachine machine;
  SimulatedLoop loop(machine.clock);
  std::vector<int> called;
  const auto start = machine.clock.now();
  const auto late = loop.after(milliseconds(30), [&] { called.push_back(30); });
  auto dropped = loop.after(milliseconds(20), [&] { called.push_back(20); });
  std::unique_ptr<EventLoop::Handle> next;
  const auto early = loop.after(milliseconds(10), [&] {
    called.push_back(10);
    dropped.reset();
    next = loop.after(milliseconds(5), [&] { called.push_back(15); });
  });
  loop.run(milliseconds(20));
  EXPECT_THAT(called, ElementsAre(10, 15));
  EXPECT_EQ(machine.clock.now() - start, milliseconds(20));
  EXPECT_TRUE(loop.runUntilQuiet(milliseconds(100)));
  EXPECT_THAT(called, ElementsAre(10, 15, 30));
  EXPECT_EQ(machine.clock.now() - start, milliseconds(30));
}

} // namespace

} // namespace vantle
