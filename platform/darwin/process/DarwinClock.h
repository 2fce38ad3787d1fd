// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/Clock.h"

namespace vantle {

// A new process is stamped with the wall clock, to the microsecond, and keeps that stamp.
class DarwinClock final : public Clock {
 public:
  std::uint64_t processMicros() const override;
  std::chrono::system_clock::time_point now() const override;
  void sleep(std::chrono::milliseconds duration) override;
};

} // namespace vantle
