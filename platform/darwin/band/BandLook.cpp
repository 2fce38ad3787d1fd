// SPDX-License-Identifier: MIT
#include "platform/darwin/band/BandLook.h"

#include "platform/darwin/process/ProcRead.h"

#include <cstdint>

namespace vantle {

namespace {

// In `pbi_flags` of a process that somebody has put into the background band. The kernel's own headers have
// the name; those that the system hands out end before it, although the bit is in what they describe.
constexpr std::uint32_t putIntoTheBand = 0x10000;

// While a process is traced it is told to be the child of whoever does that.
Pid parentIn(std::uint32_t parent, std::uint32_t flags) {
  return (flags & PROC_FLAG_TRACED) != 0 ? firstProcess : static_cast<Pid>(parent);
}

} // namespace

std::optional<BandLook> lookAt(Pid pid) {
  const auto info = procRead<proc_bsdinfo, PROC_PIDTBSDINFO>(pid);
  if (!info) return std::nullopt;
  return BandLook{{pid, info->pbi_start_tvsec, info->pbi_start_tvusec},
                  parentIn(info->pbi_ppid, info->pbi_flags),
                  (info->pbi_flags & putIntoTheBand) != 0};
}

std::optional<Pid> parentOf(Pid pid) {
  const auto info = procRead<proc_bsdshortinfo, PROC_PIDT_SHORTBSDINFO>(pid);
  if (!info) return std::nullopt;
  return parentIn(info->pbsi_ppid, info->pbsi_flags);
}

} // namespace vantle
