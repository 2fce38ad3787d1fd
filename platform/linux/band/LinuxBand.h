// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/BackgroundBand.h"
#include "engine/ports/FileStore.h"
#include "platform/linux/band/BandLedger.h"
#include "platform/linux/band/Departures.h"
#include "platform/linux/band/SessionWeights.h"
#include "platform/linux/band/ThreadLevers.h"
#include "platform/linux/band/UnitWeights.h"
#include "platform/shared/EventLoop.h"

#include <chrono>
#include <memory>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace vantle {

// What the band stands on.
struct BandParts {
  std::shared_ptr<Kernel> kernel = {};          // shared with the process table; null: this machine's, alone
  std::unique_ptr<ServiceManager> manager = {}; // null: there is none
  // Files of the band's own, in the order in which they are tried; none: kept in memory.
  std::vector<std::string> ledgers = {};
  // How long one call may wait for that manager.
  std::chrono::milliseconds busLimit{200};
};

// The background band on Linux: whichever levers weigh a process against the app in front, on this desktop
// and for this user, found by looking at each process. docs/band.md tells which, and why.
class LinuxBand final : public BackgroundBand {
 public:
  LinuxBand(EventLoop& loop, FileStore& files, BandParts parts);
  ~LinuxBand() override;

  // Gives a process that this program started the place that a desktop gives to an app.
  void placeAsApp(Pid pid);

  // See leverFacts.
  std::vector<std::pair<std::string, std::string>> levers() const;

  // The process that single ones are to be slowed against; without one, everybody is.
  void compareWith(Pid front) { m_front = front; }

  bool enterBackgroundBand(Pid pid) override;
  bool leaveBackgroundBand(Pid pid) override;
  std::optional<bool> isInBackgroundBand(Pid pid) const override { return m_threads.isIn(pid); }
  bool carriesOwnMark(Pid pid) const override;
  std::vector<std::vector<BandAnswer>> enter(const BandPass& pass) override;
  std::unique_ptr<Leaving> leaving(const ProcessView& view) override;
  void makeRoomFor(Pid boostApp, const std::function<const ProcessView&()>& look) override;
  void reclaim(const ProcessView* recent) override;
  void onLateBirths(const std::function<void()>& call) override { m_departures.onLateBirths(call); }
  void hasten(std::span<const Pid> pids) override;
  bool settle(std::chrono::milliseconds limit) override;
  std::size_t owed() const override;

 private:
  class LeavingTogether;

  bool isOfAnotherCopy(Pid pid) const;
  std::optional<ThreadMark> markOf(const ProcessRecord& process) const;
  bool isRootsDoing(const std::optional<ThreadMark>& mark) const;
  bool giveUnit(const ProcessView& view, Pid app, const std::vector<Pid>& processes,
                UnitWeights::Deadline deadline);
  ProcessView lookAt(Pid app) const; // everybody: the tree of this process as an app, all others as nobody's

  std::shared_ptr<Kernel> m_shared;
  Kernel& m_kernel;
  std::chrono::milliseconds m_busLimit;
  BandLedger m_ledger;
  ThreadLevers m_threads;
  std::string m_controlGroups; // mount of the version 2 tree
  SessionWeights m_sessions;
  Departures m_departures;
  UnitWeights m_units;
  Pid m_front = 0;             // for the calls on single processes
  bool m_hasReclaimed = false; // what a program before this one left
};

} // namespace vantle
