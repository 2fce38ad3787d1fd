// SPDX-License-Identifier: MIT
#pragma once

#include "engine/Engine.h"
#include "platform/simulated/SimulatedMachine.h"

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace vantle {

// What a checker asks of the band under test, whatever that is made of.
class BandTruth {
 public:
  virtual ~BandTruth() = default;
  virtual bool knowsTraces() const = 0;              // the band tells this program's doing from others'
  virtual bool isIn(Pid pid) const = 0;              // in the band, whoever put it there
  virtual bool isOurs(Pid pid) const = 0;            // by this program, or born so
  virtual bool canSlowAll() const = 0;               // nothing but a refused call keeps a process out
  virtual std::string effectOf(Pid pid) const = 0;   // in words; empty for none
  virtual bool listsZombies() const { return true; } // the process table does
};

class SimulatedBandTruth final : public BandTruth {
 public:
  explicit SimulatedBandTruth(const SimulatedMachine& machine) : m_machine(machine) {}
  bool knowsTraces() const override { return m_machine.band.knowsItsOwnTraces; }
  bool isIn(Pid pid) const override { return m_machine.band.isIn(pid); }
  bool isOurs(Pid pid) const override { return stateOf(pid) == BandState::byVantle; }
  bool canSlowAll() const override { return true; }
  std::string effectOf(Pid pid) const override {
    return isOurs(pid) ? "slow" : isIn(pid) ? "slow by others" : "";
  }

 private:
  BandState stateOf(Pid pid) const {
    const SimulatedProcess* process = m_machine.processes.find(pid);
    return process == nullptr ? BandState::normal : process->band;
  }

  const SimulatedMachine& m_machine;
};

// Watches an engine on a simulated machine and knows, independently of it, what must never happen. It sees
// every granted change at the moment it is made, and looks at the whole machine between two events.
class Checker {
 public:
  // The truth outlives the checker.
  Checker(SimulatedMachine& machine, const BandTruth& truth);
  ~Checker();
  Checker(const Checker&) = delete;
  Checker& operator=(const Checker&) = delete;

  // What broke first, in words.
  const std::optional<std::string>& violation() const { return m_violation; }

  // Called after each change that was seen: what happens here happens between two calls of the program.
  std::function<void()> betweenCalls;

  // The machine as it was when the first rule broke, for whoever has to find out why.
  const std::string& scene() const { return m_scene; }

  // The life of the program under test. While `begin` has not been told of an engine it is being built.
  void expectStart(const AppSettings& settings);
  void begin(const Engine& engine);
  void programDied();

  void beforeEvent();
  void afterEvent();

  // From now on nothing is expected of what becomes of this pid: the test refuses calls about it.
  void excuse(Pid pid) { m_excused.insert(pid); }
  void expectNoBoost(const char* when);
  void journalIsRefused() { m_journalIsStale = true; } // until it is written again

  // For a band whose changes are not seen as such by the watcher: right before, and right after.
  void entered(const SimulatedProcess& process) { checkEnter(process); }
  void left(const SimulatedProcess& process) { m_entered.erase(process.identity()); }
  // The band gives a process another place while it decides; whose it is was read before.
  void moved(Pid pid, const std::string& before) { m_placesBefore.try_emplace(pid, before); }

  // What may be asked besides.
  void fail(const std::string& what, Pid pid);
  // Whether the app that the process belongs to is one that no rule protects.
  bool mayBeSlowed(const SimulatedProcess& process) const;
  bool isProtected(const SimulatedApp& app) const;
  bool isAtOrAbove(Pid ancestor, Pid pid) const;
  // Whose a process is: the nearest app at or above it; the one that it wraps; for what an app has left
  // behind the one that it was slowed with, or that its session or its place belongs to. 0: nobody's.
  Pid ownerOf(const SimulatedProcess& process) const;
  bool isSpared(Pid app) const; // nothing is expected of it: calls about its processes are refused
  bool isExcused(Pid pid) const { return m_excused.contains(pid); }
  const RunningApplication* boostApp() const;

 private:
  using Identities = std::unordered_set<ProcessIdentity>;

  void watch(const SimulatedCall& call);
  void checkEnter(const SimulatedProcess& process);
  void checkLeave(const SimulatedProcess& process);
  void checkJournal();
  void checkBand();
  void checkFront();
  void checkLife();
  void checkPublished();
  void checkPutBack(const Identities& journalled, const char* when);

  bool isMember(const SimulatedProcess& process) const;
  bool isSweepable(const SimulatedProcess& process) const;
  bool isLauncher(const SimulatedApp& app, const RunningApplication& game) const;
  bool canSeeAbove(const RunningApplication& app) const;
  bool isAboveTheDesktop(Pid pid, Pid game) const;
  bool isAboveThisProgram(const SimulatedApp& app) const;
  bool holds(const SimulatedApp& app, Pid pid) const; // in the tree of its main process, or as its own
  Pid appAbove(const SimulatedProcess& process) const;
  Pid ownerOfOrphan(const SimulatedProcess& process) const;
  Pid onlyApp(const std::function<bool(const SimulatedProcess& root)>& fits) const;
  Pid appLeftIn(Pid session) const;
  bool standsWith(Pid app, const SimulatedProcess& process) const; // in one place
  bool isGone(Pid session) const;                                  // its first process
  bool isListed(const SimulatedProcess& process) const;
  std::set<Pid> wrappersOf(const SimulatedProcess& app) const;
  void noteWrappers();
  Pid appAtOrInside(
      const SimulatedProcess& process) const; // that it belongs to by what it stands in, or wraps
  std::vector<const SimulatedProcess*> ownedBy(Pid app) const;
  bool isAppRoot(Pid pid) const;
  std::string describe() const;

  const std::string& placeOf(const SimulatedProcess& process) const;

  SimulatedMachine& m_machine;
  const BandTruth& m_truth;
  const AppSettings* m_settings = nullptr;
  const Engine* m_engine = nullptr;
  std::optional<std::string> m_violation;
  std::string m_scene;
  std::string m_journalPath;
  Identities m_onDisk; // as the journal's file has it
  bool m_journalIsStale = false;
  Identities m_entered; // what this program itself put into the band and did not take out
  std::set<Pid> m_excused;
  std::map<Pid, ManagedApp> m_managedBefore;
  std::map<Pid, std::string> m_placesBefore; // of those that were moved since the event began
  // Who has wrapped which app at any of its calls since then, and may have started somebody else meanwhile.
  std::unordered_map<ProcessIdentity, Pid> m_wrappersSeen;
  mutable bool m_judgesByPlacesBefore = false;
  bool m_wasBoosting = false;
  Identities m_journalBefore;
};

} // namespace vantle
