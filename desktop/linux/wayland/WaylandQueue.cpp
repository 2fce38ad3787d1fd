// SPDX-License-Identifier: MIT
#include "desktop/linux/wayland/WaylandQueue.h"

#include <algorithm>
#include <poll.h>

namespace vantle {

namespace {

using Steady = std::chrono::steady_clock;

void setTrue(void* flag, wl_callback* /*callback*/, std::uint32_t /*serial*/) {
  *static_cast<bool*>(flag) = true;
}
constexpr wl_callback_listener onDone{.done = setTrue};

} // namespace

WaylandQueue::WaylandQueue(wl_display* display)
    : m_display(display), m_queue(wl_display_create_queue(display)) {}

WaylandQueue::~WaylandQueue() { wl_event_queue_destroy(m_queue); }

// An object belongs to the queue of the one that makes it, so a stand-in for the connection makes these: in
// between, an event could go to the wrong queue.
WaylandQueue::StandIn WaylandQueue::standIn() const {
  StandIn display(static_cast<wl_display*>(wl_proxy_create_wrapper(m_display)), wl_proxy_wrapper_destroy);
  wl_proxy_set_queue(toProxy(display.get()), m_queue);
  return display;
}

wl_registry* WaylandQueue::makeRegistry() const { return wl_display_get_registry(standIn().get()); }

bool WaylandQueue::waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds limit) const {
  const Steady::time_point end = Steady::now() + limit;
  for (;;) {
    if (wl_display_dispatch_queue_pending(m_display, m_queue) < 0) return false;
    if (condition()) return true;
    if (!readUntil(end)) return false;
  }
}

bool WaylandQueue::settle(std::chrono::milliseconds limit) const {
  bool isDone = false;
  wl_callback* const callback = wl_display_sync(standIn().get());
  wl_callback_add_listener(callback, &onDone, &isDone);
  const bool isInTime = waitUntil([&] { return isDone; }, limit);
  wl_callback_destroy(callback);
  return isInTime;
}

// Other threads may read the same connection: each says that it is about to, and one does it for all.
bool WaylandQueue::readUntil(Steady::time_point end) const {
  if (wl_display_prepare_read_queue(m_display, m_queue) != 0) return true; // there is something already
  wl_display_flush(m_display);
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Steady::now()).count();
  pollfd readable{wl_display_get_fd(m_display), POLLIN, 0};
  if (::poll(&readable, 1, static_cast<int>(std::max<std::int64_t>(left, 0))) > 0) {
    return wl_display_read_events(m_display) == 0;
  }
  wl_display_cancel_read(m_display);
  return Steady::now() < end; // a signal may have ended the wait
}

// What has arrived for it here meanwhile would be seen by nobody.
void WaylandQueue::release(wl_proxy* proxy) const {
  wl_proxy_set_queue(proxy, nullptr);
  wl_display_dispatch_queue_pending(m_display, m_queue);
}

} // namespace vantle
