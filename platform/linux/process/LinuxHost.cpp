// SPDX-License-Identifier: MIT
#include "platform/linux/process/LinuxHost.h"

#include <algorithm>
#include <sched.h>
#include <unistd.h>

namespace vantle {

Pid LinuxHost::selfPID() const { return ::getpid(); }

int LinuxHost::activeProcessorCount() const {
  cpu_set_t set;
  CPU_ZERO(&set);
  // Fails on machines with more processors than the set holds; those count what is switched on.
  if (::sched_getaffinity(0, sizeof set, &set) == 0) return std::max(CPU_COUNT(&set), 1);
  return static_cast<int>(std::max(::sysconf(_SC_NPROCESSORS_ONLN), 1L));
}

} // namespace vantle
