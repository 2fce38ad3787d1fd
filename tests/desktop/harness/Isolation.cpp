// SPDX-License-Identifier: MIT
#include "tests/desktop/harness/Isolation.h"

#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sched.h>
#include <string>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vantle::desktop {

namespace {

constexpr const char* lastPid = "/proc/sys/kernel/ns_last_pid";

// A /tmp of one's own, in which the folder that this program was built in can still be reached.
bool mountOwnTmp() {
  std::string kept; // "/tmp/NAME", when the build lies below it
  std::error_code error;
  const std::string program = std::filesystem::read_symlink("/proc/self/exe", error);
  if (program.starts_with("/tmp/")) kept = program.substr(0, program.find('/', 5));
  const int folder = kept.empty() ? -1 : ::open(kept.c_str(), O_PATH | O_CLOEXEC);
  if (::mount("tmp", "/tmp", "tmpfs", 0, "mode=1777") != 0) return false;
  if (folder < 0) return true;
  const std::string opened = "/proc/self/fd/" + std::to_string(folder);
  std::filesystem::create_directory(kept, error);
  const bool bound = ::mount(opened.c_str(), kept.c_str(), nullptr, MS_BIND | MS_REC, nullptr) == 0;
  ::close(folder);
  return bound;
}

} // namespace

int runIsolated(const std::function<int()>& tests) {
  if (::geteuid() != 0 || ::unshare(CLONE_NEWPID | CLONE_NEWNS) != 0) return tests();
  const pid_t first = ::fork();
  if (first < 0) return tests();
  if (first == 0) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    // X servers in different namespaces must not take each other's lock files for left over.
    if (::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        ::mount("proc", "/proc", "proc", 0, nullptr) != 0 || !mountOwnTmp()) {
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
