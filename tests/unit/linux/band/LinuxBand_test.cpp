// SPDX-License-Identifier: MIT
// The band on real processes and threads, as root and as an ordinary user.
#include "platform/linux/band/ThreadMark.h"
#include "tests/support/ForkedProcess.h"
#include "tests/support/User.h"
#include "tests/unit/linux/band/BandFixture.h"

#include <array>
#include <csignal>
#include <fstream>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vantle {

namespace {

using namespace test;
using namespace std::chrono_literals;

constexpr int bestEffort(int level) { return (2 << 13) | level; }

TEST_F(LinuxBandTest, SlowsAnAppAndPutsItBack) {
  asBoth([] {
    const TestProcess app;
    const std::string before = schedulingState(app.pid());
    Band band;
    EXPECT_EQ(band.band.isInBackgroundBand(app.pid()), false);
    EXPECT_TRUE(band.band.enterBackgroundBand(app.pid()));
    EXPECT_EQ(band.band.isInBackgroundBand(app.pid()), true);
    band.settled();
    EXPECT_EQ(autogroupLine(app.pid()), "nice 19");

    EXPECT_TRUE(band.band.leaveBackgroundBand(app.pid()));
    EXPECT_EQ(band.band.isInBackgroundBand(app.pid()), false);
    band.settled();
    EXPECT_EQ(autogroupLine(app.pid()), "nice 0");
    EXPECT_EQ(schedulingState(app.pid()), before);
  });
}

TEST_F(LinuxBandTest, ANewProgramAnswersTheSameAndPutsBackTheSame) {
  asBoth([] {
    const TestProcess app;
    const std::string before = schedulingState(app.pid());
    {
      Band first;
      EXPECT_TRUE(first.band.enterBackgroundBand(app.pid()));
      first.settled();
    }
    Band second;
    EXPECT_EQ(second.band.isInBackgroundBand(app.pid()), true);
    EXPECT_TRUE(second.band.leaveBackgroundBand(app.pid()));
    second.settled();
    EXPECT_EQ(schedulingState(app.pid()), before);
    EXPECT_EQ(autogroupLine(app.pid()), "nice 0");
  });
}

TEST_F(LinuxBandTest, WhatAProcessWasComesBackExactly) {
  asBoth([] {
    const TestProcess app(TestProcess::Session::own, [](char) {
      const sched_param none{};
      ::setpriority(PRIO_PROCESS, 0, 7);
      ::sched_setscheduler(0, SCHED_BATCH, &none);
      ProcKernel().setIoPriority(0, bestEffort(2));
      ProcessorSet first;
      first.add(0);
      return ProcKernel().setAffinity(0, first) == Change::done ? 1 : 0;
    });
    app.ask('!');
    const Pid plain = app.ask('t'); // inherits all of it
    const Pid child = app.ask('f');
    const Pid other = app.ask('t');
    ProcKernel().setIoPriority(other, (3 << 13) | 4); // somebody's `ionice -c3`
    const std::array<Pid, 4> tasks{app.pid(), plain, child, other};
    std::vector<std::string> before;
    before.reserve(tasks.size());
    for (const Pid tid : tasks) before.push_back(schedulingState(tid));

    Band band;
    EXPECT_TRUE(band.enter(app.pid(), {app.pid(), child}));
    for (std::size_t at = 0; at < tasks.size(); ++at) EXPECT_NE(schedulingState(tasks[at]), before[at]);
    band.settled();
    EXPECT_TRUE(band.band.leaveBackgroundBand(app.pid()));
    EXPECT_TRUE(band.band.leaveBackgroundBand(child));
    band.settled();
    for (std::size_t at = 0; at < tasks.size(); ++at) EXPECT_EQ(schedulingState(tasks[at]), before[at]);
  });
}

TEST_F(LinuxBandTest, WhatIsBornSlowedComesBackToWhatItsParentWas) {
  asBoth([] {
    const TestProcess app;
    const std::string before = schedulingState(app.pid());
    Band band;
    EXPECT_TRUE(band.band.enterBackgroundBand(app.pid()));
    band.settled();
    const Pid thread = app.ask('t');
    const Pid child = app.ask('f');
    const Pid distant = app.ask('s');
    EXPECT_EQ(band.band.isInBackgroundBand(child), true);
    EXPECT_EQ(band.band.isInBackgroundBand(distant), true);
    for (const Pid pid : {child, distant, app.pid()}) EXPECT_TRUE(band.band.leaveBackgroundBand(pid));
    band.settled();
    for (const Pid tid : {app.pid(), thread, child, distant}) EXPECT_EQ(schedulingState(tid), before);
  });
}

TEST_F(LinuxBandTest, ReclaimFindsWhatNobodyRemembers) {
  asBoth([] {
    const TestProcess app;
    const std::string before = schedulingState(app.pid());
    Band band;
    EXPECT_TRUE(band.band.enterBackgroundBand(app.pid()));
    band.settled();
    const Pid child = app.ask('f');
    const Pid distant = app.ask('s');
    Band next;
    next.band.reclaim(nullptr);
    next.settled();
    for (const Pid pid : {app.pid(), child, distant}) {
      EXPECT_EQ(schedulingState(pid), before);
      EXPECT_EQ(next.band.isInBackgroundBand(pid), false);
    }
    EXPECT_EQ(autogroupLine(app.pid()), "nice 0");
  });
}

TEST_F(LinuxBandTest, ReclaimTakesARecentLook) {
  asBoth([] {
    const TestProcess app;
    const std::string before = schedulingState(app.pid());
    Band band;
    EXPECT_TRUE(band.band.enterBackgroundBand(app.pid()));
    band.settled();
    const AppTrees recent = band.look({app.pid()});
    band.band.reclaim(&recent);
    band.settled();
    EXPECT_EQ(schedulingState(app.pid()), before);
    EXPECT_EQ(autogroupLine(app.pid()), "nice 0");
  });
}

TEST_F(LinuxBandTest, ASessionWithOthersInItIsLeftAlone) {
  asBoth([] {
    const TestProcess shell;
    const Pid app = shell.ask('f');
    const Pid other = shell.ask('f');
    Band band;
    EXPECT_EQ(refusalsAmong(band.answersFor(app, {app}, {other})), std::vector{BandRefusal::shared});
    band.settled();
    for (const Pid pid : {shell.pid(), app, other}) {
      EXPECT_EQ(band.band.isInBackgroundBand(pid), false);
      EXPECT_EQ(ProcKernel().ioPriority(pid), 0);
    }
    EXPECT_EQ(autogroupLine(app), "nice 0");
  });
}

TEST_F(LinuxBandTest, AnAppsOrphansGoAndComeWithIt) {
  asBoth([] {
    const TestProcess app;
    const Pid orphan = app.ask('o');
    const std::string before = schedulingState(orphan);
    Band band;
    const std::vector<Pid> all = band.look({app.pid()}).processesOf(app.pid());
    EXPECT_EQ(all, (std::vector<Pid>{app.pid(), orphan}));
    EXPECT_TRUE(band.enter(app.pid(), all));
    EXPECT_EQ(band.band.isInBackgroundBand(orphan), true);
    band.settled();
    EXPECT_TRUE(band.leave(all, {app.pid()}).empty());
    band.settled();
    EXPECT_EQ(schedulingState(orphan), before);
    EXPECT_EQ(autogroupLine(app.pid()), "nice 0");
  });
}

TEST_F(LinuxBandTest, NobodyEntersUnasked) {
  asBoth([] {
    const TestProcess app;
    const Pid child = app.ask('f');
    const Pid orphan = app.ask('o');
    Band band;
    EXPECT_TRUE(band.enter(app.pid(), {app.pid()}));
    band.settled();
    for (const Pid pid : {child, orphan}) {
      EXPECT_FALSE(band.band.carriesOwnMark(pid));
      EXPECT_EQ(ProcKernel().ioPriority(pid), 0);
    }
    EXPECT_TRUE(band.leave({app.pid()}, {app.pid()}).empty());
    band.settled();
  });
}

TEST_F(LinuxBandTest, TheSessionOfTheBoostAppIsNeverLowered) {
  asBoth([] {
    const TestProcess terminal;
    const Pid game = terminal.ask('o'); // started from it, and on its own since
    Band band;
    // As root its class may still be lowered: it shares the session with the game.
    EXPECT_EQ(band.enter(terminal.pid(), {terminal.pid()}, {}, game), runsAsRoot());
    band.settled();
    EXPECT_EQ(autogroupLine(game), "nice 0");
    EXPECT_EQ(band.band.isInBackgroundBand(game), false);
    band.band.leaveBackgroundBand(terminal.pid());
  });
}

TEST_F(LinuxBandTest, TheBoostAppItselfIsRefused) {
  asBoth([] {
    const TestProcess game;
    Band band;
    EXPECT_EQ(refusalsAmong(band.answersFor(game.pid(), {game.pid()}, {}, game.pid())),
              std::vector{BandRefusal::notAllowed});
    EXPECT_EQ(ProcKernel().ioPriority(game.pid()), 0);
  });
}

TEST_F(LinuxBandTest, AMarkAloneIsNotTakenForASlowClass) {
  asBoth([] {
    const TestProcess app;
    const Pid game = app.ask('f'); // in its session, so only the class weighs between the two
    const std::string before = schedulingState(app.pid());
    // Born of a process that had its mark, but not its class yet.
    ASSERT_TRUE(ProcKernel().setIoPriority(app.pid(), ThreadMark::remembering(0)->encode()) == Change::done);
    Band band;
    const BandAnswer answer = band.answersFor(app.pid(), {app.pid()}, {}, game).at(0);
    if (runsAsRoot()) {
      EXPECT_TRUE(answer.entered());
      EXPECT_EQ(answer.lever, BandLever::schedulingClass);
      EXPECT_EQ(ProcKernel().scheduling(app.pid())->policy, SCHED_IDLE);
    } else {
      EXPECT_EQ(answer.refusal, BandRefusal::noWayBack);
    }
    EXPECT_TRUE(band.band.carriesOwnMark(app.pid())) << "until it leaves";
    EXPECT_TRUE(band.leave({app.pid()}, {app.pid(), game}).empty());
    EXPECT_EQ(schedulingState(app.pid()), before);
  });
}

TEST_F(LinuxBandTest, AClassThatSomebodyElseGaveBackDoesNotCountAsSlow) {
  if (!runsAsRoot()) GTEST_SKIP() << "only root can give it back";
  const TestProcess app;
  const Pid game = app.ask('f');
  Band band;
  EXPECT_TRUE(band.enter(app.pid(), {app.pid()}, {}, game));
  const sched_param none{};
  ASSERT_EQ(::sched_setscheduler(app.pid(), SCHED_OTHER, &none), 0);
  EXPECT_FALSE(band.enter(app.pid(), {app.pid()}, {}, game, {app.pid()}));
  EXPECT_EQ(ProcKernel().scheduling(app.pid())->policy, SCHED_OTHER);
  EXPECT_TRUE(band.band.carriesOwnMark(app.pid()));
  EXPECT_TRUE(band.leave({app.pid()}, {app.pid(), game}).empty());
  EXPECT_EQ(ProcKernel().ioPriority(app.pid()), 0);
}

// An I/O class of one's own takes the mark's place, and with it the memory.
TEST_F(LinuxBandTest, WhoeverHasPutAnIoClassOverTheMarkComesBackAllTheSame) {
  asBoth([] {
    constexpr int bestEffort = (2 << 13) | 7;
    const TestProcess app;
    const std::string before = schedulingState(app.pid());
    Band band;
    EXPECT_TRUE(band.band.enterBackgroundBand(app.pid()));
    band.settled();
    ::usleep(30'000);                // births are told apart by hundredths of a second
    const Pid thread = app.ask('t'); // born in the band
    const Pid orphan = app.ask('d');
    for (const Pid tid : {thread, orphan}) {
      ASSERT_TRUE(ProcKernel().setIoPriority(tid, bestEffort) == Change::done);
    }
    EXPECT_TRUE(band.band.leaveBackgroundBand(app.pid()));
    band.band.reclaim(nullptr);
    band.settled();
    EXPECT_EQ(schedulingState(app.pid()), before);
    for (const Pid tid : {thread, orphan}) {
      ASSERT_TRUE(ProcKernel().setIoPriority(tid, 0) == Change::done);
      EXPECT_EQ(schedulingState(tid), before);
    }

    EXPECT_TRUE(band.band.enterBackgroundBand(app.pid()));
    band.settled();
    ASSERT_TRUE(ProcKernel().setIoPriority(app.pid(), bestEffort) == Change::done);
    Band next; // after a death, with the process in the journal
    EXPECT_TRUE(next.band.leaveBackgroundBand(app.pid()));
    next.settled();
    ASSERT_TRUE(ProcKernel().setIoPriority(app.pid(), 0) == Change::done);
    EXPECT_EQ(schedulingState(app.pid()), before);
    ::kill(orphan, SIGKILL);
  });
}

// Whoever may write an I/O priority can write a mark that says whatever is useful.
TEST_F(LinuxBandTest, AForgedMarkGivesNobodyRealTimeIo) {
  asBoth([] {
    const TestProcess app;
    const Pid second = app.ask('t');
    ThreadMark forged;
    forged.ioClass = 1;
    forged.ioLevel = 0;
    ASSERT_TRUE(ProcKernel().setIoPriority(app.pid(), forged.encode()) == Change::done);
    forged.isLeaving = true;
    ASSERT_TRUE(ProcKernel().setIoPriority(second, forged.encode()) == Change::done);
    Band band;
    band.band.reclaim(nullptr);
    band.settled();
    EXPECT_EQ(ProcKernel().ioPriority(app.pid()), 0);
    EXPECT_EQ(ProcKernel().ioPriority(second), 0);
  });
}

TEST_F(LinuxBandTest, RealTimeIoIsNeverTakenFromAnybody) {
  if (!runsAsRoot()) GTEST_SKIP() << "only root can give it";
  const TestProcess app;
  constexpr int realTime = (1 << 13) | 3;
  ASSERT_TRUE(ProcKernel().setIoPriority(app.pid(), realTime) == Change::done);
  Band band;
  EXPECT_FALSE(band.band.enterBackgroundBand(app.pid()));
  EXPECT_EQ(ProcKernel().ioPriority(app.pid()), realTime);
}

TEST_F(LinuxBandTest, AChoiceOfSomebodyElseStays) {
  asBoth([] {
    const TestProcess app;
    const Pid bound = app.ask('t');
    const Pid ioOwn = app.ask('t');
    Band band;
    EXPECT_TRUE(band.band.enterBackgroundBand(app.pid()));
    band.settled();
    ProcessorSet first;
    first.add(0);
    EXPECT_TRUE(ProcKernel().setAffinity(bound, first) == Change::done);
    EXPECT_TRUE(ProcKernel().setIoPriority(ioOwn, bestEffort(6)) == Change::done);
    EXPECT_EQ(::setpriority(PRIO_PROCESS, static_cast<id_t>(app.pid()), 11), 0);
    EXPECT_TRUE(band.band.leaveBackgroundBand(app.pid()));
    band.settled();
    EXPECT_EQ(ProcKernel().affinity(bound), first);
    EXPECT_EQ(ProcKernel().ioPriority(ioOwn), bestEffort(6));
    EXPECT_EQ(::getpriority(PRIO_PROCESS, static_cast<id_t>(app.pid())), 11);
    EXPECT_EQ(ProcKernel().ioPriority(app.pid()), 0);
  });
}

TEST_F(LinuxBandTest, ASessionWeightOfSomebodyElseStays) {
  asBoth([] {
    const auto write = [](Pid pid, const char* nice) {
      const std::string path = "/proc/" + std::to_string(pid) + "/autogroup";
      for (std::ofstream file;;) { // the kernel lets one change in 100 ms through
        file.open(path);
        file << nice << std::flush;
        if (file) return;
        file = {};
        ::usleep(20'000);
      }
    };
    const TestProcess own; // weighed by its owner before
    write(own.pid(), "5");
    const TestProcess changed; // and during the Boost
    Band band;
    EXPECT_FALSE(band.band.enterBackgroundBand(own.pid()));
    EXPECT_EQ(band.band.isInBackgroundBand(own.pid()), false);
    EXPECT_TRUE(band.band.enterBackgroundBand(changed.pid()));
    band.settled();
    write(changed.pid(), "3");
    EXPECT_TRUE(band.band.leaveBackgroundBand(changed.pid()));
    band.settled();
    EXPECT_EQ(autogroupLine(own.pid()), "nice 5");
    EXPECT_EQ(autogroupLine(changed.pid()), "nice 3");
    EXPECT_EQ(ProcKernel().ioPriority(changed.pid()), 0);
  });
}

TEST_F(LinuxBandTest, RealTimeThreadsAreNeverTouched) {
  if (!runsAsRoot()) GTEST_SKIP() << "only root can make one";
  const TestProcess app;
  const Pid realTime = app.ask('t');
  const sched_param priority{.sched_priority = 5};
  ASSERT_EQ(::sched_setscheduler(realTime, SCHED_FIFO, &priority), 0);
  const std::string before = schedulingState(realTime);
  Band band;
  EXPECT_TRUE(band.band.enterBackgroundBand(app.pid()));
  EXPECT_EQ(schedulingState(realTime), before);
  EXPECT_TRUE(band.band.leaveBackgroundBand(app.pid()));
  band.settled();

  ASSERT_EQ(::sched_setscheduler(app.pid(), SCHED_RR, &priority), 0);
  ASSERT_EQ(::sched_setscheduler(realTime, SCHED_OTHER, std::array<sched_param, 1>{}.data()), 0);
  EXPECT_TRUE(band.band.enterBackgroundBand(app.pid()));
  EXPECT_EQ(band.band.isInBackgroundBand(app.pid()), true) << "its other thread is";
  EXPECT_EQ(ProcKernel().ioPriority(app.pid()), 0);
  EXPECT_TRUE(band.band.leaveBackgroundBand(app.pid()));
  EXPECT_EQ(band.band.isInBackgroundBand(app.pid()), false);

  ASSERT_EQ(::sched_setscheduler(realTime, SCHED_FIFO, &priority), 0);
  EXPECT_FALSE(band.band.enterBackgroundBand(app.pid())) << "all of it is real-time";
  EXPECT_EQ(autogroupLine(app.pid()), "nice 0");
}

TEST_F(LinuxBandTest, WhatIsNotAnAppIsRefused) {
  asBoth([] {
    Band band;
    for (const Pid pid : {-1, 0, 1, 2, static_cast<Pid>(::getpid())}) {
      EXPECT_FALSE(band.band.enterBackgroundBand(pid)) << pid;
    }
    EXPECT_EQ(band.band.isInBackgroundBand(0), std::nullopt);
    EXPECT_EQ(ProcKernel().ioPriority(0), 0);

    TestProcess gone;
    const Pid pid = gone.pid();
    ::kill(pid, SIGKILL);
    siginfo_t info{};
    ::waitid(P_PID, static_cast<id_t>(pid), &info, WEXITED | WNOWAIT);
    EXPECT_FALSE(band.band.enterBackgroundBand(pid)) << "a zombie";
    EXPECT_FALSE(band.band.leaveBackgroundBand(pid)) << "a zombie";
    gone.end();
    EXPECT_FALSE(band.band.enterBackgroundBand(pid));
    EXPECT_FALSE(band.band.leaveBackgroundBand(pid));
    EXPECT_EQ(band.band.isInBackgroundBand(pid), std::nullopt);
  });
}

TEST_F(LinuxBandTest, ProcessesOfOthersAreRefused) {
  if (!runsAsRoot()) GTEST_SKIP() << "there is no other user";
  const TestProcess ours;
  EXPECT_TRUE(passesAsOrdinaryUser([&ours] {
    Band band;
    EXPECT_FALSE(band.band.enterBackgroundBand(ours.pid()));
    EXPECT_FALSE(band.band.leaveBackgroundBand(ours.pid()));
    EXPECT_EQ(band.band.isInBackgroundBand(ours.pid()), false);
  }));
  // Root could, and does not: they are another person's.
  const TestProcess theirs(TestProcess::Session::own, [](char) { return becomeUser(nobody) ? 0 : 1; });
  ASSERT_EQ(theirs.ask('!'), 0);
  Band band;
  EXPECT_FALSE(band.band.enterBackgroundBand(theirs.pid()));
  EXPECT_EQ(autogroupLine(theirs.pid()), "nice 0");
}

// As init scripts do: in the background, in a session of its own, as another user.
Pid startService() {
  std::array<int, 2> channel{};
  if (::pipe(channel.data()) != 0) return -1;
  if (::fork() == 0) {
    if (::fork() != 0) ::_exit(0);
    ::setsid();
    const Pid pid = becomeUser(nobody) ? ::getpid() : -1;
    (void)!::write(channel[1], &pid, sizeof pid);
    for (;;) ::pause();
  }
  Pid pid = -1;
  (void)!::read(channel[0], &pid, sizeof pid);
  ::close(channel[0]);
  ::close(channel[1]);
  return pid;
}

TEST_F(LinuxBandTest, AServiceThatRootHasStartedFromASlowedAppComesBackAsAnotherUsers) {
  if (!runsAsRoot()) GTEST_SKIP() << "who is no root may not start one";
  for (const bool isAnotherProgram : {false, true}) {
    const TestProcess app(TestProcess::Session::own, [](char) { return startService(); });
    const std::string before = schedulingState(app.pid());
    auto band = std::make_unique<Band>();
    ASSERT_TRUE(band->band.enterBackgroundBand(app.pid()));
    const Pid service = app.ask('!');
    ASSERT_GT(service, 0);
    EXPECT_NE(schedulingState(service), before);
    EXPECT_TRUE(band->band.leaveBackgroundBand(app.pid()));
    if (isAnotherProgram) band = std::make_unique<Band>();
    band->band.reclaim(nullptr);
    band->settled();
    EXPECT_EQ(schedulingState(service), before);
    ::kill(service, SIGKILL);
  }
}

TEST_F(LinuxBandTest, RootLeavesAloneWhatACopyOfAnotherUserHasSlowed) {
  if (!runsAsRoot()) GTEST_SKIP() << "there is no other user";
  const TestProcess theirs(TestProcess::Session::own, [](char) { return becomeUser(nobody) ? 0 : 1; });
  ASSERT_EQ(theirs.ask('!'), 0);
  ThreadMark mark; // who is not root changes no class
  mark.sessionLowered = true;
  ASSERT_EQ(ProcKernel().setIoPriority(theirs.pid(), mark.encode()), Change::done);
  Band band;
  band.band.reclaim(nullptr);
  EXPECT_FALSE(band.band.leaveBackgroundBand(theirs.pid()));
  band.settled();
  EXPECT_EQ(ProcKernel().ioPriority(theirs.pid()), mark.encode());
}

TEST_F(LinuxBandTest, SystemPartsAreNeverTouched) {
  asBoth([] {
    const TestProcess server(TestProcess::Session::own, [](char) {
      std::ofstream("/proc/self/comm") << "pipewire-pulse";
      return 0;
    });
    server.ask('!');
    Band band;
    EXPECT_FALSE(band.band.enterBackgroundBand(server.pid()));
    EXPECT_EQ(ProcKernel().ioPriority(server.pid()), 0);
  });
}

TEST_F(LinuxBandTest, ManySessionsWaitTheirTurnWithoutHoldingUpTheLoop) {
  asBoth([] {
    const std::array<TestProcess, 4> apps{};
    Band band;
    std::vector<Pid> roots;
    roots.reserve(apps.size());
    for (const TestProcess& app : apps) roots.push_back(app.pid());
    EXPECT_TRUE(band.allEnterTogether(roots));
    const auto allShow = [&apps](const char* line) {
      return std::all_of(apps.begin(), apps.end(),
                         [line](const TestProcess& app) { return autogroupLine(app.pid()) == line; });
    };
    EXPECT_TRUE(band.loop.runUntil([&] { return allShow("nice 19"); }, guard));
    for (const TestProcess& app : apps) {
      EXPECT_TRUE(band.band.leaveBackgroundBand(app.pid()));
      EXPECT_EQ(band.band.isInBackgroundBand(app.pid()), false) << "out, whatever still waits";
    }
    EXPECT_TRUE(band.loop.runUntil([&] { return allShow("nice 0"); }, guard));
    band.settled();
    for (const TestProcess& app : apps) EXPECT_EQ(ProcKernel().ioPriority(app.pid()), 0);
  });
}

TEST_F(LinuxBandTest, LeavingAndComingBackWhileTheChangeStillWaits) {
  asBoth([] {
    const std::array<TestProcess, 3> apps{};
    Band band;
    const std::string before = schedulingState(apps[0].pid());
    for (int round = 0; round < 3; ++round) {
      for (const TestProcess& app : apps) EXPECT_TRUE(band.band.enterBackgroundBand(app.pid()));
      for (const TestProcess& app : apps) EXPECT_TRUE(band.band.leaveBackgroundBand(app.pid()));
    }
    for (const TestProcess& app : apps) EXPECT_TRUE(band.band.enterBackgroundBand(app.pid()));
    band.settled();
    for (const TestProcess& app : apps) {
      EXPECT_EQ(autogroupLine(app.pid()), "nice 19");
      EXPECT_EQ(band.band.isInBackgroundBand(app.pid()), true);
      EXPECT_TRUE(band.band.leaveBackgroundBand(app.pid()));
    }
    band.settled();
    for (const TestProcess& app : apps) {
      EXPECT_EQ(autogroupLine(app.pid()), "nice 0");
      EXPECT_EQ(schedulingState(app.pid()), before);
    }
  });
}

TEST_F(LinuxBandTest, AProgramThatDiesWhileItsChangesWaitIsMadeGoodByTheNext) {
  asBoth([] {
    const std::array<TestProcess, 4> apps{};
    const std::string before = schedulingState(apps[0].pid());
    for (const bool leaves : {false, true}) {
      ForkedProcess first({}, [&] {
        Band band;
        for (const TestProcess& app : apps) band.band.enterBackgroundBand(app.pid());
        if (leaves) {
          band.band.settle(guard);
          for (const TestProcess& app : apps) band.band.leaveBackgroundBand(app.pid());
        }
        ::_exit(0); // nothing settled, nothing undone
      });
      first.waitForEnd();
      Band next;
      next.band.reclaim(nullptr);
      next.settled();
      for (const TestProcess& app : apps) {
        EXPECT_EQ(autogroupLine(app.pid()), "nice 0");
        EXPECT_EQ(schedulingState(app.pid()), before);
      }
    }
  });
}

TEST(AutogroupLine, IsReadAsTheKernelWritesIt) {
  const auto group = Autogroup::parse("/autogroup-123 nice -5\n");
  ASSERT_TRUE(group);
  EXPECT_EQ(group->id, 123);
  EXPECT_EQ(group->nice, -5);
  for (const char* text : {"", "/autogroup-", "/autogroup-1", "/autogroup-1 nice ", "x"}) {
    EXPECT_FALSE(Autogroup::parse(text)) << text;
  }
}

} // namespace

} // namespace vantle
