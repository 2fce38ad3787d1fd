// SPDX-License-Identifier: MIT
#pragma once

#include "platform/darwin/workspace/CocoaWorkspace.h"
#include "tests/simulation/darwin/DarwinRun.h"
#include "tests/simulation/darwin/SimulatedCocoa.h"

#include <optional>

namespace vantle {

// All that macOS's room has of a machine and that leaves nothing on a disk; the rest is the desktop's.
struct CocoaParts {
  DarwinParts system;
  CocoaWorkspace workspace;

  Machine on(SimulatedMachine& desktop) {
    const Machine rest = system.on(desktop);
    return {rest.host,     rest.processes,     rest.band,     workspace,  rest.audio, rest.power,
            rest.pressure, rest.notifications, rest.defaults, rest.files, rest.clock, rest.launcher,
            rest.text,     rest.loginItem,     rest.catalog,  rest.hooks, rest.games};
  }
};

} // namespace vantle
