// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/ProcessIdentity.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vantle {

// One app in the background band.
struct ManagedApp {
  std::string name; // "pid N" for an app without a name
  std::optional<std::string> bundleID;
  ProcessIdentity root;
  std::vector<ProcessIdentity>
      members;                       // what this program itself put into the band, in that order; never empty
  std::uint64_t changedAtMicros = 0; // when, on the axis of process start times
};

} // namespace vantle
