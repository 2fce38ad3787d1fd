// SPDX-License-Identifier: MIT
#include "platform/linux/band/ProcessScan.h"

#include <utility>

namespace vantle {

ProcessScan::ProcessScan(std::vector<ProcessStat> processes) : m_all(std::move(processes)) {
  m_places.reserve(m_all.size());
  for (std::size_t at = 0; at < m_all.size(); ++at) {
    const ProcessStat& process = m_all[at];
    m_places.emplace(process.pid, at);
    m_sessions[process.session].push_back(at);
    m_children[process.parent].push_back(process.pid);
  }
}

const ProcessStat* ProcessScan::find(Pid pid) const {
  const auto found = m_places.find(pid);
  return found == m_places.end() ? nullptr : &m_all[found->second];
}

std::span<const std::size_t> ProcessScan::session(Pid session) const {
  const auto found = m_sessions.find(session);
  if (found == m_sessions.end()) return {};
  return found->second;
}

std::unordered_set<Pid> ProcessScan::withDescendants(std::span<const Pid> roots) const {
  std::unordered_set<Pid> tree;
  std::vector<Pid> toVisit(roots.begin(), roots.end());
  while (!toVisit.empty()) {
    const Pid pid = toVisit.back();
    toVisit.pop_back();
    if (!tree.insert(pid).second) continue;
    const auto children = m_children.find(pid);
    if (children != m_children.end()) {
      toVisit.insert(toVisit.end(), children->second.begin(), children->second.end());
    }
  }
  return tree;
}

} // namespace vantle
