// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/ProcessTable.h"
#include "platform/linux/kernel/Kernel.h"

namespace vantle {

// What the kernel says of a process in the words of the process table. The start time is left to whoever
// knows when the machine was started.
ProcessRecord recordOf(const ProcessStat& stat);

} // namespace vantle
