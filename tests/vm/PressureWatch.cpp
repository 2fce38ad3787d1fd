// SPDX-License-Identifier: MIT
// Watches the machine's memory pressure as Vantle does: prints "watching", and then "warning" or "critical"
// with the level for each event, until it is ended.
#include "platform/linux/pressure/PsiMemoryPressure.h"
#include "platform/shared/PollEventLoop.h"

#include <chrono>
#include <iostream>

int main() {
  using namespace vantle;
  PollEventLoop loop;
  PsiMemoryPressure pressure(loop);
  // NOLINTBEGIN(performance-avoid-endl): the other side waits for each line
  const auto source = pressure.watch([&](bool isCritical) {
    std::cout << (isCritical ? "critical " : "warning ") << pressure.level().value_or(0) << std::endl;
  });
  std::cout << (source ? "watching" : "no events") << std::endl;
  // NOLINTEND(performance-avoid-endl)
  while (source) loop.runUntil([] { return false; }, std::chrono::hours(1));
  return 1;
}
