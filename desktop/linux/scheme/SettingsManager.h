// SPDX-License-Identifier: MIT
#pragma once

#include "base/Observers.h"
#include "desktop/linux/scheme/PublishedSettings.h"
#include "platform/linux/x11/X11Connection.h"

#include <functional>
#include <memory>

namespace vantle {

// Follows what the desktop's settings program publishes on the X server (XSETTINGS), as those of Xfce, MATE,
// LXDE and small window managers do: through starts, ends and replacements of it. Nothing is published where
// there is no X server or no such program. Has its own connection, and never waits for the server.
class SettingsManager {
 public:
  explicit SettingsManager(EventLoop& loop);

  const PublishedSettings& published() const { return m_published; }
  [[nodiscard]] std::unique_ptr<Registration> observe(std::function<void()> changed) {
    return m_observers.add(std::move(changed));
  }

 private:
  struct Atoms {
    xcb_atom_t selection = XCB_NONE; // owned by the settings program
    xcb_atom_t settings = XCB_NONE;
    xcb_atom_t manager = XCB_NONE;
  };

  void start();
  void handle(const xcb_generic_event_t& event);
  void act();
  void read(xcb_window_t owner);
  void take(PublishedSettings published);

  Atoms m_atoms;
  xcb_window_t m_owner = XCB_NONE;
  bool m_isReadingWanted = true; // done once, however often it is wanted meanwhile
  bool m_isReading = false;
  PublishedSettings m_published;
  Observers<> m_observers;
  std::unique_ptr<X11Connection> m_server; // null without an X server
};

} // namespace vantle
