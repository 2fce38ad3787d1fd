// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/LoginItem.h"

namespace vantle {

class SimulatedLoginItem final : public LoginItem {
 public:
  bool enabled = false;

  bool isEnabled() const override { return enabled; }
  bool registerItem() override { return enabled = true; }
  bool unregisterItem() override { return !(enabled = false); }
};

} // namespace vantle
