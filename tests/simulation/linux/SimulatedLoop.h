// SPDX-License-Identifier: MIT
#pragma once

#include "platform/shared/EventLoop.h"
#include "platform/simulated/SimulatedClock.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <utility>

namespace vantle {

// A main loop on simulated time: it runs only while somebody calls `run`. There are no descriptors to watch.
class SimulatedLoop final : public EventLoop {
 public:
  explicit SimulatedLoop(SimulatedClock& clock) : m_clock(clock) {}

  // Lets this much time pass; whatever is due within it is called at its moment.
  void run(std::chrono::milliseconds duration);
  // Lets time pass from timer to timer until none is left, at most this long; true when none is.
  bool runUntilQuiet(std::chrono::milliseconds limit);
  bool isQuiet() const { return m_timers->empty(); }
  // Asked before each timer and at the end: what the loop has to deliver besides.
  std::function<void()> source;

  std::unique_ptr<Handle> watch(int descriptor, Readiness readiness, std::function<void()> ready) override;
  std::unique_ptr<Handle> after(std::chrono::milliseconds delay, std::function<void()> due) override;

 private:
  using Moment = std::chrono::system_clock::time_point;
  using Key = std::pair<Moment, std::uint64_t>; // those of one moment in the order in which they were set
  using Timers = std::map<Key, std::function<void()>>;
  class Timer;

  bool callNext(Moment end); // false when nothing is due until then

  SimulatedClock& m_clock;
  std::shared_ptr<Timers> m_timers = std::make_shared<Timers>();
  std::uint64_t m_last = 0;
};

} // namespace vantle
