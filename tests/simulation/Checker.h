// SPDX-License-Identifier: MIT
#pragma once

#include "engine/Engine.h"
#include "platform/simulated/SimulatedMachine.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <unordered_set>

namespace vantle {

// Watches an engine on a simulated machine and knows, independently of it, what must never happen. It sees
// every granted change at the moment it is made, and looks at the whole machine between two events.
class Checker {
 public:
  explicit Checker(SimulatedMachine& machine);
  ~Checker();
  Checker(const Checker&) = delete;
  Checker& operator=(const Checker&) = delete;

  // What broke first, in words.
  const std::optional<std::string>& violation() const { return m_violation; }

  // The life of the program under test. While `begin` has not been told of an engine it is being built.
  void expectStart(const AppSettings& settings);
  void begin(const Engine& engine);
  void programDied();

  void beforeEvent();
  void afterEvent();

  // From now on nothing is expected of what becomes of this pid: the test refuses calls about it.
  void excuse(Pid pid) { m_excused.insert(pid); }
  void journalIsRefused() { m_journalIsStale = true; } // until it is written again

 private:
  using Identities = std::unordered_set<ProcessIdentity>;

  void watch(const SimulatedCall& call);
  void checkEnter(const SimulatedProcess& process);
  void checkLeave(const SimulatedProcess& process);
  void checkJournal();
  void checkBand();
  void checkFront();
  void checkPublished();
  void checkPutBack(const Identities& journalled, const char* when);

  bool isMember(const SimulatedProcess& process) const;
  bool isSweepable(const SimulatedProcess& process) const;
  // Whether the nearest app above the process is one that no rule protects.
  bool mayBeSlowed(const SimulatedProcess& process) const;
  bool isProtected(const SimulatedApp& app) const;
  bool holds(const SimulatedApp& app, Pid pid) const; // in the tree of its main process
  bool isAtOrAbove(Pid ancestor, Pid pid) const;
  const RunningApplication* boostApp() const;
  void fail(const std::string& what, Pid pid);

  SimulatedMachine& m_machine;
  const AppSettings* m_settings = nullptr;
  const Engine* m_engine = nullptr;
  std::optional<std::string> m_violation;
  std::string m_journalPath;
  Identities m_onDisk; // as the journal's file has it
  bool m_journalIsStale = false;
  Identities m_entered; // what this program itself put into the band and did not take out
  std::set<Pid> m_excused;
  std::map<Pid, ManagedApp> m_managedBefore;
  Identities m_journalBefore;
};

} // namespace vantle
