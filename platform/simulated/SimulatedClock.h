// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/Clock.h"
#include "platform/simulated/SimulatedCalls.h"

#include <chrono>
#include <cstdint>
#include <functional>

namespace vantle {

// Time that passes only when somebody says so.
class SimulatedClock final : public Clock {
 public:
  explicit SimulatedClock(SimulatedCalls& calls) : m_calls(calls) {}

  void advance(std::chrono::microseconds duration) {
    m_micros += static_cast<std::uint64_t>(duration.count());
    if (onAdvance) onAdvance(duration);
  }
  // The kernel's resolution of start times, in microseconds. Linux has 10,000.
  void setResolution(std::uint64_t micros) { m_resolution = micros; }
  // Now, rounded down to that resolution: what a process that starts now is stamped with.
  std::uint64_t stamp() const { return m_micros / m_resolution * m_resolution; }
  std::uint64_t resolution() const { return m_resolution; }

  std::uint64_t processMicros() const override {
    m_calls.read({.operation = Operation::readClock});
    return stamp();
  }
  std::chrono::system_clock::time_point now() const override {
    return std::chrono::system_clock::time_point(std::chrono::microseconds(m_micros));
  }
  void sleep(std::chrono::milliseconds duration) override {
    m_calls.read({.operation = Operation::sleep});
    advance(duration);
  }

  std::function<void(std::chrono::microseconds)> onAdvance;

 private:
  SimulatedCalls& m_calls;
  std::uint64_t m_micros = 1'800'000'000'000'000; // an arbitrary day in 2027
  std::uint64_t m_resolution = 1;
};

} // namespace vantle
