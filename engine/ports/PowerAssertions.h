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

  // Sends what the next `assertions` has to know, so that others can be waited for while it is answered.
  // Need not be called.
  virtual void ask() {}

  // Every assertion held now, several a process where it holds several. Empty on any failure; bounded in
  // time (200 ms, from `ask` on).
  virtual std::vector<Assertion> assertions() = 0;
};

} // namespace vantle
