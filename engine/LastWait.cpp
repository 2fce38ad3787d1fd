// SPDX-License-Identifier: MIT
#include "engine/LastWait.h"

#include <algorithm>
#include <chrono>

namespace vantle {

namespace {

constexpr std::chrono::seconds step{1};
constexpr int mostStepsWithoutProgress = 20;

} // namespace

bool waitUntilAllIsBack(BackgroundBand& band, const std::function<void(std::size_t left)>& tell) {
  std::size_t fewest = band.owed();
  for (int idle = 0; idle < mostStepsWithoutProgress; ++idle) {
    if (band.settle(step)) return true;
    const std::size_t left = band.owed();
    if (left == 0) return false; // no use to wait for
    tell(left);
    if (left < fewest) idle = -1;
    fewest = std::min(fewest, left);
  }
  return false;
}

} // namespace vantle
