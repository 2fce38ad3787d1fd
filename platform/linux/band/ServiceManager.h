// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>

namespace vantle {

// The orders that the band gives to the user's service manager. All go out at once and are answered in the
// order they were given; `finish` waits for them together.
class ServiceManager {
 public:
  static constexpr std::uint64_t idleWeight = 0;               // below every other weight
  static constexpr std::uint64_t noWeight = ~std::uint64_t{0}; // how the manager writes "not set"

  using Done = std::function<void(bool succeeded)>;
  using Weight = std::function<void(std::optional<std::uint64_t> weight)>;
  // The moment at which a wait ends, on the kernel's clock.
  using Deadline = std::chrono::steady_clock::time_point;

  virtual ~ServiceManager() = default; // whoever still waits for an answer gets none

  virtual bool isReachable() const = 0;
  // It let a deadline pass and has not caught up since.
  virtual bool isLate() const = 0;

  // Each answers exactly once, on the loop, inside `finish`, or before it returns; a failure of any kind is
  // false or absent.
  virtual void getWeight(const std::string& unit, Weight weight) = 0;
  // Until the next boot at most.
  virtual void setWeight(const std::string& unit, std::uint64_t weight, Done done) = 0;
  virtual void startScope(const std::string& unit, std::span<const Pid> pids, Done done) = 0;
  virtual void attach(const std::string& unit, Pid pid, Done done) = 0;
  // Says when the manager has served all orders before this one and acted on them.
  virtual void barrier(Done done) = 0;

  // Serves the connection until no order is open; false when the deadline comes first.
  virtual bool finish(Deadline deadline) = 0;
};

} // namespace vantle
