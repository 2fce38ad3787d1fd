// SPDX-License-Identifier: MIT
#pragma once

#include "desktop/linux/tray/IconTip.h"
#include "panel/ports/Tray.h"
#include "platform/linux/x11/X11Connection.h"

#include <QImage>
#include <QRect>
#include <QTimer>
#include <functional>
#include <string>

namespace vantle {

// The icon as a small window that a tray of the older kind takes into itself (the freedesktop system tray
// protocol). Has its own connection to the X server, and never waits for it; follows trays that start, end
// and are replaced.
class XEmbedIcon {
 public:
  // What the three buttons ask for. The places are the icon's, in native screen coordinates.
  struct Handlers {
    std::function<void(QRect)> clicked;
    std::function<void()> middleClicked;
    std::function<void(QRect)> menuWanted;
  };

  XEmbedIcon(EventLoop& loop, Handlers handlers);
  XEmbedIcon(const XEmbedIcon&) = delete;
  XEmbedIcon& operator=(const XEmbedIcon&) = delete;

  void show(const TrayFace& face, bool onDark);

 private:
  struct Atoms {
    xcb_atom_t selection = XCB_NONE; // owned by the tray
    xcb_atom_t opcode = XCB_NONE;
    xcb_atom_t visual = XCB_NONE;
    xcb_atom_t info = XCB_NONE;
    xcb_atom_t manager = XCB_NONE;
  };

  void start();
  void lose();
  void dock();
  void askTray(xcb_window_t tray);
  void moveIn(const xcb_get_property_reply_t* visual);
  void makeWindow(xcb_visualid_t visual);
  xcb_visualid_t visualOf(const xcb_get_property_reply_t* reply) const;
  void sayLeastSize();
  void removeWindow();
  void handle(const xcb_generic_event_t& event);
  void act();
  void tellPlace(const std::function<void(QRect)>& told);
  void rest(const xcb_enter_notify_event_t& event);
  void leave();
  void paint();
  unsigned int askBehind();
  QImage behind(const xcb_get_image_reply_t* reply) const; // what the tray shows behind the window
  void draw(QImage image);

  Handlers m_handlers;
  QTimer
      m_dockPause; // runs after each docking: anybody can say that there is a new tray, as often as they like
  // What is wanted is done once, however often it is wanted, and one after the other.
  bool m_isDockWanted = false;
  bool m_isDocking = false;
  bool m_isPaintWanted = false;
  bool m_isPainting = false;
  bool m_isClicked = false;
  bool m_isMiddleClicked = false;
  bool m_isMenuWanted = false;
  Atoms m_atoms;
  xcb_window_t m_tray = XCB_NONE;
  xcb_window_t m_window = XCB_NONE;
  xcb_colormap_t m_colormap = XCB_NONE;
  xcb_gcontext_t m_context = XCB_NONE;
  std::uint8_t m_depth = 0;
  QSize m_size;
  TrayFace m_face;
  bool m_isOnDark = false;
  QTimer m_rest; // runs from the pointer's coming until it has rested long enough for the tip
  QRect m_place; // where the icon was when the pointer came
  X11Connection m_server;
  IconTip m_tip{m_server};
};

} // namespace vantle
