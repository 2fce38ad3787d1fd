// SPDX-License-Identifier: MIT
#include "platform/darwin/process/DarwinClock.h"

#include <sys/time.h>
#include <thread>

namespace vantle {

std::uint64_t DarwinClock::processMicros() const {
  constexpr std::uint64_t microsPerSecond = 1'000'000;
  timeval now{};
  ::gettimeofday(&now, nullptr);
  return static_cast<std::uint64_t>(now.tv_sec) * microsPerSecond + static_cast<std::uint64_t>(now.tv_usec);
}

std::chrono::system_clock::time_point DarwinClock::now() const { return std::chrono::system_clock::now(); }

void DarwinClock::sleep(std::chrono::milliseconds duration) { std::this_thread::sleep_for(duration); }

} // namespace vantle
