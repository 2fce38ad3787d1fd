// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/Notifications.h"

namespace vantle {

// The notification centre. It throws, and so ends the program, when that was not started from a bundle; there
// are no notices then.
class CocoaNotifications final : public Notifications {
 public:
  void requestAuthorization() override;
  void post(const std::string& identifier, const std::string& title, const std::string& body) override;
};

} // namespace vantle
