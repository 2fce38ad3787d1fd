// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/process/ProcessFiles.h"

#include <set>
#include <span>

namespace vantle {

// True when at least half of the apps, named by their main processes, stand in a session that holds processes
// of others as well, as apps do that a plain window manager has started itself. False without apps.
bool mostShareTheirSession(std::span<const ProcessStat> processes, const std::set<Pid>& apps);

} // namespace vantle
