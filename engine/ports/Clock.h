// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>

namespace vantle {

class Clock {
 public:
  virtual ~Clock() = default;

  // Now, in microseconds since the Unix epoch, on the very axis of process start times and with the same
  // rounding: a process started after this call never has a smaller start time.
  virtual std::uint64_t processMicros() const = 0;

  // Now, as the person's calendar has it.
  virtual std::chrono::system_clock::time_point now() const = 0;

  virtual void sleep(std::chrono::milliseconds duration) = 0;
};

} // namespace vantle
