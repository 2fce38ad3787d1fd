// SPDX-License-Identifier: MIT
#pragma once

#include "base/Registration.h"

#include <functional>
#include <memory>
#include <string>

namespace vantle {

// The desktop's own dialog in which a person picks one app, wherever on the disk it is.
class AppChooser {
 public:
  virtual ~AppChooser() = default;

  // Opens it, after the call; what is returned closes it. Tells the path of the app on the main loop, and
  // nothing when none was picked.
  [[nodiscard]] virtual std::unique_ptr<Registration>
  choose(std::function<void(const std::string& path)> picked) = 0;
};

} // namespace vantle
