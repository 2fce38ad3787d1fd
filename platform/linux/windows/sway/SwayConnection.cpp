// SPDX-License-Identifier: MIT
#include "platform/linux/windows/sway/SwayConnection.h"

#include <cstring>
#include <utility>

namespace vantle {

namespace {

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
    : m_handlers(std::move(handlers)),
      m_stream(loop, std::move(socket),
               {.take = [this](std::string_view received) { return takeMessage(received); },
                .turnEnded = [this] { m_handlers.turnEnded(); },
                .lost =
                    [this] {
                      m_pending.clear();
                      m_handlers.lost();
                    }}) {}

bool SwayConnection::ask(Request request, std::string_view payload, OnReply answered) {
  if (!isOpen() || m_pending.size() >= mostPending) return false;
  m_pending.push_back({request, std::move(answered)});
  std::string message(magic);
  message.append(bytesOf(static_cast<std::uint32_t>(payload.size())));
  message.append(bytesOf(static_cast<std::uint32_t>(request))).append(payload);
  m_stream.send(message);
  return true;
}

std::optional<std::size_t> SwayConnection::takeMessage(std::string_view received) {
  if (!received.starts_with(magic.substr(0, received.size()))) return std::nullopt;
  if (received.size() < headerSize) return 0;
  const std::size_t length = numberAt(received, magic.size());
  if (length > longestMessage) return std::nullopt;
  if (received.size() - headerSize < length) return 0;
  take(numberAt(received, magic.size() + sizeof(std::uint32_t)), received.substr(headerSize, length));
  return headerSize + length;
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

bool SwayConnection::settle(std::chrono::milliseconds limit) {
  const auto end = std::chrono::steady_clock::now() + limit;
  for (;;) {
    m_stream.pump();
    const bool isSettled = isOpen() && m_pending.empty();
    if (isSettled || !isOpen() || std::chrono::steady_clock::now() >= end) return isSettled;
    MessageStream::wait({&m_stream}, end);
  }
}

} // namespace vantle
