// SPDX-License-Identifier: MIT
#include "tests/soak/Machine.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <unistd.h>
#include <utility>

namespace vantle::soak {

namespace {

constexpr std::string_view roleVariable = "SOAK_ROLE=";

// False for who is gone, or on its way: that has no memory and no control groups of its own any more.
bool readStat(ProcessSettings& process) {
  constexpr unsigned exiting = 4;
  const auto state = test::processState(process.pid);
  if (!state || !state->isAlive() || (state->flags & exiting) != 0) return false;
  process.name = state->name;
  process.state = state->state;
  process.parent = state->parent;
  process.start = state->start;
  return true;
}

// False when the process is none of the stage's, or is just becoming another program.
bool readRole(ProcessSettings& process, const std::string& desktopMarker) {
  const std::string variables = test::procText(process.pid, "environ");
  bool isOnStage = isNamespaceOfItsOwn() && !variables.empty();
  for (std::size_t from = 0; from < variables.size();) {
    const std::size_t to = std::min(variables.find('\0', from), variables.size());
    const std::string_view variable(variables.data() + from, to - from);
    if (variable == desktopMarker) isOnStage = true;
    if (variable.starts_with(roleVariable)) process.role = variable.substr(roleVariable.size());
    from = to + 1;
  }
  return isOnStage;
}

std::optional<ProcessSettings> processSettings(Pid pid, const std::string& desktopMarker) {
  ProcessSettings process;
  process.pid = pid;
  if (!readStat(process) || !readRole(process, desktopMarker)) return {};
  process.sessionNice = test::sessionNice(pid).value_or(0);
  process.groups = test::procText(pid, "cgroup");
  process.threads = test::threadStates(pid);
  const auto later = test::processState(pid);
  if (process.threads.empty() || !later || later->start != process.start) return {};
  return process;
}

} // namespace

bool isNamespaceOfItsOwn() { return ::getpid() == 1; }

Machine lookAtMachine(const std::string& desktopMarker) {
  Machine machine;
  for (const auto& [pid, state] : test::allProcesses()) {
    if (pid == ::getpid()) continue;
    if (auto process = processSettings(pid, desktopMarker)) machine.push_back(std::move(*process));
  }
  return machine;
}

ThreadSettings settingsOfThisThread() { return test::threadState(::gettid()).value(); }

std::string controlGroupsOfThisProcess() { return test::procText(::getpid(), "cgroup"); }

} // namespace vantle::soak
