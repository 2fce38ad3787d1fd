// SPDX-License-Identifier: MIT
// The system calls on one thread that the C library does not offer, or offers for the caller only.
#include "platform/linux/kernel/ProcKernel.h"

#include "platform/linux/process/KernelFile.h"

#include <array>
#include <cerrno>
#include <linux/capability.h>
#include <linux/sched.h>
#include <sched.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace vantle {

namespace {

// One thread, of ioprio_get(2). Its header names a parameter "class" in newer kernels, which no C++ compiler
// takes.
constexpr int ioprioWhoProcess = 1;

template <class Value> Answer<Value> noAnswer() {
  Answer<Value> none;
  none.isGone = errno == ESRCH;
  return none;
}

Change outcome(long result) {
  if (result == 0) return Change::done;
  return errno == ESRCH ? Change::gone : Change::refused;
}

} // namespace

Answer<int> ProcKernel::ioPriority(Pid tid) const {
  const long value = ::syscall(SYS_ioprio_get, ioprioWhoProcess, tid);
  if (value < 0) return noAnswer<int>();
  return static_cast<int>(value);
}

Change ProcKernel::setIoPriority(Pid tid, int priority) {
  return outcome(::syscall(SYS_ioprio_set, ioprioWhoProcess, tid, priority));
}

Answer<Scheduling> ProcKernel::scheduling(Pid tid) const {
  const int value = ::sched_getscheduler(tid);
  if (value < 0) return noAnswer<Scheduling>();
  return Scheduling{value & ~SCHED_RESET_ON_FORK, (value & SCHED_RESET_ON_FORK) != 0};
}

Change ProcKernel::setScheduling(Pid tid, Scheduling scheduling) {
  const sched_param none{};
  const int flag = scheduling.resetsOnFork ? SCHED_RESET_ON_FORK : 0;
  return outcome(::sched_setscheduler(tid, scheduling.policy | flag, &none));
}

// The plain system calls: the library's types stop at 1,024 processors.
std::optional<ProcessorSet> ProcKernel::affinity(Pid tid) const {
  ProcessorSet set;
  if (::syscall(SYS_sched_getaffinity, tid, set.bytes(), set.data()) <= 0) return std::nullopt;
  return set;
}

Change ProcKernel::setAffinity(Pid tid, const ProcessorSet& processors) {
  return outcome(::syscall(SYS_sched_setaffinity, tid, processors.bytes(), processors.data()));
}

bool ProcKernel::mayLeaveIdleClass(Pid tid) const {
  rlimit limit{};
  if (::prlimit(tid, RLIMIT_NICE, nullptr, &limit) != 0 || limit.rlim_cur == 0) return false;
  errno = 0;
  const int nice = ::getpriority(PRIO_PROCESS, static_cast<id_t>(tid));
  if (errno != 0) return false;
  return static_cast<rlim_t>(20 - nice) <= limit.rlim_cur; // the kernel's own rule
}

bool ProcKernel::hasNiceCapability() const {
  __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
  std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3> sets{};
  if (::syscall(SYS_capget, &header, sets.data()) != 0) return false;
  if ((sets[0].effective & (1U << static_cast<unsigned>(CAP_SYS_NICE))) == 0) return false;
  // A capability inside a user namespace of one's own changes nothing about scheduling. The number is the one
  // that the kernel gives to the first namespace (PROC_USER_INIT_INO).
  return readKernelLink("/proc/self/ns/user") == "user:[4026531837]";
}

} // namespace vantle
