// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <memory>
#include <systemd/sd-bus.h>

namespace vantle {

struct UnrefBusMessage {
  void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
using BusMessage = std::unique_ptr<sd_bus_message, UnrefBusMessage>;

struct UnrefBusSlot {
  void operator()(sd_bus_slot* slot) const { sd_bus_slot_unref(slot); }
};
using BusSlot = std::unique_ptr<sd_bus_slot, UnrefBusSlot>;

// The moment at which a wait ends. One deadline serves all the calls of one question.
using BusDeadline = std::chrono::steady_clock::time_point;

// Where a call goes.
struct BusMethod {
  const char* destination;
  const char* path;
  const char* interface;
  const char* member;
};

} // namespace vantle
