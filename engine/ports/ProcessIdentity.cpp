// SPDX-License-Identifier: MIT
#include "engine/ports/ProcessIdentity.h"

#include "base/Invariant.h"

#include <limits>

namespace vantle {

std::uint64_t startMicros(const ProcessIdentity& identity) {
  constexpr std::uint64_t microsPerSecond = 1'000'000;
  constexpr std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
  invariant(identity.startSec <= (most - identity.startUsec) / microsPerSecond, "start time overflows");
  return identity.startSec * microsPerSecond + identity.startUsec;
}

} // namespace vantle

std::size_t
std::hash<vantle::ProcessIdentity>::operator()(const vantle::ProcessIdentity& identity) const noexcept {
  std::size_t seed = 0;
  const auto combine = [&seed](std::size_t value) {
    // Boost's mixing step widened to 64 bits; the constant is 2^64 divided by the golden ratio.
    seed ^= value + 0x9E3779B97F4A7C15ULL + (seed << 6) + (seed >> 2);
  };
  combine(std::hash<vantle::Pid>{}(identity.pid));
  combine(std::hash<std::uint64_t>{}(identity.startSec));
  combine(std::hash<std::uint64_t>{}(identity.startUsec));
  return seed;
}
