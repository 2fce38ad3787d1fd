// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace vantle {

// The longest stat file: 52 numbers of at most 20 digits and a name of at most 64 bytes fit.
inline constexpr std::size_t longestStat = 2048;

// What Vantle reads of /proc/PID/stat; see proc_pid_stat(5) for the numbers of the fields.
struct ProcStat {
  char state = 0;                 // field 3
  Pid parent = 0;                 // field 4
  Pid session = 0;                // field 6: 0 when its leader is not visible from here
  std::uint64_t flags = 0;        // field 9: PF_* of the kernel
  std::uint64_t userTicks = 0;    // field 14: clock ticks, all threads
  std::uint64_t kernelTicks = 0;  // field 15
  int priority = 0;               // field 18
  int threads = 0;                // field 20
  std::uint64_t startTicks = 0;   // field 22: clock ticks since boot
  std::int64_t residentPages = 0; // field 24
  std::uint64_t startStack = 0;   // field 28: anew with each program; 0 when it may not be known

  // False for a zombie. A main thread that ended before its siblings is shown as one too, but then the
  // process has other threads still.
  bool isAlive() const { return (state != 'Z' && state != 'X' && state != 'x') || threads > 1; }
  bool isKernelThread() const { return (flags & 0x00200000) != 0; } // PF_KTHREAD
};

// Absent when the line is not one that the kernel writes, or ends before the resident size. The name may hold
// anything, brackets and newlines included, so the fields are counted from the last ')'.
std::optional<ProcStat> parseProcStat(std::string_view line);

} // namespace vantle
