// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <wayland-client.h>

namespace vantle {

// Events of a Wayland connection that only this waits for. Objects belong to it when they are made by one
// that does; what the connection's own queue delivers is not disturbed.
class WaylandQueue {
 public:
  explicit WaylandQueue(wl_display* display); // which outlives it, as it outlives what belongs to it
  ~WaylandQueue();
  WaylandQueue(const WaylandQueue&) = delete;
  WaylandQueue& operator=(const WaylandQueue&) = delete;

  // The connection's objects, announced here.
  wl_registry* makeRegistry() const;
  // Handles events until that is so. False when it is not in time, or the connection is over.
  bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds limit) const;
  // Until the compositor has done all that it was asked for so far.
  bool settle(std::chrono::milliseconds limit) const;
  // From now on the connection's own queue delivers the object's events.
  template <class Object> void handOver(Object* object) const { release(toProxy(object)); }

 private:
  // Every object of a connection is a proxy, which the library's own interface says with a cast.
  template <class Object> static wl_proxy* toProxy(Object* object) {
    return reinterpret_cast<wl_proxy*>(object); // NOLINT
  }
  using StandIn = std::unique_ptr<wl_display, void (*)(void*)>;

  StandIn standIn() const;
  bool readUntil(std::chrono::steady_clock::time_point end) const;
  void release(wl_proxy* proxy) const;

  wl_display* m_display;
  wl_event_queue* m_queue;
};

} // namespace vantle
