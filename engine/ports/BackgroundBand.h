// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/Pid.h"

#include <chrono>
#include <optional>
#include <set>
#include <span>
#include <vector>

namespace vantle {

// The processes of one app that are about to enter the band together.
struct BandGroup {
  Pid root = 0;                // the app's main process
  std::vector<Pid> tree;       // the root and every descendant, in the band already or not
  std::vector<Pid> candidates; // those of the tree to be put into the band, in order
};

// The only place that changes how processes are scheduled. The band is the machine's lowest class of service;
// a child inherits it from its parent. None of these calls checks who a pid is: callers do, right before.
class BackgroundBand {
 public:
  virtual ~BackgroundBand() = default;

  // True exactly when the process is in the band now (or the change is under way and cannot be refused any
  // more) and can be taken out again by this program. False means that nothing was changed.
  virtual bool enterBackgroundBand(Pid pid) = 0;

  // True when the process is out of the band now; also when it was not in it. False when it is gone or may
  // not be changed. What the process was before is restored exactly; what others changed meanwhile is kept.
  virtual bool leaveBackgroundBand(Pid pid) = 0;

  // Absent when the process cannot be read. Asks the kernel, never this program's memory.
  virtual std::optional<bool> isInBackgroundBand(Pid pid) const = 0;

  // Several apps in one pass, so that a platform can overlap its waiting. The answer holds one list an app
  // and in it one value a candidate, in order, with the meaning of the single call. `everyApp` holds the main
  // processes of all running apps: what stands below one of them is its own, and what belongs to an app
  // outside the groups is not to be touched, wherever it stands.
  virtual std::vector<std::vector<bool>> enterBackgroundBand(std::span<const BandGroup> groups,
                                                             const std::set<Pid>& /*everyApp*/) {
    std::vector<std::vector<bool>> entered;
    entered.reserve(groups.size());
    for (const BandGroup& group : groups) {
      std::vector<bool>& results = entered.emplace_back();
      for (const Pid pid : group.candidates) results.push_back(enterBackgroundBand(pid));
    }
    return entered;
  }

  // The app whose speed the next changes are for, with its tree: some platforms can only weigh processes
  // against each other once both sides stand in places of their own. Slows nothing down.
  virtual void prepareBoostApp(Pid /*root*/, std::span<const Pid> /*tree*/,
                               const std::set<Pid>& /*everyApp*/) {}

  // An app that a slowed one has started was born in the band; the platforms on which apps are not each
  // other's children have none. It comes out with its processes, up to where another of `everyApp` begins.
  // Processes that are in the band of somebody else's accord stay.
  virtual void releaseInherited(Pid /*root*/, const std::set<Pid>& /*everyApp*/) {}

  // Called when this program has put nobody into the band or has just taken everybody out: whatever still
  // carries the platform's own trace of this program (a child born meanwhile, a unit whose processes are all
  // new) is put back. Safe because only one copy of the program runs.
  virtual void reclaim() {}

  // Waits until changes that are under way are in force, at most this long; true when none is left.
  virtual bool settle(std::chrono::milliseconds /*limit*/) { return true; }
};

} // namespace vantle
