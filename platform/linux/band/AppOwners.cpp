// SPDX-License-Identifier: MIT
#include "platform/linux/band/AppOwners.h"

#include <algorithm>

namespace vantle {

AppOwners::AppOwners(const ProcessScan& scan, const std::set<Pid>& everyApp) : m_scan(scan) {
  for (const Pid app : everyApp) m_known.emplace(app, app);
}

void AppOwners::claim(Pid app, std::span<const Pid> processes) {
  m_known.emplace(app, app);
  for (const Pid pid : processes) m_known.emplace(pid, app);
}

Pid AppOwners::of(const ProcessStat& process) {
  // Up to the first ancestor whose app is known, then down again.
  std::vector<const ProcessStat*> unknown;
  const ProcessStat* at = &process;
  Pid owner = 0;
  for (; at != nullptr; at = m_scan.find(at->parent)) {
    const auto known = m_known.find(at->pid);
    if (known != m_known.end()) {
      owner = known->second;
      break;
    }
    m_known.emplace(at->pid, 0); // ends a circle, which reused numbers can make
    unknown.push_back(at);
  }
  std::reverse(unknown.begin(), unknown.end());
  for (const ProcessStat* one : unknown) {
    const auto leader = owner == 0 && one->session > 0 ? m_known.find(one->session) : m_known.end();
    if (leader != m_known.end() && leader->second == one->session && m_scan.find(one->session) != nullptr) {
      owner = one->session;
    }
    m_known[one->pid] = owner;
  }
  return owner;
}

std::vector<Pid> AppOwners::processesOf(Pid app) {
  std::vector<Pid> processes;
  for (const ProcessStat& process : m_scan.all()) {
    if (of(process) == app) processes.push_back(process.pid);
  }
  return processes;
}

} // namespace vantle
