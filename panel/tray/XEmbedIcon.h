// SPDX-License-Identifier: MIT
#pragma once

#include "panel/tray/TrayIcon.h"

#include <QRect>
#include <QSocketNotifier>
#include <QTimer>
#include <functional>
#include <memory>
#include <xcb/xcb.h>

namespace vantle {

// The icon as a small window that a tray of the older kind takes into itself (the freedesktop system tray
// protocol). Has its own connection to the X server; follows trays that start, end and are replaced.
class XEmbedIcon {
 public:
  // `onActivate` gets the icon's rectangle in native screen coordinates.
  explicit XEmbedIcon(std::function<void(QRect)> onActivate);
  ~XEmbedIcon();
  XEmbedIcon(const XEmbedIcon&) = delete;
  XEmbedIcon& operator=(const XEmbedIcon&) = delete;

  void show(const TrayIcon& icon);

 private:
  struct Atoms {
    xcb_atom_t selection = XCB_NONE; // owned by the tray
    xcb_atom_t opcode = XCB_NONE;
    xcb_atom_t visual = XCB_NONE;
    xcb_atom_t info = XCB_NONE;
    xcb_atom_t manager = XCB_NONE;
  };

  void connectToServer();
  xcb_atom_t atom(const std::string& name);
  void dock();
  void makeWindow(xcb_visualid_t visual);
  xcb_visualid_t trayVisual();
  void sayLeastSize();
  void removeWindow();
  void handleEvents();
  void handle(const xcb_generic_event_t& event);
  void act();
  void clicked();
  void paint();
  QImage background(); // what the tray shows behind the window

  std::function<void(QRect)> m_onActivate;
  xcb_connection_t* m_connection = nullptr;
  const xcb_screen_t* m_screen = nullptr;
  std::unique_ptr<QSocketNotifier> m_notifier;
  QTimer m_nextTurn; // runs while more has come than one turn takes
  QTimer
      m_dockPause; // runs after each docking: anybody can say that there is a new tray, as often as they like
  bool m_isDockWanted = false;
  bool m_isPaintWanted = false;
  bool m_isClicked = false;
  Atoms m_atoms;
  xcb_window_t m_tray = XCB_NONE;
  xcb_window_t m_window = XCB_NONE;
  xcb_colormap_t m_colormap = XCB_NONE;
  xcb_gcontext_t m_context = XCB_NONE;
  std::uint8_t m_depth = 0;
  QSize m_size;
  TrayIcon m_icon;
};

} // namespace vantle
