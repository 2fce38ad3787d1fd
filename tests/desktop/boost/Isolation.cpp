// SPDX-License-Identifier: MIT
#include "tests/desktop/boost/Isolation.h"

#include <csignal>
#include <fstream>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vantle::desktop {

namespace {

constexpr const char* lastPid = "/proc/sys/kernel/ns_last_pid";

} // namespace

int runIsolated(const std::function<int()>& tests) {
  if (::geteuid() != 0 || ::unshare(CLONE_NEWPID | CLONE_NEWNS) != 0) return tests();
  const pid_t first = ::fork();
  if (first < 0) return tests();
  if (first == 0) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    // X servers in different namespaces must not take each other's lock files for left over.
    if (::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        ::mount("proc", "/proc", "proc", 0, nullptr) != 0 ||
        ::mount("tmp", "/tmp", "tmpfs", 0, "mode=1777") != 0) {
      return 125;
    }
    return tests();
  }
  int status = 0;
  ::waitpid(first, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

bool canChooseNextPid() { return ::getpid() == 1 && ::access(lastPid, W_OK) == 0; }

void chooseNextPid(int pid) { std::ofstream(lastPid) << pid - 1; }

} // namespace vantle::desktop
