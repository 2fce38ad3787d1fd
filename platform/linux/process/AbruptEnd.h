// SPDX-License-Identifier: MIT
#pragma once

#include "base/Registration.h"

#include <functional>
#include <memory>

namespace vantle {

// See Platform::onAbruptEnd. One at a time.
[[nodiscard]] std::unique_ptr<Registration> beforeAbruptEnd(std::function<void()> lastDeed);

} // namespace vantle
