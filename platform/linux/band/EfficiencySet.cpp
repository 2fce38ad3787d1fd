// SPDX-License-Identifier: MIT
#include "platform/linux/band/EfficiencySet.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <string>
#include <vector>

namespace vantle {

namespace {

const std::string processors = "/sys/devices/system/cpu";

std::optional<ProcessorSet> readSet(const Kernel& kernel, const std::string& path) {
  const std::optional<std::string> text = kernel.read(path);
  return text ? ProcessorSet::parse(*text) : std::nullopt;
}

// Chips with cores of several sizes state each one's capacity; 1024 is the largest.
ProcessorSet smallestCores(const Kernel& kernel, const ProcessorSet& online) {
  std::vector<std::pair<int, std::size_t>> capacities;
  for (std::size_t cpu = 0; cpu < ProcessorSet::most; ++cpu) {
    if (!online.contains(cpu)) continue;
    const auto text = kernel.read(processors + "/cpu" + std::to_string(cpu) + "/cpu_capacity");
    int capacity = 0;
    if (!text || std::from_chars(text->data(), text->data() + text->size(), capacity).ec != std::errc{}) {
      return {};
    }
    capacities.emplace_back(capacity, cpu);
  }
  ProcessorSet smallest;
  if (capacities.empty()) return smallest;
  const int least = std::min_element(capacities.begin(), capacities.end())->first;
  for (const auto& [capacity, cpu] : capacities) {
    if (capacity == least) smallest.add(cpu);
  }
  return smallest;
}

ProcessorSet lastQuarterOfCores(const Kernel& kernel, const ProcessorSet& online) {
  std::vector<ProcessorSet> cores;
  ProcessorSet seen;
  for (std::size_t cpu = 0; cpu < ProcessorSet::most; ++cpu) {
    if (!online.contains(cpu) || seen.contains(cpu)) continue;
    ProcessorSet core;
    core.add(cpu);
    const std::string topology = processors + "/cpu" + std::to_string(cpu) + "/topology/thread_siblings_list";
    if (const auto siblings = readSet(kernel, topology); siblings && siblings->contains(cpu)) {
      core = *siblings & online;
    }
    for (std::size_t sibling = cpu; sibling < ProcessorSet::most; ++sibling) {
      if (core.contains(sibling)) seen.add(sibling);
    }
    cores.push_back(core);
  }
  const std::size_t spare = (cores.size() + 3) / 4;
  ProcessorSet chosen;
  for (std::size_t at = cores.size() - spare; at < cores.size(); ++at) {
    for (std::size_t cpu = 0; cpu < ProcessorSet::most; ++cpu) {
      if (cores[at].contains(cpu)) chosen.add(cpu);
    }
  }
  return chosen;
}

} // namespace

EfficiencySet EfficiencySet::read(const Kernel& kernel) {
  EfficiencySet set;
  set.online = readSet(kernel, processors + "/online").value_or(ProcessorSet{});
  if (set.online.count() < 2) return set;

  const auto usable = [&set](const ProcessorSet& some) { return !some.empty() && some != set.online; };
  const ProcessorSet atoms =
      readSet(kernel, "/sys/devices/cpu_atom/cpus").value_or(ProcessorSet{}) & set.online;
  const ProcessorSet choices[] = {atoms, smallestCores(kernel, set.online),
                                  lastQuarterOfCores(kernel, set.online)};
  const auto found = std::find_if(std::begin(choices), std::end(choices), usable);
  if (found != std::end(choices)) set.chosen = *found;
  return set;
}

} // namespace vantle
