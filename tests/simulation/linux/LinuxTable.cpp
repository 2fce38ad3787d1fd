// SPDX-License-Identifier: MIT
#include "tests/simulation/linux/LinuxTable.h"

#include "platform/linux/band/UnitPath.h"
#include "platform/linux/process/ProcessRecords.h"

#include <utility>

namespace vantle {

std::optional<ProcessRecord> LinuxTable::dated(const ProcessStat& stat) const {
  const SimulatedProcess* entry = std::as_const(m_machine.processes).find(stat.pid);
  if (entry == nullptr || !stat.isAlive()) return std::nullopt;
  ProcessRecord record = recordOf(stat);
  record.startSec = entry->identity().startSec;
  record.startUsec = entry->identity().startUsec;
  return record;
}

std::optional<ProcessRecord> LinuxTable::record(Pid pid) const {
  if (!m_machine.calls.read({.operation = Operation::readRecord, .pid = pid})) return std::nullopt;
  const std::optional<ProcessStat> stat = m_kernel.stat(pid);
  return stat ? dated(*stat) : std::nullopt;
}

std::vector<ProcessRecord> LinuxTable::scan() const {
  std::vector<ProcessRecord> records;
  if (!m_machine.calls.read({.operation = Operation::scanProcesses})) return records;
  const std::vector<ProcessStat> all = m_kernel.scan();
  if (onScan) onScan();
  records.reserve(all.size());
  for (const ProcessStat& stat : all) {
    if (const auto record = dated(stat)) records.push_back(*record);
  }
  return records;
}

std::optional<std::uint64_t> LinuxTable::birthMark() const {
  const std::optional<Pid> mark = m_kernel.birthMark();
  return mark ? std::optional(static_cast<std::uint64_t>(*mark)) : std::nullopt;
}

std::string LinuxTable::place(Pid pid) const {
  return appPlaceOf(userManagerPath(m_kernel.user()), m_kernel.unifiedPath(pid));
}

std::string LinuxTable::origin(Pid pid) const { return m_machine.processes.origin(pid); }

std::optional<std::string> LinuxTable::executablePathBytes(Pid pid) const {
  return m_machine.processes.executablePathBytes(pid);
}

std::optional<std::uint64_t> LinuxTable::footprint(Pid pid) const {
  return m_machine.processes.footprint(pid);
}

std::optional<std::uint64_t> LinuxTable::cpuTime(Pid pid) const { return m_machine.processes.cpuTime(pid); }

std::optional<int> LinuxTable::schedulerPriority(Pid pid) const {
  return m_machine.processes.schedulerPriority(pid);
}

} // namespace vantle
