// SPDX-License-Identifier: MIT
#include "app/Watchdog.h"

#include "app/SignalSource.h"
#include "base/Invariant.h"
#include "base/Pid.h"
#include "platform/linux/Descriptor.h"
#include "platform/linux/process/SignalsBlocked.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <mutex>
#include <optional>
#include <poll.h>
#include <pthread.h>
#include <spawn.h>
#include <string>
#include <string_view>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace vantle {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds longestStart{30};
constexpr std::chrono::seconds longestSilence{3}; // of a main loop that is to hear a signal
constexpr std::chrono::seconds longestPuttingBack{20};
constexpr std::chrono::seconds longestTeardown{2};
constexpr std::chrono::seconds longestFreezing{1};

constexpr const char* ownProgram = "/proc/self/exe";

enum class Phase { recovering, starting, slowing, ending, over };

std::atomic<bool> isFrozen;

int freezingSignal() { return SIGRTMIN + 7; }

// The main thread stays in here: it runs no other code any more.
void freeze(int /*signal*/, siginfo_t* about, void* /*context*/) {
  if (about->si_code != SI_TKILL || about->si_pid != ::getpid()) return;
  isFrozen = true;
  for (;;) ::pause();
}

void installFreezer() {
  struct sigaction action {};
  action.sa_sigaction = freeze;
  action.sa_flags = SA_SIGINFO | SA_RESTART;
  ::sigfillset(&action.sa_mask);
  invariant(::sigaction(freezingSignal(), &action, nullptr) == 0, "signal handler refused");
}

Descriptor terminationSignals() {
  const sigset_t set = terminationSignalSet();
  return Descriptor(::signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK));
}

void say(std::string_view line) {
  const ssize_t written = ::write(STDERR_FILENO, line.data(), line.size());
  static_cast<void>(written); // whoever could read it is gone
}

// In a process of its own, since the main thread may have been stopped with any lock in its hands. Until it
// is done this one holds the lock on the single copy.
void putBackInAnotherProcess() {
  std::array<char, 16> name{"vantle"};
  std::string argument = Watchdog::helperArgument;
  std::array<char*, 3> arguments{name.data(), argument.data(), nullptr};
  Pid helper = 0;
  if (::posix_spawn(&helper, ownProgram, nullptr, nullptr, arguments.data(), environ) != 0) return;
  const Descriptor process(static_cast<int>(::syscall(SYS_pidfd_open, helper, 0)));
  pollfd ended{process.get(), POLLIN, 0};
  constexpr std::chrono::milliseconds limit = longestPuttingBack;
  while (::poll(&ended, 1, static_cast<int>(limit.count())) < 0 && errno == EINTR) {
  }
}

bool isSameFile(const char* left, const char* right) {
  struct stat one {};
  struct stat other {};
  return ::stat(left, &one) == 0 && ::stat(right, &other) == 0 && one.st_dev == other.st_dev &&
         one.st_ino == other.st_ino;
}

} // namespace

struct Watchdog::State {
  std::mutex mutex; // held while the program is ended, so that no step is taken meanwhile
  Phase phase = Phase::recovering;
  Clock::time_point phaseBegan = Clock::now();
  std::optional<Clock::time_point> asked; // when the first signal came
  std::optional<Clock::time_point> heard; // when the main loop began to answer it
  pthread_t mainThread = ::pthread_self();
  Descriptor news{::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};
  Descriptor signals = terminationSignals();

  void enter(Phase next) {
    const std::lock_guard lock(mutex);
    phase = next;
    phaseBegan = Clock::now();
    ::eventfd_write(news.get(), 1);
  }

  void watch();
  void takeNews();
  std::optional<Clock::time_point> deadline() const;
  void endIfDue() const;
  void putBackWithoutMain() const;
};

void Watchdog::State::watch() {
  for (;;) {
    int wait = -1;
    {
      const std::lock_guard lock(mutex);
      takeNews();
      endIfDue();
      if (const auto end = deadline()) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(*end - Clock::now());
        wait = static_cast<int>(std::max<std::int64_t>(left.count(), 0));
      }
    }
    std::array<pollfd, 2> sources{pollfd{news.get(), POLLIN, 0}, pollfd{signals.get(), POLLIN, 0}};
    ::poll(sources.data(), sources.size(), wait);
  }
}

void Watchdog::State::takeNews() {
  eventfd_t count = 0;
  ::eventfd_read(news.get(), &count);
  signalfd_siginfo signal{};
  while (::read(signals.get(), &signal, sizeof signal) == sizeof signal) {
    passOnSignal(static_cast<int>(signal.ssi_signo));
  }
  if (!asked && hasSignalArrived()) asked = Clock::now();
  if (!heard && isSignalHeard()) heard = Clock::now();
}

std::optional<Clock::time_point> Watchdog::State::deadline() const {
  switch (phase) {
  case Phase::recovering:
    return asked ? std::optional(*asked + longestPuttingBack) : std::nullopt;
  case Phase::starting:
    return asked ? *asked : phaseBegan + longestStart;
  case Phase::slowing:
    if (heard) return *heard + longestPuttingBack;
    return asked ? std::optional(std::max(*asked, phaseBegan) + longestSilence) : std::nullopt;
  case Phase::ending:
    return phaseBegan + longestTeardown;
  case Phase::over:
    break;
  }
  return std::nullopt;
}

void Watchdog::State::endIfDue() const {
  const auto end = deadline();
  if (!end || Clock::now() < *end) return;
  if (phase == Phase::recovering) {
    say("vantle: what an earlier run left slowed could not be put back in time.\n");
    std::_Exit(EXIT_FAILURE);
  }
  if (phase == Phase::starting && !asked) {
    say("vantle: the desktop session does not answer.\n");
    std::_Exit(EXIT_FAILURE);
  }
  if (phase == Phase::slowing) putBackWithoutMain();
  std::_Exit(EXIT_SUCCESS);
}

// It may not wake up in the middle and slow what has just been put back. While it waits in the kernel in such
// a way that the signal cannot reach it, it changes nothing; when it comes out, the signal is there first.
void Watchdog::State::putBackWithoutMain() const {
  ::pthread_kill(mainThread, freezingSignal());
  const Clock::time_point end = Clock::now() + longestFreezing;
  while (!isFrozen && Clock::now() < end) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  putBackInAnotherProcess();
}

Watchdog::Watchdog() {
  holdTerminationSignals();
  installFreezer();
  m_state = std::make_shared<State>();
  tellOfSignals(m_state->news.get());
  const SignalsBlocked blocked;
  std::thread([state = m_state] { state->watch(); }).detach();
}

Watchdog::~Watchdog() {
  tellOfSignals(-1);
  m_state->enter(Phase::over);
}

void Watchdog::recovered() { m_state->enter(Phase::starting); }
void Watchdog::maySlow() { m_state->enter(Phase::slowing); }

void Watchdog::stillAtIt() {
  const std::lock_guard lock(m_state->mutex);
  for (auto* since : {&m_state->asked, &m_state->heard}) {
    if (*since) *since = Clock::now();
  }
  ::eventfd_write(m_state->news.get(), 1);
}

void Watchdog::putBack() { m_state->enter(Phase::ending); }

bool Watchdog::isParentsHelper() {
  return isSameFile(("/proc/" + std::to_string(::getppid()) + "/exe").c_str(), ownProgram);
}

} // namespace vantle
