// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/Kernel.h"

#include <iosfwd>
#include <map>
#include <string>
#include <sys/types.h>

namespace vantle::desktop {

// All that the band can change of a process, as the kernel has it.
struct KernelState {
  std::map<Pid, test::ThreadState> threads; // by their ids; empty when the process is gone
  int sessionNice = 0;                      // of its autogroup
  unsigned long long start = 0;             // so that a number that is used again is told apart
  bool operator==(const KernelState&) const = default;
};

std::ostream& operator<<(std::ostream& out, const KernelState& state);

KernelState kernelState(Pid pid);

// Every process of one user, whoever started it.
using MachineState = std::map<Pid, KernelState>;
MachineState machineState(uid_t user);

// What is not as it was then, a line for each process; empty when nothing is. Threads that came or went since
// do not count, but new ones, of new processes as well, must be as the kernel makes them.
std::string changesSince(const MachineState& before, uid_t user);

// Every thread in the I/O class "idle", which no process is in by itself.
bool isSlowed(Pid pid);
// None of them.
bool isAtFullSpeed(Pid pid);

} // namespace vantle::desktop
