// SPDX-License-Identifier: MIT
#include "tests/desktop/boost/KernelState.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <sched.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace vantle::desktop {

namespace {

constexpr int idleClass = 3;
constexpr int classShift = 13;

KernelState::Thread readThread(Pid thread, const std::string& folder) {
  constexpr int ofProcess = 1;
  KernelState::Thread state;
  state.ioPriority = static_cast<int>(::syscall(SYS_ioprio_get, ofProcess, thread));
  state.policy = ::sched_getscheduler(thread);
  state.nice = ::getpriority(PRIO_PROCESS, static_cast<id_t>(thread));
  std::ifstream status(folder + "/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("Cpus_allowed:")) state.affinity = line;
  }
  return state;
}

bool isIdle(const KernelState::Thread& thread) { return thread.ioPriority >> classShift == idleClass; }

} // namespace

KernelState kernelState(Pid pid) {
  KernelState state;
  const std::string folder = "/proc/" + std::to_string(pid);
  std::error_code error;
  for (std::filesystem::directory_iterator entry(folder + "/task", error), end; !error && entry != end;
       entry.increment(error)) {
    state.threads[std::stoi(entry->path().filename())] =
        readThread(std::stoi(entry->path().filename()), entry->path());
  }
  std::string text;
  std::getline(std::ifstream(folder + "/autogroup"), text); // "/autogroup-12 nice 0"
  const std::size_t nice = text.rfind(' ');
  if (nice != std::string::npos) state.sessionNice = std::stoi(text.substr(nice));
  return state;
}

bool isSlowed(Pid pid) {
  const KernelState state = kernelState(pid);
  return !state.threads.empty() && std::all_of(state.threads.begin(), state.threads.end(),
                                               [](const auto& entry) { return isIdle(entry.second); });
}

bool isAtFullSpeed(Pid pid) {
  const KernelState state = kernelState(pid);
  return !state.threads.empty() && std::none_of(state.threads.begin(), state.threads.end(),
                                                [](const auto& entry) { return isIdle(entry.second); });
}

std::ostream& operator<<(std::ostream& out, const KernelState& state) {
  out << "session nice " << state.sessionNice;
  for (const auto& [id, thread] : state.threads) {
    out << "; thread " << id << ": io " << thread.ioPriority << " policy " << thread.policy << " nice "
        << thread.nice << ' ' << thread.affinity;
  }
  return out;
}

} // namespace vantle::desktop
