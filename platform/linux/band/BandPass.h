// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/BackgroundBand.h"
#include "platform/linux/band/AppOwners.h"
#include "platform/linux/band/ProcessScan.h"
#include "platform/linux/band/SessionWeights.h"
#include "platform/linux/band/TaskGroups.h"
#include "platform/linux/band/ThreadLevers.h"
#include "platform/linux/band/UnitPass.h"
#include "platform/linux/band/UnitWeights.h"

#include <optional>
#include <set>
#include <span>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace vantle {

// One pass of apps into the band. Everything is looked at first: what a process may be changed by, and
// whether that weighs against the app in front at all. A process without such a lever is left as it is.
class BandPass {
 public:
  struct Parts {
    const Kernel& kernel;
    ThreadLevers& threads;
    SessionWeights& sessions;
    TaskGroups& taskGroups;
    UnitPass* units; // null where there is no user manager
    UnitWeights& unitWeights;
  };

  // `boostApp` is the app in front with its tree, the main process last; empty when none is known.
  BandPass(Parts parts, std::span<const BandGroup> groups, const std::vector<Pid>& boostApp,
           const std::set<Pid>& everyApp);

  // One list a group, one value a candidate.
  std::vector<std::vector<bool>> run();

  // Who entered beside the candidates of a group, by place of the group.
  const std::vector<std::vector<ProcessStat>>& companions() const { return m_companions; }

 private:
  enum class Lever { none, unit, session, schedulingClass };
  struct SessionPlan {
    Pid app = 0; // that has the session to itself and may be slowed with it; 0: it may not
    Autogroup group;
    std::vector<Pid> members;
    SessionWeights::Load load;
  };

  void look();
  void lookAtBoostApp();
  void enterGroup(std::size_t at);
  bool enter(const ProcessStat& process);
  bool mayTouch(const ProcessStat& process);
  Lever leverFor(const ProcessStat& process);
  Pid appOf(const ProcessStat& process) { return m_owners->of(process); }
  const SessionPlan& sessionPlan(Pid session);
  std::optional<Autogroup> weightThatIsOurs(const std::vector<Pid>& members) const;

  Parts m_parts;
  std::span<const BandGroup> m_groups;
  const std::vector<Pid>& m_boostTree;
  Pid m_boostApp;
  const std::set<Pid>& m_everyApp;
  Pid m_self;

  // What the last look saw.
  ProcessScan m_scan;
  std::optional<AppOwners> m_owners;
  std::vector<std::vector<Pid>> m_trees; // of each group
  std::vector<TaskGroup> m_boostGroups;
  std::unordered_map<Pid, SessionPlan> m_sessionPlans;

  // What was decided and done.
  std::unordered_map<Pid, bool> m_mayTouch;
  std::unordered_map<Pid, bool> m_entered;
  std::unordered_set<Pid> m_lowered;       // sessions
  std::vector<std::string> m_enteredPaths; // of those that a unit's weight acts on
  std::vector<std::vector<ProcessStat>> m_companions;
};

} // namespace vantle
