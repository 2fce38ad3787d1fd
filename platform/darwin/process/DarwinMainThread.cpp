// SPDX-License-Identifier: MIT
#include "platform/darwin/process/DarwinMainThread.h"

#include "base/Invariant.h"
#include "base/Pid.h"
#include "platform/darwin/process/LibprocProcessTable.h"
#include "platform/posix/process/Pipe.h"
#include "platform/posix/process/SignalSource.h"
#include "platform/posix/process/SignalsBlocked.h"

#include <atomic>
#include <csignal>
#include <poll.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>

extern "C" char** environ; // NOLINT(readability-redundant-declaration): the system leaves that to programs

namespace vantle {

namespace {

using Steady = std::chrono::steady_clock;

constexpr std::chrono::seconds longestFreezing{1};
constexpr int freezingSignal = SIGUSR2;

// A signal handler, and a thread that outlives whoever started it, can reach nothing but globals.
std::atomic<pthread_t> mainThread;
std::atomic<bool> isToFreeze;
std::atomic<bool> isFrozen;
std::atomic<int> news{-1};

void tellOfNews() {
  const int descriptor = news;
  const char byte = 0;
  if (descriptor < 0) return;
  const ssize_t written = ::write(descriptor, &byte, 1);
  static_cast<void>(written); // a full pipe has told of news already
}

// The main thread stays in here: it runs no other code any more. Anybody may send that signal.
void stayFrozen(int /*signal*/) {
  if (!isToFreeze || ::pthread_equal(::pthread_self(), mainThread) == 0) return;
  isFrozen = true;
  for (;;) ::pause();
}

void installFreezer() {
  struct sigaction action {};
  action.sa_handler = stayFrozen;
  action.sa_flags = SA_RESTART;
  sigfillset(&action.sa_mask);
  invariant(::sigaction(freezingSignal, &action, nullptr) == 0, "signal handler refused");
}

// Takes them from the whole process, also while the main thread keeps them waiting. Once it takes them
// itself, either of the two gets each.
[[noreturn]] void passSignalsOn() {
  const sigset_t set = terminationSignalSet();
  for (;;) {
    int signal = 0;
    if (::sigwait(&set, &signal) != 0) continue;
    passOnSignal(signal);
    tellOfNews();
  }
}

void takeSignals() {
  static const bool isStarted = [] {
    const SignalsBlocked blocked;
    std::thread(passSignalsOn).detach();
    return true;
  }();
  static_cast<void>(isStarted);
}

bool isSameFile(const std::string& left, const std::string& right) {
  struct stat one {};
  struct stat other {};
  return ::stat(left.c_str(), &one) == 0 && ::stat(right.c_str(), &other) == 0 &&
         one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

std::string programOf(Pid pid) { return LibprocProcessTable().executablePathBytes(pid).value_or(""); }

} // namespace

DarwinMainThread::DarwinMainThread() : m_program(programOf(::getpid())) {
  invariant(openPipe(m_news, PipeReading::returns), "no pipe for a thread");
  mainThread = ::pthread_self();
  holdTerminationSignals();
  installFreezer();
  news = m_news[1];
  tellOfSignals(m_news[1]);
  takeSignals();
}

DarwinMainThread::~DarwinMainThread() {
  tellOfSignals(-1);
  news = -1;
  for (const int end : m_news) ::close(end);
}

void DarwinMainThread::watchFrom(std::function<void()> watch) {
  const SignalsBlocked blocked;
  std::thread(std::move(watch)).detach();
}

void DarwinMainThread::await(std::optional<std::chrono::milliseconds> limit) {
  pollfd source{m_news[0], POLLIN, 0};
  ::poll(&source, 1, limit ? static_cast<int>(limit->count()) : -1);
  std::array<char, 64> bytes{};
  while (::read(m_news[0], bytes.data(), bytes.size()) > 0) {
  }
}

bool DarwinMainThread::isAskedToEnd() const { return hasSignalArrived(); }
bool DarwinMainThread::isAnswering() const { return isSignalHeard(); }
void DarwinMainThread::wakeWatcher() { tellOfNews(); }

void DarwinMainThread::freeze() {
  isToFreeze = true;
  ::pthread_kill(mainThread, freezingSignal);
  const Steady::time_point end = Steady::now() + longestFreezing;
  while (!isFrozen && Steady::now() < end) std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

void DarwinMainThread::runProgram(const char* argument, std::chrono::milliseconds limit) {
  std::array<char, 16> name{"vantle"};
  std::array<char, 64> text{}; // what is spawned wants its arguments writable
  const std::string_view given(argument);
  given.copy(text.data(), text.size() - 1);
  std::array<char*, 3> arguments{name.data(), text.data(), nullptr};
  Pid pid = 0;
  if (::posix_spawn(&pid, m_program.c_str(), nullptr, nullptr, arguments.data(), environ) != 0) return;
  const Steady::time_point end = Steady::now() + limit;
  while (::waitpid(pid, nullptr, WNOHANG) == 0 && Steady::now() < end) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

void DarwinMainThread::say(std::string_view line) {
  const ssize_t written = ::write(STDERR_FILENO, line.data(), line.size());
  static_cast<void>(written); // whoever could read it is gone
}

bool isStartedByOwnProgram() { return isSameFile(programOf(::getppid()), programOf(::getpid())); }

} // namespace vantle
