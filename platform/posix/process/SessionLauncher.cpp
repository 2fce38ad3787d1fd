// SPDX-License-Identifier: MIT
#include "platform/posix/process/SessionLauncher.h"

#include "platform/posix/process/OpenDescriptors.h"
#include "platform/posix/process/Pipe.h"
#include "platform/posix/process/SignalsBlocked.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <optional>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace vantle {

namespace {

// The pid stays this child's until the child is waited for, so signals cannot reach a stranger.
class ChildProcess final : public Subprocess {
 public:
  ChildProcess(Pid pid, std::shared_ptr<ChildGuard> guard) : m_pid(pid), m_guard(std::move(guard)) {}
  ~ChildProcess() override {
    if (!m_hasEnded) m_guard->forget(m_pid); // whoever lets go of a program wants it to run on
  }
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  Pid processIdentifier() const override { return m_pid; }

  bool isRunning() override {
    if (m_hasEnded) return false;
    waitForEnd(WNOHANG);
    return !m_hasEnded;
  }

  void terminate() override {
    if (!isRunning()) return;
    ::kill(m_pid, SIGTERM);
    ::kill(m_pid, SIGCONT); // one that somebody has stopped would keep it for later
  }

  void waitUntilExit() override {
    if (!m_hasEnded) waitForEnd(0);
  }

 private:
  void waitForEnd(int flags) {
    Pid result = 0;
    do {
      result = ::waitpid(m_pid, nullptr, flags);
    } while (result < 0 && errno == EINTR);
    m_hasEnded = result != 0; // on an error as well: then it is no child of ours any more
    if (m_hasEnded) m_guard->forget(m_pid);
  }

  Pid m_pid;
  std::shared_ptr<ChildGuard> m_guard;
  bool m_hasEnded = false;
};

// Reading from it is at its end as soon as the child has become the program.
class FailurePipe {
 public:
  FailurePipe() {
    if (!openPipe(m_ends, PipeReading::waits)) return;
    m_isOpen = true;
    // Out of the way of the standard descriptors, should one be closed here.
    const int writer = ::fcntl(m_ends[1], F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    if (writer < 0) return;
    ::close(std::exchange(m_ends[1], writer));
  }
  ~FailurePipe() {
    if (!m_isOpen) return;
    ::close(m_ends[0]);
    closeWriter();
  }
  FailurePipe(const FailurePipe&) = delete;
  FailurePipe& operator=(const FailurePipe&) = delete;

  bool isOpen() const { return m_isOpen; }
  void fail() const { // in the child
    const char failed = 1;
    [[maybe_unused]] const ssize_t written = ::write(m_ends[1], &failed, 1);
    ::_exit(127);
  }
  bool hasFailed() {
    closeWriter();
    char failed = 0;
    ssize_t size = 0;
    do {
      size = ::read(m_ends[0], &failed, 1);
    } while (size < 0 && errno == EINTR);
    return size != 0;
  }

 private:
  void closeWriter() {
    if (m_ends[1] >= 0) ::close(m_ends[1]);
    m_ends[1] = -1;
  }

  std::array<int, 2> m_ends{-1, -1};
  bool m_isOpen = false;
};

// What the child starts with: perhaps a session, standard descriptors that lead nowhere and no others, and
// the signal handling that programs expect. Between fork and exec, so only calls that are safe there.
void prepareChild(SessionLauncher::Session session, const ChildGuard& guard, const FailurePipe& failure) {
  guard.follow(::getpid());
  if (session == SessionLauncher::Session::own) ::setsid();
  const int nothing = ::open("/dev/null", O_RDWR);
  for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (::dup2(nothing, standard) < 0) failure.fail();
  }
  closeAllAtExecFrom(STDERR_FILENO + 1);
  for (int number = 1; number < NSIG; ++number) ::signal(number, SIG_DFL);
  sigset_t none;
  sigemptyset(&none);
  ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

} // namespace

std::unique_ptr<Subprocess> SessionLauncher::launch(const std::string& executablePath) {
  FailurePipe failure;
  if (!failure.isOpen()) return nullptr;
  std::string name = executablePath; // exec wants the arguments writable
  const std::array<char*, 2> arguments{name.data(), nullptr};
  if (!m_guard) m_guard = std::make_shared<ChildGuard>();
  std::optional<SignalsBlocked> blocked(std::in_place);
  const Pid pid = ::fork();
  if (pid == 0) {
    prepareChild(m_session, *m_guard, failure);
    ::execv(executablePath.c_str(), arguments.data());
    failure.fail();
  }
  blocked.reset();
  if (pid < 0) return nullptr;
  auto child = std::make_unique<ChildProcess>(pid, m_guard);
  if (failure.hasFailed()) {
    child->waitUntilExit();
    return nullptr;
  }
  if (m_place) m_place(pid);
  return child;
}

} // namespace vantle
