// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/Pid.h"

#include <optional>

namespace vantle::threadCalls {

// The system calls on one thread that the C library does not offer, or offers for the caller only.

std::optional<int> ioPriority(Pid tid); // as it was set, see ioprio_get(2)
bool setIoPriority(Pid tid, int priority);

// SCHED_OTHER and so on, without the flag below.
struct Scheduling {
  int policy = 0;
  bool resetsOnFork = false; // SCHED_RESET_ON_FORK, which an ordinary user may keep but not clear

  bool isRealTime() const;
};
std::optional<Scheduling> scheduling(Pid tid);
bool setScheduling(Pid tid,
                   Scheduling scheduling); // for the classes without a priority; keeps the nice value

// Whether the kernel lets this thread return from SCHED_IDLE for a caller without CAP_SYS_NICE.
bool mayLeaveIdleClass(Pid tid);

// Whether this program has CAP_SYS_NICE over every process of the machine.
bool hasNiceCapability();

} // namespace vantle::threadCalls
