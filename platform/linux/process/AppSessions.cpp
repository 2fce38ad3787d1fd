// SPDX-License-Identifier: MIT
#include "platform/linux/process/AppSessions.h"

#include <cstddef>
#include <unordered_map>

namespace vantle {

bool mostShareTheirSession(std::span<const ProcessStat> processes, const std::set<Pid>& apps) {
  std::unordered_map<Pid, const ProcessStat*> byPid;
  for (const ProcessStat& process : processes) byPid.emplace(process.pid, &process);
  // The app nearest above; orphans are their session leader's. 0 for none.
  const auto appOf = [&](const ProcessStat& process) {
    const ProcessStat* above = &process;
    // A list of processes that came and went meanwhile may hold a circle.
    for (std::size_t step = 0; step < processes.size(); ++step) {
      if (apps.contains(above->pid)) return above->pid;
      const auto parent = byPid.find(above->parent);
      if (parent == byPid.end()) break;
      above = parent->second;
    }
    return apps.contains(process.session) ? process.session : Pid{0};
  };
  std::unordered_map<Pid, std::set<Pid>> tenants; // of each session
  for (const ProcessStat& process : processes) {
    if (process.isAlive()) tenants[process.session].insert(appOf(process));
  }
  std::size_t seen = 0;
  std::size_t sharing = 0;
  for (const Pid app : apps) {
    const auto found = byPid.find(app);
    if (found == byPid.end() || !found->second->isAlive()) continue;
    ++seen;
    if (tenants[found->second->session].size() > 1) ++sharing;
  }
  return seen > 0 && 2 * sharing >= seen;
}

} // namespace vantle
