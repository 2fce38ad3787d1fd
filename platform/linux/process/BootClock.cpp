// SPDX-License-Identifier: MIT
#include "platform/linux/process/BootClock.h"

#include <ctime>
#include <thread>
#include <unistd.h>

namespace vantle {

BootClock::BootClock(BootEpoch epoch)
    : m_epoch(epoch), m_ticksPerSecond(static_cast<std::uint64_t>(::sysconf(_SC_CLK_TCK))) {}

std::uint64_t BootClock::processMicros() const {
  timespec time{};
  ::clock_gettime(CLOCK_BOOTTIME, &time);
  const std::uint64_t nanosPerTick = 1'000'000'000 / m_ticksPerSecond;
  const std::uint64_t ticks = static_cast<std::uint64_t>(time.tv_sec) * m_ticksPerSecond +
                              static_cast<std::uint64_t>(time.tv_nsec) / nanosPerTick;
  return m_epoch.micros() + ticks * (1'000'000 / m_ticksPerSecond);
}

std::chrono::system_clock::time_point BootClock::now() const { return std::chrono::system_clock::now(); }

void BootClock::sleep(std::chrono::milliseconds duration) { std::this_thread::sleep_for(duration); }

} // namespace vantle
