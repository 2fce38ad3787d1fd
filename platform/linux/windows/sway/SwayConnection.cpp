// SPDX-License-Identifier: MIT
#include "platform/linux/windows/sway/SwayConnection.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <utility>

namespace vantle {

using SteadyClock = std::chrono::steady_clock;

namespace {

constexpr std::chrono::milliseconds longestTurn{10};
constexpr std::size_t mostPending = 256; // answers that may be owed at a time

constexpr std::string_view magic = "i3-ipc";
constexpr std::size_t headerSize = magic.size() + 2 * sizeof(std::uint32_t);
constexpr std::uint32_t eventBit = 0x80000000;

std::uint32_t numberAt(std::string_view bytes, std::size_t at) {
  std::uint32_t number = 0; // in the byte order of the machine
  std::memcpy(&number, bytes.data() + at, sizeof number);
  return number;
}

std::string bytesOf(std::uint32_t number) {
  std::string bytes(sizeof number, '\0');
  std::memcpy(bytes.data(), &number, sizeof number);
  return bytes;
}

} // namespace

SwayConnection::SwayConnection(EventLoop& loop, Descriptor socket, Handlers handlers)
    : m_loop(loop), m_handlers(std::move(handlers)), m_socket(std::move(socket)),
      m_readable(m_loop.watch(m_socket.get(), EventLoop::Readiness::readable, [this] { pump(); })) {}

bool SwayConnection::ask(Request request, std::string_view payload, OnReply answered) {
  if (!isOpen() || m_pending.size() >= mostPending) return false;
  m_pending.push_back({request, std::move(answered)});
  m_unsent.append(magic).append(bytesOf(static_cast<std::uint32_t>(payload.size())));
  m_unsent.append(bytesOf(static_cast<std::uint32_t>(request))).append(payload);
  send();
  return true;
}

// An error here is the end of the connection, which reading finds as well: nobody is called back from within
// a request.
void SwayConnection::send() {
  const ssize_t sent =
      m_unsent.empty() ? 0 : ::send(m_socket.get(), m_unsent.data(), m_unsent.size(), MSG_NOSIGNAL);
  if (sent > 0) m_unsent.erase(0, static_cast<std::size_t>(sent));
  if (sent < 0 && errno != EAGAIN && errno != EINTR) m_unsent.clear();
  if (m_unsent.empty()) {
    m_writable.reset();
  } else if (!m_writable) {
    m_writable = m_loop.watch(m_socket.get(), EventLoop::Readiness::writable, [this] { send(); });
  }
}

void SwayConnection::pump() {
  m_nextTurn.reset();
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
bool SwayConnection::takeMessage() {
  const std::string_view rest = std::string_view(m_received).substr(m_taken);
  if (!rest.starts_with(magic.substr(0, rest.size()))) return close(), true;
  if (rest.size() < headerSize) return false;
  const std::size_t length = numberAt(rest, magic.size());
  if (length > longestMessage) return close(), true;
  if (rest.size() - headerSize < length) return false;
  m_taken += headerSize + length;
  take(numberAt(rest, magic.size() + sizeof(std::uint32_t)), rest.substr(headerSize, length));
  return true;
}

void SwayConnection::take(std::uint32_t type, std::string_view body) {
  if ((type & eventBit) != 0) {
    // What it says of an event that nobody understands changes nothing.
    if (const std::optional<Json> event = Json::parse(body))
      m_handlers.event(static_cast<Event>(type), *event);
    return;
  }
  if (m_pending.empty() || type != static_cast<std::uint32_t>(m_pending.front().request)) return close();
  const OnReply answered = std::move(m_pending.front().answered);
  m_pending.pop_front();
  answered(Json::parse(body));
}

// False when there is nothing more for now.
bool SwayConnection::receive() {
  m_received.erase(0, std::exchange(m_taken, 0));
  std::array<char, 64 * 1024> bytes; // NOLINT(cppcoreguidelines-pro-type-member-init)
  const ssize_t count = ::recv(m_socket.get(), bytes.data(), bytes.size(), MSG_DONTWAIT);
  if (count > 0) m_received.append(bytes.data(), static_cast<std::size_t>(count));
  if (count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR)) close();
  return count > 0;
}

void SwayConnection::close() {
  if (!isOpen()) return;
  m_readable.reset();
  m_writable.reset();
  m_nextTurn.reset();
  m_socket = Descriptor();
  m_pending.clear();
  m_handlers.lost();
}

bool SwayConnection::settle(std::chrono::milliseconds limit) {
  const SteadyClock::time_point end = SteadyClock::now() + limit;
  while (isOpen()) {
    send();
    pump();
    if (isOpen() && m_pending.empty()) return true;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - SteadyClock::now());
    if (left.count() <= 0 || !isOpen()) break;
    const int wanted = POLLIN | (m_unsent.empty() ? 0 : POLLOUT);
    pollfd waiting{m_socket.get(), static_cast<short>(wanted), 0};
    ::poll(&waiting, 1, static_cast<int>(left.count()));
  }
  return false;
}

} // namespace vantle
