// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace vantle::test {

// What the kernel says of processes and threads, asked directly: a test does not take the program's word for
// it.

// Everything of one thread that the program could change.
struct ThreadState {
  int policy = 0;       // SCHED_OTHER, …
  int nice = 0;         // of this thread
  int ioPriority = 0;   // class and data as ioprio_get has them
  std::string affinity; // a mask as its status file says it
  bool operator==(const ThreadState&) const = default;
};

std::optional<ThreadState> threadState(Pid thread); // absent when it is gone
std::map<Pid, ThreadState> threadStates(Pid process);
bool isIdleClass(const ThreadState& state); // the idle class of disk access, in which no process is by itself
std::string text(const ThreadState& state);

// Of the process's session; absent when it is gone or sessions have no weight on this machine.
std::optional<int> sessionNice(Pid process);

struct ProcessState {
  std::string name;
  char state = 'X';
  Pid parent = 0;
  Pid session = 0;
  unsigned flags = 0;           // PF_EXITING, …
  unsigned long long ticks = 0; // of processors used, in the kernel's ticks
  unsigned long long start = 0; // the same since the boot: tells a number that is used again apart
  bool isAlive() const { return state != 'Z' && state != 'X'; } // of a zombie nothing runs any more
};

std::optional<ProcessState> processState(Pid process); // absent when it is gone
std::map<Pid, ProcessState> allProcesses();

// A file of /proc; what is gone while it is read is empty.
std::string procText(Pid process, const std::string& file);

} // namespace vantle::test
