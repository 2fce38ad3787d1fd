// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/kernel/Kernel.h"

#include <string>
#include <utility>
#include <vector>

namespace vantle {

// Which levers of the band this machine has for this user, and why not: subjects, and a sentence about each.
// `hasUnits`: whether a user manager with power over processor time answers.
std::vector<std::pair<std::string, std::string>> leverFacts(const Kernel& kernel, bool hasUnits);

} // namespace vantle
