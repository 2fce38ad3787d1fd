// SPDX-License-Identifier: MIT
#pragma once

#include "base/Json.h"
#include "platform/posix/Descriptor.h"
#include "platform/shared/EventLoop.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace vantle {

// A connection to sway's IPC socket that never waits for it (sway-ipc(7): "i3-ipc", length, type, JSON).
// Replies come in the order of the requests, and events between them. A sway that hangs costs nothing but the
// answers; one that never stops sending gets its turns like everybody else on the loop, and what it sends
// meanwhile waits in the socket. Whoever does not speak the protocol is let go.
class SwayConnection {
 public:
  enum class Request : std::uint32_t { runCommand = 0, subscribe = 2, getTree = 4, getVersion = 7 };
  enum class Event : std::uint32_t { workspace = 0x80000000, window = 0x80000003 };

  struct Handlers {
    std::function<void(Event, const Json&)> event;
    std::function<void()> turnEnded; // after some events and replies; requests may be made here
    std::function<void()> lost;      // for good; nothing is called after it
  };
  // Absent when the reply is no JSON document.
  using OnReply = std::function<void(const std::optional<Json>& reply)>;

  // A tree of 2,600 windows, which takes 100 ms to read; nothing else is nearly as long.
  static constexpr std::size_t longestMessage = 2'000'000; // bytes

  // On a socket that is connected and does not block.
  SwayConnection(EventLoop& loop, Descriptor socket, Handlers handlers);
  SwayConnection(const SwayConnection&) = delete;
  SwayConnection& operator=(const SwayConnection&) = delete;

  bool isOpen() const { return static_cast<bool>(m_socket); }
  void close(); // as if sway had done it
  // False when it cannot be asked: the connection is lost, or too many answers are still owed.
  bool ask(Request request, std::string_view payload, OnReply answered);

  // Handles what arrives until every reply is there or the time is up; true for the former. See
  // DesktopWindows::settle.
  bool settle(std::chrono::milliseconds limit);

 private:
  struct Pending {
    Request request;
    OnReply answered;
  };

  void pump();
  bool takeMessage();
  void take(std::uint32_t type, std::string_view body);
  bool receive();
  void send();

  EventLoop& m_loop;
  Handlers m_handlers;
  Descriptor m_socket; // none once it is lost
  std::string m_received;
  std::size_t m_taken = 0; // of what was received
  std::string m_unsent;
  std::deque<Pending> m_pending;
  std::unique_ptr<EventLoop::Handle> m_readable;
  std::unique_ptr<EventLoop::Handle> m_writable; // set while there is something unsent
  std::unique_ptr<EventLoop::Handle> m_nextTurn; // set while there is more than one turn takes
};

} // namespace vantle
