// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/Kernel.h"

#include <map>

namespace vantle::demo {

// One app as the kernel has it: its threads by their ids, and the nice value of each process's session.
struct AppState {
  std::map<Pid, test::ThreadState> threads;
  std::map<Pid, int> sessionNice;
};

AppState appState(Pid root);

// Whether what was there before and still lives is as it was.
bool sameAsBefore(const AppState& before, const AppState& now);

// Whether every process, or no process, of the app carries the idle I/O class that marks the band.
bool isWhollyInBand(const AppState& state);
bool isWhollyOutOfBand(const AppState& state);

// The CPU time that the app's processes have used so far, in seconds.
double cpuSeconds(Pid root);

} // namespace vantle::demo
