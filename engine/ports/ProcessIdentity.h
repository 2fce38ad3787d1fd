// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/ProcessTable.h"

#include <cstddef>
#include <cstdint>
#include <functional>

namespace vantle {

// One incarnation of a process. A pid alone is no name: the kernel hands it out again.
struct ProcessIdentity {
  Pid pid = 0;
  std::uint64_t startSec = 0;  // the kernel's start time: seconds since the Unix epoch …
  std::uint64_t startUsec = 0; // … and the microseconds within that second

  bool operator==(const ProcessIdentity&) const = default;
};

inline ProcessIdentity identityOf(const ProcessRecord& record) {
  return {record.pid, record.startSec, record.startUsec};
}

// Microseconds since the Unix epoch, to be compared with Clock::processMicros.
std::uint64_t startMicros(const ProcessIdentity& identity);

} // namespace vantle

template <> struct std::hash<vantle::ProcessIdentity> {
  std::size_t operator()(const vantle::ProcessIdentity& identity) const noexcept;
};
