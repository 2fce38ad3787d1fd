// SPDX-License-Identifier: MIT
#pragma once

#include "platform/posix/Descriptor.h"
#include "platform/shared/EventLoop.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace vantle {

// Messages over a socket, without ever waiting for the other end. One that hangs costs nothing but its
// messages; one that never stops sending gets its turns like everybody else on the loop, and what it sends
// meanwhile waits in the socket. Whoever does not speak the protocol is let go.
class MessageStream {
 public:
  struct Handlers {
    // Handles the first message of these bytes, and tells of how many it was: 0 when it is not whole yet,
    // absent when this is no message of the protocol's.
    std::function<std::optional<std::size_t>(std::string_view received)> take;
    std::function<void()> turnEnded = [] {}; // after some messages; more may be sent here
    std::function<void()> lost = [] {};      // for good; nothing is called after it
  };

  // On a socket that is connected and does not block.
  MessageStream(EventLoop& loop, Descriptor socket, Handlers handlers);
  MessageStream(const MessageStream&) = delete;
  MessageStream& operator=(const MessageStream&) = delete;

  bool isOpen() const { return static_cast<bool>(m_socket); }
  void close(); // as if the other end had done it
  // What is not taken at once is kept until it is.
  void send(std::string_view bytes);

  // Handles what has arrived, a turn of it.
  void pump();
  // Until something arrives at one of these or can be sent to it, at most so long.
  static void wait(std::initializer_list<const MessageStream*> streams,
                   std::chrono::steady_clock::time_point end);

 private:
  bool takeMessage();
  bool receive();
  void flush();

  EventLoop& m_loop;
  Handlers m_handlers;
  Descriptor m_socket; // none once it is lost
  std::string m_received;
  std::size_t m_taken = 0; // of what was received
  std::string m_unsent;
  std::unique_ptr<EventLoop::Handle> m_readable;
  std::unique_ptr<EventLoop::Handle> m_writable; // set while there is something unsent
  std::unique_ptr<EventLoop::Handle> m_nextTurn; // set while there is more than one turn takes
};

} // namespace vantle
