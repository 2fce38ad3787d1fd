// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/Notifications.h"

namespace vantle {

// The notification centre. Without a bundle that the system knows there is none, and there are no notices.
class CocoaNotifications final : public Notifications {
 public:
  void requestAuthorization() override;
  void post(const std::string& identifier, const std::string& title, const std::string& body) override;
};

} // namespace vantle
