// SPDX-License-Identifier: MIT
#include "platform/posix/process/PosixMainThread.h"

#include "base/Invariant.h"
#include "platform/posix/process/SignalSource.h"
#include "platform/posix/process/SignalsBlocked.h"

#include <array>
#include <atomic>
#include <csignal>
#include <spawn.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <utility>

extern "C" char** environ; // NOLINT(readability-redundant-declaration): POSIX leaves that to programs

namespace vantle {

namespace {

using Steady = std::chrono::steady_clock;

constexpr std::chrono::seconds longestFreezing{1};

// A signal handler can reach nothing but globals.
std::atomic<pthread_t> mainThread;
std::atomic<bool> isToFreeze;
std::atomic<bool> isFrozen;

// The main thread stays in here: it runs no other code any more. Anybody may send that signal.
void stayFrozen(int /*signal*/) {
  if (!isToFreeze || ::pthread_equal(::pthread_self(), mainThread) == 0) return;
  isFrozen = true;
  for (;;) ::pause();
}

void installFreezer(int signal) {
  struct sigaction action {};
  action.sa_handler = stayFrozen;
  action.sa_flags = SA_RESTART;
  sigfillset(&action.sa_mask);
  invariant(::sigaction(signal, &action, nullptr) == 0, "signal handler refused");
}

} // namespace

PosixMainThread::PosixMainThread(int freezingSignal)
    : m_freezingSignal(freezingSignal), m_thread(::pthread_self()) {
  mainThread = m_thread;
  holdTerminationSignals();
  installFreezer(m_freezingSignal);
}

void PosixMainThread::watchFrom(std::function<void()> watch) {
  const SignalsBlocked blocked;
  std::thread(std::move(watch)).detach();
}

bool PosixMainThread::isAskedToEnd() const { return hasSignalArrived(); }
bool PosixMainThread::isAnswering() const { return isSignalHeard(); }

void PosixMainThread::freeze() {
  isToFreeze = true;
  ::pthread_kill(m_thread, m_freezingSignal);
  const Steady::time_point end = Steady::now() + longestFreezing;
  while (!isFrozen && Steady::now() < end) std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

void PosixMainThread::say(std::string_view line) {
  const ssize_t written = ::write(STDERR_FILENO, line.data(), line.size());
  static_cast<void>(written); // whoever could read it is gone
}

Pid PosixMainThread::start(const char* program, std::string_view argument) {
  std::array<char, 16> name{"vantle"}; // what is spawned wants its arguments writable
  std::array<char, 64> text{};
  argument.copy(text.data(), text.size() - 1);
  std::array<char*, 3> arguments{name.data(), text.data(), nullptr};
  Pid pid = 0;
  return ::posix_spawn(&pid, program, nullptr, nullptr, arguments.data(), environ) == 0 ? pid : 0;
}

bool isSameFile(const std::string& left, const std::string& right) {
  struct stat one {};
  struct stat other {};
  return ::stat(left.c_str(), &one) == 0 && ::stat(right.c_str(), &other) == 0 &&
         one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

} // namespace vantle
