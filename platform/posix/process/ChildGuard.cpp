// SPDX-License-Identifier: MIT
#include "platform/posix/process/ChildGuard.h"

#include "platform/posix/process/BrokenPipe.h"
#include "platform/posix/process/OpenDescriptors.h"
#include "platform/posix/process/Pipe.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <fcntl.h>
#include <unistd.h>

namespace vantle {

namespace {

// Two for each processor of a large machine. Nothing can be allocated: this program may have had more than
// one thread when it forked.
std::array<Pid, 4096> followed;

void take(Pid message) {
  const auto entry = std::find(followed.begin(), followed.end(), message > 0 ? 0 : -message);
  if (entry != followed.end()) *entry = std::max(message, 0);
}

// Signals are for the program that it watches over: it ends with that one's end, however that came.
[[noreturn]] void watch(int line) {
  sigset_t all;
  sigfillset(&all);
  ::sigprocmask(SIG_SETMASK, &all, nullptr);
  ::setsid();
  // Whoever reads what the program prints waits for every writer.
  if (::dup2(line, STDIN_FILENO) != STDIN_FILENO) ::_exit(1);
  closeAllFrom(STDOUT_FILENO);
  Pid message = 0;
  for (;;) {
    const ssize_t size = ::read(STDIN_FILENO, &message, sizeof message);
    if (size < 0 && errno == EINTR) continue;
    if (size != sizeof message) break;
    take(message);
  }
  for (const Pid pid : followed) {
    if (pid > 0) ::kill(pid, SIGKILL);
  }
  ::_exit(0);
}

} // namespace

ChildGuard::ChildGuard() {
  std::array<int, 2> ends{-1, -1};
  if (!openPipe(ends, PipeReading::waits)) return;
  const Pid guard = ::fork();
  if (guard == 0) {
    ::close(ends[1]);
    watch(ends[0]);
  }
  ::close(ends[0]);
  // Out of the way of the standard descriptors, should one be closed here.
  m_line = Descriptor(guard > 0 ? ::fcntl(ends[1], F_DUPFD_CLOEXEC, STDERR_FILENO + 1) : -1);
  ::close(ends[1]);
}

// Nothing is told to one that was killed. What is as short as this goes into a pipe whole, whoever else
// writes.
void ChildGuard::tell(Pid message) const {
  if (m_line) writeQuietly(m_line.get(), &message, sizeof message);
}

} // namespace vantle
