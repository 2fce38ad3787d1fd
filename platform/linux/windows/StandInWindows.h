// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/windows/DesktopWindows.h"
#include "platform/shared/EventLoop.h"

#include <chrono>
#include <functional>
#include <map>
#include <memory>

namespace vantle {

// A source that may begin to tell at any time, and end again, and one that stands in for it as long as it
// does not. The desktop is over when neither can tell anything any more.
class StandInWindows final : public DesktopWindows {
 public:
  struct Awaited {
    std::unique_ptr<DesktopWindows> source;
    std::function<bool()> isTelling; // of all windows that there are; asked after each of its changes
    // For which it is waited for at the start before the other is looked at.
    std::chrono::milliseconds patience{0};
  };
  using MakeStandIn = std::function<std::unique_ptr<DesktopWindows>()>;
  using Changed = std::function<void(bool isStandIn)>; // which of them it is from now on

  StandInWindows(EventLoop& loop, Awaited awaited, MakeStandIn makeStandIn, Changed changed);

  void start(Handlers handlers) override;
  const std::map<WindowId, WindowFacts>& known() const override { return current().known(); }
  WindowId active() const override { return current().active(); }
  bool requestClose(const WindowFacts& window) override { return current().requestClose(window); }
  bool canBringToFront(const WindowFacts& window) const override { return current().canBringToFront(window); }
  bool requestFront(const WindowFacts& window) override { return current().requestFront(window); }
  void forget(Pid pid) override;
  bool settle(std::chrono::milliseconds limit) override;

 private:
  DesktopWindows& current() const { return m_standIn ? *m_standIn : *m_awaited.source; }
  void follow();
  void standIn();
  void loseAwaited();
  void loseStandIn();

  EventLoop& m_loop;
  Awaited m_awaited;
  MakeStandIn m_makeStandIn;
  Changed m_changed;
  Handlers m_handlers;
  bool m_isAwaitedLost = false;
  bool m_isStandInLost = false;
  std::unique_ptr<EventLoop::Handle> m_choosing; // set until it is known who tells at first
  std::unique_ptr<DesktopWindows> m_standIn;     // null while the other tells
};

} // namespace vantle
