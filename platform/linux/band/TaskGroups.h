// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/band/ProcessScan.h"

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace vantle {

// Where the kernel weighs a process against others: weights and scheduling classes compare only what stands
// in one task group.
struct TaskGroup {
  enum class Kind {
    unknown,
    root,    // no group at all: every such process competes with every other
    session, // the session's automatic group; `session` says which
    control  // a control group with the cpu controller on; `path` says which
  };
  Kind kind = Kind::unknown;
  Pid session = 0;
  std::string path;

  friend bool operator==(const TaskGroup&, const TaskGroup&) = default;
};

// The path of a process in the version 2 hierarchy, from the text of /proc/PID/cgroup; absent when there is
// none. With `cpuOnly` the version 1 cpu hierarchy instead.
std::optional<std::string_view> controlGroupPath(std::string_view cgroupFile, bool cpuOnly = false);

// Finds the task group of processes. Made anew for each pass: what it looked up is kept for that long.
class TaskGroups {
 public:
  TaskGroups(const ProcessFiles& files, std::string procRoot, const std::string& sysRoot);

  bool autogroupEnabled() const { return m_autogroup; }
  TaskGroup of(const ProcessStat& process);
  // Path below the version 2 mount; absent when it cannot be read.
  std::optional<std::string> unifiedPath(Pid pid) const;
  const std::string& unifiedRoot() const { return m_unified; }

 private:
  // The innermost folder on the way to this path whose processes form a task group; empty for none.
  const std::string& cpuFolder(std::string_view path);

  const ProcessFiles& m_files;
  std::string m_unified; // mount of version 2; empty when there is none
  bool m_autogroup = false;
  bool m_rootIsReal = false; // "/" in a cgroup file is the machine's own root, not a container's
  std::unordered_map<std::string, std::string> m_cpuFolders;
};

} // namespace vantle
