// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/bus/BusConnection.h"
#include "platform/linux/windows/fed/FeedCaller.h"

#include <functional>
#include <memory>
#include <string>

namespace vantle {

// The extension in GNOME's shell that calls the feed (integrations/gnome-shell). The shell puts it in place
// at the log-in, and it waits for the feed's name: there is nothing to be done for that, and nothing that
// fails.
class GnomeExtension final : public FeedCaller {
 public:
  // Where it stands on the shell's connection, and what it is asked there: `Sync()`, `Close(s window)` and
  // `Front(s window)`.
  static constexpr const char* path = "/com/halvo/vantle/shell";
  static constexpr const char* interface = "com.halvo.vantle.DesktopShell";

  // The bus outlives it.
  explicit GnomeExtension(BusConnection& sessionBus) : m_bus(sessionBus) {}

  void meet(const std::string& shell, std::function<void()> failed) override;
  void begin() override {}
  void ask(std::function<void(bool isAnswered)> answered) override;
  bool requestClose(const std::string& window) override { return order("Close", window); }
  bool requestFront(const std::string& window) override { return order("Front", window); }

 private:
  bool order(const char* method, const std::string& window);

  BusConnection& m_bus;
  std::string m_shell;                   // empty before there was one
  std::shared_ptr<const bool> m_meeting; // as long as the shell is the same
};

} // namespace vantle
