// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/ProcessTable.h"
#include "platform/linux/kernel/ProcKernel.h"
#include "platform/linux/process/BootEpoch.h"

#include <memory>
#include <string>

namespace vantle {

// The process table as procfs shows it. Zombies count as gone: there is nothing left of them to slow down.
class ProcfsProcessTable final : public ProcessTable {
 public:
  explicit ProcfsProcessTable(BootEpoch epoch, const std::string& procRoot = "/proc")
      : ProcfsProcessTable(epoch, std::make_shared<ProcKernel>(procRoot)) {}
  ProcfsProcessTable(BootEpoch epoch, std::shared_ptr<const ProcKernel> kernel);

  std::optional<ProcessRecord> record(Pid pid) const override;
  std::vector<ProcessRecord> scan() const override; // in ascending order of pids, as the kernel lists them
  std::shared_ptr<const void> hold() const override { return m_kernel->hold(); }
  std::optional<std::uint64_t> birthMark() const override;
  // The path of the user manager's unit, if it is one that desktops make for an app.
  std::string place(Pid pid) const override;
  std::string origin(Pid pid) const override; // see originOf
  std::vector<std::string> furtherOrigins(Pid app) const override;
  // Without the mark that the kernel puts behind the path of a file that was deleted or replaced by an
  // update.
  std::optional<std::string> executablePathBytes(Pid pid) const override;
  std::optional<std::uint64_t> footprint(Pid pid) const override;
  std::optional<std::uint64_t> cpuTime(Pid pid) const override; // in clock ticks
  std::optional<int> schedulerPriority(Pid pid) const override;

 private:
  std::optional<ProcessStat> readStat(Pid pid) const;
  ProcessRecord datedRecordOf(const ProcessStat& stat) const;
  std::string programFile(Pid pid) const; // as far as the name alone tells

  std::shared_ptr<const ProcKernel> m_kernel;
  BootEpoch m_epoch;
  std::uint64_t m_microsPerTick;
};

} // namespace vantle
