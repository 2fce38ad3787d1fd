// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vantle {

// What a process is to all the others.
enum class ProcessRole : std::uint8_t {
  program,
  starter, // a shell and its like: what it starts has nothing to do with what else it has started
  system   // a part of the desktop or the system that everything else stands on
};

// What the kernel says of one process at one moment. The start time is in seconds and microseconds since the
// Unix epoch, on an axis that does not move when the wall clock is set: two reads of the same incarnation are
// always equal, and two incarnations of one pid never are (down to the kernel's own resolution).
struct ProcessRecord {
  Pid pid = 0;
  Pid parent = 0;
  std::uint64_t startSec = 0;
  std::uint64_t startUsec = 0;
  std::uint64_t startTicks = 0; // the same as the platform's own tables have it
  Pid session = 0;              // the pid of the session's first process; 0 where there are no sessions
  std::uint32_t user = 0;       // as far as the kernel shows it: 0 also for a process that hides its memory
  ProcessRole role = ProcessRole::program;
  bool isKernelThread = false;
  bool isRunning = false;     // on a processor, or waiting for one
  std::uint32_t threads = 1;  // at least 1
  std::uint64_t cpuTicks = 0; // user plus system time of all threads, in the platform's own unit
};

// Until a wrapper has started what it was started for and waits for, in seconds: far more than it takes. What
// starts apps for the person has done other things for longer before it starts one.
inline constexpr std::uint64_t longestWrapping = 10;

// Reads the process table. Every call is a fresh, synchronous look; nothing is kept between calls and nothing
// is changed. A process that is gone, or that may not be read, yields an absent value.
class ProcessTable {
 public:
  virtual ~ProcessTable() = default;

  virtual std::optional<ProcessRecord> record(Pid pid) const = 0;

  // Every process that can be read, in the platform's listing order. One scan serves all trees of one pass.
  virtual std::vector<ProcessRecord> scan() const = 0;

  // As long as the answer lives, the platform may keep open what a scan has opened, so that the records of
  // the same processes cost less. They are read afresh all the same. May be null.
  virtual std::shared_ptr<const void> hold() const { return nullptr; }

  // Changes whenever a process or a thread is born anywhere: as long as it stays the same, a scan made before
  // lacks nobody. Absent when the platform cannot tell.
  virtual std::optional<std::uint64_t> birthMark() const { return std::nullopt; }

  // The place that the desktop made for one app and what it starts, by a name that is equal for all
  // processes in it. Empty for a process that stands in none.
  virtual std::string place(Pid /*pid*/) const { return {}; }

  // The program of many files, or the like, that the process came with, by a name that is equal for all
  // processes that came with it. Empty when nothing tells.
  virtual std::string origin(Pid /*pid*/) const { return {}; }

  // The origins of processes that this app brings along, where they are not its own.
  virtual std::vector<std::string> furtherOrigins(Pid /*app*/) const { return {}; }

  // The bytes of the executable's full path, at most 4,096 of them, undecoded.
  virtual std::optional<std::string> executablePathBytes(Pid pid) const = 0;

  // Memory charged to the process, in bytes: anonymous resident pages plus what was compressed or swapped
  // out.
  virtual std::optional<std::uint64_t> footprint(Pid pid) const = 0;

  // User plus system time of all threads. Only ratios of it are used, so its unit is the platform's own.
  virtual std::optional<std::uint64_t> cpuTime(Pid pid) const = 0;

  // The scheduler's own priority number of the process, as its tools print it.
  virtual std::optional<int> schedulerPriority(Pid pid) const = 0;
};

} // namespace vantle
