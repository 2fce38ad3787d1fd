// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/PrivateSession.h"

#include <string>

namespace vantle::desktop {

// The notification daemon of a private desktop (dunst), and what it shows.
class NotificationDaemon {
 public:
  explicit NotificationDaemon(PrivateSession& session); // ready for notices

  Program& program() { return *m_program; }
  void start(); // again, after it was killed

  int displayed(); // how many notices are on the screen now
  // All it has shown or replaced since it started, one after another, as "APP|TITLE|BODY" lines.
  std::string shown() const;

 private:
  PrivateSession& m_session;
  Program* m_program = nullptr;
};

} // namespace vantle::desktop
