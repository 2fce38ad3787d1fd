// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/kernel/Kernel.h"
#include "platform/linux/windows/ToldWindows.h"
#include "platform/linux/windows/sway/SwayConnection.h"

#include <optional>
#include <utility>

namespace vantle {

// The windows of a sway desktop, native ones and X clients alike, as its IPC socket tells of them: which
// window has the focus comes as an event with everything in it, which windows there are is read as a whole.
// No connection to the X server is needed: sway knows the processes of X clients from it.
class SwayWindows final : public ToldWindows {
 public:
  // On a socket that is connected and does not block. The kernel outlives it.
  SwayWindows(EventLoop& loop, const Kernel& kernel, Descriptor socket);

  // Whether it may be sway at all: it has said its version, or nothing yet.
  bool isPlausible() const { return m_connection.isOpen(); }

  bool requestClose(const WindowFacts& window) override;
  bool canBringToFront(const WindowFacts& /*window*/) const override { return true; }
  bool requestFront(const WindowFacts& window) override;
  bool settle(std::chrono::milliseconds limit) override { return m_connection.settle(limit); }

 private:
  bool askForReading() override;
  void takeVersion(const std::optional<Json>& reply);
  void takeSubscription(const std::optional<Json>& reply);
  void handle(SwayConnection::Event event, const Json& body);
  void handleWindow(const Json& event);
  void handleWorkspace(const Json& event);
  void takeTree(const std::optional<Json>& reply);

  SwayConnection m_connection;
};

} // namespace vantle
