// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/Pid.h"
#include "platform/linux/kernel/Kernel.h"

#include <cstddef>
#include <span>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace vantle {

// One look at all processes, arranged for questions about trees and sessions.
class ProcessScan {
 public:
  ProcessScan() = default; // sees nothing
  explicit ProcessScan(const Kernel& kernel) : ProcessScan(kernel.scan()) {}
  explicit ProcessScan(std::vector<ProcessStat> processes);

  const std::vector<ProcessStat>& all() const { return m_all; }
  const ProcessStat* find(Pid pid) const;
  std::span<const std::size_t> session(Pid session) const; // places in all(), of every process of the session
  // The given processes and everything that descends from them now.
  std::unordered_set<Pid> withDescendants(std::span<const Pid> roots) const;

 private:
  std::vector<ProcessStat> m_all;
  std::unordered_map<Pid, std::size_t> m_places;
  std::unordered_map<Pid, std::vector<std::size_t>> m_sessions;
  std::unordered_map<Pid, std::vector<Pid>> m_children;
};

} // namespace vantle
