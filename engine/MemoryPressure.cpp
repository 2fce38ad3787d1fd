// SPDX-License-Identifier: MIT
#include "engine/MemoryPressure.h"

namespace vantle {

MemoryPressure::Level currentPressureLevel(const MemoryPressureEvents& events) {
  // The numbers of the kernel's memory-status interface, which every platform maps its own scale to.
  constexpr int kernelWarning = 2;
  constexpr int kernelCritical = 4;
  switch (events.level().value_or(1)) {
  case kernelCritical:
    return MemoryPressure::Level::critical;
  case kernelWarning:
    return MemoryPressure::Level::warning;
  default:
    return MemoryPressure::Level::normal;
  }
}

} // namespace vantle
