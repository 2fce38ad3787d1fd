// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/kernel/Kernel.h"
#include "platform/linux/sockets/LineConnection.h"
#include "platform/linux/windows/ToldWindows.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantle {

// The windows of a Hyprland desktop, as its two sockets tell of them: which one has the focus, and that one
// was opened or closed, comes as an event ("EVENT>>DATA" in a line); what they are is asked for, as JSON. A
// window's number is its address. Of X clients it knows that they are such; their processes are the X
// server's to tell.
class HyprlandWindows final : public ToldWindows {
 public:
  // Both in the folder that Hyprland makes for each of its runs.
  static constexpr const char* eventSocket = ".socket2.sock";
  static constexpr const char* questionSocket = ".socket.sock";

  // `events` is connected and does not block; `questions` is the path of the other one, which the same
  // process has opened. The kernel outlives it.
  HyprlandWindows(EventLoop& loop, const Kernel& kernel, Descriptor events, std::string questions, Pid pid);

  // Whether it may be Hyprland at all: it has said its version, or nothing yet.
  bool isPlausible() const { return m_connection.isOpen(); }

  bool requestClose(const WindowFacts& window) override;
  bool canBringToFront(const WindowFacts& /*window*/) const override { return true; }
  bool requestFront(const WindowFacts& window) override;
  bool settle(std::chrono::milliseconds limit) override { return m_connection.settle(limit); }

 private:
  bool askForReading() override;
  void handle(std::string_view line);
  void takeVersion(const std::optional<std::string>& answer);
  void takeFirstActive(const std::optional<std::string>& answer);

  bool m_isFrontTold = false; // by an event
  LineConnection m_connection;
};

// What it answers to "j/clients"; absent when nobody understands it.
std::optional<std::vector<ToldWindow>> hyprlandWindowsOf(const std::string& answer);

} // namespace vantle
