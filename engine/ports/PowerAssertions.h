// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"

#include <string>
#include <vector>

namespace vantle {

// Who asks the machine to stay awake.
class PowerAssertions {
 public:
  struct Assertion {
    Pid pid = 0;
    std::string type; // "PreventUserIdleSystemSleep", "PreventSystemSleep", "PreventUserIdleDisplaySleep", …
  };

  virtual ~PowerAssertions() = default;

  // Every assertion held now, several a process where it holds several. Empty on any failure; bounded in
  // time (200 ms).
  virtual std::vector<Assertion> assertions() = 0;
};

} // namespace vantle
