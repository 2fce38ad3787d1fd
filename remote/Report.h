// SPDX-License-Identifier: MIT
#pragma once

#include "status/Status.h"

#include <string>
#include <utility>
#include <vector>

namespace vantle {

// What is needed to report a problem, in lines of "Subject: sentence". Without names, apps are counted by
// what was decided about them, and nothing says which they are.
std::string reportText(const Status& status, const std::vector<std::pair<std::string, std::string>>& facts,
                       bool withNames);

} // namespace vantle
