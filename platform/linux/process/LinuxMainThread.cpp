// SPDX-License-Identifier: MIT
#include "platform/linux/process/LinuxMainThread.h"

#include "platform/posix/process/SignalSource.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace vantle {

namespace {

constexpr const char* ownProgram = "/proc/self/exe";

int signalDescriptor() {
  const sigset_t set = terminationSignalSet();
  return ::signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK);
}

} // namespace

LinuxMainThread::LinuxMainThread()
    : PosixMainThread(SIGRTMIN + 7), m_news(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      m_signals(signalDescriptor()) {
  tellOfSignals(m_news.get());
}

LinuxMainThread::~LinuxMainThread() { tellOfSignals(-1); }

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

void LinuxMainThread::wakeWatcher() { ::eventfd_write(m_news.get(), 1); }

void LinuxMainThread::runProgram(const char* argument, std::chrono::milliseconds limit) {
  const Pid pid = start(ownProgram, argument);
  if (pid == 0) return;
  const Descriptor process(static_cast<int>(::syscall(SYS_pidfd_open, pid, 0)));
  pollfd ended{process.get(), POLLIN, 0};
  while (::poll(&ended, 1, static_cast<int>(limit.count())) < 0 && errno == EINTR) {
  }
}

bool isStartedByOwnProgram() {
  return isSameFile("/proc/" + std::to_string(::getppid()) + "/exe", ownProgram);
}

} // namespace vantle
