// SPDX-License-Identifier: MIT
#pragma once

#include <QRect>

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
  // Puts the window at that place, in device-independent coordinates of all screens, as far as windows may
  // choose their place at all.
  virtual void place(QWindow& window, QScreen& screen, const QRect& place) = 0;
  // From now on a press of a button anywhere else comes to the window too, where the desktop would not tell
  // of it by moving the keyboard focus.
  virtual void followClicks(QWindow& window) = 0;
  virtual void leaveClicks(QWindow& window) = 0;
};

} // namespace vantle
