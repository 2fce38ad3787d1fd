// SPDX-License-Identifier: MIT
#include "platform/darwin/band/BandLook.h"

#include "platform/darwin/process/ProcRead.h"

namespace vantle {

std::optional<BandLook> lookAt(Pid pid) {
  const auto info = procRead<proc_bsdinfo, PROC_PIDTBSDINFO>(pid);
  if (!info) return std::nullopt;
  return BandLook{{pid, info->pbi_start_tvsec, info->pbi_start_tvusec},
                  static_cast<Pid>(info->pbi_ppid),
                  (info->pbi_flags & PROC_FLAG_EXT_DARWINBG) != 0};
}

std::optional<Pid> parentOf(Pid pid) {
  const auto info = procRead<proc_bsdshortinfo, PROC_PIDT_SHORTBSDINFO>(pid);
  if (!info) return std::nullopt;
  return static_cast<Pid>(info->pbsi_ppid);
}

} // namespace vantle
