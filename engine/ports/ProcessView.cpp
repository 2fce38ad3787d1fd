// SPDX-License-Identifier: MIT
#include "engine/ports/ProcessView.h"

#include "base/Invariant.h"

#include <utility>

namespace vantle {

ProcessView::ProcessView(std::vector<ProcessRecord> records, std::optional<std::uint64_t> birthMark)
    : m_all(std::move(records)), m_birthMark(birthMark) {
  m_places.reserve(m_all.size());
  m_apps.reserve(m_all.size());
  for (std::size_t at = 0; at < m_all.size(); ++at) {
    const ProcessRecord& record = m_all[at];
    invariant(record.pid >= 0 && record.parent >= 0, "negative pid in the process table");
    m_places.emplace(record.pid, at);
    m_sessions[record.session].push_back(at);
    if (record.pid >= firstAppPid) m_children[record.parent].push_back(record.pid);
  }
}

const ProcessRecord* ProcessView::find(Pid pid) const {
  const auto found = m_places.find(pid);
  return found == m_places.end() ? nullptr : &m_all[found->second];
}

const std::vector<Pid>& ProcessView::childPIDs(Pid pid) const {
  static const std::vector<Pid> none;
  const auto found = m_children.find(pid);
  return found == m_children.end() ? none : found->second;
}

std::span<const std::size_t> ProcessView::session(Pid session) const {
  const auto found = m_sessions.find(session);
  if (found == m_sessions.end()) return {};
  return found->second;
}

Pid ProcessView::appOf(Pid pid) const {
  const auto found = m_apps.find(pid);
  return found == m_apps.end() ? 0 : found->second;
}

void ProcessView::assign(Pid pid, Pid app) { m_apps.insert_or_assign(pid, app); }

std::vector<Pid> ProcessView::assignTree(Pid app, const std::set<Pid>& apps) {
  std::vector<Pid> tree;
  std::vector<Pid> toVisit{app};
  while (!toVisit.empty()) {
    const Pid pid = toVisit.back();
    toVisit.pop_back();
    if (appOf(pid) != 0 || (pid != app && apps.contains(pid))) continue;
    assign(pid, app);
    tree.push_back(pid);
    const std::vector<Pid>& children = childPIDs(pid);
    toVisit.insert(toVisit.end(), children.begin(), children.end());
  }
  return tree;
}

} // namespace vantle
