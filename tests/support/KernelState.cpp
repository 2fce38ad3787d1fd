// SPDX-License-Identifier: MIT
#include "tests/support/KernelState.h"

#include "tests/support/Program.h"

#include <algorithm>
#include <ostream>
#include <sched.h>
#include <sstream>
#include <unistd.h>

namespace vantle::desktop {

namespace {

bool belongsTo(uid_t user, Pid pid) {
  std::istringstream status(test::procText(pid, "status"));
  for (std::string word; status >> word;) {
    uid_t owner = 0;
    if (word == "Uid:") return status >> owner && owner == user;
  }
  return false;
}

// What the kernel gives to every process that nobody has done anything to.
bool isUntouched(const test::ThreadState& thread) {
  static const std::string everywhere = test::threadState(::getpid())->affinity;
  return !isIdleClass(thread) && thread.policy != SCHED_IDLE && thread.nice < 19 &&
         thread.affinity == everywhere;
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
  state.threads = test::threadStates(pid);
  if (const auto process = test::processState(pid)) state.start = process->start;
  state.sessionNice = test::sessionNice(pid).value_or(0);
  return state;
}

MachineState machineState(uid_t user) {
  MachineState all;
  for (const auto& [pid, process] : test::allProcesses()) {
    if (belongsTo(user, pid) && process.isAlive()) all[pid] = kernelState(pid);
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
    const auto process = test::processState(pid);
    if (!process || !process->isAlive()) continue; // gone while it was looked at
    changes << process->name << ' ' << pid << " is " << now;
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
                                               [](const auto& entry) { return isIdleClass(entry.second); });
}

bool isAtFullSpeed(Pid pid) {
  const KernelState state = kernelState(pid);
  return !state.threads.empty() && std::none_of(state.threads.begin(), state.threads.end(),
                                                [](const auto& entry) { return isIdleClass(entry.second); });
}

std::ostream& operator<<(std::ostream& out, const KernelState& state) {
  out << "session nice " << state.sessionNice;
  for (const auto& [id, thread] : state.threads) out << "; thread " << id << ": " << text(thread);
  return out;
}

} // namespace vantle::desktop
