// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/PrivateSession.h"

#include <string>

namespace vantle::desktop {

// A private labwc, drawn in software without a screen, with XWayland for X clients: a wlroots compositor that
// has no way of its own to tell of its windows. Windows are named by their app ids, those of X clients by
// their class.
class LabwcDesktop : public PrivateSession {
 public:
  static bool isInstalled(); // with the tool for it

  LabwcDesktop();
  ~LabwcDesktop(); // asks it to go, so that XWayland's display number is free again

  Program& compositor() { return *m_compositor; }

  void waitForWindow(const std::string& applicationId);
  void focus(const std::string& applicationId); // without waiting for it

 private:
  Program* m_compositor = nullptr;
};

} // namespace vantle::desktop
