// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/Pid.h"
#include "platform/linux/Descriptor.h"
#include "platform/linux/process/ProcStat.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace vantle {

// One process as its stat file shows it, with its name there.
struct ProcessStat : ProcStat {
  Pid pid = 0;
  std::array<char, 16> name{}; // as the kernel keeps it, at most 15 bytes

  std::string_view shortName() const { return name.data(); }
  std::uint64_t cpuTicks() const { return userTicks + kernelTicks; }
};

// /proc, read through one descriptor and fixed buffers: a pass reads hundreds of these files. Shared by the
// process table and the band, so that one look serves both.
class ProcessFiles {
 public:
  explicit ProcessFiles(const std::string& procRoot);

  std::optional<ProcessStat> stat(Pid pid) const;
  std::vector<ProcessStat> scan() const; // in ascending order of pids, as the kernel lists them
  // The last scan, as long as it is only moments old and nobody was born since; otherwise a new one.
  std::vector<ProcessStat> recentScan() const;
  std::vector<Pid> threads(Pid pid) const; // empty when the process is gone
  // True when the process is wholly this user's: real and effective user are the one that runs this program.
  bool isOwn(Pid pid) const;
  std::optional<std::string> read(Pid pid, const char* file) const;
  std::string unifiedPath(Pid pid) const; // in the version 2 control group tree; empty when it has none
  Descriptor open(Pid pid, const char* file, int flags) const;
  int folder() const { return m_root.get(); } // for calls that take one
  // Changes whenever a process or a thread was born anywhere (the pid that was given out last); absent when
  // the kernel does not say. One call, so it is cheaper to ask than to list again.
  std::optional<Pid> birthMark() const;

 private:
  struct LastScan {
    std::vector<ProcessStat> processes;
    std::optional<Pid> births; // before it
    std::chrono::steady_clock::time_point at;
  };

  Descriptor m_root;
  Descriptor m_load;
  uid_t m_user;
  mutable LastScan m_last;
};

} // namespace vantle
