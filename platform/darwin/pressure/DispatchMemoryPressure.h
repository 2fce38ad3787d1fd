// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/MemoryPressureEvents.h"

namespace vantle {

// The kernel's memory pressure. Events come on the main queue, which the main thread's loop serves.
class DispatchMemoryPressure final : public MemoryPressureEvents {
 public:
  std::unique_ptr<Source> watch(std::function<void(bool isCritical)> handler) override;
  std::optional<int> level() const override;
};

} // namespace vantle
