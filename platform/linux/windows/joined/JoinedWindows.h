// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/windows/DesktopWindows.h"
#include "platform/shared/EventLoop.h"

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <set>

namespace vantle {

// Two sources as one, for a Wayland desktop that does not know whose its X windows are: its own windows from
// the desktop, X windows from the X server. While the desktop says that an X window is in front, the X server
// says which; when it does not in time, what the desktop says is believed as far as it can be true.
//
// A connection starts XWayland where that is started on demand, and keeps it running. So there is one only
// while the desktop shows an X window. XWayland's end is not the desktop's: the next X window has it tried
// again.
class JoinedWindows final : public DesktopWindows {
 public:
  using Connect = std::function<std::unique_ptr<DesktopWindows>()>;

  // What the desktop says, and how the X server is asked.
  JoinedWindows(EventLoop& loop, std::unique_ptr<DesktopWindows> desktop, Connect connect);

  void start(Handlers handlers) override;
  const std::map<WindowId, WindowFacts>& known() const override { return m_known; }
  WindowId active() const override;
  bool requestClose(const WindowFacts& window) override;
  bool canBringToFront(const WindowFacts& window) const override;
  bool requestFront(const WindowFacts& window) override;
  void forget(Pid pid) override;
  bool settle(std::chrono::milliseconds limit) override;

 private:
  void update();
  void followXWindows();
  void connect();
  void disconnect();
  void waitForXServer();
  bool isFrontX11() const;
  bool isFrontToldByXServer() const;
  void merge();
  // Who tells of that window, null when nobody does any more; and the window as that one knows it.
  DesktopWindows* sourceOf(const WindowFacts& window) const;
  static WindowFacts asTold(const WindowFacts& window);
  void lose();

  EventLoop& m_loop;
  Connect m_connect;
  Handlers m_handlers;
  std::map<WindowId, WindowFacts> m_known;
  std::set<WindowId> m_xWindows; // that the desktop shows
  bool m_isXServerLost = false;  // since which no new one was shown
  WindowId m_awaited = 0;    // the desktop's number of the X window that the X server has to say is in front
  bool m_isBelieved = false; // it did not in time
  std::unique_ptr<EventLoop::Handle> m_patience;
  std::unique_ptr<EventLoop::Handle> m_parting; // set when the connection is to be let go
  std::unique_ptr<DesktopWindows> m_desktop;
  std::unique_ptr<DesktopWindows> m_xServer; // null while there is no X window
};

} // namespace vantle
