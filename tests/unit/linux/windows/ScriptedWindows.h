// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/windows/DesktopWindows.h"
#include "platform/linux/windows/WindowProcesses.h"

#include <functional>
#include <utility>
#include <vector>

namespace vantle {

// A desktop whose windows are what a test says. What has changed is told by `tell`, as often as wanted.
class ScriptedWindows final : public DesktopWindows {
 public:
  void start(Handlers handlers) override { m_handlers = std::move(handlers); }
  const std::map<WindowId, WindowFacts>& known() const override { return windows; }
  WindowId active() const override { return front; }
  bool requestClose(const WindowFacts& window) override {
    if (window.canBeClosed) askedToClose.push_back(window.id);
    return window.canBeClosed;
  }
  bool canBringToFront(const WindowFacts& window) const override { return window.canBeClosed; }
  bool requestFront(const WindowFacts& window) override {
    askedToFront.push_back(window.id);
    return true;
  }
  void forget(Pid pid) override {
    std::erase_if(windows, [pid](const auto& entry) { return entry.second.pid == pid; });
    forgotten.push_back(pid);
    tell();
  }
  bool settle(std::chrono::milliseconds limit) override {
    settledFor = limit;
    whenSettling();
    return !isLost;
  }

  WindowFacts& open(WindowId id, Pid pid) {
    WindowFacts facts{.id = id, .pid = pid, .process = m_processes.open(pid, false), .canBeClosed = true};
    return windows[id] = std::move(facts);
  }
  void tell() { m_handlers.changed(); }
  void show(WindowId id) {
    front = id;
    tell();
  }
  void startOver() {
    windows.clear();
    front = 0;
    m_handlers.startedOver();
  }
  void lose() {
    isLost = true;
    windows.clear();
    front = 0;
    m_handlers.lost();
  }

  std::map<WindowId, WindowFacts> windows;
  WindowId front = 0;
  bool isLost = false;
  std::function<void()> whenSettling = [] {};
  std::chrono::milliseconds settledFor{};
  std::vector<WindowId> askedToClose;
  std::vector<WindowId> askedToFront;
  std::vector<Pid> forgotten;

 private:
  Handlers m_handlers;
  WindowProcesses m_processes;
};

} // namespace vantle
