// SPDX-License-Identifier: MIT
#pragma once

#include "platform/darwin/band/DarwinBand.h"
#include "platform/darwin/pressure/DispatchMemoryPressure.h"
#include "platform/darwin/process/DarwinClock.h"
#include "platform/darwin/process/LibprocProcessTable.h"
#include "tests/simulation/RandomRun.h"
#include "tests/simulation/darwin/SimulatedKernel.h"

#include <algorithm>
#include <chrono>
#include <dispatch/dispatch.h>
#include <map>
#include <optional>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

namespace vantle {

// What macOS's room has of a machine so far; the rest is the desktop's.
struct DarwinParts {
  explicit DarwinParts(SimulatedMachine& desktop) : band(&desktop.files) {}

  LibprocProcessTable processes;
  DarwinBand band;
  DispatchMemoryPressure pressure;
  DarwinClock clock;

  Machine on(SimulatedMachine& desktop) {
    const Machine rest = desktop.ports();
    return {rest.host, processes,          band,          rest.workspace, rest.audio, rest.power,
            pressure,  rest.notifications, rest.defaults, rest.files,     clock,      rest.launcher,
            rest.text, rest.loginItem,     rest.catalog,  rest.hooks,     rest.games};
  }
};

// A machine of that kind: apps have neither sessions nor places, and nothing tells what a process came with.
inline void arrangeAsMac(SimulatedMachine& desktop) {
  desktop.band.knowsItsOwnTraces = true;
  desktop.processes.tellsOfBirths = false;
  const auto plain = [&desktop](const SimulatedProcess& born) {
    SimulatedProcess& process = *desktop.processes.find(born.pid);
    process.session = 0;
    process.place.clear();
    process.origin.clear();
    process.role = ProcessRole::program;
  };
  desktop.processes.onBirth = plain;
  const std::map<Pid, SimulatedProcess> all = desktop.processes.all();
  for (const auto& [pid, process] : all) plain(process);
}

// With a band that is asked for what a Mac's can do: who is born between a look and the call that follows
// from it is not slowed before the app is looked at again.
class DarwinBandTruth final : public BandTruth {
 public:
  explicit DarwinBandTruth(const SimulatedMachine& machine) : m_rest(machine) {}
  bool missesTheYoung = false;

  bool knowsTraces() const override { return m_rest.knowsTraces(); }
  bool isIn(Pid pid) const override { return m_rest.isIn(pid); }
  bool isOurs(Pid pid) const override { return m_rest.isOurs(pid); }
  bool canSlowAll() const override { return !missesTheYoung; }
  std::string effectOf(Pid pid) const override { return m_rest.effectOf(pid); }

 private:
  SimulatedBandTruth m_rest;
};

// An evening of the engine on that.
//
// Nothing but who was born of whom tells the program's doing from others'. So while anybody is slowed nobody
// else puts a process into the band that was born meanwhile, or that the program has slowed; and whom others
// take out, or keep in the band until they end, they take out with all that was born of them meanwhile. One
// that calls are refused about is born out of the band and hands down nothing.
class DarwinRun : public RandomRun {
 public:
  DarwinRun(std::uint64_t seed, RunOptions options) : RandomRun(seed, std::move(options), &m_truth) {}

  ~DarwinRun() override {
    m_engine.reset(); // it has a source of the kernel's
  }
  DarwinRun(const DarwinRun&) = delete;
  DarwinRun& operator=(const DarwinRun&) = delete;

  // Ends the program in order. Says what the system would have ended it for, or what it has left there.
  std::optional<std::string> end() {
    m_engine.reset();
    programEnded();
    if (!m_kernel.fault && m_kernel.sources() > 0) return "a source was not released";
    return m_kernel.fault;
  }

