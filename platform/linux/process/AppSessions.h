// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/ProcessView.h"

#include <set>

namespace vantle {

// True when at least half of the apps, named by their main processes, stand in a session that holds processes
// of no app as well, as apps do that a plain window manager has started itself: such a session is never
// weighed. False without apps.
bool mostShareTheirSession(const ProcessView& view, const std::set<Pid>& apps);

} // namespace vantle
