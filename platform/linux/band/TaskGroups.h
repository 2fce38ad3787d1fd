// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/kernel/Kernel.h"

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

// Where version 2 control groups are mounted; empty when they are not.
std::string controlGroupMount(const Kernel& kernel);

// Finds the task group of processes. Made anew for each pass: what it looked up is kept for that long.
class TaskGroups {
 public:
  TaskGroups(const Kernel& kernel, std::string controlGroups);

  TaskGroup of(Pid pid, Pid session);

 private:
  TaskGroup withoutGroups(Pid session) const;
  // The innermost folder on the way to this path whose processes form a task group; empty for none.
  const std::string& cpuFolder(std::string_view path);

  const Kernel& m_kernel;
  std::string m_controlGroups; // mount of version 2; empty when there is none
  bool m_autogroup = false;
  bool m_noneIsWeighed = false; // no control group has the cpu controller on
  bool m_rootIsReal = false;    // "/" in a cgroup file is the machine's own root, not a container's
  std::unordered_map<std::string, std::string> m_cpuFolders;
};

} // namespace vantle
