// SPDX-License-Identifier: MIT
#pragma once

#include "tests/simulation/linux/SimulatedLinux.h"

#include <functional>

namespace vantle {

// The process table as the program reads it on a simulated Linux: from the kernel, zombies left out.
class LinuxTable final : public ProcessTable {
 public:
  LinuxTable(SimulatedMachine& machine, const SimulatedLinux& kernel)
      : m_machine(machine), m_kernel(kernel) {}

  std::function<void()> onScan; // right before a look at everybody

  std::optional<ProcessRecord> record(Pid pid) const override;
  std::vector<ProcessRecord> scan() const override;
  std::optional<std::uint64_t> birthMark() const override;
  std::string place(Pid pid) const override;
  std::string origin(Pid pid) const override;
  std::optional<std::string> executablePathBytes(Pid pid) const override;
  std::optional<std::uint64_t> footprint(Pid pid) const override;
  std::optional<std::uint64_t> cpuTime(Pid pid) const override;
  std::optional<int> schedulerPriority(Pid pid) const override;

 private:
  std::optional<ProcessRecord> dated(const ProcessStat& stat) const;

  SimulatedMachine& m_machine;
  const SimulatedLinux& m_kernel;
};

} // namespace vantle
