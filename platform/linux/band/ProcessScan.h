// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/Pid.h"
#include "platform/linux/Descriptor.h"
#include "platform/linux/process/ProcStat.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace vantle {

// One process as its stat file shows it, with its name there.
struct ProcessStat : ProcStat {
  Pid pid = 0;
  std::array<char, 16> name{}; // as the kernel keeps it, at most 15 bytes

  std::string_view shortName() const { return name.data(); }
  std::uint64_t cpuTicks() const { return userTicks + kernelTicks; }
};

// /proc, read through one descriptor and fixed buffers: a pass reads hundreds of these files.
class ProcessFiles {
 public:
  explicit ProcessFiles(const std::string& procRoot);

  std::optional<ProcessStat> stat(Pid pid) const;
  std::vector<ProcessStat> scan() const;
  std::vector<Pid> threads(Pid pid) const; // empty when the process is gone
  // True when the process is wholly this user's: real and effective user are the one that runs this program.
  bool isOwn(Pid pid) const;
  std::optional<std::string> read(Pid pid, const char* file) const;
  std::string unifiedPath(Pid pid) const; // in the version 2 control group tree; empty when it has none
  Descriptor open(Pid pid, const char* file, int flags) const;
  // Changes whenever a process or a thread was born anywhere; absent when the kernel does not say.
  std::optional<std::string> birthMark() const;

 private:
  Descriptor m_root;
  uid_t m_user;
};

// One look at all processes, arranged for questions about trees and sessions.
class ProcessScan {
 public:
  ProcessScan() = default; // sees nothing
  explicit ProcessScan(const ProcessFiles& files);

  const std::vector<ProcessStat>& all() const { return m_all; }
  const ProcessStat* find(Pid pid) const;
  std::span<const std::size_t> session(Pid session) const; // places in all(), of every process of the session
  // The given processes and everything that descends from them now.
  std::unordered_set<Pid> withDescendants(std::span<const Pid> roots) const;

 private:
  std::vector<ProcessStat> m_all;
  std::unordered_map<Pid, std::size_t> m_places;
  std::unordered_map<Pid, std::vector<std::size_t>> m_sessions;
  std::unordered_map<Pid, std::vector<Pid>> m_children;
};

} // namespace vantle
