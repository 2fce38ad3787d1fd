// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/LoginItem.h"

namespace vantle {

// This app among the login items. What waits for the person's approval is off, and so is what the system has
// never heard of. Without a bundle there is nothing to open.
class ServiceLoginItem final : public LoginItem {
 public:
  bool isEnabled() const override;
  bool registerItem() override;
  bool unregisterItem() override;
};

} // namespace vantle
