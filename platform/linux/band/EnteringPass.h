// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/BackgroundBand.h"
#include "platform/linux/band/Departures.h"
#include "platform/linux/band/SessionWeights.h"
#include "platform/linux/band/TaskGroups.h"
#include "platform/linux/band/ThreadLevers.h"
#include "platform/linux/band/UnitPass.h"
#include "platform/linux/band/UnitWeights.h"

#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace vantle {

// How apps enter the band together. Everything is looked at first: what a process may be changed by, and
// whether that weighs against the app in front at all. A process without such a lever is left as it is.
class EnteringPass {
 public:
  struct Parts {
    Kernel& kernel;
    ThreadLevers& threads;
    SessionWeights& sessions;
    Departures& departures;
    UnitWeights& units;
    const std::string& controlGroups; // mount of the version 2 tree
    std::chrono::milliseconds busLimit;
  };

  EnteringPass(Parts parts, const BandPass& pass);

  std::vector<std::vector<BandAnswer>> run();

 private:
  struct SessionPlan {
    std::optional<BandRefusal> refusal; // why its weight is not to be changed
    Autogroup group;
    std::vector<Pid> members;
    SessionWeights::Load load;
  };

  void giveUpShared(std::vector<std::vector<BandAnswer>>& answers);
  bool giveUpSessionsOf(Pid refused, std::vector<std::vector<BandAnswer>>& answers); // whether there were any
  BandAnswer answerFor(Pid pid);                                                     // changes nothing
  BandAnswer enter(Pid pid, BandLever lever);
  BandAnswer leverFor(const ProcessRecord& process);
  bool mayTouch(const ProcessRecord& process);
  bool isOwn(const ProcessRecord& process);
  bool isSlowed(Pid app) const { return m_slowed.contains(app); }
  const SessionPlan& sessionPlan(Pid session);
  std::optional<Autogroup> weightThatIsOurs(const std::vector<Pid>& members) const;
  void findBoostGroups();

  Parts m_parts;
  const BandPass& m_pass;
  std::set<Pid> m_slowed; // apps that are in the band or are about to enter it
  TaskGroups m_taskGroups;
  std::optional<UnitPass> m_units; // absent where there is no user manager
  std::vector<TaskGroup> m_boostGroups;
  bool m_isStale = false; // somebody was born since the look
  std::unordered_map<Pid, SessionPlan> m_sessionPlans;
  std::unordered_map<Pid, bool> m_mayTouch;
  std::vector<std::pair<Pid, ThreadLevers::Plan>> m_entered;
  std::unordered_set<Pid> m_lowered;       // sessions
  std::vector<std::string> m_enteredPaths; // of those that a unit's weight acts on
};

} // namespace vantle
