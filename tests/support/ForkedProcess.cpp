// SPDX-License-Identifier: MIT
#include "tests/support/ForkedProcess.h"

#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vantle::test {

ForkedProcess::ForkedProcess(const std::function<void()>& prepare, const std::function<void()>& live) {
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  std::fflush(nullptr); // or the child would say it again
  const Pid parent = ::getpid();
  m_pid = ::fork();
  if (m_pid < 0) throw std::runtime_error("no process");
  if (m_pid == 0) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    // The parent of the first process in a namespace has no number there.
    if (::getppid() != parent && ::getppid() != 0) ::_exit(1);
    ::close(ends[0]);
    if (prepare) prepare();
    ::close(ends[1]);
    if (live) {
      live();
      std::fflush(nullptr);
      ::_exit(0);
    }
    for (;;) ::pause();
  }
  ::close(ends[1]);
  char byte = 0;
  while (::read(ends[0], &byte, 1) > 0) {
  }
  ::close(ends[0]);
}

ForkedProcess::~ForkedProcess() { kill(); }

bool ForkedProcess::isRunning() { return !hasEnded(WNOHANG); }

int ForkedProcess::waitForEnd() {
  hasEnded(0);
  return *m_status;
}

// Also when somebody else has waited for it: its number may be another one's then.
bool ForkedProcess::hasEnded(int options) {
  int status = 0;
  if (m_status) return true;
  const Pid ended = ::waitpid(m_pid, &status, options);
  if (ended != 0) m_status = ended == m_pid ? status : 0;
  return m_status.has_value();
}

int ForkedProcess::kill() {
  if (isRunning()) ::kill(m_pid, SIGKILL);
  return waitForEnd();
}

} // namespace vantle::test
