// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/Pid.h"
#include "platform/linux/bus/BusConnection.h"
#include "platform/shared/EventLoop.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace vantle {

// The orders that the band gives to the user's service manager (org.freedesktop.systemd1 on the user bus).
// All go out at once and are answered in the order they were given; `finish` waits for them together.
class UserManager {
 public:
  static constexpr std::uint64_t idleWeight = 0;               // below every other weight
  static constexpr std::uint64_t noWeight = ~std::uint64_t{0}; // how the manager writes "not set"

  using Done = std::function<void(bool succeeded)>;
  using Weight = std::function<void(std::optional<std::uint64_t> weight)>;

  // An empty address: there is no such manager, and every order fails.
  UserManager(EventLoop& loop, const std::string& address);

  bool isReachable() const { return m_bus.has_value(); }
  // It let a deadline pass and has not caught up since.
  bool isLate() const { return m_isLate && *m_open > 0; }

  // Each answers exactly once, on the loop, inside `finish`, or before it returns; a failure of any kind is
  // false or absent.
  void getWeight(const std::string& unit, Weight weight);
  void setWeight(const std::string& unit, std::uint64_t weight, Done done); // until the next boot at most
  void startScope(const std::string& unit, std::span<const Pid> pids, Done done);
  void attach(const std::string& unit, Pid pid, Done done);
  // Says when the manager has served all orders before this one and acted on them.
  void barrier(Done done);

  // Serves the connection until no order is open; false when the deadline comes first.
  bool finish(BusDeadline deadline);

 private:
  BusMessage managerCall(const char* member);
  void send(BusMessage message, BusConnection::Reply reply);

  std::optional<BusConnection> m_bus;
  std::shared_ptr<int> m_open = std::make_shared<int>(0); // orders without an answer
  bool m_isLate = false;
};

} // namespace vantle
