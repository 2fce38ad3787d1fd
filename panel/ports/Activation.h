// SPDX-License-Identifier: MIT
#pragma once

#include "base/Registration.h"

#include <functional>
#include <memory>

namespace vantle {

// How others on the desktop reach the copy that runs: an app menu, or somebody who starts Vantle again.
class Activation {
 public:
  // Called on the main loop, never within the call of whoever asks.
  struct Actions {
    std::function<void()> show; // twice a second at most, however often it is asked for
    std::function<void()> settings;
    std::function<void()> quit;
  };

  virtual ~Activation() = default;

  // As long as the registration lives.
  [[nodiscard]] virtual std::unique_ptr<Registration> answer(Actions actions) = 0;
};

} // namespace vantle
