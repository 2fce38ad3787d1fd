// SPDX-License-Identifier: MIT
#pragma once

#include "tests/simulation/RandomRun.h"
#include "tests/simulation/linux/LinuxDesktop.h"

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace vantle {

// What the checker asks, answered by the kernel: in the band is what carries the mark and is not on its way
// out.
class LinuxTruth final : public BandTruth {
 public:
  void follow(const SimulatedLinux& kernel) { m_kernel = &kernel; }
  bool knowsTraces() const override { return true; }
  bool isIn(Pid pid) const override { return m_kernel->isMarkedIn(pid); }
  bool isOurs(Pid pid) const override { return m_kernel->isMarkedIn(pid); }
  bool canSlowAll() const override { return false; }
  std::string effectOf(Pid pid) const override { return m_kernel->effectOf(pid); }
  bool listsZombies() const override { return false; }

 private:
  const SimulatedLinux* m_kernel = nullptr;
};

// What the base class of a run needs before it exists.
struct LinuxTruthHolder {
  LinuxTruth truth;
};

// An evening with the real band on a simulated Linux. Besides what every run must keep to:
//
//   - safety: nothing is slowed, by whatever lever, that is another user's, a part of the system, this
//   program
//     or above it, protected, or nobody's;
//   - truth: once the queues are empty, who is listed is slow and marked, and who is not is neither;
//   - life: who can be slowed and is not protected is listed;
//   - exactness: when no Boost is running and the queues are empty, everything is as it would be without this
//     program.
class LinuxRun final : private LinuxTruthHolder, public RandomRun {
 public:
  LinuxRun(std::uint64_t seed, RunOptions options) : RandomRun(seed, std::move(options), &truth) {}
  ~LinuxRun() override { m_engine.reset(); }

  LinuxDesktop& desktop() { return *m_desktop; }
  SimulatedMachine& machine() { return m_machine; }
  // For faults on purpose: stands between the engine and the band, or the table.
  std::function<Machine(LinuxRun&)> tamperWith;

 private:
  using LinuxEvent = void (LinuxRun::*)();
  const std::vector<Choice>& choices() const override;
  void arrangeMachine() override;
  Machine ports() override;
  void programEnded() override;
  std::string machineInWords() const override;
  void eventEnded() override;
  void runEnds() override;

  // The machine's side.
  void startSessionOf();
  void startOrEndThread();
  void beginFork();
  void endFork();
  void endForks();
  void bear(Pid parent);
  void launchBelow();
  void launchService();
  void restartService();
  void exitAnywhere();
  void othersChangeThread();
  void othersWeighSession();
  void othersWeighUnit();
  void takeTurn();
  void changeMood();
  void fillDisk();
  void waitAWhile();
  void settle();
  void betweenCalls();

  // The rules.
  void transition(Pid pid, bool isSlow);
  void marked(Pid pid, bool isMarked);
  bool isUntouchable(const SimulatedProcess& process) const; // never to be slowed, whoever owns it
  bool isListed(Pid app) const { return m_engine && m_engine->managed().contains(app); }
  void checkTruth(bool managerFailed);
  void checkLife();
  void noteAboveGame();
  void checkExactness(const char* when);
  bool canBeSlowed(const SimulatedApp& app) const; // clearly
  bool sharesASession(Pid app) const;
  std::set<Pid> thoseThatShareAUnit() const;
  bool hasWeighedSession(Pid app) const;
  bool hasMovableUnit(Pid app) const;
  bool meetsTheBoostApp(Pid app) const;
  bool isQuietManager() const;
  void disturb(Pid pid);
  bool isDisturbed(Pid pid) const;

  std::optional<LinuxDesktop> m_desktop;
  std::unordered_set<ProcessIdentity>
      m_disturbed;                                // others have changed what these are, or what they stand in
  std::set<std::string> m_disturbedUnits;         // by path
  std::set<const SimulatedApp*> m_unclear;        // there was a moment at which these need not be slowed
  std::unordered_set<ProcessIdentity> m_wandered; // have a session of their own since they were slowed
  std::unordered_map<ProcessIdentity, std::size_t> m_left; // marked and nobody's listed: since which look
  std::set<Pid> m_shared;                                  // apps in one unit with others before the event
  std::set<Pid> m_aboveGame;                               // at any moment of this Boost
  std::size_t m_looks = 0;
  std::size_t m_forksInEvent = 0;
  bool m_isSettling = false;
  bool m_managerFailed = false; // since the Boost began, or before and not mended yet
};

} // namespace vantle