 protected:
  void arrangeMachine() override {
    arrangeAsMac(m_machine);
    m_forksMeanwhile = m_random.oneIn(2);
    m_truth.missesTheYoung = m_forksMeanwhile;
    m_machine.processes.onBirth = [this, plain = m_machine.processes.onBirth](const SimulatedProcess& born) {
      plain(born);
      m_bornMeanwhile.insert(born.identity());
      const bool isRefused = m_checker.isExcused(born.parent) || m_checker.isExcused(born.pid);
      if (isRefused) m_machine.band.takeOutByOthers(born.pid);
    };
    m_machine.processes.onEnd = [this](Pid pid) {
      const SimulatedProcess* ended = m_machine.processes.find(pid);
      if (ended->band == BandState::byOthers && isSlowing()) takeOutBornOf(pid);
    };
  }
  Machine ports() override {
    m_parts.emplace(m_machine); // what the program remembered has ended with it
    return m_parts->on(m_machine);
  }
  void programEnded() override {
    m_parts.reset();
    if (!m_losesFiles) return;
    // Who was born slowed is known from the file alone.
    const auto journalled = decodeJournal(m_machine.files.contents[folder() + "journal.json"]);
    const std::map<Pid, SimulatedProcess> all = m_machine.processes.all();
    for (const auto& [pid, process] : all) {
      const bool isKnown = journalled && journalled->contains(process.identity());
      if (process.band == BandState::byVantle && !isKnown) m_machine.band.takeOutByOthers(pid);
    }
    m_machine.band.takeOutByOthers(livingStarter()); // which the next one is born of
    m_machine.files.contents.erase(folder() + "band.json");
  }
  bool mayBePutInByOthers(Pid pid) const override {
    if (pid <= 1 || m_checker.isExcused(pid)) return false;
    if (!isSlowing()) return true;
    const SimulatedProcess& process = *m_machine.processes.find(pid);
    return process.band == BandState::normal && !m_bornMeanwhile.contains(process.identity()) &&
           !m_kernel.slowed.contains(process.identity());
  }
  void takenOutByOthers(Pid pid) override {
    if (isSlowing()) takeOutBornOf(pid);
  }
  void callsAreRefused(Pid about) override {
    const std::map<Pid, SimulatedProcess> all = m_machine.processes.all();
    for (const auto& [pid, process] : all) {
      const bool isItself = pid == about && process.band == BandState::byVantle;
      if (!isItself && m_checker.isAtOrAbove(about, pid)) m_machine.band.takeOutByOthers(pid);
    }
  }
  void writesAreRefused() override {
    m_losesFiles = true;
    m_forksMeanwhile = false; // also not while the journal is worked off
  }
  const std::vector<Choice>& choices() const override {
    static const std::vector<Choice> all = [this] {
      std::vector<Choice> choices = RandomRun::choices();
      choices.push_back({8, "what was under way is over", static_cast<Event>(&DarwinRun::tellOfTime)});
      return choices;
    }();
    return all;
  }
  void eventEnded() override {
    if (isSlowing()) return;
    m_bornMeanwhile.clear();
    m_kernel.slowed.clear();
  }
  void tellOfPressure(bool isCritical) override {
    m_kernel.raisePressure(isCritical ? DISPATCH_MEMORYPRESSURE_CRITICAL : DISPATCH_MEMORYPRESSURE_WARN);
  }

  SimulatedKernel m_kernel{m_machine};

 private:
  void tellOfTime() {
    m_machine.clock.advance(std::chrono::seconds(2));
    m_kernel.tellOfTime();
  }
  std::string folder() const { return m_machine.files.applicationSupport() + "/Vantle/"; }
  // Also just now: what was under way may be the program's doing.
  bool isSlowing() const {
    if (m_kernel.timers() > 0) return true;
    if (m_engine && m_engine->activeGame.get()) return true;
    const auto& all = m_machine.processes.all();
    return std::any_of(all.begin(), all.end(),
                       [](const auto& entry) { return entry.second.band == BandState::byVantle; });
  }
  void takeOutBornOf(Pid pid) {
    std::vector<Pid> born;
    for (const auto& [child, process] : m_machine.processes.all()) {
      const bool isYoung = m_bornMeanwhile.contains(process.identity());
      if (process.parent == pid && isYoung && process.band != BandState::normal) born.push_back(child);
    }
    for (const Pid child : born) {
      m_machine.band.takeOutByOthers(child);
      takeOutBornOf(child);
    }
  }

  DarwinBandTruth m_truth{m_machine};
  std::unordered_set<ProcessIdentity> m_bornMeanwhile; // while anybody was slowed, or in the same event
  bool m_losesFiles = false;
  std::optional<DarwinParts> m_parts;
};

} // namespace vantle
