// SPDX-License-Identifier: MIT
#include "tests/support/Isolation.h"

#include "tests/support/ForkedProcess.h"
#include "tests/support/InChild.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <map>
#include <sched.h>
#include <set>
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

// The folder right below /tmp that a path leads through, open; -1 when there is none.
int openBelowTmp(const std::string& path, std::string& folder) {
  folder = path.starts_with("/tmp/") ? path.substr(0, path.find('/', 5)) : std::string();
  return folder.empty() ? -1 : ::open(folder.c_str(), O_PATH | O_CLOEXEC);
}

bool bindOpened(int opened, const std::string& folder) {
  std::error_code error;
  std::filesystem::create_directory(folder, error);
  const std::string source = "/proc/self/fd/" + std::to_string(opened);
  const bool bound = ::mount(source.c_str(), folder.c_str(), nullptr, MS_BIND | MS_REC, nullptr) == 0;
  ::close(opened);
  return bound;
}

// A /tmp of one's own, in which the folders that these paths lead through can still be reached.
bool mountOwnTmp(const std::set<std::string>& paths) {
  std::map<std::string, int> kept;
  for (const std::string& path : paths) {
    std::string folder;
    const int opened = openBelowTmp(path, folder);
    if (opened >= 0 && !kept.emplace(folder, opened).second) ::close(opened);
  }
  if (::mount("tmp", "/tmp", "tmpfs", 0, "mode=1777") != 0) return false;
  return std::all_of(kept.begin(), kept.end(),
                     [](const auto& folder) { return bindOpened(folder.second, folder.first); });
}

} // namespace

int runIsolated(const std::function<int()>& tests, const std::filesystem::path& kept) {
  if (::geteuid() != 0 || ::unshare(ownNumbers) != 0) return tests();
  std::error_code error;
  const std::string program = std::filesystem::read_symlink("/proc/self/exe", error);
  test::ForkedProcess first({}, [&] {
    // X servers in different namespaces must not take each other's lock files for left over.
    std::exit(mountOwnProc() && mountOwnTmp({program, kept.string()}) ? tests() : 125);
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
