// SPDX-License-Identifier: MIT
#pragma once

#include <functional>

namespace vantle {

// While one lives, a library that calls exit() behind the program's back ends it in order instead: the last
// deed runs, and the status is 0. The toolkit does so when the X server goes away.
class ExitGuard {
 public:
  explicit ExitGuard(std::function<void()> lastDeed);
  ~ExitGuard();
  ExitGuard(const ExitGuard&) = delete;
  ExitGuard& operator=(const ExitGuard&) = delete;
};

} // namespace vantle
