// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/band/ServiceManager.h"
#include "platform/linux/bus/BusConnection.h"
#include "platform/shared/EventLoop.h"

#include <memory>
#include <optional>
#include <string>

namespace vantle {

// The service manager that is org.freedesktop.systemd1 on the user bus.
class UserManager final : public ServiceManager {
 public:
  // An empty address: there is no such manager, and every order fails.
  UserManager(EventLoop& loop, const std::string& address);

  bool isReachable() const override { return m_bus.has_value(); }
  bool isLate() const override { return m_isLate && *m_open > 0; }
  void getWeight(const std::string& unit, Weight weight) override;
  void setWeight(const std::string& unit, std::uint64_t weight, Done done) override;
  void startScope(const std::string& unit, std::span<const Pid> pids, Done done) override;
  void attach(const std::string& unit, Pid pid, Done done) override;
  void barrier(Done done) override;
  bool finish(Deadline deadline) override;

 private:
  BusMessage managerCall(const char* member);
  void send(BusMessage message, BusConnection::Reply reply);

  std::optional<BusConnection> m_bus;
  std::shared_ptr<int> m_open = std::make_shared<int>(0); // orders without an answer
  bool m_isLate = false;
};

} // namespace vantle
