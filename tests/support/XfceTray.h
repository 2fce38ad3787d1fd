// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/VirtualDesktop.h"

namespace vantle::desktop {

// A real tray: a bar at the top of the desktop, as wide as the screen, with nothing in it but the tray's
// icons from its left end on.
class XfceTray {
 public:
  static constexpr int iconX = 14; // of the first icon's middle
  static constexpr int iconY = 15;

  // Writes its settings and starts what it needs; the tray itself is not there yet.
  explicit XfceTray(VirtualDesktop& desktop);

  Program& start(); // ready for icons

 private:
  VirtualDesktop& m_desktop;
};

} // namespace vantle::desktop
