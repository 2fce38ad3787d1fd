// SPDX-License-Identifier: MIT
#include "platform/linux/process/ProcfsProcessTable.h"

#include "platform/linux/band/UnitPath.h"
#include "platform/linux/process/KernelFile.h"
#include "platform/linux/process/ProcessOrigin.h"
#include "platform/linux/process/ProcessRecords.h"

#include <charconv>
#include <cstddef>
#include <string_view>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace vantle {

namespace {

std::optional<std::uint64_t> kibibytesOf(std::string_view status, std::string_view label) {
  const std::size_t line = status.find(label);
  if (line == std::string_view::npos) return std::nullopt;
  const std::string_view value = status.substr(line + label.size());
  const std::size_t digits = value.find_first_not_of(" \t");
  if (digits == std::string_view::npos) return std::nullopt;
  std::uint64_t number = 0;
  const auto [stop, error] = std::from_chars(value.data() + digits, value.data() + value.size(), number);
  if (error != std::errc{} || number > (UINT64_MAX >> 12U)) return std::nullopt;
  return number;
}

std::string executableLink(Pid pid) { return std::to_string(pid) + "/exe"; }

bool isSameFile(const struct stat& left, const struct stat& right) {
  return left.st_dev == right.st_dev && left.st_ino == right.st_ino;
}

} // namespace

ProcfsProcessTable::ProcfsProcessTable(BootEpoch epoch, std::shared_ptr<const ProcKernel> kernel)
    : m_kernel(std::move(kernel)), m_epoch(epoch),
      m_microsPerTick(1'000'000 / static_cast<std::uint64_t>(::sysconf(_SC_CLK_TCK))) {}

std::optional<ProcessStat> ProcfsProcessTable::readStat(Pid pid) const {
  const std::optional<ProcessStat> stat = m_kernel->stat(pid);
  if (!stat || !stat->isAlive()) return std::nullopt;
  return *stat;
}

ProcessRecord ProcfsProcessTable::datedRecordOf(const ProcessStat& stat) const {
  ProcessRecord record = recordOf(stat);
  const std::uint64_t start = m_epoch.micros() + stat.startTicks * m_microsPerTick;
  record.startSec = start / 1'000'000;
  record.startUsec = start % 1'000'000;
  return record;
}

std::optional<ProcessRecord> ProcfsProcessTable::record(Pid pid) const {
  const std::optional<ProcessStat> stat = readStat(pid);
  if (!stat) return std::nullopt;
  return datedRecordOf(*stat);
}

std::vector<ProcessRecord> ProcfsProcessTable::scan() const {
  const std::vector<ProcessStat> processes = m_kernel->scan();
  std::vector<ProcessRecord> records;
  records.reserve(processes.size());
  for (const ProcessStat& process : processes) {
    if (process.isAlive()) records.push_back(datedRecordOf(process));
  }
  return records;
}

std::optional<std::uint64_t> ProcfsProcessTable::birthMark() const {
  const std::optional<Pid> mark = m_kernel->birthMark();
  return mark ? std::optional(static_cast<std::uint64_t>(*mark)) : std::nullopt;
}

std::string ProcfsProcessTable::place(Pid pid) const {
  return appPlaceOf(userManagerPath(m_kernel->user()), m_kernel->unifiedPath(pid));
}

std::string ProcfsProcessTable::origin(Pid pid) const { return readOrigin(pid, programFile(pid)); }

std::vector<std::string> ProcfsProcessTable::furtherOrigins(Pid app) const {
  return furtherOriginsOf(programFile(app));
}

std::string ProcfsProcessTable::programFile(Pid pid) const {
  return withoutDeletedMark(readKernelLink(m_kernel->folder(), executableLink(pid).c_str()).value_or(""));
}

std::optional<std::string> ProcfsProcessTable::executablePathBytes(Pid pid) const {
  const std::string link = executableLink(pid);
  std::optional<std::string> path = readKernelLink(m_kernel->folder(), link.c_str());
  if (path && path->ends_with(deletedMark)) {
    // A file may really be called so; then the path leads to the very file that runs.
    struct stat running {};
    struct stat named {};
    const bool isItsName = ::fstatat(m_kernel->folder(), link.c_str(), &running, 0) == 0 &&
                           ::stat(path->c_str(), &named) == 0 && isSameFile(running, named);
    if (!isItsName) path = withoutDeletedMark(std::move(*path));
  }
  return path;
}

std::optional<std::uint64_t> ProcfsProcessTable::footprint(Pid pid) const {
  const std::string status = m_kernel->readOf(pid, "status").value_or("");
  // The name line comes first, but a line break in a name is written as "\n": these are always the kernel's.
  const auto resident = kibibytesOf(status, "\nRssAnon:");
  const auto swapped = kibibytesOf(status, "\nVmSwap:");
  if (!resident || !swapped) return std::nullopt;
  return (*resident + *swapped) * 1024;
}

std::optional<std::uint64_t> ProcfsProcessTable::cpuTime(Pid pid) const {
  const std::optional<ProcessStat> stat = readStat(pid);
  if (!stat) return std::nullopt;
  return stat->userTicks + stat->kernelTicks;
}

std::optional<int> ProcfsProcessTable::schedulerPriority(Pid pid) const {
  const std::optional<ProcessStat> stat = readStat(pid);
  if (!stat) return std::nullopt;
  return stat->priority;
}

} // namespace vantle
