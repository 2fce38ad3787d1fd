// SPDX-License-Identifier: MIT
#pragma once

#include "status/Status.h"

#include <string>

namespace vantle {

// For people to read, in lines that each end.
std::string statusText(const Status& status);
std::string whyText(const AppStatus& app);
// The person's own time of day, "21:40"; of seconds since the Unix epoch.
std::string clockText(std::uint64_t seconds);

} // namespace vantle
