// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/kernel/Kernel.h"

namespace vantle {

// Where the band runs, so that the app in front always finds a processor free: a weight alone leaves it a
// tail of one scheduler slice (about 3 ms), a free processor does not.
struct EfficiencySet {
  ProcessorSet online;
  ProcessorSet chosen; // empty when the machine has nothing to spare; never all of `online`

  // From the kernel's device tree. On hybrid processors the set is the efficiency cores; elsewhere
  // the last quarter of the cores, rounded up, with all threads of a core together.
  static EfficiencySet read(const Kernel& kernel);
};

} // namespace vantle
