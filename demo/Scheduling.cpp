// SPDX-License-Identifier: MIT
#include "demo/Scheduling.h"

#include "engine/ProcessQueries.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sched.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace vantle::demo {

namespace {

// linux/ioprio.h
constexpr int ioprioWhoProcess = 1;
constexpr int ioprioClassShift = 13;
constexpr int ioprioClassIdle = 3;

std::optional<ThreadState> threadState(Pid tid) {
  ThreadState state;
  state.schedulingClass = ::sched_getscheduler(tid);
  errno = 0;
  state.nice = ::getpriority(PRIO_PROCESS, static_cast<id_t>(tid));
  const bool hasNice = errno == 0;
  state.ioPriority = static_cast<int>(::syscall(SYS_ioprio_get, ioprioWhoProcess, tid));
  cpu_set_t set;
  const bool hasAffinity = ::sched_getaffinity(tid, sizeof set, &set) == 0;
  if (state.schedulingClass < 0 || !hasNice || state.ioPriority < 0 || !hasAffinity) return std::nullopt;
  for (int cpu = 0; cpu < CPU_SETSIZE; ++cpu) {
    if (CPU_ISSET(cpu, &set)) state.affinity.push_back(static_cast<std::uint8_t>(cpu));
  }
  return state;
}

std::string groupWeight(Pid pid) {
  std::ifstream file("/proc/" + std::to_string(pid) + "/autogroup");
  std::string line;
  std::getline(file, line);
  return line;
}

bool isIdleClass(const ThreadState& state) { return state.ioPriority >> ioprioClassShift == ioprioClassIdle; }

} // namespace

AppState appState(const ProcessTable& processes, Pid root) {
  AppState state;
  for (const Pid pid : processTree(processes, root)) {
    std::error_code gone;
    const std::string folder = "/proc/" + std::to_string(pid) + "/task";
    for (std::filesystem::directory_iterator entry(folder, gone), end; !gone && entry != end;
         entry.increment(gone)) {
      const Pid tid = std::stoi(entry->path().filename());
      if (const std::optional<ThreadState> thread = threadState(tid)) state.threads.emplace(tid, *thread);
    }
    if (const std::string weight = groupWeight(pid); !weight.empty()) state.groupWeights.emplace(pid, weight);
  }
  return state;
}

bool sameAsBefore(const AppState& before, const AppState& now) {
  const auto unchanged = [](const auto& earlier, const auto& later) {
    return std::all_of(later.begin(), later.end(), [&](const auto& entry) {
      const auto found = earlier.find(entry.first);
      return found == earlier.end() || found->second == entry.second;
    });
  };
  return unchanged(before.threads, now.threads) && unchanged(before.groupWeights, now.groupWeights) &&
         isWhollyOutOfBand(now);
}

bool isWhollyInBand(const AppState& state) {
  return !state.threads.empty() && std::all_of(state.threads.begin(), state.threads.end(),
                                               [](const auto& thread) { return isIdleClass(thread.second); });
}

bool isWhollyOutOfBand(const AppState& state) {
  return std::none_of(state.threads.begin(), state.threads.end(),
                      [](const auto& thread) { return isIdleClass(thread.second); });
}

double cpuSeconds(const ProcessTable& processes, Pid root) {
  double ticks = 0;
  for (const Pid pid : processTree(processes, root)) {
    ticks += static_cast<double>(processes.cpuTime(pid).value_or(0));
  }
  return ticks / static_cast<double>(::sysconf(_SC_CLK_TCK));
}

} // namespace vantle::demo
