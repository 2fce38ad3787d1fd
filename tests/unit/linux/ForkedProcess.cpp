// SPDX-License-Identifier: MIT
#include "tests/unit/linux/ForkedProcess.h"

#include "tests/unit/linux/InChild.h"

#include <csignal>
#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vantle::test {

ForkedProcess::ForkedProcess(const std::function<void()>& prepare, const std::function<void()>& live) {
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) ::abort();
  m_pid = ::fork();
  if (m_pid == 0) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    ::close(ends[0]);
    if (prepare) prepare();
    ::close(ends[1]);
    if (live) live();
    for (;;) ::pause();
  }
  ::close(ends[1]);
  char byte = 0;
  while (::read(ends[0], &byte, 1) > 0) {
  }
  ::close(ends[0]);
}

ForkedProcess::~ForkedProcess() {
  ::kill(m_pid, SIGKILL);
  ::waitpid(m_pid, nullptr, 0);
}

bool writeFile(const std::string& path, const std::string& bytes) {
  const int file = ::open(path.c_str(), O_WRONLY | O_CLOEXEC);
  const bool isWritten = ::write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
  if (file >= 0) ::close(file);
  return isWritten;
}

std::string inOwnPidNamespace(const std::function<std::string()>& check) {
  return inChild([&]() -> std::string {
    if (::unshare(CLONE_NEWPID | CLONE_NEWNS) != 0) return notPossibleHere;
    return inChild([&]() -> std::string {
      if (::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) return notPossibleHere;
      if (::mount("proc", "/proc", "proc", 0, nullptr) != 0) return notPossibleHere;
      return check();
    });
  });
}

} // namespace vantle::test
