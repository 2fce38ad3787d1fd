// SPDX-License-Identifier: MIT
#include "tests/desktop/boost/KernelState.h"

#include "tests/desktop/harness/Program.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <sched.h>
#include <sstream>
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

std::string startOf(const std::string& folder) {
  std::string text;
  std::getline(std::ifstream(folder + "/stat"), text, '\0');
  if (text.rfind(')') == std::string::npos) return {};
  std::istringstream fields(text.substr(text.rfind(')') + 1));
  constexpr int placeOfStart = 20; // counted from the state, the first one behind the name
  std::string field;
  for (int at = 0; at < placeOfStart; ++at) fields >> field;
  return field;
}

bool belongsTo(uid_t user, const std::string& folder) {
  std::ifstream status(folder + "/status");
  for (std::string word; status >> word;) {
    uid_t owner = 0;
    if (word == "Uid:") return status >> owner && owner == user;
  }
  return false;
}

// What the kernel gives to every process that nobody has done anything to.
bool isUntouched(const KernelState::Thread& thread) {
  static const std::string everywhere = readThread(::getpid(), "/proc/self").affinity;
  return !isIdle(thread) && thread.policy != SCHED_IDLE && thread.nice < 19 && thread.affinity == everywhere;
}

bool isUnchanged(const KernelState& before, const KernelState& now) {
  if (before.sessionNice != now.sessionNice) return false;
  return std::all_of(now.threads.begin(), now.threads.end(), [&](const auto& entry) {
    const auto known = before.threads.find(entry.first);
    return known == before.threads.end() ? isUntouched(entry.second) : known->second == entry.second;
  });
}

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
  state.start = startOf(folder);
  std::string text;
  std::getline(std::ifstream(folder + "/autogroup"), text); // "/autogroup-12 nice 0"
  const std::size_t nice = text.rfind(' ');
  if (nice != std::string::npos) state.sessionNice = std::stoi(text.substr(nice));
  return state;
}

MachineState machineState(uid_t user) {
  MachineState all;
  for (const std::filesystem::directory_entry& entry : std::filesystem::directory_iterator("/proc")) {
    const std::string name = entry.path().filename().string();
    if (name.find_first_not_of("0123456789") != std::string::npos) continue;
    const Pid pid = std::stoi(name);
    if (belongsTo(user, entry.path()) && isAlive(pid)) all[pid] = kernelState(pid);
  }
  return all;
}

std::string changesSince(const MachineState& before, uid_t user) {
  std::ostringstream changes;
  for (const auto& [pid, now] : machineState(user)) {
    const auto known = before.find(pid);
    const bool isNew = known == before.end() || known->second.start != now.start;
    const KernelState& then = isNew ? KernelState() : known->second;
    if (now.threads.empty() || isUnchanged(then, now)) continue;
    if (!isAlive(pid)) continue; // gone while it was looked at
    std::string command;
    std::getline(std::ifstream("/proc/" + std::to_string(pid) + "/comm"), command);
    changes << command << ' ' << pid << " is " << now;
    if (isNew)
      changes << ", born since\n";
    else
      changes << "\n  and was " << then << '\n';
  }
  return changes.str();
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
