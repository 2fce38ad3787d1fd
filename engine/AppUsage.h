// SPDX-License-Identifier: MIT
#pragma once

#include "engine/AppTrees.h"
#include "engine/ManagedApp.h"
#include "engine/ports/ProcessTable.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace vantle {

// One row of the memory list.
struct AppUsage {
  Pid id = 0; // of the app's main process
  std::string name;
  std::uint64_t bytes = 0; // of all that belongs to the app
  bool operator==(const AppUsage&) const = default;
};

// In bytes; 0 when the process cannot be read.
std::uint64_t footprint(const ProcessTable& processes, Pid pid);

// The sum over all that belongs to the app. One look serves a whole refresh.
std::uint64_t appFootprint(const ProcessTable& processes, const AppTrees& trees, Pid app);

// One row an app, largest first; equal ones keep the order of the map.
std::vector<AppUsage> usageList(const ProcessTable& processes, const AppTrees& trees,
                                const std::map<Pid, ManagedApp>& managed);

// An amount of memory as it is shown: steps of 1024; bytes and KB without decimals, MB with at most one, GB
// and above with at most two, trailing zeros dropped, thousands grouped by a comma; "Zero KB" for none. Stops
// above the signed 64-bit range.
std::string byteText(std::uint64_t count);

} // namespace vantle
