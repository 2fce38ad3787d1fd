// SPDX-License-Identifier: MIT
#include "platform/linux/band/TaskGroups.h"

#include "platform/linux/process/ControlGroupFile.h"
#include "platform/linux/process/KernelFile.h"

#include <array>
#include <unistd.h>
#include <utility>

namespace vantle {

namespace {

// The number that the kernel gives to the first control group namespace (PROC_CGROUP_INIT_INO).
bool isFirstControlGroupNamespace(const std::string& procRoot) {
  std::array<char, 64> target{};
  const ssize_t got = ::readlink((procRoot + "/self/ns/cgroup").c_str(), target.data(), target.size() - 1);
  return got > 0 && std::string_view(target.data()) == "cgroup:[4026531835]";
}

} // namespace

std::string controlGroupMount(const std::string& sysRoot) {
  for (const char* mount : {"/fs/cgroup", "/fs/cgroup/unified"}) {
    std::string root = sysRoot + mount;
    if (::access((root + "/cgroup.controllers").c_str(), F_OK) == 0) return root;
  }
  return {};
}

TaskGroups::TaskGroups(const ProcessFiles& files, const std::string& procRoot, std::string controlGroups)
    : m_files(files), m_controlGroups(std::move(controlGroups)) {
  const auto enabled = readKernelFile(procRoot + "/sys/kernel/sched_autogroup_enabled");
  m_autogroup = enabled && enabled->starts_with('1');
  m_rootIsReal = isFirstControlGroupNamespace(procRoot);
}

const std::string& TaskGroups::cpuFolder(std::string_view path) {
  const auto known = m_cpuFolders.find(std::string(path));
  if (known != m_cpuFolders.end()) return known->second;
  std::string folder(path);
  // cpu.weight stands in every folder that the cpu controller is on for; the machine's own root has none.
  while (!folder.empty() && ::access((m_controlGroups + folder + "/cpu.weight").c_str(), F_OK) != 0) {
    folder.erase(folder.rfind('/'));
  }
  return m_cpuFolders.emplace(path, std::move(folder)).first->second;
}

TaskGroup TaskGroups::of(const ProcessStat& process) {
  const std::optional<std::string> file = m_files.read(process.pid, "cgroup");
  if (!file) return {};
  if (const auto version1 = controlGroupPath(*file, true)) {
    if (*version1 != "/") return {TaskGroup::Kind::control, 0, "cpu:" + std::string(*version1)};
    if (!m_rootIsReal) return {};
  } else if (const auto path = controlGroupPath(*file); path && path->starts_with('/')) {
    if (m_controlGroups.empty()) {
      if (*path != "/" || !m_rootIsReal) return {};
    } else if (const std::string& folder = cpuFolder(*path); !folder.empty()) {
      return {TaskGroup::Kind::control, 0, folder};
    }
  }
  if (!m_autogroup) return {TaskGroup::Kind::root, 0, {}};
  if (process.session <= 0) return {};
  return {TaskGroup::Kind::session, process.session, {}};
}

} // namespace vantle
