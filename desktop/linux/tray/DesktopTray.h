// SPDX-License-Identifier: MIT
#pragma once

#include "desktop/linux/SessionBus.h"
#include "look/ports/ColorScheme.h"
#include "panel/ports/Tray.h"
#include "platform/shared/EventLoop.h"

namespace vantle {

// The desktop's status notifier service, or where there is none the older embedding of windows.
class DesktopTray final : public Tray {
 public:
  // All of them outlive the tray.
  DesktopTray(EventLoop& loop, SessionBus& bus, ColorScheme& scheme)
      : m_loop(loop), m_bus(bus), m_scheme(scheme) {}

  std::unique_ptr<TrayIcon> add(TrayActions actions) override;

 private:
  EventLoop& m_loop;
  SessionBus& m_bus;
  ColorScheme& m_scheme;
};

} // namespace vantle
