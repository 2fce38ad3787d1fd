// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/MemoryPressureEvents.h"

namespace vantle {

struct MemoryPressure {
  enum class Level { normal, warning, critical };
  MemoryPressure() = delete;
};

// How short memory is now; normal when the kernel does not say.
MemoryPressure::Level currentPressureLevel(const MemoryPressureEvents& events);

} // namespace vantle
