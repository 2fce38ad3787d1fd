// SPDX-License-Identifier: MIT
#include "platform/linux/hooks/HookProcess.h"

#include "base/Pid.h"
#include "platform/posix/process/OpenDescriptors.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <string_view>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vantle {
namespace {

// Only calls that are safe between fork and exec from here on.

void say(std::string_view line) {
  [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, line.data(), line.size());
}

[[noreturn]] void becomeHook(char* const* arguments, char* const* environment, int output,
                             std::chrono::seconds limit) {
  ::alarm(static_cast<unsigned>(limit.count())); // for when this program has ended
  ::dup2(output, STDERR_FILENO);
  ::dup2(output, STDOUT_FILENO);
  closeAllAtExecFrom(STDERR_FILENO + 1);
  ::signal(SIGPIPE, SIG_DFL);
  ::execve(arguments[0], arguments, environment);
  say("vantle: a hook cannot be started.\n");
  ::_exit(127);
}

// What the log does not take is lost to it, and keeps nobody.
class Copy {
 public:
  // Whether there may be more.
  bool readFrom(int output) {
    std::array<char, 4096> bytes; // NOLINT(*-member-init): read() fills what is used of it
    const ssize_t count = ::read(output, bytes.data(), bytes.size());
    if (count <= 0) return count < 0 && errno == EINTR;
    const std::size_t most = std::min(static_cast<std::size_t>(count), m_left);
    say({bytes.data(), most});
    m_left -= most;
    if (most < static_cast<std::size_t>(count) && !m_isCut) {
      m_isCut = true;
      say("\nvantle: a hook prints more than 64 KB; the rest is left out.\n");
    }
    return true;
  }
  bool isCut() const { return m_isCut; }

 private:
  std::size_t m_left = mostHookOutput;
  bool m_isCut = false;
};

// Programs that the hook leaves running may hold the pipe open: it is its own end that counts.
void copyUntilItsEnd(int output, int hook) {
  Copy copy;
  std::array<pollfd, 2> watched{{{output, POLLIN, 0}, {hook, POLLIN, 0}}};
  while (watched[1].revents == 0) {
    if (::poll(watched.data(), watched.size(), -1) < 0) continue;
    if (watched[0].revents != 0 && !copy.readFrom(output)) watched[0].fd = -1;
  }
  ::fcntl(output, F_SETFL, O_NONBLOCK);
  while (!copy.isCut() && copy.readFrom(output)) {
  }
}

} // namespace

void leadHook(char* const* arguments, char* const* environment, std::chrono::seconds limit) {
  ::setsid();
  ::alarm(static_cast<unsigned>(limit.count()));
  const int nothing = ::open("/dev/null", O_RDWR);
  ::dup2(nothing, STDIN_FILENO);
  if (::fcntl(STDERR_FILENO, F_GETFD) < 0) ::dup2(nothing, STDERR_FILENO);
  ::dup2(STDERR_FILENO, STDOUT_FILENO);
  closeAllFrom(STDERR_FILENO + 1);
  for (int number = 1; number < NSIG; ++number) ::signal(number, SIG_DFL);
  ::signal(SIGPIPE, SIG_IGN);
  sigset_t none;
  ::sigemptyset(&none);
  ::sigprocmask(SIG_SETMASK, &none, nullptr);
  std::array<int, 2> ends{};
  if (::pipe(ends.data()) != 0) ::_exit(127);
  const Pid hook = ::fork();
  if (hook == 0) becomeHook(arguments, environment, ends[1], limit);
  ::close(ends[1]);
  const int process = hook < 0 ? -1 : static_cast<int>(::syscall(SYS_pidfd_open, hook, 0));
  if (process >= 0) copyUntilItsEnd(ends[0], process);
  ::_exit(0);
}

} // namespace vantle
