// SPDX-License-Identifier: MIT
#pragma once

#include "base/Published.h"
#include "platform/linux/bus/BusTypes.h"
#include "platform/shared/EventLoop.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <poll.h>
#include <string>
#include <utility>

namespace vantle {

// One kept connection to a message bus. It is made when it is first needed and made again after it was lost;
// while nothing is sent or received it costs no wake-up. Nobody who uses it ever waits longer than the time
// they name, whatever the daemon does.
//
// Arguments are appended to the messages with sd-bus itself.
class BusConnection {
 public:
  enum class Kind { session, system };
  // The reply to one call; null on an error, a timeout or a lost connection.
  using Reply = std::function<void(sd_bus_message* reply)>;
  using Signal = std::function<void(sd_bus_message* signal)>;
  // What a call to an object of this program's got: nothing, or the name of an error.
  using Call = std::function<const char*(sd_bus_message* call)>;

  // Finds the bus as every program does (DBUS_SESSION_BUS_ADDRESS, DBUS_SYSTEM_BUS_ADDRESS, the usual paths).
  BusConnection(EventLoop& loop, Kind kind);
  // A bus at an address of its own, e.g. "unix:path=/run/user/1000/bus".
  BusConnection(EventLoop& loop, std::string address);
  ~BusConnection(); // calls that are under way are dropped; their replies are not delivered
  BusConnection(const BusConnection&) = delete;
  BusConnection& operator=(const BusConnection&) = delete;

  // Called after the connection was lost; what the bus was asked to watch is forgotten with it.
  [[nodiscard]] std::unique_ptr<Registration> onLost(std::function<void()> lost) {
    return m_lost.add(std::move(lost));
  }

  // A message to fill and send; null when there is no bus. Never waits: the handshake goes on by itself.
  BusMessage methodCall(const BusMethod& method);

  // Sends a call without waiting. The reply arrives on the loop or inside a later `runUntil`, exactly once,
  // unless the call could not even be queued: then false.
  bool callAsync(BusMessage message, std::chrono::milliseconds timeout, Reply reply);
  // The same for a call whose outcome nobody needs.
  bool send(BusMessage message);

  // Serves this connection alone, without the loop, until the condition holds; false when the deadline comes
  // first or the connection is lost. Not to be called inside a reply or a signal.
  bool runUntil(const std::function<bool()>& condition, BusDeadline deadline);

  // Delivers what has arrived since the loop was last here, for a turn (10 ms) at most. Inside a reply or a
  // signal it does nothing, and is false.
  bool catchUp() { return !m_bus || process(); }

  // What the connection waits for now; none without a bus, and none of one that is closed.
  std::optional<pollfd> watched() const;

  // Calls back on each signal that matches the rule, as long as the slot lives and the connection holds. Null
  // when there is no bus.
  BusSlot match(const std::string& rule, Signal signal);

  // Takes all calls to the object of that path, as long as the slot lives and the connection holds. Null when
  // there is no bus.
  BusSlot answer(const std::string& path, Call call);

  // The name that the bus knows this connection by, ":1.42"; empty before the first reply has arrived.
  std::string uniqueName() const;

  // Lets go of a bus that has died, should the loop not have come to it yet: what was under way has failed
  // and `onLost` was told on return. Not to be called inside a reply or a signal, where it does nothing.
  void noticeEnd();

  // Whether a reply or signal could arrive at all: connected, or under way to it.
  bool isOpen() const { return m_bus != nullptr; }

 private:
  struct CloseBus {
    void operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }
  };

  sd_bus* open();
  void wait(BusDeadline deadline) const;
  bool process(); // delivers what has arrived, a turn of it; false inside a reply or signal
  bool process(BusDeadline end);
  void watch(); // tells the loop what the connection waits for now
  void drop();

  EventLoop& m_loop;
  Kind m_kind = Kind::session;
  std::string m_address; // empty: by kind
  Observers<> m_lost;
  std::unique_ptr<sd_bus, CloseBus> m_bus;
  int m_watched = -1; // the descriptor that the watches below are for
  std::unique_ptr<EventLoop::Handle> m_readable;
  std::unique_ptr<EventLoop::Handle> m_writable;
  std::unique_ptr<EventLoop::Handle> m_timer;
};

} // namespace vantle
