// SPDX-License-Identifier: MIT
#include "platform/linux/process/ProcessRecords.h"

#include "platform/linux/programs/DesktopPrograms.h"

#include <algorithm>

namespace vantle {

ProcessRecord recordOf(const ProcessStat& stat) {
  ProcessRecord record;
  record.pid = stat.pid;
  record.parent = stat.parent;
  record.startTicks = stat.startTicks;
  record.session = stat.session;
  record.user = stat.user;
  if (isSystemPart(stat.shortName())) {
    record.role = ProcessRole::system;
  } else if (isStarter(stat.shortName())) {
    record.role = ProcessRole::starter;
  }
  record.isKernelThread = stat.isKernelThread();
  record.isRunning = stat.state == 'R';
  record.threads = static_cast<std::uint32_t>(std::max(stat.threads, 1));
  record.cpuTicks = stat.cpuTicks();
  return record;
}

} // namespace vantle
