// SPDX-License-Identifier: MIT
#include "platform/linux/windows/WindowReadings.h"

#include <set>
#include <utility>

namespace vantle {

void WindowReadings::setActive(WindowId window) {
  if (std::exchange(m_active, window) != window) m_isChanged = true;
}

void WindowReadings::remove(WindowId window) {
  m_known.erase(window);
  m_drafts.erase(window);
  if (m_active == window) m_active = 0;
  m_isStale = true;
  m_isChanged = true;
}

void WindowReadings::take(const std::optional<std::vector<ToldWindow>>& windows) {
  m_isReading = false;
  if (!windows) return;
  std::set<WindowId> listed;
  for (const ToldWindow& window : *windows) {
    if (listed.insert(window.facts.id).second) consider(window, m_reading);
  }
  const auto isGone = [&](const auto& entry) { return !listed.contains(entry.first); };
  if (std::erase_if(m_known, isGone) > 0) m_isChanged = true;
  std::erase_if(m_drafts, isGone);
  std::erase_if(m_orphans, isGone);
  m_processes.forgetUnused();
}

// What was told of a window, by an event (0) or in this reading.
void WindowReadings::consider(const ToldWindow& told, std::uint64_t reading) {
  const auto orphan = m_orphans.find(told.facts.id);
  if (orphan != m_orphans.end() && orphan->second == told.toldPid) return keep(told, 0, nullptr);
  const auto known = m_known.find(told.facts.id);
  if (known != m_known.end() && known->second.process && known->second.pid == told.toldPid)
    return keep(told, known->second.pid, known->second.process);
  const auto draft = m_drafts.find(told.facts.id);
  if (draft == m_drafts.end() || draft->second.owner.pid != told.toldPid) return meet(told);
  if (reading < draft->second.reading) return;
  const WindowOwner owner = draft->second.owner;
  m_drafts.erase(draft);
  if (!hasEnded(*owner.process)) return keep(told, owner.pid, owner.process);
  m_orphans[told.facts.id] = told.toldPid;
  keep(told, 0, nullptr);
}

void WindowReadings::meet(const ToldWindow& told) {
  const WindowId id = told.facts.id;
  m_drafts.erase(id);
  WindowOwner owner = m_processes.believe(m_kernel, told.toldPid, id == m_active);
  // What belongs to nobody needs no second word.
  if (!owner.process) return keep(told, 0, nullptr);
  if (m_known.erase(id) > 0) m_isChanged = true;
  m_drafts.emplace(id, Draft{std::move(owner), m_reading + 1});
  m_isStale = true;
}

void WindowReadings::keep(const ToldWindow& told, Pid pid, std::shared_ptr<Descriptor> process) {
  WindowFacts facts = told.facts;
  facts.pid = pid;
  facts.process = std::move(process);
  WindowFacts& known = m_known[facts.id];
  if (known == facts) return;
  known = std::move(facts);
  m_isChanged = true;
}

bool WindowReadings::endTurn() {
  if (m_isStale && !m_isReading) {
    m_isReading = m_ask();
    if (m_isReading) ++m_reading;
    m_isStale = !m_isReading;
  }
  return std::exchange(m_isChanged, false);
}

void WindowReadings::forget(Pid pid) {
  for (const auto& [id, window] : m_known) {
    if (window.pid == pid) m_orphans[id] = pid;
  }
  // There is a descriptor now for one that got none before.
  std::erase_if(m_known,
                [pid](const auto& entry) { return entry.second.pid == pid || !entry.second.process; });
  std::erase_if(m_drafts, [pid](const auto& entry) { return entry.second.owner.pid == pid; });
  m_processes.forget(pid);
  m_isStale = true;
  m_isChanged = true;
}

void WindowReadings::clear() {
  m_known.clear();
  m_drafts.clear();
  m_orphans.clear();
  m_processes.clear();
  m_active = 0;
}

} // namespace vantle
