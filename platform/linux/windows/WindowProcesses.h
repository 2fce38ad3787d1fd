// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"
#include "platform/linux/kernel/Kernel.h"
#include "platform/posix/Descriptor.h"

#include <cstdint>
#include <map>
#include <memory>

namespace vantle {

// Whose window it is: nobody's without a process.
struct WindowOwner {
  Pid pid = 0;
  std::shared_ptr<Descriptor> process = {}; // a pidfd
};

// The processes that windows belong to: one descriptor for all windows of a process, and together no more
// than a quarter of those that this program may have.
class WindowProcesses {
 public:
  // A pidfd of the process that has this number now. Null when there is none, or when there are too few
  // descriptors left; the window in front may still have one when the others may not.
  std::shared_ptr<Descriptor> open(Pid pid, bool isInFront);
  // What may be believed when a desktop names this number: nobody, unless it is that of a process of this
  // user's which runs. The desktop has to name it once more afterwards.
  WindowOwner believe(const Kernel& kernel, std::int64_t told, bool isInFront);
  // Its number may be another process's from now on.
  void forget(Pid pid) { m_open.erase(pid); }
  void forgetUnused();
  void clear() { m_open.clear(); }

 private:
  std::map<Pid, std::weak_ptr<Descriptor>> m_open;
};

bool hasEnded(const Descriptor& process); // of a pidfd

} // namespace vantle
