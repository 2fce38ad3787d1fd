// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace vantle {

class Notifications {
 public:
  virtual ~Notifications() = default;

  // Asks once for permission to show alerts, without sound or badge. The answer is not awaited.
  virtual void requestAuthorization() = 0;

  // Shows a notice now; one with the same identifier replaces the earlier one. Never waits, never fails.
  virtual void post(const std::string& identifier, const std::string& title, const std::string& body) = 0;
};

} // namespace vantle
