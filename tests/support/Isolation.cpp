// SPDX-License-Identifier: MIT
#include "tests/support/Isolation.h"

#include "tests/support/ForkedProcess.h"
#include "tests/support/InChild.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sched.h>
#include <string>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vantle::desktop {

namespace {

constexpr const char* lastPid = "/proc/sys/kernel/ns_last_pid";

constexpr int ownNumbers = CLONE_NEWPID | CLONE_NEWNS;

bool mountOwnProc() {
  return ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
         ::mount("proc", "/proc", "proc", 0, nullptr) == 0;
}

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
  if (::geteuid() != 0 || ::unshare(ownNumbers) != 0) return tests();
  test::ForkedProcess first({}, [&] {
    // X servers in different namespaces must not take each other's lock files for left over.
    std::exit(mountOwnProc() && mountOwnTmp() ? tests() : 125);
  });
  const int status = first.waitForEnd();
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

bool canChooseNextPid() { return ::getpid() == 1 && ::access(lastPid, W_OK) == 0; }

void chooseNextPid(int pid) { std::ofstream(lastPid) << pid - 1; }

} // namespace vantle::desktop

namespace vantle::test {

std::string inOwnPidNamespace(const std::function<std::string()>& check) {
  return inChild([&]() -> std::string {
    if (::unshare(desktop::ownNumbers) != 0) return notPossibleHere;
    return inChild([&]() -> std::string { return desktop::mountOwnProc() ? check() : notPossibleHere; });
  });
}

} // namespace vantle::test
