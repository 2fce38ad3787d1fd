// SPDX-License-Identifier: MIT
#pragma once

#include "base/Json.h"
#include "platform/linux/kernel/Kernel.h"
#include "platform/linux/sockets/LineConnection.h"
#include "platform/linux/windows/ToldWindows.h"

#include <optional>
#include <string>
#include <string_view>

namespace vantle {

// The windows of a niri desktop, as its socket tells of them in JSON, a message a line: everything comes as
// events, and which windows there are can be asked for. Windows of X clients are those of the bridge that
// shows them (xwayland-satellite); whose they are is the X server's to tell.
class NiriWindows final : public ToldWindows {
 public:
  // `events` is connected to the socket of that path, which the process of that number has opened, and does
  // not block. The kernel outlives it.
  NiriWindows(EventLoop& loop, const Kernel& kernel, Descriptor events, std::string path, Pid pid);

  // Whether it may be niri at all: it has agreed to tell of events, or said nothing yet.
  bool isPlausible() const { return m_connection.isOpen(); }

  bool requestClose(const WindowFacts& window) override;
  bool canBringToFront(const WindowFacts& /*window*/) const override { return true; }
  bool requestFront(const WindowFacts& window) override;
  bool settle(std::chrono::milliseconds limit) override { return m_connection.settle(limit); }

 private:
  bool askForReading() override;
  void handle(std::string_view line);
  void handleEvent(const std::string& name, const Json& event);
  void takeAll(const Json::Array& windows);
  void takeWindow(const Json& window);
  std::optional<ToldWindow> windowOf(const Json& window) const;
  std::optional<std::vector<ToldWindow>> windowsOf(const std::optional<std::string>& answer) const;

  const Kernel& m_kernel;
  bool m_isAgreed = false; // that it tells of events
  LineConnection m_connection;
};

} // namespace vantle
