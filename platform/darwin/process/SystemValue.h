// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>

namespace vantle {

// What the kernel has under a name (sysctl(3)); absent when there is nothing of that kind.
std::optional<int> systemNumber(const char* name);
std::optional<std::string> systemText(const char* name);

} // namespace vantle
