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
  // game, with the journal's file as the pids in it and the band's own as whether there is anything in it.
  Calls asked() {
    Calls lines;
    for (const std::string& line : calls()) {
      if (line.starts_with("proc_pidpath")) continue;
      if (line.starts_with("write [")) {
        lines.push_back("journal" + pidsIn(line.substr(6)));
      } else if (line.starts_with("write {")) {
        lines.emplace_back(line == "write {}" ? "the band's file, empty" : "the band's file");
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
  // The band's own.
  static Calls lookOf(const std::vector<Pid>& pids) {
    Calls lines = scanOf(pids);
    std::erase_if(lines, [](const std::string& line) { return line.find("SHORT") != std::string::npos; });
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
  static Calls timer() {
    return {"dispatch_source_create(TIMER, 0, 0, main)",
            "dispatch_source_set_timer(1000 ms, FOREVER, 100 ms)", "dispatch_set_context()",
            "dispatch_source_set_event_handler_f()", "dispatch_resume()"};
  }
  static Calls noTimer() { return {"dispatch_source_cancel()", "dispatch_release()"}; }
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
  const std::vector<Pid> all{1, machine.host.self, 100, 101, 200};
  Calls expected = then({record(200)}, scanOf(all));                // who is spared; one look
  expected = then(expected, {record(100), "gettimeofday()",         // the root, then the moment
                             record(100), record(100), record(101), // in the band? still the same?
                             record(101), "journal 100 101",        //
                             "gettimeofday()"});                    // nobody was slowed before this one
  expected = then(expected, lookOf(all));                           // whose doing the band is so far
  expected = then(expected, {"sysctlbyname(kern.bootsessionuuid, 256)", "the band's file", record(100),
                             enter(100), record(101), enter(101)});
  EXPECT_EQ(asked(), expected);
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
  const std::vector<Pid> all{1, machine.host.self, 100, 101, 102};
  Calls expected = then({record(200)}, scanOf(all));                // whether it has inherited anything
  expected = then(expected, {record(100), record(100), record(101), // lives; too old
                             record(102), record(102),              // young and in the band
                             record(102), record(101), leave(102),  // whose child it is
                             record(100), record(100), leave(100),  // the members
                             record(101), record(101), leave(101)});
  expected = then(expected, lookOf(all)); // nobody was born meanwhile
  expected = then(expected, timer());
  expected = then(expected, {"journal empty"});
  expected = then(expected, lookOf(all)); // and nobody is left
  expected = then(expected, timer());
  EXPECT_EQ(asked(), then(expected, noTimer()));
  aWhileLater();
  expected = then(noTimer(), lookOf(all)); // nothing was under way either
  EXPECT_EQ(asked(), then(expected, {"the band's file, empty"}));
  EXPECT_EQ(kernel->sources(), 1U) << "of memory pressure";
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
  const Calls last(made.end() - 7, made.end());
  EXPECT_EQ(last, (Calls{"the band's file", record(100), enter(100), record(101), enter(101), record(101),
                         "journal 100"}));
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
  const SimulatedAppRef notes = openAt(110, "Notes");
  const SimulatedAppRef game = gameAt(200);
  startWithGameOnTheList();
  machine.activate(game);
  machine.processes.exit(101);
  later();
  spawnAt(101);
  machine.activate(notes); // and the new one is seen not to be in the band
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
      std::optional<DarwinParts> parts(std::in_place, desktop);
      std::vector<SimulatedAppRef> apps;
      for (const char* name : {"Mail", "Notes", "Chat"}) {
        apps.push_back(desktop.launch(named(name), Opening::inBackground));
        desktop.processes.spawn({.parent = apps.back()->processIdentifier()});
      }
      desktop.calls.crashAt(desktop.calls.steps() + step, moment);
      try {
        AppSettings choices(desktop.defaults);
        Engine doomed(parts->on(desktop), choices);
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
      parts.emplace(desktop);
      const Engine next(parts->on(desktop), choices);
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

// What was born while somebody was slowed, one kind of it a test: on this system it inherits the band for
// good.
class BornSlowed : public Boost {
 protected:
  BornSlowed() {
    steam = openAt(100, "Steam");
    spawnAt(101, 100);
    openAt(110, "Mail");
    game = gameAt(200);
    startWithGameOnTheList();
  }
  void begin() {
    later();
    machine.activate(game);
    later();
  }
  SimulatedAppRef become(Pid pid, const std::string& name, Opening opening) {
    AppSpec spec = named(name);
    return machine.showWindow(pid, spec, opening);
  }
  // A process whose parent has ended before anybody looked.
  Pid daemonOf(Pid parent) {
    const Pid middle = machine.processes.spawn({.parent = parent});
    const Pid daemon = machine.processes.spawn({.parent = middle});
    machine.processes.exit(middle);
    return daemon;
  }
  // Born right before the effect of each call on this one.
  void forkAtCallsOn(Pid pid, Pid parent) {
    machine.calls.watcher = [this, pid, parent](const SimulatedCall& call) {
      if (call.operation == Operation::leaveBand && call.pid == pid)
        born.push_back(machine.processes.spawn({.parent = parent}));
    };
  }

  SimulatedAppRef steam;
  SimulatedAppRef game;
  std::vector<Pid> born;
};

TEST_F(BornSlowed, AnAppOfALauncherIsFreedWhenItIsLaunched) {
  begin();
  spawnAt(300, 100);
  ASSERT_TRUE(isSlow(300));
  become(300, "Racer", Opening::inFront);
  EXPECT_FALSE(isSlow(300)) << "it is in front";
  EXPECT_TRUE(isSlow(100));
  machine.activate(game);
  machine.quit(game);
  EXPECT_FALSE(isSlow(300));
}

TEST_F(BornSlowed, AnAppThatWasSlowedAsAPartIsFreedInFront) {
  begin();
  become(101, "Racer", Opening::inFront);
  EXPECT_FALSE(isSlow(101));
  EXPECT_TRUE(isSlow(100));
}

TEST_F(BornSlowed, ADaemonComesOutWithTheLast) {
  begin();
  const Pid daemon = daemonOf(101);
  ASSERT_TRUE(isSlow(daemon));
  machine.quit(game);
  EXPECT_FALSE(isSlow(daemon));
}

TEST_F(BornSlowed, ADaemonComesOutWithItsApp) {
  begin();
  const Pid daemon = daemonOf(101);
  machine.activate(steam);
  EXPECT_FALSE(isSlow(daemon));
  EXPECT_TRUE(isSlow(110)) << "the Boost goes on";
}

TEST_F(BornSlowed, AChildOutlivesItsApp) {
  begin();
  spawnAt(300, 101);
  machine.processes.exit(101);
  machine.quit(steam);
  ASSERT_TRUE(machine.processes.find(300) != nullptr);
  machine.quit(game);
  EXPECT_FALSE(isSlow(300));
}

TEST_F(BornSlowed, BetweenTheLookAndThePuttingBackOfAll) {
  begin();
  forkAtCallsOn(101, 101);
  machine.quit(game);
  ASSERT_EQ(born.size(), 1U);
  EXPECT_FALSE(isSlow(born.front()));
}

TEST_F(BornSlowed, BetweenTheLookAndThePuttingBackOfOne) {
  begin();
  forkAtCallsOn(101, 101);
  machine.activate(steam);
  ASSERT_EQ(born.size(), 1U);
  EXPECT_FALSE(isSlow(born.front()));
  EXPECT_TRUE(isSlow(110));
}

TEST_F(BornSlowed, AListThatFailsAtTheEndIsAskedForOnceMore) {
  begin();
  const Pid daemon = daemonOf(101);
  machine.calls.refuseNext(Operation::scanProcesses);
  machine.quit(game);
  EXPECT_FALSE(isSlow(daemon));
}

TEST_F(BornSlowed, AtATimeThatTheClockWasSetBackTo) {
  begin();
  spawnAt(300, 101);
  machine.processes.find(300)->startMicros -= 3'600'000'000;
  machine.quit(game);
  EXPECT_FALSE(isSlow(300));
}

TEST_F(BornSlowed, WhatThePersonKeepsInTheBandAndWhatThatStartsStayThere) {
  machine.band.putInByOthers(101);
  begin();
  spawnAt(300, 101);
  ASSERT_TRUE(isSlow(300));
  EXPECT_EQ(journalledPids(), (std::set<Pid>{100, 110}));
  machine.activate(steam);
  EXPECT_TRUE(isSlow(101));
  EXPECT_TRUE(isSlow(300));
  machine.activate(game);
  machine.quit(game);
  EXPECT_FALSE(isSlow(100));
  EXPECT_TRUE(isSlow(101));
  EXPECT_TRUE(isSlow(300));
}

TEST_F(BornSlowed, WhatTheAppInFrontPutsThereItselfStaysThere) {
  begin();
  spawnAt(300, 200);
  machine.band.putInByOthers(300);
  machine.activate(steam);
  EXPECT_TRUE(isSlow(300)) << "its parent was never slowed";
}

TEST_F(BornSlowed, ThroughAnotherUsersProcess) {
  spawnAt(102, 100); // the login of a terminal
  kernel->foreign.insert(102);
  spawnAt(103, 102);
  spawnAt(120);
  kernel->foreign.insert(120); // nobody's
  begin();
  spawnAt(300, 101); // as root, for somebody slowed
  kernel->foreign.insert(300);
  spawnAt(301, 300);
  spawnAt(302, 103);
  spawnAt(303, 120);
  machine.band.putInByOthers(303);
  machine.quit(game);
  EXPECT_FALSE(isSlow(301));
  EXPECT_FALSE(isSlow(302));
  EXPECT_TRUE(isSlow(303)) << "nothing above it was ever slowed";
}

TEST_F(BornSlowed, ThroughAnotherUsersProcessOfOneThatThePersonKeepsThere) {
  machine.band.putInByOthers(101);
  begin();
  spawnAt(300, 101); // as root, for that one
  kernel->foreign.insert(300);
  spawnAt(301, 300);
  machine.quit(game);
  EXPECT_TRUE(isSlow(301));
}

// Whoever traces a process is told to be its parent.
TEST_F(BornSlowed, AndTracedByOneThatIsNot) {
  spawnAt(120);
  begin();
  spawnAt(300, 101);
  spawnAt(301, 101); // as root
  kernel->foreign.insert(301);
  spawnAt(302, 301);
  kernel->tracers = {{300, 120}, {301, 120}};
  machine.quit(game);
  EXPECT_FALSE(isSlow(300));
  EXPECT_FALSE(isSlow(302));
}

TEST_F(BornSlowed, OfOneThatCouldNotBeReadBefore) {
  spawnAt(120);
  kernel->foreign.insert(120);
  machine.band.putInByOthers(120);
  begin();
  kernel->foreign.erase(120);
  spawnAt(300, 120);
  machine.quit(game);
  EXPECT_TRUE(isSlow(120)) << "the person's";
  EXPECT_TRUE(isSlow(300));
}

TEST_F(BornSlowed, WithThePidOfOneThatCouldNotBeReadBefore) {
  spawnAt(120);
  kernel->foreign.insert(120);
  begin();
  machine.processes.exit(120);
  kernel->foreign.erase(120);
  spawnAt(120, 101);
  machine.quit(game);
  EXPECT_FALSE(isSlow(120));
}

TEST_F(BornSlowed, WhatThePersonPutsThereWhileABoostBeginsStaysThere) {
  machine.calls.watcher = [this](const SimulatedCall& call) {
    if (call.operation == Operation::writeFile) machine.band.putInByOthers(101);
  };
  begin();
  EXPECT_EQ(journalledPids(), (std::set<Pid>{100, 110}));
  machine.quit(game);
  EXPECT_TRUE(isSlow(101));
  EXPECT_FALSE(isSlow(100));
}

// The program dies, and the next one finds out.
class BornBeforeADeath : public BornSlowed {
 protected:
  void dieAndStartAgain() {
    engine.reset();
    mac.emplace(machine);
    machine.restartProgram();
    machine.activate(nullptr);
    startOnMac();
  }
  std::string bandFile() const { return machine.files.applicationSupport() + "/Vantle/band.json"; }
};

TEST_F(BornBeforeADeath, IsFreedByTheNextStart) {
  machine.band.putInByOthers(110);
  begin();
  spawnAt(300, 101);
  spawnAt(301, 110);
  const Pid daemon = daemonOf(101);
  engine.reset(); // which puts nobody back
  ASSERT_TRUE(isSlow(300));
  dieAndStartAgain();
  for (const Pid pid : {Pid{100}, Pid{101}, Pid{300}, daemon}) EXPECT_FALSE(isSlow(pid)) << pid;
  EXPECT_TRUE(isSlow(110)) << "the person's";
  EXPECT_TRUE(isSlow(301)) << "and what that has started";
  aWhileLater();
  EXPECT_EQ(machine.files.contents[bandFile()], "{}");
}

TEST_F(BornBeforeADeath, IsFreedByTheNextBoostIfTheStartCouldNotLook) {
  begin();
  const Pid daemon = daemonOf(101);
  engine.reset();
  machine.calls.refuse(Operation::scanProcesses);
  dieAndStartAgain();
  ASSERT_TRUE(isSlow(daemon));
  machine.calls.grantAll();
  machine.activate(game);
  machine.quit(game);
  EXPECT_FALSE(isSlow(daemon));
}

// It is in the journal all the same.
TEST_F(BornBeforeADeath, WhatWasNotSlowedYetCountsAsThePersonsWhenHePutsItThere) {
  machine.calls.crashAt(machine.calls.steps() + 3, CrashMoment::beforeEffect);
  EXPECT_THROW(begin(), SimulatedCrash);
  ASSERT_FALSE(isSlow(101));
  ASSERT_TRUE(journalledPids().contains(101));
  dieAndStartAgain();
  machine.band.putInByOthers(101);
  later();
  spawnAt(300, 101);
  aWhileLater();
  EXPECT_TRUE(isSlow(101));
  EXPECT_TRUE(isSlow(300));
}

TEST_F(BornBeforeADeath, IsLeftAloneWithoutAFileThatTellsOfIt) {
  for (const char* text : {"", "[]", "{\"since\":1}", "{\"boot\":\"another\",\"since\":1,\"older\":[]}"}) {
    const Pid apart = machine.processes.spawn({});
    machine.band.putInByOthers(apart);
    machine.files.contents[bandFile()] = text;
    dieAndStartAgain();
    EXPECT_TRUE(isSlow(apart)) << text;
  }
}

TEST_F(BornBeforeADeath, WhatTheSystemCallsYoungerThoughItWasThereStays) {
  const Pid apart = machine.processes.spawn({});
  machine.processes.find(apart)->startMicros += 3'600'000'000; // the clock was set back since
  machine.band.putInByOthers(apart);
  begin();
  dieAndStartAgain();
  EXPECT_TRUE(isSlow(apart));
}

// What the system had under way when it was asked.
class UnderWay : public BornBeforeADeath {
 protected:
  static constexpr std::size_t ofPressure = 1; // the engine's own source

  // The new program of one that was slowed takes over after it was taken out.
  void endExecOf(Pid pid) { machine.processes.find(pid)->band = BandState::byVantle; }
  // Told of only now, as slowed as its parent was when it was born.
  Pid listLate(Pid pid, Pid parent) {
    spawnAt(pid, parent);
    machine.processes.find(pid)->band = BandState::byVantle;
    return pid;
  }
  bool isFileEmpty() const { return machine.files.contents.at(bandFile()) == "{}"; }
};

TEST_F(UnderWay, AnExecAtTheEnd) {
  begin();
  machine.quit(game);
  endExecOf(101);
  EXPECT_FALSE(isFileEmpty());
  aWhileLater();
  EXPECT_FALSE(isSlow(101));
  EXPECT_TRUE(isFileEmpty());
  EXPECT_EQ(kernel->sources(), ofPressure) << "nothing wakes the program";
}

TEST_F(UnderWay, AnExecOfTheAppInFront) {
  begin();
  machine.activate(steam);
  endExecOf(101);
  aWhileLater();
  EXPECT_FALSE(isSlow(101));
  EXPECT_TRUE(isSlow(110)) << "the Boost goes on";
  EXPECT_EQ(kernel->sources(), ofPressure);
  machine.activate(game);
  EXPECT_TRUE(isSlow(101));
  machine.quit(game);
  EXPECT_FALSE(isSlow(101));
}

TEST_F(UnderWay, ABirth) {
  begin();
  machine.quit(game);
  listLate(300, 101);
  aWhileLater();
  EXPECT_FALSE(isSlow(300));
}

TEST_F(UnderWay, AChangeOfUsers) {
  begin();
  kernel->foreign.insert(101);
  machine.quit(game);
  ASSERT_TRUE(isSlow(101));
  kernel->foreign.erase(101);
  aWhileLater();
  EXPECT_FALSE(isSlow(101));
}

TEST_F(UnderWay, ABoostThatBeginsMeanwhileLooksFirst) {
  begin();
  machine.quit(game);
  endExecOf(101);
  listLate(300, 101);
  listLate(400, 110);
  game = gameAt(200);
  machine.activate(game);
  EXPECT_TRUE(isSlow(100));
  machine.quit(game);
  for (const Pid pid : {100, 101, 110, 300, 400}) EXPECT_FALSE(isSlow(pid)) << pid;
}

TEST_F(UnderWay, WhatThePersonPutsThereLaterStays) {
  begin();
  machine.activate(steam);
  aWhileLater();
  machine.band.putInByOthers(101);
  machine.activate(game);
  machine.quit(game);
  EXPECT_TRUE(isSlow(101));
  aWhileLater();
  EXPECT_TRUE(isSlow(101));
  machine.band.putInByOthers(100);
  aWhileLater();
  EXPECT_TRUE(isSlow(100));
}

TEST_F(UnderWay, IsWaitedForAtTheProgramsEnd) {
  EXPECT_EQ(mac->band.owed(), 0U);
  EXPECT_TRUE(mac->band.settle(std::chrono::hours(1))) << "nobody is slowed";
  begin();
  EXPECT_EQ(mac->band.owed(), 0U);
  machine.quit(game);
  endExecOf(101);
  EXPECT_EQ(mac->band.owed(), 1U);
  const auto before = std::chrono::steady_clock::now();
  EXPECT_TRUE(mac->band.settle(std::chrono::hours(1)));
  EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(290));
  EXPECT_FALSE(isSlow(101));
  EXPECT_TRUE(isFileEmpty());
  EXPECT_EQ(mac->band.owed(), 0U);
  EXPECT_EQ(kernel->sources(), ofPressure);
}

TEST_F(UnderWay, ALookThatFailsIsForTheNextStart) {
  begin();
  machine.quit(game);
  listLate(300, 101);
  machine.calls.refuse(Operation::scanProcesses);
  EXPECT_FALSE(mac->band.settle(std::chrono::milliseconds(1)));
  EXPECT_EQ(mac->band.owed(), 0U) << "it is of no use";
  EXPECT_FALSE(isFileEmpty());
  machine.calls.grantAll();
  dieAndStartAgain();
  EXPECT_FALSE(isSlow(300));
}

TEST_F(UnderWay, ADeathMeanwhileIsMadeGoodByTheNextStart) {
  begin();
  machine.quit(game);
  listLate(300, 101);
  dieAndStartAgain();
  EXPECT_FALSE(isSlow(300));
  aWhileLater();
  EXPECT_TRUE(isFileEmpty());
}

TEST_F(UnderWay, AnExecAtTheNextStart) {
  begin();
  dieAndStartAgain();
  endExecOf(101);
  EXPECT_FALSE(isFileEmpty());
  aWhileLater();
  EXPECT_FALSE(isSlow(101));
  EXPECT_TRUE(isFileEmpty());
}

TEST_F(UnderWay, WithoutATimerItIsLookedForAtOnce) {
  begin();
  kernel->makesSources = false;
  machine.quit(game);
  EXPECT_TRUE(isFileEmpty());
  EXPECT_EQ(mac->band.owed(), 0U);
}

TEST_F(UnderWay, WhoeverEndsIsNotWoken) {
  begin();
  machine.quit(game);
  EXPECT_EQ(kernel->timers(), 1U);
  engine.reset();
  mac.reset();
  EXPECT_EQ(kernel->timers(), 0U);
}

} // namespace
} // namespace vantle
