// SPDX-License-Identifier: MIT
#include "platform/linux/sockets/MessageStream.h"

#include <array>
#include <cerrno>
#include <poll.h>
#include <sys/socket.h>
#include <utility>
#include <vector>

namespace vantle {

using SteadyClock = std::chrono::steady_clock;

namespace {

constexpr std::chrono::milliseconds longestTurn{10};

} // namespace

MessageStream::MessageStream(EventLoop& loop, Descriptor socket, Handlers handlers)
    : m_loop(loop), m_handlers(std::move(handlers)), m_socket(std::move(socket)),
      m_readable(m_loop.watch(m_socket.get(), EventLoop::Readiness::readable, [this] { pump(); })) {}

void MessageStream::send(std::string_view bytes) {
  if (!isOpen()) return;
  m_unsent.append(bytes);
  flush();
}

// An error here is the end of the connection, which reading finds as well: nobody is called back from within
// a request.
void MessageStream::flush() {
  const ssize_t sent =
      m_unsent.empty() ? 0 : ::send(m_socket.get(), m_unsent.data(), m_unsent.size(), MSG_NOSIGNAL);
  if (sent > 0) m_unsent.erase(0, static_cast<std::size_t>(sent));
  if (sent < 0 && errno != EAGAIN && errno != EINTR) m_unsent.clear();
  if (m_unsent.empty()) {
    m_writable.reset();
  } else if (!m_writable) {
    m_writable = m_loop.watch(m_socket.get(), EventLoop::Readiness::writable, [this] { flush(); });
  }
}

void MessageStream::pump() {
  if (!isOpen()) return;
  m_nextTurn.reset();
  flush();
  const SteadyClock::time_point end = SteadyClock::now() + longestTurn;
  while (isOpen() && (takeMessage() || receive())) {
    if (SteadyClock::now() < end) continue;
    // A message that has been received already would wake nobody up.
    m_nextTurn = m_loop.after(std::chrono::milliseconds(0), [this] { pump(); });
    break;
  }
  if (!isOpen()) return;
  m_received.erase(0, std::exchange(m_taken, 0));
  m_handlers.turnEnded();
}

// False when there is no whole one yet.
bool MessageStream::takeMessage() {
  const std::string_view rest = std::string_view(m_received).substr(m_taken);
  const std::optional<std::size_t> size = rest.empty() ? 0 : m_handlers.take(rest);
  if (!size) return close(), true;
  m_taken += *size;
  return *size > 0;
}

// False when there is nothing more for now.
bool MessageStream::receive() {
  m_received.erase(0, std::exchange(m_taken, 0));
  std::array<char, 64 * 1024> bytes; // NOLINT(cppcoreguidelines-pro-type-member-init)
  const ssize_t count = ::recv(m_socket.get(), bytes.data(), bytes.size(), MSG_DONTWAIT);
  if (count > 0) m_received.append(bytes.data(), static_cast<std::size_t>(count));
  if (count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR)) close();
  return count > 0;
}

void MessageStream::close() {
  if (!isOpen()) return;
  m_readable.reset();
  m_writable.reset();
  m_nextTurn.reset();
  m_socket = Descriptor();
  m_handlers.lost();
}

void MessageStream::wait(std::initializer_list<const MessageStream*> streams, SteadyClock::time_point end) {
  std::vector<pollfd> waiting;
  for (const MessageStream* const stream : streams) {
    if (stream == nullptr || !stream->isOpen()) continue;
    const int wanted = POLLIN | (stream->m_unsent.empty() ? 0 : POLLOUT);
    waiting.push_back({stream->m_socket.get(), static_cast<short>(wanted), 0});
  }
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - SteadyClock::now());
  if (left.count() > 0) ::poll(waiting.data(), waiting.size(), static_cast<int>(left.count()));
}

} // namespace vantle
