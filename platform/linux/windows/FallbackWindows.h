// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/windows/DesktopWindows.h"
#include "platform/shared/EventLoop.h"

#include <chrono>
#include <functional>
#include <map>
#include <memory>

namespace vantle {

// A source that may turn out not to be one, and then the next in its place: when the first is lost before it
// has told anything. Afterwards its end is the desktop's.
class FallbackWindows final : public DesktopWindows {
 public:
  using Next = std::function<std::unique_ptr<DesktopWindows>()>;

  FallbackWindows(EventLoop& loop, std::unique_ptr<DesktopWindows> first, Next next);

  void start(Handlers handlers) override;
  const std::map<WindowId, WindowFacts>& known() const override { return m_source->known(); }
  WindowId active() const override { return m_source->active(); }
  bool requestClose(const WindowFacts& window) override { return m_source->requestClose(window); }
  bool canBringToFront(const WindowFacts& window) const override { return m_source->canBringToFront(window); }
  bool requestFront(const WindowFacts& window) override { return m_source->requestFront(window); }
  void forget(Pid pid) override { m_source->forget(pid); }
  bool settle(std::chrono::milliseconds limit) override;

 private:
  void replace();

  EventLoop& m_loop;
  Next m_next;
  Handlers m_handlers;
  bool m_hasTold = false;
  std::unique_ptr<EventLoop::Handle> m_replacing; // set once the first is lost
  std::unique_ptr<DesktopWindows> m_source;
};

} // namespace vantle
