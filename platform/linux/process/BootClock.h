// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/Clock.h"
#include "platform/linux/process/BootEpoch.h"

namespace vantle {

// Time on the axis of the process table: the boot clock, which goes on while the machine sleeps, on the epoch
// of this boot. The kernel keeps start times in whole ticks (10 ms); now is rounded down to the tick as well,
// or a child that starts within 10 ms after its app was slowed would look older than the change.
class BootClock final : public Clock {
 public:
  explicit BootClock(BootEpoch epoch);

  std::uint64_t processMicros() const override;
  std::chrono::system_clock::time_point now() const override;
  void sleep(std::chrono::milliseconds duration) override;

 private:
  BootEpoch m_epoch;
  std::uint64_t m_ticksPerSecond;
};

} // namespace vantle
