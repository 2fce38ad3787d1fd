// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Platform.h"

#include <functional>
#include <memory>

namespace vantle {

// While one lives, a library that calls exit() or _exit() behind the program's back ends it in order instead:
// the last deed runs, and the status is 0. The toolkit does so when the X server or the Wayland compositor
// goes away.
class ExitGuard {
 public:
  // On the main thread, which is the one that does the last deed. Where another thread calls _exit(), the
  // main one may be in the middle of anything: `withoutMain` is called there instead. The platform outlives
  // the guard.
  ExitGuard(Platform& platform, std::function<void()> lastDeed, std::function<void()> withoutMain);
  ~ExitGuard();
  ExitGuard(const ExitGuard&) = delete;
  ExitGuard& operator=(const ExitGuard&) = delete;

 private:
  std::unique_ptr<Registration> m_abruptEnd;
};

} // namespace vantle
