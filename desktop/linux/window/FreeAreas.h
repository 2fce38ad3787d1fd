// SPDX-License-Identifier: MIT
#pragma once

#include "desktop/linux/window/Struts.h"
#include "platform/linux/x11/X11Connection.h"

#include <QObject>
#include <memory>
#include <vector>

class QScreen;

namespace vantle {

// Tells the toolkit's screens what room the bars of an X server leave on each of them, while that changes.
// The toolkit itself knows only the window manager's one work area, which it believes where there is one
// screen; with more of them it takes each to be free. Has its own connection, and never waits for the server.
class FreeAreas : public QObject {
  Q_OBJECT

 public:
  explicit FreeAreas(EventLoop& loop);

  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  struct Atoms {
    xcb_atom_t partial = XCB_NONE;
    xcb_atom_t plain = XCB_NONE;
    xcb_atom_t workArea = XCB_NONE;
    xcb_atom_t clients = XCB_NONE;
  };

  void start();
  void handle(const xcb_generic_event_t& event);
  void act();
  void lookForBars(bool look);
  void askBelow(xcb_window_t window, int depth);
  void askFor(xcb_window_t window, xcb_atom_t property);
  void answered();
  void follow(QScreen* screen) const;
  void tellScreens();

  Atoms m_atoms;
  bool m_isLookedFor = false;    // the bars: nobody tells which there are
  bool m_isReadingWanted = true; // done once, however often it is wanted meanwhile
  std::size_t m_unanswered = 0;  // questions of the reading that is under way
  std::vector<Strut> m_found;    // by it
  std::vector<Strut> m_struts;
  QSize m_desktop;
  std::unique_ptr<X11Connection> m_server; // null where the toolkit has no X server
};

} // namespace vantle
