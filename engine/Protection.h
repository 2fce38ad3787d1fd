// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"
#include "engine/AppSettings.h"
#include "engine/ports/AudioActivity.h"
#include "engine/ports/PowerAssertions.h"
#include "engine/ports/RunningApplication.h"
#include "engine/ports/SystemApps.h"

#include <optional>
#include <set>
#include <string>

namespace vantle {

// Whether the person has put this identifier on the protected list.
bool isProtectedByPerson(const AppSettings& settings, const std::optional<std::string>& bundleID);

// Who must not be slowed because of what it is doing right now: a snapshot that protects only the decisions
// made with it.
struct ShieldedPIDs {
  std::set<Pid> heard;      // with running audio output
  std::set<Pid> keepsAwake; // keeping the system or the display awake on purpose
};

// The processes that are heard now; empty where the system cannot tell.
std::set<Pid> audioPIDs(AudioActivity& audio);

// The processes that keep the system or the display awake on purpose.
std::set<Pid> assertionPIDs(PowerAssertions& power);

ShieldedPIDs shieldedPIDs(AudioActivity& audio, PowerAssertions& power);

} // namespace vantle
