// SPDX-License-Identifier: MIT
#include "platform/linux/band/ThreadCalls.h"

#include <array>
#include <cerrno>
#include <linux/capability.h>
#include <linux/sched.h>
#include <sched.h>
#include <string_view>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace vantle::threadCalls {

namespace {

// One thread, of ioprio_get(2). Its header names a parameter "class" in newer kernels, which no C++ compiler
// takes.
constexpr int ioprioWhoProcess = 1;

} // namespace

std::optional<int> ioPriority(Pid tid) {
  const long value = ::syscall(SYS_ioprio_get, ioprioWhoProcess, tid);
  if (value < 0) return std::nullopt;
  return static_cast<int>(value);
}

bool setIoPriority(Pid tid, int priority) {
  return ::syscall(SYS_ioprio_set, ioprioWhoProcess, tid, priority) == 0;
}

bool Scheduling::isRealTime() const {
  return policy == SCHED_FIFO || policy == SCHED_RR || policy == SCHED_DEADLINE;
}

std::optional<Scheduling> scheduling(Pid tid) {
  const int value = ::sched_getscheduler(tid);
  if (value < 0) return std::nullopt;
  return Scheduling{value & ~SCHED_RESET_ON_FORK, (value & SCHED_RESET_ON_FORK) != 0};
}

bool setScheduling(Pid tid, Scheduling scheduling) {
  const sched_param none{};
  const int flag = scheduling.resetsOnFork ? SCHED_RESET_ON_FORK : 0;
  return ::sched_setscheduler(tid, scheduling.policy | flag, &none) == 0;
}

bool mayLeaveIdleClass(Pid tid) {
  rlimit limit{};
  if (::prlimit(tid, RLIMIT_NICE, nullptr, &limit) != 0 || limit.rlim_cur == 0) return false;
  errno = 0;
  const int nice = ::getpriority(PRIO_PROCESS, static_cast<id_t>(tid));
  if (errno != 0) return false;
  return static_cast<rlim_t>(20 - nice) <= limit.rlim_cur; // the kernel's own rule
}

bool hasNiceCapability() {
  __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
  std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3> sets{};
  if (::syscall(SYS_capget, &header, sets.data()) != 0) return false;
  if ((sets[0].effective & (1U << static_cast<unsigned>(CAP_SYS_NICE))) == 0) return false;
  // A capability inside a user namespace of one's own changes nothing about scheduling. The number is the one
  // that the kernel gives to the first namespace (PROC_USER_INIT_INO).
  std::array<char, 64> target{};
  return ::readlink("/proc/self/ns/user", target.data(), target.size() - 1) > 0 &&
         std::string_view(target.data()) == "user:[4026531837]";
}

} // namespace vantle::threadCalls
