// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/RunningApplication.h"

#include <functional>
#include <string>
#include <vector>

namespace vantle {

// Which apps start a Boost while they are in front.
struct Profile {
  std::string name;
  std::function<bool(const RunningApplication&)> isTrigger;
  std::vector<std::string> defaultProtected; // bundle identifiers
};

} // namespace vantle
