// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/windows/DesktopWindows.h"
#include "platform/posix/Descriptor.h"
#include "platform/shared/EventLoop.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

struct wl_array;
struct wl_callback;
struct wl_display;
struct wl_registry;
struct wl_seat;
struct zwlr_foreign_toplevel_handle_v1;
struct zwlr_foreign_toplevel_manager_v1;

namespace vantle {

// A window as a compositor with zwlr_foreign_toplevel_manager_v1 tells of it.
struct Toplevel {
  std::string applicationId; // of X windows the class
  bool isActive = false;
  bool operator==(const Toplevel&) const = default;
};

// A Wayland connection of its own that never waits for the compositor, and asks it for nothing but its
// windows. One that never stops sending gets its turns like everybody else on the loop, and what it sends
// meanwhile waits in the socket. One that does not speak the protocol is let go.
class ToplevelConnection {
 public:
  struct Handlers {
    std::function<void()> turnEnded; // after some events
    std::function<void()> lost;      // for good; nothing is called after it
  };

  // On a socket that is connected and does not block.
  ToplevelConnection(EventLoop& loop, Descriptor socket, Handlers handlers);
  ~ToplevelConnection();
  ToplevelConnection(const ToplevelConnection&) = delete;
  ToplevelConnection& operator=(const ToplevelConnection&) = delete;

  bool isOpen() const { return m_isOpen; }
  bool isListed() const { return m_isListed; } // all windows that were there at first have been told
  bool offersToplevels() const { return m_manager != nullptr; }
  int descriptor() const;

  const std::map<WindowId, Toplevel>& toplevels() const { return m_toplevels; }
  WindowId active() const { return m_active; } // 0 for none
  // False when the compositor cannot be asked now: it has not taken what was asked before.
  bool requestClose(WindowId window);
  bool canBringToFront() const { return m_seat != nullptr; }
  bool requestFront(WindowId window); // false as above

  // Handles what has arrived; true when that was all.
  bool pump();
  // Until something arrives, or the compositor takes what was not sent yet, at most so long.
  void waitForNews(std::chrono::milliseconds limit) const;

 private:
  // One window as the library knows it.
  struct Handle {
    ToplevelConnection* connection = nullptr;
    WindowId id = 0;
    zwlr_foreign_toplevel_handle_v1* proxy = nullptr;
    Toplevel told = {}; // which counts once the compositor says that it is all
    bool isClosed = false;
  };
  struct Listeners;

  void takeInterface(wl_registry* registry, std::uint32_t name, const char* interface, std::uint32_t version);
  void takeRound();
  void add(zwlr_foreign_toplevel_handle_v1* proxy);
  void commit(const Handle& handle);
  void remove(Handle& handle);
  zwlr_foreign_toplevel_handle_v1* proxyToAsk(WindowId window);
  void awaitRound();
  bool flush();
  void destroyClosed();
  void lose();

  EventLoop& m_loop;
  Handlers m_handlers;
  wl_display* m_display = nullptr;
  wl_registry* m_registry = nullptr;
  wl_callback* m_round = nullptr; // null when none is awaited
  zwlr_foreign_toplevel_manager_v1* m_manager = nullptr;
  wl_seat* m_seat = nullptr; // whose keyboard a window gets that comes to the front
  int m_turnsUnread = 0;
  bool m_isOpen = false;
  bool m_isFinished = false;   // there will be no more of its windows
  bool m_isRegistered = false; // all interfaces have been told
  bool m_isListed = false;
  std::map<WindowId, std::unique_ptr<Handle>> m_handles;
  std::vector<std::unique_ptr<Handle>> m_closed; // whose end the compositor has not been told of yet
  std::map<WindowId, Toplevel> m_toplevels;
  WindowId m_lastId = 0;
  WindowId m_active = 0;
  std::unique_ptr<EventLoop::Handle> m_readable;
  std::unique_ptr<EventLoop::Handle> m_writable; // set while there is something unsent
};

} // namespace vantle
