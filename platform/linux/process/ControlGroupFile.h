// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string_view>

namespace vantle {

// The path of a process in the version 2 hierarchy, from the text of /proc/PID/cgroup; absent when there is
// none. With `cpuOnly` the version 1 cpu hierarchy instead.
std::optional<std::string_view> controlGroupPath(std::string_view cgroupFile, bool cpuOnly = false);

// Whether a list as "cgroup.controllers" holds the word.
bool hasWord(std::string_view list, std::string_view word);

} // namespace vantle
