// SPDX-License-Identifier: MIT
#include "platform/linux/band/TaskGroups.h"

#include "platform/linux/band/KernelFile.h"

#include <array>
#include <unistd.h>

namespace vantle {

namespace {

bool hasController(std::string_view list, std::string_view controller) {
  while (!list.empty()) {
    const std::string_view item = list.substr(0, list.find(','));
    if (item == controller) return true;
    list.remove_prefix(item.size() < list.size() ? item.size() + 1 : list.size());
  }
  return false;
}

// The number that the kernel gives to the first control group namespace (PROC_CGROUP_INIT_INO).
bool isFirstControlGroupNamespace(const std::string& procRoot) {
  std::array<char, 64> target{};
  const ssize_t got = ::readlink((procRoot + "/self/ns/cgroup").c_str(), target.data(), target.size() - 1);
  return got > 0 && std::string_view(target.data()) == "cgroup:[4026531835]";
}

} // namespace

std::optional<std::string_view> controlGroupPath(std::string_view cgroupFile, bool cpuOnly) {
  while (!cgroupFile.empty()) { // lines of "number:controllers:path"
    const std::string_view line = cgroupFile.substr(0, cgroupFile.find('\n'));
    cgroupFile.remove_prefix(line.size() < cgroupFile.size() ? line.size() + 1 : cgroupFile.size());
    const std::size_t first = line.find(':');
    const std::size_t second = line.find(':', first + 1);
    if (first == std::string_view::npos || second == std::string_view::npos) continue;
    const std::string_view controllers = line.substr(first + 1, second - first - 1);
    const bool wanted = cpuOnly ? hasController(controllers, "cpu") : line.starts_with("0::");
    if (wanted) return line.substr(second + 1);
  }
  return std::nullopt;
}

TaskGroups::TaskGroups(const ProcessFiles& files, std::string procRoot, const std::string& sysRoot)
    : m_files(files) {
  for (const char* mount : {"/fs/cgroup", "/fs/cgroup/unified"}) {
    const std::string root = sysRoot + mount;
    if (::access((root + "/cgroup.controllers").c_str(), F_OK) != 0) continue;
    m_unified = root;
    break;
  }
  const auto enabled = readKernelFile(procRoot + "/sys/kernel/sched_autogroup_enabled");
  m_autogroup = enabled && enabled->starts_with('1');
  m_rootIsReal = isFirstControlGroupNamespace(procRoot);
}

const std::string& TaskGroups::cpuFolder(std::string_view path) {
  const auto known = m_cpuFolders.find(std::string(path));
  if (known != m_cpuFolders.end()) return known->second;
  std::string folder(path);
  // cpu.weight stands in every folder that the cpu controller is on for; the machine's own root has none.
  while (!folder.empty() && ::access((m_unified + folder + "/cpu.weight").c_str(), F_OK) != 0) {
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
    if (m_unified.empty()) {
      if (*path != "/" || !m_rootIsReal) return {};
    } else if (const std::string& folder = cpuFolder(*path); !folder.empty()) {
      return {TaskGroup::Kind::control, 0, folder};
    }
  }
  if (!m_autogroup) return {TaskGroup::Kind::root, 0, {}};
  if (process.session <= 0) return {};
  return {TaskGroup::Kind::session, process.session, {}};
}

std::optional<std::string> TaskGroups::unifiedPath(Pid pid) const {
  const std::optional<std::string> file = m_files.read(pid, "cgroup");
  const auto path = file ? controlGroupPath(*file) : std::nullopt;
  if (!path) return std::nullopt;
  return std::string(*path);
}

} // namespace vantle
