// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/BackgroundBand.h"
#include "engine/ports/FileStore.h"
#include "platform/linux/band/ProcessScan.h"
#include "platform/linux/band/SessionWeights.h"
#include "platform/linux/band/TaskGroups.h"
#include "platform/linux/band/ThreadLevers.h"
#include "platform/linux/band/UnitWeights.h"
#include "platform/shared/EventLoop.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

namespace vantle {

// What the band stands on.
struct BandParts {
  std::shared_ptr<Kernel> kernel = {};          // shared with the process table; null: this machine's, alone
  std::unique_ptr<ServiceManager> manager = {}; // null: there is none
  std::string ledger = {}; // a file of the band's own beside the journal; empty: kept in memory
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

  using BackgroundBand::enterBackgroundBand;
  bool enterBackgroundBand(Pid pid) override;
  std::vector<std::vector<bool>> enterBackgroundBand(std::span<const BandGroup> groups,
                                                     const std::set<Pid>& everyApp) override;
  bool leaveBackgroundBand(Pid pid) override;
  std::optional<bool> isInBackgroundBand(Pid pid) const override;
  void prepareBoostApp(Pid root, std::span<const Pid> tree, const std::set<Pid>& everyApp) override;
  void releaseInherited(Pid root, const std::set<Pid>& everyApp) override;
  void reclaim() override;
  bool settle(std::chrono::milliseconds limit) override;

 private:
  // A process that entered with an app without being asked for: born during the pass, or an orphan that the
  // app left in its session. It leaves with the app.
  struct Companion {
    Pid pid = 0;
    std::uint64_t startTicks = 0;
  };

  bool leaveProcess(Pid pid);
  void leaveCompanions(Pid root);
  std::optional<ThreadMark> markOf(const ProcessStat& process) const;
  std::vector<Pid> sessionOf(const ProcessStat& process) const;
  void giveUnit(const ProcessStat& root, std::vector<Pid> tree, const std::set<Pid>& everyApp,
                UnitWeights::Deadline deadline);

  std::shared_ptr<Kernel> m_shared;
  Kernel& m_kernel;
  std::chrono::milliseconds m_busLimit;
  ThreadLevers m_threads;
  std::string m_controlGroups; // mount of the version 2 tree
  SessionWeights m_sessions;
  UnitWeights m_units;
  bool m_hasReclaimed = false; // what a program before this one left
  std::vector<Pid> m_boostApp; // the app in front: its tree, its main process last
  std::string m_frontPath;     // and its place in the control group tree
  std::unordered_map<Pid, std::vector<Companion>> m_companions; // by the app's main process
};

} // namespace vantle
