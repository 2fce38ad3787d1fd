// SPDX-License-Identifier: MIT
#pragma once

#include "engine/AppTrees.h"
#include "engine/Journal.h"
#include "engine/ManagedApp.h"
#include "engine/Verdict.h"
#include "engine/ports/Machine.h"

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <unordered_set>
#include <utility>
#include <vector>

namespace vantle {

// Moves apps into the background band and back. What it holds is always true: a process that carries this
// program's mark belongs to an app that is listed here, and is in the journal unless it was born slowed.
//
// The order is always: recorded, changed, put back, forgotten.
class Backgrounder {
 public:
  // Whether an app may be slowed now. `trees` is the look that the decision is made with, one for all apps of
  // a call. Of one that is slowed already it may be asked whether it could be slowed afresh.
  enum class Asking { first, again };
  using Judge = std::function<Verdict(const RunningApplication& app, const AppTrees& trees, Asking asking)>;

  explicit Backgrounder(const Machine& machine); // reads the journal, changes nothing

  const std::map<Pid, ManagedApp>& managed() const { return m_managed; }   // by the pid of the main process
  const std::map<Pid, AppVerdict>& verdicts() const { return m_verdicts; } // of the last look at each app
  const Journal& journal() const { return m_journal; }
  bool isManaged(Pid app) const { return m_managed.contains(app); }

  // Puts back what an earlier run left.
  void recover();

  // A fresh look at all processes and whose they are.
  AppTrees look() const;

  // Gives the Boost app a place of its own where places are weighed.
  void makeRoomFor(Pid boostApp);

  // Puts those of the apps into the band that the judge lets through: every process is in the journal before
  // the first one is changed. One look and two writes of the journal serve all of them.
  // Returns the last of its looks.
  AppTrees manage(std::span<const AppRef> apps, Pid boostApp, const Judge& judge);

  // Takes an app out again, children born meanwhile included, and forgets it. One that is not listed is freed
  // of what it inherited from one that is. An earlier look of the same event serves as long as nobody was
  // born since. Returns the last of its looks; absent when it needed none.
  std::optional<AppTrees> restore(Pid app, Pid boostApp, std::optional<AppTrees> earlier = {});
  void restoreAll();
  // Looks for whoever carries this program's trace and is not listed.
  void sweep(Pid boostApp);
  // Whether a listed app has started something since that is to be slowed by itself; `manage` does that.
  bool isAnyIncomplete(const AppTrees& trees) const;

  void note(Pid app, Verdict verdict) { m_verdicts[app] = {verdict, {}, {}}; }
  void forget(Pid app);
  void rename(const RunningApplication& app); // one that is listed, as it is known by now

  // Apps that lost their place in the band because it was shared with something that is not in it; worth
  // another try when that may have changed.
  const std::set<Pid>& givenUp() const { return m_givenUp; }

 private:
  struct Entering {
    AppRef app;
    ProcessIdentity root;
    std::uint64_t changedAtMicros = 0;
    std::vector<ProcessIdentity> processes;
    bool isLater = false; // a part of an app that is listed already
  };

  std::vector<Entering> chosen(std::span<const AppRef> apps, const Judge& judge, const AppTrees& trees);
  void collect(Entering& entering, const AppTrees& trees, std::unordered_set<ProcessIdentity>& seen) const;
  void enter(const std::vector<Entering>& all, Pid boostApp, const AppTrees& trees);
  void complete(const AppTrees& trees, Pid boostApp, const Judge& judge);
  std::map<Pid, Entering> bornElsewhere(const ManagedApp& app, const AppTrees& trees) const;
  void putBack(std::span<const ManagedApp> apps, Pid boostApp, const AppTrees& trees);
  AppTrees sweep(AppTrees trees, Pid boostApp); // returns the last of its looks
  bool isOwnDoing(Pid pid, const AppTrees& trees) const;
  bool isCurrent(const AppTrees& trees) const;
  void reclaim(const AppTrees& trees);
  void leave(const std::vector<ProcessIdentity>& processes, Pid boostApp, const AppTrees& trees);
  bool sortOut(const AppTrees& trees, const std::vector<Entering>& entering, Pid boostApp);
  void retry(const std::vector<Pid>& raised, Pid boostApp, const AppTrees& trees);
  void giveUp(Pid app);
  std::set<Pid> slowedApps() const;
  bool isSame(const ProcessIdentity& identity) const;

  Machine m_machine;
  Journal m_journal;
  std::map<Pid, ManagedApp> m_managed;
  std::map<Pid, AppVerdict> m_verdicts;
  std::set<Pid> m_givenUp;
  std::unordered_set<ProcessIdentity> m_refusedLater; // born to a listed app, and not to be slowed by itself
};

} // namespace vantle
