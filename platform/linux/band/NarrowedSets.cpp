// SPDX-License-Identifier: MIT
#include "platform/linux/band/NarrowedSets.h"

#include <algorithm>

namespace vantle {

namespace {

std::optional<ProcessorSet> processorsOfGroup(const Kernel& kernel, Pid tid) {
  std::string path = kernel.read("/proc/" + std::to_string(tid) + "/cpuset").value_or("");
  path = path.substr(0, path.find('\n'));
  if (path.empty()) return std::nullopt;
  for (const std::string& file : {"/sys/fs/cgroup" + path + "/cpuset.cpus.effective",
                                  "/sys/fs/cgroup/cpuset" + path + "/cpuset.effective_cpus"}) {
    if (const auto list = kernel.read(file)) return ProcessorSet::parse(list->substr(0, list->find('\n')));
  }
  return std::nullopt;
}

} // namespace

bool NarrowedSets::remember(const ProcessorSet& set) { return contains(set) || m_ledger.addSet(set); }

bool NarrowedSets::contains(const ProcessorSet& now) const {
  const auto& sets = m_ledger.sets();
  return std::find(sets.begin(), sets.end(), now) != sets.end();
}

bool NarrowedSets::contains(const ProcessorSet& now, const ProcessorSet& active) const {
  return std::any_of(m_ledger.sets().begin(), m_ledger.sets().end(), [&](const ProcessorSet& set) {
    const ProcessorSet shown = set & active;
    return now == (shown.empty() ? active : shown);
  });
}

bool NarrowedSets::containsBehindGroup(const Kernel& kernel, Pid tid, const ProcessorSet& now) const {
  const std::optional<ProcessorSet> allowed = processorsOfGroup(kernel, tid);
  return allowed && contains(now, *allowed);
}

} // namespace vantle
