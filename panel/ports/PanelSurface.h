// SPDX-License-Identifier: MIT
#pragma once

#include <QRect>
#include <QSize>

class QScreen;
class QWindow;

namespace vantle {

// What only the desktop can do for the panel's window.
class PanelSurface {
 public:
  virtual ~PanelSurface() = default;

  // Whether windows may be translucent just now: where nobody composes the screen, what lies under one is
  // black. Answers within a fifth of a second.
  virtual bool isTranslucent() = 0;
  // How large a window may be there without lying over a bar. Answers within a tenth of a second.
  virtual QSize roomOn(QScreen& screen) = 0;
  // Where the window is or is to be shown: at that place beside the anchor, both in device-independent
  // coordinates of all screens. A desktop on which windows cannot choose their place puts one of that size
  // at the edge of the screen that the anchor is nearest to.
  virtual void place(QWindow& window, QScreen& screen, const QRect& anchor, const QRect& place) = 0;
  // With the keyboard, over all others. From then on a press of a button anywhere else comes to the window
  // too, as one outside of it, where the desktop would not tell of it by moving the keyboard focus; so it
  // does when the desktop takes the window away. A desktop that does not answer leaves it hidden. Nothing
  // happens to a window that is shown already, but that it is in front again.
  virtual void show(QWindow& window) = 0;
  virtual void hide(QWindow& window) = 0;
};

} // namespace vantle
