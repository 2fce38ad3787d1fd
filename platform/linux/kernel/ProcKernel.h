// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/kernel/Kernel.h"
#include "platform/posix/Descriptor.h"

#include <cstddef>
#include <memory>
#include <sys/types.h>
#include <unordered_map>

namespace vantle {

// The kernel that this program runs on. /proc is read through one descriptor and fixed buffers: a pass reads
// hundreds of these files. Shared by the process table and the band, so that one look serves both.
class ProcKernel final : public Kernel {
 public:
  explicit ProcKernel(std::string procRoot = "/proc", std::string sysRoot = "/sys");

  Pid self() const override;
  unsigned user() const override { return m_user; }
  std::optional<ProcessStat> stat(Pid pid) const override;
  std::vector<ProcessStat> scan() const override;
  std::vector<Pid> threads(Pid pid) const override;
  std::optional<std::string> controlGroups(Pid pid) const override { return readOf(pid, "cgroup"); }
  bool isOwn(Pid pid) const override;
  bool isOwnChild(Pid pid) const override;
  std::optional<Pid> birthMark() const override;

  std::optional<Autogroup> autogroup(Pid pid) const override;
  std::optional<Autogroup> writableAutogroup(Pid pid) const override;
  SessionChange setAutogroupNice(Pid pid, const Autogroup& expected, int nice,
                                 std::chrono::milliseconds insisting) override;

  Answer<int> ioPriority(Pid tid) const override;
  Change setIoPriority(Pid tid, int priority) override;
  Answer<Scheduling> scheduling(Pid tid) const override;
  Change setScheduling(Pid tid, Scheduling scheduling) override;
  bool mayLeaveIdleClass(Pid tid) const override;
  bool hasNiceCapability() const override;
  std::optional<ThreadActivity> activity(Pid tid) const override;
  std::optional<ProcessorSet> affinity(Pid tid) const override;
  Change setAffinity(Pid tid, const ProcessorSet& processors) override;

  std::optional<std::string> read(const std::string& path) const override;
  bool exists(const std::string& path) const override;
  std::optional<std::string> link(const std::string& path) const override;
  std::optional<std::vector<std::string>> folders(const std::string& path) const override;

  std::chrono::steady_clock::time_point now() const override { return std::chrono::steady_clock::now(); }
  void sleep(std::chrono::steady_clock::duration duration) override;

  // While the answer lives, processes of a scan are read again through descriptors that stay open. Such a
  // descriptor never names another process: what was opened for one that has ended says nothing any more.
  std::shared_ptr<const void> hold() const;

  // For those who read more than the band does.
  std::optional<std::string> readOf(Pid pid, const char* file) const;
  std::vector<Pid> processes() const; // the numbers alone, in ascending order
  // What the process has open, as the kernel names it: the first 4,096, without its standard input. Absent
  // when that may not be known.
  std::optional<std::vector<std::string>> openFiles(Pid pid) const;
  int folder() const { return m_root.get(); } // for calls that take one

 private:
  using Held = std::unordered_map<Pid, Descriptor>; // open stat files

  Descriptor open(Pid pid, const char* file, int flags) const;
  std::string placeOf(const std::string& path) const; // below the roots that were given

  std::string m_procRoot;
  std::string m_sysRoot;
  Descriptor m_root;
  Descriptor m_load;
  uid_t m_user;
  std::size_t m_mostHeld;
  mutable std::weak_ptr<Held> m_held;
};

} // namespace vantle
