// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"
#include "engine/ports/ProcessView.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <vector>

namespace vantle {

// By what a process in the band is made to wait.
enum class BandLever : std::uint8_t {
  process,        // the process itself has a class of its own for this
  unit,           // the weight of the service manager's unit that it stands in
  session,        // the weight of its session
  schedulingClass // the scheduling class of its threads
};

// Why a process is not in the band.
enum class BandRefusal : std::uint8_t {
  gone,       // it ended meanwhile
  notAllowed, // another user's, a part of the system, this program itself, or the app in front
  shared,     // what could be weighed holds something that must not be slowed
  noLever,    // nothing weighs it against the app in front
  noWayBack   // what would weigh it could not be undone by this user
};

struct BandAnswer {
  std::optional<BandRefusal> refusal;   // absent: it entered
  BandLever lever = BandLever::process; // what it entered by
  bool entered() const { return !refusal; }
};

// One app that is about to enter the band.
struct BandApp {
  Pid root = 0;                // its main process
  std::vector<Pid> candidates; // its processes that are to be put into the band, in order
};

// Several apps that enter together, so that a platform can overlap its waiting.
struct BandPass {
  const ProcessView& view; // one look, with the owner of every process
  Pid boostApp = 0;        // the app whose speed all this is for; 0 when none is known
  std::span<const BandApp> apps;
  std::set<Pid> slowed; // main processes of the apps that are in the band already
};

// The only place that changes how processes are scheduled. The band is the machine's lowest class of service;
// a child inherits it from its parent. None of these calls checks who a pid is: callers do, right before.
class BackgroundBand {
 public:
  // Processes that leave the band together.
  class Leaving {
   public:
    virtual ~Leaving() = default;
    // As `leaveBackgroundBand`.
    virtual bool leave(Pid pid) = 0;
    // One that was born in the band and shows it no longer: what it has inherited all the same comes off.
    virtual void releaseInherited(Pid /*pid*/) {}
    // Ends it. Returns who is still meant to be slowed but is so no longer, because what weighed it was
    // shared with one that left.
    virtual std::vector<Pid> finish() { return {}; }
  };

  virtual ~BackgroundBand() = default;

  // True exactly when the process is in the band now (or the change is under way and cannot be refused any
  // more) and can be taken out again by this program. False means that nothing was changed.
  virtual bool enterBackgroundBand(Pid pid) = 0;

  // True when the process is out of the band now; also when it was not in it. False when it is gone or may
  // not be changed. What the process was before is restored exactly; what others changed meanwhile is kept.
  virtual bool leaveBackgroundBand(Pid pid) = 0;

  // Absent when the process cannot be read. Asks the kernel, never this program's memory.
  virtual std::optional<bool> isInBackgroundBand(Pid pid) const = 0;

  // Whether the process carries this program's own trace, by itself or from a parent that did. Always false
  // on platforms that do not tell who put a process into the band.
  virtual bool carriesOwnMark(Pid /*pid*/) const { return false; }

  // One answer a candidate, in order, with the meaning of the single call. A candidate that carries this
  // program's mark already is looked at afresh; refused, it keeps the mark until it leaves.
  virtual std::vector<std::vector<BandAnswer>> enter(const BandPass& pass);

  // The view serves all that leave together and must outlive the answer.
  virtual std::unique_ptr<Leaving> leaving(const ProcessView& view);

  // Gives the Boost app a place of its own where a platform weighs places against each other and it has none
  // yet. `look` is asked only then. Slows nothing down.
  virtual void makeRoomFor(Pid /*boostApp*/, const std::function<const ProcessView&()>& /*look*/) {}

  // Called when this program has put nobody into the band or has just taken everybody out: whatever still
  // carries the platform's own trace of this program (a child born meanwhile, a unit whose processes are all
  // new) is put back. Safe because only one copy of the program runs. `recent` is a look of this very moment,
  // if the caller has one.
  virtual void reclaim(const ProcessView* /*recent*/) {}

  // What a platform calls when somebody was born while others left the band, with the band that they had: as
  // soon as no more of that can happen, and never inside another call than `settle`. Whoever knows who is
  // meant to be slowed then looks for everybody else that carries this program's trace.
  virtual void onLateBirths(const std::function<void()>& /*call*/) {}

  // The person waits for these: what of them is still on its way out of the band goes before all others.
  virtual void hasten(std::span<const Pid> /*pids*/) {}

  // Waits until changes that are under way are in force, at most this long; true when none is left.
  virtual bool settle(std::chrono::milliseconds /*limit*/) { return true; }
  // How many of them there are; 0 also when waiting for the rest is of no use.
  virtual std::size_t owed() const { return 0; }
};

} // namespace vantle
