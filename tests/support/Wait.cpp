// SPDX-License-Identifier: MIT
#include "tests/support/Wait.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <thread>

namespace vantle::desktop {

namespace {

int patience() {
  static const char* const given = std::getenv("VANTLE_PATIENCE");
  static const int factor = std::max(1, given == nullptr ? 1 : std::atoi(given));
  return factor;
}

} // namespace

bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds limit) {
  const auto end = std::chrono::steady_clock::now() + limit * patience();
  while (!condition()) {
    if (std::chrono::steady_clock::now() >= end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(4) * patience()); // to look costs more there, too
  }
  return true;
}

void require(const char* what, const std::function<bool()>& condition, std::chrono::milliseconds limit) {
  if (!waitUntil(condition, limit)) throw std::runtime_error(std::string("gave up waiting for ") + what);
}

} // namespace vantle::desktop
