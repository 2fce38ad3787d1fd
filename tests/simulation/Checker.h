// SPDX-License-Identifier: MIT
#pragma once

#include "engine/Engine.h"
#include "platform/simulated/SimulatedMachine.h"

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <unordered_set>
#include <vector>

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
  // Whether the app that the process belongs to is one that no rule protects.
  bool mayBeSlowed(const SimulatedProcess& process) const;
  bool isProtected(const SimulatedApp& app) const;
  bool isLauncher(const SimulatedApp& app, const RunningApplication& game) const;
  bool isAboveTheDesktop(Pid pid, Pid game) const;
  bool isAboveThisProgram(const SimulatedApp& app) const;
  bool holds(const SimulatedApp& app, Pid pid) const; // in the tree of its main process, or as its own
  bool isAtOrAbove(Pid ancestor, Pid pid) const;
  // Whose a process is: the nearest app at or above it; for what an app has left behind the one that it was
  // slowed with, or that its session or its place belongs to. 0: nobody's.
  Pid ownerOf(const SimulatedProcess& process) const;
  Pid appAbove(const SimulatedProcess& process) const;
  Pid ownerOfOrphan(const SimulatedProcess& process) const;
  std::vector<const SimulatedProcess*> ownedBy(Pid app) const;
  bool isAppRoot(Pid pid) const;
  bool isSpared(Pid app) const; // nothing is expected of it: calls about its processes are refused
  const RunningApplication* boostApp() const;
  void fail(const std::string& what, Pid pid);
  std::string describe() const;

  SimulatedMachine& m_machine;
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
  bool m_wasBoosting = false;
  Identities m_journalBefore;
};

} // namespace vantle
