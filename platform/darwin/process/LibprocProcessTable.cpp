// SPDX-License-Identifier: MIT
#include "platform/darwin/process/LibprocProcessTable.h"

#include "base/Invariant.h"
#include "platform/darwin/process/ProcRead.h"

#include <array>
#include <cstddef>
#include <cstring>
#include <limits>

namespace vantle {

namespace {

constexpr std::size_t roomForTheYoung = 64; // those born between the two questions
constexpr int mostQuestions = 4;

// Whatever runs below the first process is a program; that one and the kernel's own are the system.
ProcessRecord recordOf(Pid pid, std::uint32_t parent, std::uint32_t user) {
  ProcessRecord record;
  record.pid = pid;
  record.parent = static_cast<Pid>(parent);
  record.user = user;
  record.isKernelThread = pid == 0;
  if (pid < firstAppPid) record.role = ProcessRole::system;
  return record;
}

std::optional<rusage_info_v4> usageOf(Pid pid) {
  rusage_info_v4 usage{};
  void* const into = &usage;
  if (::proc_pid_rusage(pid, RUSAGE_INFO_V4, static_cast<rusage_info_t*>(into)) != 0) return std::nullopt;
  return usage;
}

} // namespace

// A list that fills its buffer may have been cut off there.
std::vector<Pid> everyPid() {
  std::vector<Pid> pids;
  for (int questions = 0; questions < mostQuestions; ++questions) {
    const int expected = ::proc_listallpids(nullptr, 0);
    if (expected < 1) return {};
    pids.assign(static_cast<std::size_t>(expected) + roomForTheYoung, 0);
    const int listed = ::proc_listallpids(pids.data(), static_cast<int>(pids.size() * sizeof(Pid)));
    if (listed < 1) return {};
    if (static_cast<std::size_t>(listed) >= pids.size()) continue;
    pids.resize(static_cast<std::size_t>(listed));
    break;
  }
  return pids;
}

std::optional<ProcessRecord> LibprocProcessTable::record(Pid pid) const {
  const auto info = procRead<proc_bsdinfo, PROC_PIDTBSDINFO>(pid);
  if (!info) return std::nullopt;
  ProcessRecord record = recordOf(pid, info->pbi_ppid, info->pbi_uid);
  record.startSec = info->pbi_start_tvsec;
  record.startUsec = info->pbi_start_tvusec;
  return record;
}

std::vector<ProcessRecord> LibprocProcessTable::scan() const {
  std::vector<ProcessRecord> records;
  for (const Pid pid : everyPid()) {
    const auto info = procRead<proc_bsdshortinfo, PROC_PIDT_SHORTBSDINFO>(pid);
    if (!info) continue;
    records.push_back(record(pid).value_or(recordOf(pid, info->pbsi_ppid, info->pbsi_uid)));
  }
  return records;
}

std::optional<std::string> LibprocProcessTable::executablePathBytes(Pid pid) const {
  std::array<char, PROC_PIDPATHINFO_MAXSIZE> path{};
  if (::proc_pidpath(pid, path.data(), static_cast<std::uint32_t>(path.size())) < 1) return std::nullopt;
  return std::string(path.data(), ::strnlen(path.data(), path.size()));
}

std::optional<std::uint64_t> LibprocProcessTable::footprint(Pid pid) const {
  const auto usage = usageOf(pid);
  if (!usage) return std::nullopt;
  return usage->ri_phys_footprint;
}

std::optional<std::uint64_t> LibprocProcessTable::cpuTime(Pid pid) const {
  const auto usage = usageOf(pid);
  if (!usage) return std::nullopt;
  constexpr auto most = std::numeric_limits<std::uint64_t>::max();
  invariant(usage->ri_user_time <= most - usage->ri_system_time, "CPU time overflows");
  return usage->ri_user_time + usage->ri_system_time;
}

std::optional<int> LibprocProcessTable::schedulerPriority(Pid pid) const {
  const auto info = procRead<proc_taskinfo, PROC_PIDTASKINFO>(pid);
  if (!info) return std::nullopt;
  return info->pti_priority;
}

} // namespace vantle
