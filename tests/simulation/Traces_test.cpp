// SPDX-License-Identifier: MIT
// The order of things, call by call: what is recorded before it is changed, what is put back before it is
// forgotten, what is read before anybody watches.
#include "tests/unit/engine/EngineFixture.h"

#include <gmock/gmock.h>

namespace vantle {
namespace {

using testing::ElementsAre;
using Trace = std::vector<std::string>;

class Traces : public EngineTest {
 protected:
  // The trace since it was started, the journal's file shown as the pids in it, without the reads that only
  // tell whether an app is a game.
  Trace taken() {
    Trace lines;
    for (std::string& line : machine.calls.takeTrace()) {
      if (line.starts_with("processes.executablePath")) continue;
      const std::string write = "files.write " + journalPath() + " ";
      if (line.starts_with(write)) line = "journal" + pidsIn(line.substr(write.size()));
      lines.push_back(std::move(line));
    }
    return lines;
  }
  // Only what changes the machine.
  Trace changes() {
    Trace lines;
    for (std::string& line : taken()) {
      for (const char* kind : {"journal", "band.enter", "band.leave", "band.makeRoom", "band.reclaim"}) {
        if (line.starts_with(kind)) lines.push_back(line);
      }
    }
    return lines;
  }
  static std::string pidsIn(const std::string& journal) {
    const auto identities = decodeJournal(journal);
    if (!identities) return " (unreadable)";
    std::set<Pid> pids;
    for (const ProcessIdentity& identity : *identities) pids.insert(identity.pid);
    std::string text;
    for (const Pid pid : pids) text += " " + std::to_string(pid);
    return text.empty() ? " empty" : text;
  }
  SimulatedAppRef openAt(Pid pid, const std::string& name) {
    AppSpec spec = named(name);
    spec.pid = pid;
    return open(spec);
  }
  SimulatedAppRef gameAt(Pid pid, const std::string& name = "Asteroids") {
    AppSpec spec = aGame(name);
    spec.pid = pid;
    return open(spec);
  }
  void childAt(Pid parent, Pid pid) { machine.processes.spawn({.parent = parent, .pid = pid}); }
  // Switches the rules off that read processes, so that the traces show the primitive alone.
  void startWithGameOnTheList() {
    start();
    settings->userGames.set({"org.example.Asteroids"});
    settings->detectMinecraft.set(false);
    machine.calls.startTrace();
  }
};

TEST_F(Traces, OneAppIsReadThenRecordedThenSlowed) {
  openAt(100, "Mail");
  childAt(100, 101);
  const SimulatedAppRef game = gameAt(200);
  startWithGameOnTheList();
  machine.activate(game);
  EXPECT_THAT(taken(), ElementsAre("processes.record 200", "band.makeRoom 200",    // who is spared
                                   "audio.probe", "power.probe", "workspace.list", // once
                                   "workspace.list", "processes.scan",   // one look for the pass, after them
                                   "processes.record 100", "clock.read", // root, then the moment
                                   "band.isIn 100", "processes.record 100", // its tree
                                   "band.isIn 101", "processes.record 101", //
                                   "journal 100 101", "band.enter 100", "band.enter 101"));
}

TEST_F(Traces, WhatWasRefusedIsTakenOutOfTheJournalAfterAllCalls) {
  openAt(100, "Mail");
  childAt(100, 101);
  openAt(110, "Notes");
  const SimulatedAppRef game = gameAt(200);
  machine.calls.refuse(Operation::enterBand, 101);
  startWithGameOnTheList();
  machine.activate(game);
  EXPECT_THAT(changes(), ElementsAre("band.makeRoom 200", "journal 100 101 110", "band.enter 100",
                                     "band.enter 101", "band.enter 110", "journal 100 110"));
}

TEST_F(Traces, ARestoreSweepsTheYoungThenPutsBackTheMembersThenForgets) {
  openAt(100, "Mail");
  childAt(100, 101);
  const SimulatedAppRef game = gameAt(200);
  startWithGameOnTheList();
  later();
  machine.activate(game);
  later();
  childAt(101, 102);
  taken();
  machine.quit(game);
  EXPECT_THAT(taken(), ElementsAre("workspace.list", "workspace.list", "processes.scan",
                                   "processes.record 100", // the root still lives
                                   "processes.record 100", // too old
                                   "processes.record 101", // too old
                                   "processes.record 102", "band.isIn 102", "band.leave 102", // swept
                                   "processes.record 100", "band.leave 100",                  // the members
                                   "processes.record 101", "band.leave 101",                  //
                                   "journal empty", "band.reclaim"));
}

TEST_F(Traces, EveryMemberIsCheckedRightBeforeItIsPutBack) {
  openAt(100, "Mail");
  openAt(110, "Notes");
  const SimulatedAppRef game = gameAt(200);
  startWithGameOnTheList();
  later();
  machine.activate(game);
  taken();
  engine->stopBoost();
  const Trace trace = taken();
  for (std::size_t at = 0; at < trace.size(); ++at) {
    if (!trace[at].starts_with("band.leave ")) continue;
    ASSERT_GT(at, 0U);
    EXPECT_EQ(trace[at - 1], "processes.record " + trace[at].substr(11));
  }
  EXPECT_EQ(count(trace, "band.leave"), 2U);
}

TEST_F(Traces, AStartPutsBackReadsTheSwitchAndOnlyThenWatches) {
  machine.processes.spawn({.pid = 100});
  machine.band.enterBackgroundBand(100);
  Journal(machine.files).add({identityOf(100)});
  const SimulatedAppRef mail = openInFront(named("Mail"));
  settings.emplace(machine.defaults);
  settings->detectMinecraft.set(false);
  machine.calls.startTrace();
  start();
  EXPECT_THAT(taken(), ElementsAre("files.createFolders " + machine.files.applicationSupport() + "/Vantle",
                                   "files.read " + journalPath(),
                                   "files.exists " + machine.files.applicationSupport() + "/Murn/kayit.json",
                                   "defaults.read otomatik", "processes.record 100", "band.leave 100",
                                   "journal empty", "band.reclaim", "workspace.observe activated",
                                   "workspace.observe launched", "workspace.observe terminated",
                                   "pressure.watch", "notifications.authorize", "workspace.frontmost"));
}

TEST_F(Traces, AStartMergesTheFormerJournalBeforeItPutsBack) {
  const std::string support = machine.files.applicationSupport();
  machine.processes.spawn({.pid = 100});
  machine.files.contents[support + "/Murn/kayit.json"] =
      R"([{"pid":100,"startSec":1800000000,"startUsec":0}])";
  settings.emplace(machine.defaults);
  machine.calls.startTrace();
  start();
  Trace trace = taken();
  trace.resize(8);
  EXPECT_THAT(trace, ElementsAre("files.createFolders " + support + "/Vantle", "files.read " + journalPath(),
                                 "files.exists " + support + "/Murn/kayit.json",
                                 "files.read " + support + "/Murn/kayit.json",
                                 "files.removeFolder " + support + "/Murn", "defaults.read otomatik",
                                 "processes.record 100", "band.leave 100"));
}

TEST_F(Traces, ThePreviousExceptionGoesBackBeforeTheNewFrontAppIsRestored) {
  const SimulatedAppRef mail = openAt(100, "Mail");
  const SimulatedAppRef notes = openAt(110, "Notes");
  const SimulatedAppRef game = gameAt(200);
  startWithGameOnTheList();
  later();
  machine.activate(game);
  machine.activate(mail);
  later();
  taken();
  machine.activate(notes);
  EXPECT_THAT(taken(),
              ElementsAre("audio.probe", "power.probe", "workspace.list", "processes.scan", // fresh probes
                          "processes.record 100", "clock.read", "band.isIn 100", "processes.record 100",
                          "journal 100 110", "band.enter 100", "workspace.list", "processes.scan",
                          "processes.record 110", "processes.record 110", "processes.record 110",
                          "band.leave 110", "journal 100"));
}

TEST_F(Traces, TheNamesArePublishedAfterTheLastChange) {
  const SimulatedAppRef mail = openAt(100, "Mail");
  const SimulatedAppRef game = gameAt(200);
  start();
  machine.calls.startTrace();
  Trace seen;
  const auto watching = engine->managedNames.observe([&] { seen = changes(); });
  machine.activate(game);
  EXPECT_THAT(seen, ElementsAre("band.makeRoom 200", "journal 100", "band.enter 100"));
  machine.quit(mail);
  EXPECT_THAT(seen, ElementsAre("journal empty", "band.reclaim"));
}

TEST_F(Traces, AHandOverMakesRoomForTheNewBoostAppAndTouchesNobody) {
  openAt(100, "Mail");
  const SimulatedAppRef game = gameAt(200);
  gameAt(210, "Chess");
  start();
  machine.activate(game);
  machine.calls.startTrace();
  machine.quit(game);
  EXPECT_THAT(changes(), ElementsAre("band.makeRoom 210"));
}

TEST_F(Traces, StoppingPutsEveryAppBackAndWritesTheJournalOnce) {
  openAt(100, "Mail");
  openAt(110, "Notes");
  const SimulatedAppRef game = gameAt(200);
  start();
  later();
  machine.activate(game);
  machine.calls.startTrace();
  engine->stopBoost();
  EXPECT_THAT(changes(), ElementsAre("band.leave 100", "band.leave 110", "journal empty", "band.reclaim"));
  engine->stopBoost();
  EXPECT_THAT(changes(), ElementsAre("band.reclaim")) << "nothing to put back, nothing to write";
}

TEST_F(Traces, AnAppThatEndsIsRestoredBeforeTheBoostEndsWithIt) {
  const SimulatedAppRef game = gameAt(200);
  openAt(100, "Mail");
  start();
  later();
  machine.activate(game);
  machine.calls.startTrace();
  machine.quit(game);
  EXPECT_THAT(changes(), ElementsAre("band.leave 100", "journal empty", "band.reclaim"));
}

// Whatever step the program dies at: what is slow then is named on disk, and the next start puts it back.
TEST_F(Traces, ACrashAtEveryStepOfABoostLeavesNothingSlowAfterTheNextStart) {
  constexpr std::size_t moreThanAllSteps = 60;
  std::size_t crashes = 0;
  for (std::size_t step = 1; step < moreThanAllSteps; ++step) {
    for (const CrashMoment moment : {CrashMoment::beforeEffect, CrashMoment::afterEffect}) {
      SimulatedMachine desktop;
      std::vector<SimulatedAppRef> apps;
      for (const char* name : {"Mail", "Notes", "Chat"}) {
        apps.push_back(desktop.launch(named(name), Opening::inBackground));
        desktop.processes.spawn({.parent = apps.back()->processIdentifier()});
      }
      desktop.calls.crashAt(desktop.calls.steps() + step, moment);
      try {
        AppSettings own(desktop.defaults);
        Engine doomed(desktop.ports(), own);
        const SimulatedAppRef game = desktop.launch(aGame(), Opening::inFront);
        desktop.activate(apps.front());
        desktop.activate(game);
        desktop.quit(game);
      } catch (const SimulatedCrash&) {
        ++crashes;
      }
      desktop.restartProgram();
      desktop.activate(nullptr);
      AppSettings own(desktop.defaults);
      const Engine next(desktop.ports(), own);
      for (const auto& [pid, process] : desktop.processes.all()) {
        EXPECT_EQ(process.band, BandState::normal) << "pid " << pid << " after a crash at step " << step;
      }
      EXPECT_EQ(desktop.files.contents[journalPath()], "[]");
    }
  }
  EXPECT_GT(crashes, 50U);
}

} // namespace
} // namespace vantle
