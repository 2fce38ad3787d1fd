// SPDX-License-Identifier: MIT
#pragma once

#include "command/CommandLine.h"
#include "command/ports/RunningCopy.h"

#include <string>

namespace vantle {

// Carries out a request; what it says goes to the standard streams. The exit status.
int runCommand(const Request& request, RunningCopy& copy, const std::string& ownVersion);

} // namespace vantle
