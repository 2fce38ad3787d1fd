// SPDX-License-Identifier: MIT
#include "platform/linux/bus/BusConnection.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <utility>

namespace vantle {

namespace {

using SteadyClock = std::chrono::steady_clock;
using std::chrono::microseconds;
using std::chrono::milliseconds;

// How long one turn on the loop goes on with what keeps arriving.
constexpr milliseconds longestTurn{10};

// What one wait of the system call has room for, and more; whoever has longer waits again.
constexpr milliseconds longestPoll{60'000};

template <class Function> void destroyFunction(void* data) { delete static_cast<Function*>(data); }

int deliverReply(sd_bus_message* message, void* data, sd_bus_error*) {
  const bool failed = sd_bus_message_is_method_error(message, nullptr) > 0;
  (*static_cast<BusConnection::Reply*>(data))(failed ? nullptr : message);
  return 1;
}

int deliverSignal(sd_bus_message* message, void* data, sd_bus_error*) {
  (*static_cast<BusConnection::Signal*>(data))(message);
  return 0; // others may listen to the same signal
}

int deliverCall(sd_bus_message* message, void* data, sd_bus_error*) {
  const char* const error = (*static_cast<BusConnection::Call*>(data))(message);
  const int status =
      error == nullptr ? sd_bus_reply_method_return(message, "")
                       : sd_bus_reply_method_errorf(message, error, "%s", sd_bus_message_get_member(message));
  return status < 0 ? status : 1;
}

bool hungUp(sd_bus* bus) {
  pollfd descriptor{sd_bus_get_fd(bus), 0, 0};
  return descriptor.fd < 0 ||
         (::poll(&descriptor, 1, 0) > 0 && (descriptor.revents & (POLLHUP | POLLERR)) != 0);
}

// The answer to the request for a match. Without it the signal just never comes.
int ignoreReply(sd_bus_message*, void*, sd_bus_error*) { return 1; }

} // namespace

BusConnection::BusConnection(EventLoop& loop, Kind kind) : m_loop(loop), m_kind(kind) {}
BusConnection::BusConnection(EventLoop& loop, std::string address)
    : m_loop(loop), m_address(std::move(address)) {}
BusConnection::~BusConnection() = default;

// Without the limit of a turn: what is left to deliver grows no more, and who asks is to get the next bus.
void BusConnection::noticeEnd() {
  if (m_bus && hungUp(m_bus.get())) process(SteadyClock::time_point::max());
}

sd_bus* BusConnection::open() {
  noticeEnd(); // whoever asks before the loop ran again gets the new one
  if (m_bus) return m_bus.get();
  sd_bus* bus = nullptr;
  int status = 0;
  if (m_address.empty()) {
    status = m_kind == Kind::session ? sd_bus_open_user(&bus) : sd_bus_open_system(&bus);
    if (status < 0) return nullptr;
    m_bus.reset(bus);
  } else {
    if (sd_bus_new(&bus) < 0) return nullptr;
    m_bus.reset(bus);
    status = sd_bus_set_address(bus, m_address.c_str());
    if (status >= 0) status = sd_bus_set_bus_client(bus, 1);
    if (status >= 0) status = sd_bus_start(bus);
  }
  if (status < 0) {
    m_bus.reset();
    return nullptr;
  }
  watch();
  return bus;
}

BusMessage BusConnection::methodCall(const BusMethod& method) {
  sd_bus* bus = open();
  sd_bus_message* message = nullptr;
  if (!bus || sd_bus_message_new_method_call(bus, &message, method.destination, method.path, method.interface,
                                             method.member) < 0) {
    return nullptr;
  }
  return BusMessage(message);
}

bool BusConnection::callAsync(BusMessage message, milliseconds timeout, Reply reply) {
  if (!message || !m_bus) return false;
  auto handler = std::make_unique<Reply>(std::move(reply));
  sd_bus_slot* slot = nullptr;
  const auto micros = static_cast<std::uint64_t>(microseconds(timeout).count());
  if (sd_bus_call_async(m_bus.get(), &slot, message.get(), deliverReply, handler.get(), micros) < 0)
    return false;
  sd_bus_slot_set_destroy_callback(slot, destroyFunction<Reply>);
  sd_bus_slot_set_floating(slot, 1);
  sd_bus_slot_unref(slot);
  static_cast<void>(handler.release()); // the slot owns it now
  watch();
  return true;
}

bool BusConnection::send(BusMessage message) {
  if (!message || !m_bus) return false;
  sd_bus_message_set_expect_reply(message.get(), 0);
  const bool queued = sd_bus_send(m_bus.get(), message.get(), nullptr) >= 0;
  watch();
  return queued;
}

BusSlot BusConnection::match(const std::string& rule, Signal signal) {
  sd_bus* bus = open();
  if (!bus) return nullptr;
  auto handler = std::make_unique<Signal>(std::move(signal));
  sd_bus_slot* slot = nullptr;
  if (sd_bus_add_match_async(bus, &slot, rule.c_str(), deliverSignal, ignoreReply, handler.get()) < 0) {
    return nullptr;
  }
  sd_bus_slot_set_destroy_callback(slot, destroyFunction<Signal>);
  static_cast<void>(handler.release());
  watch();
  return BusSlot(slot);
}

BusSlot BusConnection::answer(const std::string& path, Call call) {
  sd_bus* bus = open();
  if (!bus) return nullptr;
  auto handler = std::make_unique<Call>(std::move(call));
  sd_bus_slot* slot = nullptr;
  if (sd_bus_add_object(bus, &slot, path.c_str(), deliverCall, handler.get()) < 0) return nullptr;
  sd_bus_slot_set_destroy_callback(slot, destroyFunction<Call>);
  static_cast<void>(handler.release());
  return BusSlot(slot);
}

// The library would wait for the handshake.
std::string BusConnection::uniqueName() const {
  const char* name = nullptr;
  const bool isKnown =
      m_bus && sd_bus_is_ready(m_bus.get()) > 0 && sd_bus_get_unique_name(m_bus.get(), &name) >= 0;
  return isKnown ? std::string(name) : std::string();
}

bool BusConnection::runUntil(const std::function<bool()>& condition, BusDeadline deadline) {
  while (m_bus && !condition()) {
    const int processed = sd_bus_process(m_bus.get(), nullptr);
    if (processed == -EBUSY) return false; // nothing can arrive in here
    if (processed < 0) {
      drop();
    } else if (SteadyClock::now() >= deadline) {
      break;
    } else if (processed == 0) {
      wait(deadline);
    }
  }
  if (m_bus) watch();
  return m_bus != nullptr && condition();
}

std::optional<pollfd> BusConnection::watched() const {
  if (!m_bus) return std::nullopt;
  const int descriptor = sd_bus_get_fd(m_bus.get());
  const int events = sd_bus_get_events(m_bus.get());
  if (descriptor < 0 || events < 0) return std::nullopt;
  return pollfd{descriptor, static_cast<short>(events), 0};
}

void BusConnection::wait(BusDeadline deadline) const {
  std::optional<pollfd> descriptor = watched();
  if (!descriptor) return; // closed: the next step delivers what is left
  std::uint64_t due = 0;   // a point on the monotonic clock, which is the steady one here
  if (sd_bus_get_timeout(m_bus.get(), &due) > 0 && due != UINT64_MAX) {
    deadline = std::min(deadline, BusDeadline(microseconds(due)));
  }
  const auto left = std::chrono::ceil<milliseconds>(deadline - SteadyClock::now());
  const milliseconds wait = std::clamp<milliseconds>(left, milliseconds(0), longestPoll);
  ::poll(&*descriptor, 1, static_cast<int>(wait.count()));
}

bool BusConnection::process() { return process(SteadyClock::now() + longestTurn); }

bool BusConnection::process(BusDeadline end) {
  int processed = 1;
  while (processed > 0 && m_bus) {
    if (SteadyClock::now() >= end) break; // the rest is there in the next turn, which `watch` brings about
    processed = sd_bus_process(m_bus.get(), nullptr);
  }
  if (processed == -EBUSY) return false; // whoever delivers that reply or signal goes on
  if (!m_bus) return true;
  if (processed < 0) {
    drop();
  } else {
    watch();
  }
  return true;
}

void BusConnection::watch() {
  const std::optional<pollfd> watched = this->watched();
  if (!watched) {
    // Closed already: the next step on the loop delivers what is left and finds out.
    m_readable.reset();
    m_writable.reset();
    m_watched = -1;
    m_timer = m_loop.after(milliseconds(0), [this] { process(); });
    return;
  }
  const auto serve = [this] { process(); };
  if (watched->fd != m_watched) {
    m_watched = watched->fd;
    m_writable.reset();
    m_readable = m_loop.watch(m_watched, EventLoop::Readiness::readable, serve);
  }
  const bool wantsToWrite = (watched->events & POLLOUT) != 0;
  if (!wantsToWrite) m_writable.reset();
  if (wantsToWrite && !m_writable) {
    m_writable = m_loop.watch(m_watched, EventLoop::Readiness::writable, serve);
  }

  m_timer.reset();
  std::uint64_t due = 0; // a point on the monotonic clock, which is the steady one here
  if (sd_bus_get_timeout(m_bus.get(), &due) <= 0 || due == UINT64_MAX) return;
  const auto wait = microseconds(due) - SteadyClock::now().time_since_epoch();
  m_timer = m_loop.after(std::max(std::chrono::ceil<milliseconds>(wait), milliseconds(0)), serve);
}

void BusConnection::drop() {
  m_readable.reset();
  m_writable.reset();
  m_timer.reset();
  m_watched = -1;
  m_bus.reset();
  m_lost.notify();
}

} // namespace vantle
