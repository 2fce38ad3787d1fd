// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"
#include "engine/ports/ProcessTable.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace vantle::demo {

// All that the kernel says of how one thread is scheduled, asked directly: the demo does not take the
// program's word for it.
struct ThreadState {
  int schedulingClass = 0; // SCHED_OTHER, …
  int nice = 0;
  int ioPriority = 0; // class and data as ioprio_get has them
  std::vector<std::uint8_t> affinity;
  bool operator==(const ThreadState&) const = default;
};

// One app: its threads by their ids, and the weight line of each process's scheduler group.
struct AppState {
  std::map<Pid, ThreadState> threads;
  std::map<Pid, std::string> groupWeights;
};

AppState appState(const ProcessTable& processes, Pid root);

// Whether what was there before and still lives is as it was.
bool sameAsBefore(const AppState& before, const AppState& now);

// Whether every process, or no process, of the app carries the idle I/O class that marks the band.
bool isWhollyInBand(const AppState& state);
bool isWhollyOutOfBand(const AppState& state);

// The CPU time that the app's processes have used so far, in seconds.
double cpuSeconds(const ProcessTable& processes, Pid root);

} // namespace vantle::demo
