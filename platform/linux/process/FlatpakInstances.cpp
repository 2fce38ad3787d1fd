// SPDX-License-Identifier: MIT
#include "platform/linux/process/FlatpakInstances.h"

#include "base/Text.h"
#include "platform/linux/apps/AppEvidence.h"
#include "platform/linux/process/KernelFile.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <optional>
#include <set>
#include <system_error>

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

// What is left of a sandbox that has ended may name a number that belongs to a stranger by now, so one of its
// processes has to say as well that it is in there.
std::vector<Pid> FlatpakInstances::processesOf(const std::string& app,
                                               std::span<const ProcessRecord> processes) const {
  std::vector<Pid> found;
  std::error_code failure;
  std::size_t count = 0;
  if (m_folder.empty() || app.empty()) return found;
  for (std::filesystem::directory_iterator at(m_folder, failure), end; at != end && !failure;
       at.increment(failure)) {
    if (++count > mostInstances) break;
    const std::string folder = at->path().string();
    if (flatpakApp(readKernelFile(folder + "/info").value_or("")) != app) continue;
    const Pid pid = pidIn(readKernelFile(folder + "/pid").value_or(""));
    if (pid < 2) continue;
    const std::vector<Pid> inside = below(pid, processes);
    const bool isThere = std::any_of(inside.begin(), inside.end(),
                                     [&](Pid process) { return readEvidence(process).sandboxId == app; });
    if (isThere) found.insert(found.end(), inside.begin(), inside.end());
  }
  return found;
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
