// SPDX-License-Identifier: MIT
#include "app/ExitGuard.h"

#include "base/Invariant.h"

#include <cstdlib>
#include <thread>
#include <utility>

namespace vantle {

namespace {

// exit() can reach nothing but globals. Empty unless a guard lives.
std::function<void()>& pendingDeed() {
  static std::function<void()> deed;
  return deed;
}

void runPendingDeed() {
  const std::function<void()> deed = std::exchange(pendingDeed(), nullptr);
  if (!deed) return;
  deed();
  // Nothing else is torn down: what ends the program may be in the middle of anything.
  std::_Exit(EXIT_SUCCESS);
}

} // namespace

ExitGuard::ExitGuard(Platform& platform, std::function<void()> lastDeed, std::function<void()> withoutMain) {
  invariant(!pendingDeed(), "two exit guards");
  pendingDeed() = std::move(lastDeed);
  static const bool registered = std::atexit(runPendingDeed) == 0;
  invariant(registered, "no room for an exit handler");
  m_abruptEnd = platform.onAbruptEnd([main = std::this_thread::get_id(), other = std::move(withoutMain)] {
    if (std::this_thread::get_id() == main) {
      runPendingDeed();
    } else {
      other();
      std::_Exit(EXIT_SUCCESS);
    }
  });
}

ExitGuard::~ExitGuard() { pendingDeed() = nullptr; }

} // namespace vantle
