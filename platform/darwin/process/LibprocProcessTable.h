// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/ProcessTable.h"

#include <vector>

namespace vantle {

// Of everybody's processes, those that have ended but were not waited for included; empty when the system
// does not tell.
std::vector<Pid> everyPid();

// The processes as libproc tells of them. There are no sessions and no places: the system starts each app by
// itself, so an app's processes are those below its own. A process that has ended but was not waited for
// cannot be read, and so is gone.
class LibprocProcessTable final : public ProcessTable {
 public:
  // This user's processes only: the system keeps the whole record of others to itself.
  std::optional<ProcessRecord> record(Pid pid) const override;
  // Everybody's, as a tree may run through another user's process (the login of a terminal). Those have no
  // start time, and so are never taken for one that was known before.
  std::vector<ProcessRecord> scan() const override;
  std::optional<std::string> executablePathBytes(Pid pid) const override;
  std::optional<std::uint64_t> footprint(Pid pid) const override; // what the system itself calls so
  std::optional<std::uint64_t> cpuTime(Pid pid) const override;   // in ticks of the processor's own
  std::optional<int> schedulerPriority(Pid pid) const override;
};

} // namespace vantle
