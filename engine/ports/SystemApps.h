// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <set>
#include <string>

namespace vantle {

// Apps of the system itself: never slowed down, never Boost apps, never quit, on no list to choose from.
const std::set<std::string>& systemBundleIDs();
bool isSystemApp(const std::optional<std::string>& bundleID);

} // namespace vantle
