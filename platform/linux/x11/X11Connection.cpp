// SPDX-License-Identifier: MIT
#include "platform/linux/x11/X11Connection.h"

#include <algorithm>
#include <cstdlib>
#include <mutex>
#include <poll.h>
#include <sys/eventfd.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <utility>
#include <xcb/xcbext.h>

namespace vantle {

using SteadyClock = std::chrono::steady_clock;

namespace {

// How long one turn goes on with what keeps arriving, and how much of one kind before the other gets its
// share: replies are not held up by events that never end, nor the other way round.
constexpr std::chrono::milliseconds longestTurn{10};
constexpr int mostOfAKind = 128;

} // namespace

// The handshake is the one thing that the library can only wait for, so a thread does. When the connection is
// given up before the server has answered, the thread closes what it got.
struct X11Connection::Attempt {
  Descriptor done{::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};
  std::mutex mutex;
  xcb_connection_t* connection = nullptr;
  int screenNumber = 0;
  bool isAbandoned = false;

  void run(const std::string& display) {
    int number = 0;
    xcb_connection_t* opened = xcb_connect(display.empty() ? nullptr : display.c_str(), &number);
    const std::lock_guard lock(mutex);
    if (isAbandoned) {
      xcb_disconnect(opened);
      return;
    }
    connection = opened;
    screenNumber = number;
    ::eventfd_write(done.get(), 1);
  }
};

X11Connection::X11Connection(EventLoop& loop, const std::string& display, Handlers handlers)
    : m_loop(loop), m_handlers(std::move(handlers)), m_attempt(std::make_shared<Attempt>()) {
  m_watch = m_loop.watch(m_attempt->done.get(), EventLoop::Readiness::readable, [this] { adopt(); });
  try {
    std::thread([attempt = m_attempt, display] { attempt->run(display); }).detach();
  } catch (const std::system_error&) {
    m_attempt->run(display); // no thread to be had: better to wait than to see nothing
  }
}

X11Connection::~X11Connection() {
  m_watch.reset();
  m_nextTurn.reset();
  if (m_connection != nullptr) xcb_disconnect(m_connection);
  if (!m_attempt) return;
  const std::lock_guard lock(m_attempt->mutex);
  m_attempt->isAbandoned = true;
  if (m_attempt->connection != nullptr) xcb_disconnect(m_attempt->connection);
}

void X11Connection::adopt() {
  {
    const std::lock_guard lock(m_attempt->mutex);
    m_connection = std::exchange(m_attempt->connection, nullptr);
    m_screenNumber = m_attempt->screenNumber;
  }
  m_watch.reset();
  m_attempt.reset();
  if (xcb_connection_has_error(m_connection) != 0) return lose();
  xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(m_connection));
  for (int at = 0; at < m_screenNumber && screens.rem > 1; ++at) xcb_screen_next(&screens);
  m_screen = screens.data;
  m_watch =
      m_loop.watch(xcb_get_file_descriptor(m_connection), EventLoop::Readiness::readable, [this] { pump(); });
  m_handlers.ready();
  flush();
}

void X11Connection::expect(unsigned int sequence, OnReply callback) {
  m_pending.push_back({sequence, std::move(callback)});
}

void X11Connection::learn(std::string_view name, OnAtom callback) {
  const auto cookie = xcb_intern_atom(m_connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
  expect(cookie.sequence, [callback = std::move(callback)](const void* reply) {
    callback(reply != nullptr ? static_cast<const xcb_intern_atom_reply_t*>(reply)->atom : XCB_NONE);
  });
}

void X11Connection::learn(std::string_view name, xcb_atom_t& atom) {
  learn(name, [&atom](xcb_atom_t number) { atom = number; });
}

void X11Connection::flush() {
  if (m_connection != nullptr) xcb_flush(m_connection);
}

bool X11Connection::pumpOnce() {
  if (m_connection == nullptr) return false;
  bool hasProgress = false;
  for (int count = 0; count < mostOfAKind; ++count) {
    xcb_generic_event_t* const event = xcb_poll_for_event(m_connection);
    if (event == nullptr) break;
    const std::unique_ptr<xcb_generic_event_t, decltype(&std::free)> owned(event, &std::free);
    constexpr std::uint8_t errorType = 0;
    if (event->response_type != errorType) m_handlers.event(*event);
    hasProgress = true;
  }
  for (int count = 0; count < mostOfAKind; ++count) {
    if (m_pending.empty() || xcb_connection_has_error(m_connection) != 0) break;
    void* reply = nullptr;
    xcb_generic_error_t* error = nullptr;
    if (xcb_poll_for_reply(m_connection, m_pending.front().sequence, &reply, &error) == 0) break;
    const std::unique_ptr<void, decltype(&std::free)> ownedReply(reply, &std::free);
    std::free(error);
    const OnReply callback = std::move(m_pending.front().callback);
    m_pending.pop_front();
    callback(reply);
    hasProgress = true;
  }
  if (hasProgress) m_handlers.turnEnded();
  // Sending reads as well when the server is slow, and what it read would wake nobody up: hence another
  // round.
  if (hasProgress) flush();
  return hasProgress;
}

void X11Connection::pump() {
  m_nextTurn.reset();
  const SteadyClock::time_point end = SteadyClock::now() + longestTurn;
  while (pumpOnce()) {
    if (SteadyClock::now() < end) continue;
    // The library may have read it all already: the socket alone would wake nobody up.
    m_nextTurn = m_loop.after(std::chrono::milliseconds(0), [this] { pump(); });
    break;
  }
  if (m_connection != nullptr && xcb_connection_has_error(m_connection) != 0) lose();
}

void X11Connection::lose() {
  if (std::exchange(m_isLost, true)) return;
  m_watch.reset();
  m_nextTurn.reset();
  xcb_disconnect(m_connection);
  m_connection = nullptr;
  m_pending.clear();
  m_handlers.lost();
}

int X11Connection::waitedFor() const {
  return m_connection == nullptr ? m_attempt->done.get() : xcb_get_file_descriptor(m_connection);
}

bool X11Connection::settle(std::chrono::milliseconds limit) {
  const SteadyClock::time_point end = SteadyClock::now() + limit;
  while (!m_isLost) {
    if (m_connection == nullptr) {
      eventfd_t count = 0;
      if (::eventfd_read(m_attempt->done.get(), &count) == 0) adopt();
    }
    pump();
    if (m_connection != nullptr && m_pending.empty()) return true;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - SteadyClock::now());
    if (left.count() <= 0 || m_isLost) break;
    pollfd waiting{waitedFor(), POLLIN, 0};
    ::poll(&waiting, 1, static_cast<int>(left.count()));
  }
  return false;
}

} // namespace vantle
