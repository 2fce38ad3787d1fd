// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/PowerAssertions.h"
#include "platform/posix/process/BoundedWait.h"

namespace vantle {

// Who keeps the machine or its screen awake, as the power management has it.
class IokitPowerAssertions final : public PowerAssertions {
 public:
  std::vector<Assertion> assertions() override;

 private:
  BoundedWait m_wait{1}; // while one question hangs, there is no second
};

} // namespace vantle
