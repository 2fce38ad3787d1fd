// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>

namespace vantle {

// The identifier of the bundle that this program was started from; absent for a bare executable, which some
// of the system's services end rather than answer.
std::optional<std::string> ownBundleIdentifier();

} // namespace vantle
