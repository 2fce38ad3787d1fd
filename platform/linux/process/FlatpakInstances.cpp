// SPDX-License-Identifier: MIT
#include "platform/linux/process/FlatpakInstances.h"

#include "base/Text.h"
#include "platform/linux/apps/AppEvidence.h"
#include "platform/linux/process/KernelFile.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <filesystem>
#include <set>
#include <system_error>
#include <utility>

namespace vantle {

namespace {

constexpr std::size_t mostInstances = 256; // folders of sandboxes that have ended may be left

Pid pidIn(const std::string& text) {
  Pid pid = 0;
  std::from_chars(text.data(), text.data() + text.size(), pid);
  return pid;
}

// A process and what descends from it, without the process itself. Parents stand before their children in no
// order that could be relied on.
std::vector<Pid> below(Pid root, std::span<const ProcessRecord> processes) {
  std::set<Pid> inside{root};
  for (bool isGrowing = true; isGrowing;) {
    isGrowing = false;
    for (const ProcessRecord& process : processes) {
      if (inside.contains(process.parent) && inside.insert(process.pid).second) isGrowing = true;
    }
  }
  inside.erase(root);
  return {inside.begin(), inside.end()};
}

} // namespace

std::vector<FlatpakInstance> flatpakInstances(const std::string& folder) {
  std::vector<FlatpakInstance> instances;
  std::error_code failure;
  std::size_t count = 0;
  if (folder.empty()) return instances;
  for (std::filesystem::directory_iterator at(folder, failure), end; at != end && !failure;
       at.increment(failure)) {
    if (++count > mostInstances) break;
    const std::string kept = at->path().string();
    FlatpakInstance instance{flatpakApp(readKernelFile(kept + "/info").value_or("")),
                             pidIn(readKernelFile(kept + "/pid").value_or(""))};
    if (!instance.app.empty() && instance.pid > 1) instances.push_back(std::move(instance));
  }
  return instances;
}

// One of its processes has to say as well that it is in there.
std::vector<Pid> processesInside(const FlatpakInstance& instance, std::span<const ProcessRecord> processes) {
  std::vector<Pid> inside = below(instance.pid, processes);
  const bool isThere = std::any_of(inside.begin(), inside.end(), [&](Pid process) {
    return readEvidence(process).sandboxId == instance.app;
  });
  if (!isThere) inside.clear();
  return inside;
}

std::string flatpakApp(std::string_view info) {
  bool inApplication = false;
  for (const std::string& line : split(std::string(info), '\n')) {
    if (line.starts_with('[')) inApplication = line == "[Application]";
    if (inApplication && line.starts_with("name=")) return line.substr(5);
  }
  return {};
}

} // namespace vantle
