// SPDX-License-Identifier: MIT
#include "demo/Scheduling.h"

#include "tests/support/Program.h"

#include <algorithm>
#include <unistd.h>

namespace vantle::demo {

AppState appState(Pid root) {
  AppState state;
  for (const Pid pid : desktop::processesOf({root})) {
    state.threads.merge(test::threadStates(pid));
    if (const auto nice = test::sessionNice(pid)) state.sessionNice.emplace(pid, *nice);
  }
  return state;
}

bool sameAsBefore(const AppState& before, const AppState& now) {
  const auto unchanged = [](const auto& earlier, const auto& later) {
    return std::all_of(later.begin(), later.end(), [&](const auto& entry) {
      const auto found = earlier.find(entry.first);
      return found == earlier.end() || found->second == entry.second;
    });
  };
  return unchanged(before.threads, now.threads) && unchanged(before.sessionNice, now.sessionNice) &&
         isWhollyOutOfBand(now);
}

bool isWhollyInBand(const AppState& state) {
  return !state.threads.empty() && std::all_of(state.threads.begin(), state.threads.end(),
                                               [](const auto& thread) { return isIdleClass(thread.second); });
}

bool isWhollyOutOfBand(const AppState& state) {
  return std::none_of(state.threads.begin(), state.threads.end(),
                      [](const auto& thread) { return isIdleClass(thread.second); });
}

double cpuSeconds(Pid root) {
  unsigned long long ticks = 0;
  for (const Pid pid : desktop::processesOf({root})) {
    if (const auto process = test::processState(pid)) ticks += process->ticks;
  }
  return static_cast<double>(ticks) / static_cast<double>(::sysconf(_SC_CLK_TCK));
}

} // namespace vantle::demo
