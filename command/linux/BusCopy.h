// SPDX-License-Identifier: MIT
#pragma once

#include "command/ports/RunningCopy.h"

#include <chrono>
#include <functional>
#include <memory>
#include <systemd/sd-bus.h>

namespace vantle {

// The running copy on the session's bus. A connection is made by the first question.
class BusCopy final : public RunningCopy {
 public:
  Answer<Status> status() override;
  Failure follow(const std::function<bool(const Status&)>& tell) override;
  Answer<std::vector<AppStatus>> why(const std::string& target) override;
  Done boost(const std::string& target) override;
  Done off() override;
  Done pause(std::chrono::seconds duration) override;
  Answer<std::string> report(bool withNames) override;

 private:
  struct CloseBus {
    void operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }
  };
  struct Unref {
    void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
  };
  using Message = std::unique_ptr<sd_bus_message, Unref>;
  using Fill = std::function<int(sd_bus_message*)>;

  Answer<Message> ask(const char* interface, const char* member, const Fill& fill = {});
  Answer<Message> askAll(); // all properties
  Done order(const char* member, const Fill& fill = {});
  // Serves the connection until the condition holds; false when the time is over, or nobody reads any more.
  bool serve(const std::function<bool()>& condition, std::chrono::milliseconds limit);
  bool awaitNews(std::chrono::milliseconds limit);

  std::unique_ptr<sd_bus, CloseBus> m_bus;
};

} // namespace vantle
