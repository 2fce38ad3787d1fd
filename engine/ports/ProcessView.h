// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/ProcessTable.h"

#include <cstddef>
#include <optional>
#include <set>
#include <span>
#include <unordered_map>
#include <vector>

namespace vantle {

// One look at all processes, arranged for questions about trees and sessions, and whose process each of them
// is. Asking it costs no further system call, so one look serves a whole pass over the running apps.
class ProcessView {
 public:
  ProcessView() = default; // sees nothing
  ProcessView(std::vector<ProcessRecord> records, std::optional<std::uint64_t> birthMark);

  const std::vector<ProcessRecord>& all() const { return m_all; }
  const ProcessRecord* find(Pid pid) const; // null for one that was not there

  // The direct children in the order in which the platform lists them, never 0 or 1.
  const std::vector<Pid>& childPIDs(Pid pid) const;
  std::span<const std::size_t> session(Pid session) const; // places in all(), of every process of the session

  // Of the moment of the scan; absent when the platform cannot tell.
  const std::optional<std::uint64_t>& birthMark() const { return m_birthMark; }
  // Nobody was born since, going by the mark of now.
  bool isCurrent(const std::optional<std::uint64_t>& now) const { return m_birthMark && m_birthMark == now; }

  // The main process of the app that a process belongs to; 0 for a process of no app.
  Pid appOf(Pid pid) const;
  void assign(Pid pid, Pid app);
  // Gives an app the tree below its main process, down to other apps and to what is somebody's already.
  // Returns it: the main process, then depth first from a stack.
  std::vector<Pid> assignTree(Pid app, const std::set<Pid>& apps);

 private:
  std::vector<ProcessRecord> m_all;
  std::unordered_map<Pid, std::size_t> m_places;
  std::unordered_map<Pid, std::vector<Pid>> m_children;
  std::unordered_map<Pid, std::vector<std::size_t>> m_sessions;
  std::unordered_map<Pid, Pid> m_apps;
  std::optional<std::uint64_t> m_birthMark;
};

} // namespace vantle
