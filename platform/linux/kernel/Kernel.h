// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"
#include "platform/linux/kernel/ProcessorSet.h"
#include "platform/linux/process/ProcStat.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantle {

// One process as its stat file shows it, with its name there.
struct ProcessStat : ProcStat {
  Pid pid = 0;
  std::array<char, 16> name{}; // as the kernel keeps it, at most 15 bytes
  unsigned user = 0;           // of its files, in a scan only: 0 also when it hides its memory

  std::string_view shortName() const { return name.data(); }
  std::uint64_t cpuTicks() const { return userTicks + kernelTicks; }
};

// One session's automatic task group, as /proc/PID/autogroup shows it.
struct Autogroup {
  long id = 0; // never used again for another session
  int nice = 0;

  static std::optional<Autogroup> parse(std::string_view text); // "/autogroup-16 nice 0"
  friend bool operator==(const Autogroup&, const Autogroup&) = default;
};

// SCHED_OTHER and so on, without the flag below.
struct Scheduling {
  int policy = 0;
  bool resetsOnFork = false; // SCHED_RESET_ON_FORK, which an ordinary user may keep but not clear

  bool isRealTime() const;
  friend bool operator==(const Scheduling&, const Scheduling&) = default;
};

// What one thread is doing.
struct ThreadActivity {
  // Asleep where a signal would wake it, stopped, or ended: not in the middle of a fork, which sleeps where
  // no signal reaches it.
  bool isResting = false;
  bool isRunning = false;         // on a processor, or waiting for one
  std::uint64_t cpuTicks = 0;     // clock ticks of processor time so far
  std::uint64_t startTicks = 0;   // with the number: which thread it is
  std::int64_t residentPages = 0; // of its process
};

// What was asked about one thread. Without a value the thread is gone, or may not be asked.
template <class Value> struct Answer : std::optional<Value> {
  using std::optional<Value>::optional;
  bool isGone = false; // says something only without a value
};

// What became of the change of one thread.
enum class Change {
  done,
  gone,   // the thread has ended
  refused // by the kernel, for whatever reason
};

// What became of the change of a session's weight.
enum class SessionChange {
  done,
  elsewhere, // the process has ended, or stands in another session by now
  chosen,    // somebody else has changed the weight meanwhile
  later,     // an ordinary user's turn has not come yet
  refused
};

// Everything that the band asks of the kernel, and everything that it changes in it: the only way from one to
// the other. Absent answers say that the process or the file is gone or may not be read; nothing throws.
class Kernel {
 public:
  virtual ~Kernel() = default;

  // Processes.
  virtual Pid self() const = 0;      // this program
  virtual unsigned user() const = 0; // that it runs as
  virtual std::optional<ProcessStat> stat(Pid pid) const = 0;
  virtual std::vector<ProcessStat> scan() const = 0;   // of every process, in ascending order of pids
  virtual std::vector<Pid> threads(Pid pid) const = 0; // the main thread first; empty when it is gone
  virtual std::optional<std::string> controlGroups(Pid pid) const = 0; // the text of /proc/PID/cgroup
  // True when the process is wholly this user's: real and effective user are the one that runs this program.
  virtual bool isOwn(Pid pid) const = 0;
  // The same for a child of such a process, of which one half says all: it would have to ask for two users by
  // itself. Cheaper.
  virtual bool isOwnChild(Pid pid) const { return isOwn(pid); }
  // Changes whenever a process or a thread was born anywhere (the pid that was given out last); absent when
  // the kernel does not say. Cheaper to ask than to list again.
  virtual std::optional<Pid> birthMark() const = 0;

  // Sessions. Absent for a process without an automatic group; the second one also when its weight is not
  // this user's to change. Changes nothing.
  virtual std::optional<Autogroup> autogroup(Pid pid) const = 0;
  virtual std::optional<Autogroup> writableAutogroup(Pid pid) const = 0;
  // Gives the session of this process another weight (a nice value, -20 to 19), if it still is that session
  // and still has that weight. An ordinary user's turn goes to whoever asks first when it comes: asks again
  // without a pause as long as it is given, as a turn is short and others may never pause.
  virtual SessionChange setAutogroupNice(Pid pid, const Autogroup& expected, int nice,
                                         std::chrono::milliseconds insisting = {}) = 0;

  // Threads.
  virtual Answer<int> ioPriority(Pid tid) const = 0; // as it was set, see ioprio_get(2)
  virtual Change setIoPriority(Pid tid, int priority) = 0;
  virtual Answer<Scheduling> scheduling(Pid tid) const = 0;
  // For the classes without a priority; keeps the nice value.
  virtual Change setScheduling(Pid tid, Scheduling scheduling) = 0;
  // Whether the kernel lets this thread return from SCHED_IDLE for a caller without CAP_SYS_NICE.
  virtual bool mayLeaveIdleClass(Pid tid) const = 0;
  // Whether this program has CAP_SYS_NICE over every process of the machine.
  virtual bool hasNiceCapability() const = 0;
  // Absent when the thread has ended.
  virtual std::optional<ThreadActivity> activity(Pid tid) const = 0;
  virtual std::optional<ProcessorSet> affinity(Pid tid) const = 0; // the active processors only
  virtual Change setAffinity(Pid tid, const ProcessorSet& processors) = 0;

  // Files of the kernel's own, by their paths below /sys or /proc.
  virtual std::optional<std::string> read(const std::string& path) const = 0; // at most 64 KB
  virtual bool exists(const std::string& path) const = 0;
  virtual std::optional<std::string> link(const std::string& path) const = 0; // where it leads
  // The names of the folders in a folder, in any order.
  virtual std::optional<std::vector<std::string>> folders(const std::string& path) const = 0;

  // Time that never goes back.
  virtual std::chrono::steady_clock::time_point now() const = 0;
  virtual void sleep(std::chrono::steady_clock::duration duration) = 0;

  // Which boot this is; empty when the kernel does not say.
  std::string bootId() const;
  // Where a process stands in the version 2 control group tree; empty when it has no place there.
  std::string unifiedPath(Pid pid) const;
};

} // namespace vantle
