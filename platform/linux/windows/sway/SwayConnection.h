// SPDX-License-Identifier: MIT
#pragma once

#include "base/Json.h"
#include "platform/linux/sockets/MessageStream.h"
#include "platform/posix/Descriptor.h"
#include "platform/shared/EventLoop.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace vantle {

// A connection to sway's IPC socket that never waits for it (sway-ipc(7): "i3-ipc", length, type, JSON).
// Replies come in the order of the requests, and events between them.
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

  bool isOpen() const { return m_stream.isOpen(); }
  void close() { m_stream.close(); } // as if sway had done it
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

  std::optional<std::size_t> takeMessage(std::string_view received);
  void take(std::uint32_t type, std::string_view body);

  Handlers m_handlers;
  std::deque<Pending> m_pending;
  MessageStream m_stream;
};

} // namespace vantle
