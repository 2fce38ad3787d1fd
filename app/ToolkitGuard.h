// SPDX-License-Identifier: MIT
#pragma once

#include <functional>

namespace vantle {

// While one lives, a toolkit that gives up ends the program with the status of the last deed. By itself it
// would end it with abort(): it does so when no desktop lets it in.
class ToolkitGuard {
 public:
  explicit ToolkitGuard(std::function<int()> lastDeed);
  ~ToolkitGuard();
  ToolkitGuard(const ToolkitGuard&) = delete;
  ToolkitGuard& operator=(const ToolkitGuard&) = delete;
};

} // namespace vantle
