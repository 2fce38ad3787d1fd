// SPDX-License-Identifier: MIT
#include "platform/linux/process/LinuxMainThread.h"

#include "base/Invariant.h"
#include "base/Pid.h"
#include "platform/posix/process/SignalSource.h"
#include "platform/posix/process/SignalsBlocked.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <poll.h>
#include <pthread.h>
#include <spawn.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace vantle {

namespace {

using Steady = std::chrono::steady_clock;

constexpr std::chrono::seconds longestFreezing{1};

constexpr const char* ownProgram = "/proc/self/exe";

std::atomic<bool> isFrozen;

int freezingSignal() { return SIGRTMIN + 7; }

// The main thread stays in here: it runs no other code any more.
void stayFrozen(int /*signal*/, siginfo_t* about, void* /*context*/) {
  if (about->si_code != SI_TKILL || about->si_pid != ::getpid()) return;
  isFrozen = true;
  for (;;) ::pause();
}

void installFreezer() {
  struct sigaction action {};
  action.sa_sigaction = stayFrozen;
  action.sa_flags = SA_SIGINFO | SA_RESTART;
  ::sigfillset(&action.sa_mask);
  invariant(::sigaction(freezingSignal(), &action, nullptr) == 0, "signal handler refused");
}

int signalDescriptor() {
  const sigset_t set = terminationSignalSet();
  return ::signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK);
}

bool isSameFile(const char* left, const char* right) {
  struct stat one {};
  struct stat other {};
  return ::stat(left, &one) == 0 && ::stat(right, &other) == 0 && one.st_dev == other.st_dev &&
         one.st_ino == other.st_ino;
}

} // namespace

LinuxMainThread::LinuxMainThread()
    : m_thread(::pthread_self()), m_news(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      m_signals(signalDescriptor()) {
  holdTerminationSignals();
  installFreezer();
  tellOfSignals(m_news.get());
}

LinuxMainThread::~LinuxMainThread() { tellOfSignals(-1); }

void LinuxMainThread::watchFrom(std::function<void()> watch) {
  const SignalsBlocked blocked;
  std::thread(std::move(watch)).detach();
}

void LinuxMainThread::await(std::optional<std::chrono::milliseconds> limit) {
  std::array<pollfd, 2> sources{pollfd{m_news.get(), POLLIN, 0}, pollfd{m_signals.get(), POLLIN, 0}};
  ::poll(sources.data(), sources.size(), limit ? static_cast<int>(limit->count()) : -1);
  eventfd_t count = 0;
  ::eventfd_read(m_news.get(), &count);
  signalfd_siginfo signal{};
  while (::read(m_signals.get(), &signal, sizeof signal) == sizeof signal) {
    passOnSignal(static_cast<int>(signal.ssi_signo));
  }
}

bool LinuxMainThread::isAskedToEnd() const { return hasSignalArrived(); }
bool LinuxMainThread::isAnswering() const { return isSignalHeard(); }
void LinuxMainThread::wakeWatcher() { ::eventfd_write(m_news.get(), 1); }

void LinuxMainThread::freeze() {
  ::pthread_kill(m_thread, freezingSignal());
  const Steady::time_point end = Steady::now() + longestFreezing;
  while (!isFrozen && Steady::now() < end) std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

void LinuxMainThread::runProgram(const char* argument, std::chrono::milliseconds limit) {
  std::array<char, 16> name{"vantle"};
  std::string text = argument; // what is spawned wants its arguments writable
  std::array<char*, 3> arguments{name.data(), text.data(), nullptr};
  Pid pid = 0;
  if (::posix_spawn(&pid, ownProgram, nullptr, nullptr, arguments.data(), environ) != 0) return;
  const Descriptor process(static_cast<int>(::syscall(SYS_pidfd_open, pid, 0)));
  pollfd ended{process.get(), POLLIN, 0};
  while (::poll(&ended, 1, static_cast<int>(limit.count())) < 0 && errno == EINTR) {
  }
}

void LinuxMainThread::say(std::string_view line) {
  const ssize_t written = ::write(STDERR_FILENO, line.data(), line.size());
  static_cast<void>(written); // whoever could read it is gone
}

bool isStartedByOwnProgram() {
  return isSameFile(("/proc/" + std::to_string(::getppid()) + "/exe").c_str(), ownProgram);
}

} // namespace vantle
