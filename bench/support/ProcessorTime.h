// SPDX-License-Identifier: MIT
#pragma once

#include <ctime>

namespace vantle::bench {

// What this thread has used so far: a machine that is busy with other things changes it little.
inline double processorMillis() {
  timespec used{};
  ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
  return static_cast<double>(used.tv_sec) * 1e3 + static_cast<double>(used.tv_nsec) / 1e6;
}

// Milliseconds of processor time.
template <class Work> double costOf(Work work) {
  const double before = processorMillis();
  work();
  return processorMillis() - before;
}

} // namespace vantle::bench
