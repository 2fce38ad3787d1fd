// SPDX-License-Identifier: MIT
#include "app/ExitGuard.h"

#include "base/Invariant.h"

#include <cstdlib>
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
  // Nothing else is torn down: what called exit() may be in the middle of anything.
  std::_Exit(EXIT_SUCCESS);
}

} // namespace

ExitGuard::ExitGuard(std::function<void()> lastDeed) {
  invariant(!pendingDeed(), "two exit guards");
  pendingDeed() = std::move(lastDeed);
  static const bool registered = std::atexit(runPendingDeed) == 0;
  invariant(registered, "no room for an exit handler");
}

ExitGuard::~ExitGuard() { pendingDeed() = nullptr; }

} // namespace vantle
