// SPDX-License-Identifier: MIT
#include "platform/linux/band/LeverFacts.h"

#include "platform/linux/band/EfficiencySet.h"

namespace vantle {
namespace {

std::string sessionFact(const Kernel& kernel) {
  const auto enabled = kernel.read("/proc/sys/kernel/sched_autogroup_enabled");
  if (!enabled) return "no, the kernel has no groups of sessions";
  if (!enabled->starts_with('1')) return "no, the kernel's groups of sessions are switched off";
  if (!kernel.autogroup(kernel.self())) return "no, this session is not in a group of its own";
  return kernel.writableAutogroup(kernel.self()) ? "yes" : "no, their weights are not this user's to change";
}

std::string classFact(const Kernel& kernel) {
  const bool mayLeave = kernel.hasNiceCapability() || kernel.mayLeaveIdleClass(kernel.self());
  return mayLeave ? "yes" : "no, this user could not take it back";
}

std::string processorFact(const Kernel& kernel) {
  const EfficiencySet set = EfficiencySet::read(kernel);
  if (set.chosen.empty()) return "no, there is none to spare";
  return "processors " + set.chosen.text() + " of " + set.online.text();
}

} // namespace

std::vector<std::pair<std::string, std::string>> leverFacts(const Kernel& kernel, bool hasUnits) {
  return {{"Lever: units of the user manager",
           hasUnits ? "yes" : "no, no user manager with power over processor time answers"},
          {"Lever: sessions", sessionFact(kernel)},
          {"Lever: scheduling class", classFact(kernel)},
          {"Lever: processors for the background", processorFact(kernel)}};
}

} // namespace vantle
