// SPDX-License-Identifier: MIT
// A Boost through macOS's room: every call that it makes, in the system's own words and in order, and the
// program's death at each.
#include "tests/unit/darwin/DarwinFixture.h"

#include <gtest/gtest.h>

namespace vantle {
namespace {

class Boost : public DarwinTest {
 protected:
  // What the engine asked since the last time: without the executables' paths, which tell whether an app is a
  // game, and with the journal's file as the pids in it.
  Calls asked() {
    Calls lines;
    for (const std::string& line : calls()) {
      if (line.starts_with("proc_pidpath")) continue;
      if (line.starts_with("write [") || line.starts_with("write {")) {
        lines.push_back("journal" + pidsIn(line.substr(6)));
      } else {
        lines.push_back(line);
      }
    }
    return lines;
  }
  static std::string pidsIn(const std::string& journal) {
    std::string text;
    const auto identities = decodeJournal(journal);
    if (!identities) return " (unreadable)";
    std::set<Pid> pids;
    for (const ProcessIdentity& identity : *identities) pids.insert(identity.pid);
    for (const Pid pid : pids) text += " " + std::to_string(pid);
    return text.empty() ? " empty" : text;
  }
  // One look at everybody.
  static Calls scanOf(const std::vector<Pid>& pids) {
    Calls lines{"proc_listallpids(NULL, 0)",
                "proc_listallpids(buffer, " + std::to_string((pids.size() + 64) * 4) + ")"};
    for (const Pid pid : pids) {
      lines.push_back("proc_pidinfo(" + std::to_string(pid) + ", PROC_PIDT_SHORTBSDINFO, 0, 64)");
      lines.push_back(record(pid));
    }
    return lines;
  }
  static std::string record(Pid pid) {
    return "proc_pidinfo(" + std::to_string(pid) + ", PROC_PIDTBSDINFO, 0, 136)";
  }
  static std::string enter(Pid pid) {
    return "setpriority(PRIO_DARWIN_PROCESS, " + std::to_string(pid) + ", PRIO_DARWIN_BG)";
  }
  static std::string leave(Pid pid) {
    return "setpriority(PRIO_DARWIN_PROCESS, " + std::to_string(pid) + ", 0)";
  }
  static Calls then(Calls one, const Calls& other) {
    one.insert(one.end(), other.begin(), other.end());
    return one;
  }
  SimulatedAppRef gameAt(Pid pid) {
    AppSpec spec = aGame();
    spec.pid = pid;
    return open(spec);
  }
  void startWithGameOnTheList() {
    startOnMac();
    settings->userGames.set({"org.example.Asteroids"});
    settings->detectMinecraft.set(false);
    kernel->startTrace();
  }
};

TEST_F(Boost, ReadsRecordsThenSlows) {
  openAt(100, "Mail");
  spawnAt(101, 100);
  const SimulatedAppRef game = gameAt(200);
  startWithGameOnTheList();
  machine.activate(game);
  const Pid self = machine.host.self;
  EXPECT_EQ(asked(), then(then({record(200)}, scanOf({1, self, 100, 101, 200})), // who is spared; one look
                          {record(100), "gettimeofday()",                        // the root, then the moment
                           record(100), record(100), record(101), record(101), // in the band? still the same?
                           "journal 100 101", enter(100), enter(101)}));
}

TEST_F(Boost, PutsBackTheYoungThenTheMembersAndForgets) {
  openAt(100, "Mail");
  spawnAt(101, 100);
  const SimulatedAppRef game = gameAt(200);
  startWithGameOnTheList();
  later();
  machine.activate(game);
  later();
  spawnAt(102, 101);
  calls();
  machine.quit(game);
  const Pid self = machine.host.self;
  EXPECT_EQ(asked(), then(scanOf({1, self, 100, 101, 102}),
                          {record(100), record(100), record(101),            // lives; too old
                           record(102), record(102), leave(102),             // young and in the band
                           record(100), leave(100), record(101), leave(101), // the members
                           "journal empty"}));
  for (const Pid pid : {100, 101, 102}) EXPECT_FALSE(isSlow(pid));
}

TEST_F(Boost, WhatTheSystemRefusesLeavesTheJournal) {
  openAt(100, "Mail");
  spawnAt(101, 100);
  const SimulatedAppRef game = gameAt(200);
  startWithGameOnTheList();
  machine.calls.refuse(Operation::enterBand, 101);
  machine.activate(game);
  const Calls made = asked();
  const Calls last(made.end() - 4, made.end());
  EXPECT_EQ(last, (Calls{"journal 100 101", enter(100), enter(101), "journal 100"}));
}

TEST_F(Boost, RunsThroughAnotherUsersProcessesAndTouchesNoneOfThem) {
  openAt(100, "Terminal");
  spawnAt(110, 100); // root's login
  spawnAt(120, 110);
  kernel->foreign.insert(110);
  const SimulatedAppRef game = gameAt(200);
  startWithGameOnTheList();
  machine.activate(game);
  EXPECT_TRUE(isSlow(100));
  EXPECT_TRUE(isSlow(120));
  EXPECT_FALSE(isSlow(110));
  EXPECT_EQ(journalledPids(), (std::set<Pid>{100, 120}));
  machine.quit(game);
  EXPECT_FALSE(isSlow(100));
  EXPECT_FALSE(isSlow(120));
}

TEST_F(Boost, APidThatSomebodyElseHasNowIsLeftAlone) {
  openAt(100, "Mail");
  spawnAt(101, 100);
  const SimulatedAppRef game = gameAt(200);
  startWithGameOnTheList();
  machine.activate(game);
  machine.processes.exit(101);
  later();
  spawnAt(101);
  machine.band.putInByOthers(101);
  machine.quit(game);
  EXPECT_FALSE(isSlow(100));
  EXPECT_TRUE(isSlow(101)) << "it was put there by somebody else";
}

TEST_F(Boost, ADeathAtEveryStepIsMadeGoodByTheNextStart) {
  kernel.reset();
  constexpr std::size_t moreThanAllSteps = 60;
  std::size_t deaths = 0;
  for (std::size_t step = 1; step < moreThanAllSteps; ++step) {
    for (const CrashMoment moment : {CrashMoment::beforeEffect, CrashMoment::afterEffect}) {
      SimulatedMachine desktop;
      arrangeAsMac(desktop);
      SimulatedKernel own(desktop);
      DarwinParts parts;
      std::vector<SimulatedAppRef> apps;
      for (const char* name : {"Mail", "Notes", "Chat"}) {
        apps.push_back(desktop.launch(named(name), Opening::inBackground));
        desktop.processes.spawn({.parent = apps.back()->processIdentifier()});
      }
      desktop.calls.crashAt(desktop.calls.steps() + step, moment);
      try {
        AppSettings choices(desktop.defaults);
        Engine doomed(parts.on(desktop), choices);
        const SimulatedAppRef game = desktop.launch(aGame(), Opening::inFront);
        desktop.activate(apps.front());
        desktop.activate(game);
        desktop.quit(game);
      } catch (const SimulatedCrash&) {
        ++deaths;
      }
      desktop.restartProgram();
      desktop.activate(nullptr);
      AppSettings choices(desktop.defaults);
      const Engine next(parts.on(desktop), choices);
      for (const auto& [pid, process] : desktop.processes.all()) {
        EXPECT_EQ(process.band, BandState::normal) << "pid " << pid << " after a death at step " << step;
      }
      EXPECT_EQ(desktop.files.contents[journalPath()], "[]");
      EXPECT_FALSE(own.fault) << *own.fault;
    }
  }
  EXPECT_GT(deaths, 50U);
  kernel = std::make_unique<SimulatedKernel>(machine);
}

} // namespace
} // namespace vantle
