// SPDX-License-Identifier: MIT
#include "platform/darwin/process/DarwinHost.h"

#include "platform/darwin/process/SystemValue.h"

#include <algorithm>
#include <unistd.h>

namespace vantle {

Pid DarwinHost::selfPID() const { return ::getpid(); }

int DarwinHost::activeProcessorCount() const { return std::max(systemNumber("hw.activecpu").value_or(1), 1); }

} // namespace vantle
