// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/x11/X11Connection.h"

#include <QImage>
#include <QRect>
#include <QString>

namespace vantle {

// A tip beside an icon in a tray that has none of its own: a small window with a line of text, drawn here, as
// the views cost megabytes. Never waits for the X server.
class IconTip {
 public:
  explicit IconTip(X11Connection& server) : m_server(server) {} // which outlives it
  IconTip(const IconTip&) = delete;
  IconTip& operator=(const IconTip&) = delete;

  // Beside the icon, whose place is in native screen coordinates.
  void show(const QRect& icon, const QString& text);
  void change(const QString& text); // of one that is shown
  void draw();                      // again, when its window has been covered
  void hide();

 private:
  X11Connection& m_server;
  xcb_window_t m_window = XCB_NONE;
  QRect m_icon;
  QString m_text;
  QImage m_picture;
};

} // namespace vantle
