// SPDX-License-Identifier: MIT
#include "platform/linux/process/SessionLauncher.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vantle {

namespace {

// The pid stays this child's until the child is waited for, so signals cannot reach a stranger.
class ChildProcess final : public Subprocess {
 public:
  explicit ChildProcess(Pid pid) : m_pid(pid) {}

  Pid processIdentifier() const override { return m_pid; }

  bool isRunning() override {
    if (m_hasEnded) return false;
    waitForEnd(WNOHANG);
    return !m_hasEnded;
  }

  void terminate() override {
    if (isRunning()) ::kill(m_pid, SIGTERM);
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
  }

  Pid m_pid;
  bool m_hasEnded = false;
};

// What the child starts with: perhaps a session, standard descriptors that lead nowhere and no others, and
// the signal handling that programs expect.
class SpawnOptions {
 public:
  explicit SpawnOptions(SessionLauncher::Session session) {
    ::posix_spawnattr_init(&m_attributes);
    const int ownSession = session == SessionLauncher::Session::own ? POSIX_SPAWN_SETSID : 0;
    ::posix_spawnattr_setflags(
        &m_attributes, static_cast<short>(ownSession | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF));
    sigset_t signals;
    ::sigemptyset(&signals);
    ::posix_spawnattr_setsigmask(&m_attributes, &signals);
    ::sigfillset(&signals);
    ::posix_spawnattr_setsigdefault(&m_attributes, &signals);

    ::posix_spawn_file_actions_init(&m_actions);
    ::posix_spawn_file_actions_addopen(&m_actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_addopen(&m_actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    ::posix_spawn_file_actions_addopen(&m_actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    ::posix_spawn_file_actions_addclosefrom_np(&m_actions, STDERR_FILENO + 1);
  }
  ~SpawnOptions() {
    ::posix_spawn_file_actions_destroy(&m_actions);
    ::posix_spawnattr_destroy(&m_attributes);
  }
  SpawnOptions(const SpawnOptions&) = delete;
  SpawnOptions& operator=(const SpawnOptions&) = delete;

  const posix_spawnattr_t* attributes() const { return &m_attributes; }
  const posix_spawn_file_actions_t* actions() const { return &m_actions; }

 private:
  posix_spawnattr_t m_attributes{};
  posix_spawn_file_actions_t m_actions{};
};

} // namespace

std::unique_ptr<Subprocess> SessionLauncher::launch(const std::string& executablePath) {
  const SpawnOptions options(m_session);
  std::string name = executablePath; // posix_spawn wants the arguments writable
  std::array<char*, 2> arguments{name.data(), nullptr};
  Pid pid = 0;
  if (::posix_spawn(&pid, executablePath.c_str(), options.actions(), options.attributes(), arguments.data(),
                    environ) != 0) {
    return nullptr;
  }
  if (m_place) m_place(pid);
  return std::make_unique<ChildProcess>(pid);
}

} // namespace vantle
