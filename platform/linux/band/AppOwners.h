// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/band/ProcessScan.h"

#include <set>
#include <span>
#include <unordered_map>
#include <vector>

namespace vantle {

// Which app each process of one scan belongs to. An app's processes are what descends from its main process,
// up to where another app begins, and the orphans that it left behind in a session which it leads: whatever
// a session holds was started in it by its leader.
class AppOwners {
 public:
  // The scan has to outlive the answers; `everyApp` holds the main processes of all running apps.
  AppOwners(const ProcessScan& scan, const std::set<Pid>& everyApp);

  // Processes that were seen in this app's tree when their parents still lived. Who claims first keeps them.
  void claim(Pid app, std::span<const Pid> processes);

  Pid of(const ProcessStat& process); // the app's main process; 0 for a process of no app
  std::vector<Pid> processesOf(Pid app);

 private:
  const ProcessScan& m_scan;
  std::unordered_map<Pid, Pid> m_known;
};

} // namespace vantle
