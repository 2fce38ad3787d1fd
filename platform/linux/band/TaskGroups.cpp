// SPDX-License-Identifier: MIT
#include "platform/linux/band/TaskGroups.h"

#include "platform/linux/process/ControlGroupFile.h"

#include <utility>

namespace vantle {

namespace {

// The number that the kernel gives to the first control group namespace (PROC_CGROUP_INIT_INO).
bool isFirstControlGroupNamespace(const Kernel& kernel) {
  return kernel.link("/proc/self/ns/cgroup") == "cgroup:[4026531835]";
}

} // namespace

std::string controlGroupMount(const Kernel& kernel) {
  for (std::string mount : {"/sys/fs/cgroup", "/sys/fs/cgroup/unified"}) {
    if (kernel.exists(mount + "/cgroup.controllers")) return mount;
  }
  return {};
}

TaskGroups::TaskGroups(const Kernel& kernel, std::string controlGroups)
    : m_kernel(kernel), m_controlGroups(std::move(controlGroups)) {
  const auto enabled = m_kernel.read("/proc/sys/kernel/sched_autogroup_enabled");
  m_autogroup = enabled && enabled->starts_with('1');
  m_rootIsReal = isFirstControlGroupNamespace(m_kernel);
  // With the controller off at the very top it is off everywhere, and one without a folder in it weighs
  // nobody.
  const auto own = m_rootIsReal ? m_kernel.controlGroups(m_kernel.self()) : std::nullopt;
  if (own && controlGroupPath(*own, true)) {
    const auto below = m_kernel.folders("/sys/fs/cgroup/cpu");
    m_noneIsWeighed = controlGroupPath(*own, true) == "/" && below && below->empty();
  } else if (own && !m_controlGroups.empty()) {
    const auto below = m_kernel.read(m_controlGroups + "/cgroup.subtree_control");
    m_noneIsWeighed = below && !hasWord(*below, "cpu");
  }
}

const std::string& TaskGroups::cpuFolder(std::string_view path) {
  const auto known = m_cpuFolders.find(std::string(path));
  if (known != m_cpuFolders.end()) return known->second;
  std::string folder(path);
  // cpu.weight stands in every folder that the cpu controller is on for; the machine's own root has none.
  while (!folder.empty() && !m_kernel.exists(m_controlGroups + folder + "/cpu.weight")) {
    folder.erase(folder.rfind('/'));
  }
  return m_cpuFolders.emplace(path, std::move(folder)).first->second;
}

TaskGroup TaskGroups::of(Pid pid, Pid session) {
  if (m_noneIsWeighed) return withoutGroups(session);
  const std::optional<std::string> file = m_kernel.controlGroups(pid);
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
  return withoutGroups(session);
}

TaskGroup TaskGroups::withoutGroups(Pid session) const {
  if (!m_autogroup) return {TaskGroup::Kind::root, 0, {}};
  if (session <= 0) return {};
  return {TaskGroup::Kind::session, session, {}};
}

} // namespace vantle
