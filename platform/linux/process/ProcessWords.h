// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"

#include <string>
#include <string_view>
#include <vector>

namespace vantle {

// What lies in a process's own memory, or below its own root. It is the process that says when that can be
// read, so all of it is asked for on another thread, with a limit (BoundedWait).

// At most 256 KB; empty for what cannot be read.
std::string readProcessWords(const std::string& path);

// The variables that it was started with, each "NAME=value".
std::vector<std::string> readEnvironment(Pid pid);

// Empty for a variable that is not there.
std::string valueOf(const std::vector<std::string>& environment, std::string_view variable);

} // namespace vantle
