// SPDX-License-Identifier: MIT
#pragma once

#include "platform/posix/Descriptor.h"
#include "platform/shared/EventLoop.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <xcb/xcb.h>

namespace vantle {

// A connection to the X server that never waits for it: replies come to callbacks on the main loop, in the
// order of the requests. A server that hangs costs nothing but the answers; one that never stops sending gets
// its turns like everybody else on the loop, and what it sends meanwhile waits in the socket.
class X11Connection {
 public:
  struct Handlers {
    std::function<void()> ready; // the server has answered; requests may be made from now on
    std::function<void(const xcb_generic_event_t&)> event;
    std::function<void()> turnEnded; // after some events and replies; requests may be made here
    std::function<void()> lost;      // for good; nothing is called after it
  };
  // Null when the request failed; otherwise the reply of the request's own type.
  using OnReply = std::function<void(const void* reply)>;
  using OnAtom = std::function<void(xcb_atom_t)>; // XCB_NONE when the server has no memory for it

  // Connects in the background. An empty name is the one in DISPLAY.
  X11Connection(EventLoop& loop, const std::string& display, Handlers handlers);
  ~X11Connection();
  X11Connection(const X11Connection&) = delete;
  X11Connection& operator=(const X11Connection&) = delete;

  bool isOpen() const { return m_connection != nullptr; }
  xcb_connection_t* raw() const { return m_connection; } // null until ready and once lost
  const xcb_screen_t& screen() const { return *m_screen; }
  int screenNumber() const { return m_screenNumber; }

  // Hands in the sequence number of a request that has just been made.
  void expect(unsigned int sequence, OnReply callback);
  // Asks for the number of that name. The second one is for a number that stands in a class until its end.
  void learn(std::string_view name, OnAtom callback);
  void learn(std::string_view name, xcb_atom_t& atom);
  void flush();

  // Handles what arrives until every reply is there or the time is up. Only for the start, when there is
  // nobody yet who could be called at a bad moment.
  bool settle(std::chrono::milliseconds limit);

 private:
  struct Attempt;
  struct Pending {
    unsigned int sequence;
    OnReply callback;
  };

  void adopt();
  void pump();
  bool pumpOnce();
  void lose();
  int waitedFor() const;

  EventLoop& m_loop;
  Handlers m_handlers;
  std::shared_ptr<Attempt> m_attempt;
  std::unique_ptr<EventLoop::Handle> m_watch;
  std::unique_ptr<EventLoop::Handle> m_nextTurn; // set while there is more than one turn takes
  xcb_connection_t* m_connection = nullptr;
  const xcb_screen_t* m_screen = nullptr;
  int m_screenNumber = 0;
  std::deque<Pending> m_pending;
  bool m_isLost = false;
};

} // namespace vantle
