// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/kernel/Kernel.h"
#include "platform/linux/windows/DesktopWindows.h"
#include "platform/linux/windows/WindowProcesses.h"
#include "platform/linux/windows/sway/SwayConnection.h"
#include "platform/linux/windows/sway/SwayTree.h"

#include <cstdint>
#include <map>
#include <memory>
#include <utility>

namespace vantle {

// The windows of a sway desktop, native ones and X clients alike, as its IPC socket tells of them: which
// window has the focus comes as an event with everything in it, which windows there are is read as a whole,
// one reading at a time. Nothing is asked while nothing changes. No connection to the X server is needed:
// sway knows the processes of X clients from it.
class SwayWindows final : public DesktopWindows {
 public:
  // On a socket that is connected and does not block. The kernel outlives it.
  SwayWindows(EventLoop& loop, const Kernel& kernel, Descriptor socket);

  // Whether it may be sway at all: it has said its version, or nothing yet.
  bool isPlausible() const { return m_connection.isOpen(); }

  void start(Handlers handlers) override { m_handlers = std::move(handlers); }
  const std::map<WindowId, WindowFacts>& known() const override { return m_known; }
  WindowId active() const override { return m_active; }
  bool requestClose(const WindowFacts& window) override;
  void forget(Pid pid) override;
  bool settle(std::chrono::milliseconds limit) override { return m_connection.settle(limit); }

 private:
  // A window whose process sway has to name once more: in an answer to a question that was asked after the
  // descriptor was there.
  struct Draft {
    WindowOwner owner;
    std::uint64_t reading = 0; // the first that counts
  };

  void takeVersion(const std::optional<Json>& reply);
  void takeSubscription(const std::optional<Json>& reply);
  void handle(SwayConnection::Event event, const Json& body);
  void handleWindow(const Json& event);
  void handleWorkspace(const Json& event);
  void setActive(WindowId window);
  void remove(WindowId window);
  void takeTree(const std::optional<Json>& reply);
  void consider(const SwayWindow& told, std::uint64_t reading);
  void meet(const SwayWindow& told);
  void keep(const SwayWindow& told, Pid pid, std::shared_ptr<Descriptor> process);
  void endTurn();
  void lose();

  const Kernel& m_kernel;
  Handlers m_handlers;
  std::map<WindowId, WindowFacts> m_known;
  std::map<WindowId, Draft> m_drafts;
  // What was opened by a process that has ended, and is still there: that number is somebody else's by now.
  std::map<WindowId, std::int64_t> m_orphans;
  WindowId m_active = 0;
  WindowProcesses m_processes;
  std::uint64_t m_reading = 0; // the last that was asked for
  bool m_isReading = false;    // and not answered yet
  bool m_isStale = true;       // something has happened that only a reading tells
  bool m_isChanged = false;    // and not told yet
  SwayConnection m_connection;
};

} // namespace vantle
