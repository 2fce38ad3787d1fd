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
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace vantle {

namespace {

using Steady = std::chrono::steady_clock;

// A thread that outlives whoever started it can reach nothing but globals.
std::atomic<int> news{-1};

void tellOfNews() {
  const int descriptor = news;
  const char byte = 0;
  if (descriptor < 0) return;
  const ssize_t written = ::write(descriptor, &byte, 1);
  static_cast<void>(written); // a full pipe has told of news already
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

std::string programOf(Pid pid) { return LibprocProcessTable().executablePathBytes(pid).value_or(""); }

} // namespace

DarwinMainThread::DarwinMainThread() : PosixMainThread(SIGUSR2), m_program(programOf(::getpid())) {
  invariant(openPipe(m_news, PipeReading::returns), "no pipe for a thread");
  news = m_news[1];
  tellOfSignals(m_news[1]);
  takeSignals();
}

DarwinMainThread::~DarwinMainThread() {
  tellOfSignals(-1);
  news = -1;
  for (const int end : m_news) ::close(end);
}

void DarwinMainThread::await(std::optional<std::chrono::milliseconds> limit) {
  pollfd source{m_news[0], POLLIN, 0};
  ::poll(&source, 1, limit ? static_cast<int>(limit->count()) : -1);
  std::array<char, 64> bytes{};
  while (::read(m_news[0], bytes.data(), bytes.size()) > 0) {
  }
}

void DarwinMainThread::wakeWatcher() { tellOfNews(); }

void DarwinMainThread::runProgram(const char* argument, std::chrono::milliseconds limit) {
  const Pid pid = start(m_program.c_str(), argument);
  const Steady::time_point end = Steady::now() + limit;
  while (pid != 0 && ::waitpid(pid, nullptr, WNOHANG) == 0 && Steady::now() < end) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

bool isStartedByOwnProgram() { return isSameFile(programOf(::getppid()), programOf(::getpid())); }

} // namespace vantle
