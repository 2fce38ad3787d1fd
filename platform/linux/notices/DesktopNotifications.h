// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/Notifications.h"
#include "platform/linux/bus/BusConnection.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace vantle {

// Notices through the desktop's notification daemon. Nothing is ever waited for: a notice is on its way when
// `post` returns, and is silently lost where there is no bus or no daemon.
class DesktopNotifications final : public Notifications {
 public:
  // The session bus, which others may use as well.
  explicit DesktopNotifications(BusConnection& sessionBus);
  DesktopNotifications(const DesktopNotifications&) = delete;
  DesktopNotifications& operator=(const DesktopNotifications&) = delete;

  // A Linux desktop asks nobody: the person turns notices off in its settings.
  void requestAuthorization() override {}
  void post(const std::string& identifier, const std::string& title, const std::string& body) override;

 private:
  struct Content {
    std::string title;
    std::string body;
  };
  struct Notice {
    std::uint32_t id = 0;        // the daemon's own, for replacing it; 0 for none
    bool isOnTheWay = false;     // its id is not known yet
    std::optional<Content> next; // to replace it as soon as it is
  };

  void send(const std::string& identifier);
  void takeId(const std::string& identifier, sd_bus_message* reply);
  void askForMarkup();
  void takeCapabilities(sd_bus_message* reply);
  void watchDaemon();
  void forgetDaemon();
  // Makes a reply's handler do nothing once its daemon, or this object, is gone.
  BusConnection::Reply whileDaemonLives(BusConnection::Reply reply) const;

  BusConnection& m_bus;
  std::unique_ptr<Registration> m_busLost;
  BusSlot m_daemonChanges;
  std::map<std::string, Notice> m_notices;
  // Whether the daemon reads the body as markup, so that names must be escaped. Absent: not known yet.
  std::optional<bool> m_readsMarkup;
  bool m_isAskingForMarkup = false;
  std::shared_ptr<const bool> m_daemon = std::make_shared<const bool>(); // replaced with each daemon
};

// The text with the five characters escaped that have a meaning in markup.
std::string escapedMarkup(const std::string& text);

} // namespace vantle
