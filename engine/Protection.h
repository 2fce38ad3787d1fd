// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/AudioActivity.h"
#include "engine/ports/Pid.h"
#include "engine/ports/PowerAssertions.h"

#include <set>
#include <string>

namespace vantle {

// Apps of the system itself: never slowed down, never Boost apps, never quit.
const std::set<std::string>& systemBundleIDs();

// The processes that are heard now; empty where the system cannot tell.
std::set<Pid> audioPIDs(AudioActivity& audio);

// The processes that keep the system or the display awake on purpose.
std::set<Pid> assertionPIDs(PowerAssertions& power);

// Both: a snapshot that protects only the decisions made with it.
std::set<Pid> shieldedPIDs(AudioActivity& audio, PowerAssertions& power);

} // namespace vantle
