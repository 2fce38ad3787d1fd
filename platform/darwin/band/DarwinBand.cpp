// SPDX-License-Identifier: MIT
#include "platform/darwin/band/DarwinBand.h"

#include "platform/darwin/process/ProcRead.h"

#include <sys/resource.h>

namespace vantle {

namespace {

constexpr int outOfTheBand = 0;

// The call takes 0 for this program itself.
bool setBand(Pid pid, int band) {
  return pid > 0 && ::setpriority(PRIO_DARWIN_PROCESS, static_cast<id_t>(pid), band) == 0;
}

} // namespace

bool DarwinBand::enterBackgroundBand(Pid pid) { return setBand(pid, PRIO_DARWIN_BG); }

bool DarwinBand::leaveBackgroundBand(Pid pid) { return setBand(pid, outOfTheBand); }

std::optional<bool> DarwinBand::isInBackgroundBand(Pid pid) const {
  const auto info = procRead<proc_bsdinfo, PROC_PIDTBSDINFO>(pid);
  if (!info) return std::nullopt;
  return (info->pbi_flags & PROC_FLAG_EXT_DARWINBG) != 0;
}

} // namespace vantle
