// SPDX-License-Identifier: MIT
#include "platform/posix/process/SignalSource.h"

#include "base/Invariant.h"
#include "platform/posix/process/Pipe.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <unistd.h>
#include <utility>

namespace vantle {

namespace {

constexpr std::array terminationSignals{SIGTERM, SIGINT, SIGHUP};

// A signal handler can reach nothing but globals: the pipe of each signal. 0 stands for none; it is never the
// writing end, since the reading end of the same pipe has a lower number.
std::array<std::atomic<int>, NSIG> writeEnds;
std::array<std::atomic<bool>, NSIG> arrived;
std::atomic<bool> hasAnyArrived;
std::atomic<bool> isAnyHeard;
std::atomic<int> listener{-1};

void tellListener() {
  const int descriptor = listener;
  if (descriptor < 0) return;
  const std::uint64_t one = 1; // a whole number, as an event counter takes nothing else
  const ssize_t written = ::write(descriptor, &one, sizeof one);
  static_cast<void>(written); // one that is full has told of news already
}

void noteSignal(int signal) {
  const int saved = errno;
  passOnSignal(signal);
  tellListener();
  errno = saved;
}

void changeMask(int how, const sigset_t& set) {
  invariant(::pthread_sigmask(how, &set, nullptr) == 0, "signal mask refused");
}

} // namespace

void holdTerminationSignals() { changeMask(SIG_BLOCK, terminationSignalSet()); }

sigset_t terminationSignalSet() {
  sigset_t set;
  sigemptyset(&set);
  for (const int signal : terminationSignals) sigaddset(&set, signal);
  return set;
}

void tellOfSignals(int descriptor) { listener = descriptor; }
bool hasSignalArrived() { return hasAnyArrived; }
bool isSignalHeard() { return isAnyHeard; }

void passOnSignal(int signal) {
  const auto index = static_cast<std::size_t>(signal);
  arrived.at(index) = true;
  hasAnyArrived = true;
  const int end = writeEnds.at(index);
  if (end == 0) return; // the source looks when it is made
  const char byte = 0;
  const ssize_t written = ::write(end, &byte, 1);
  static_cast<void>(written); // a full pipe already says all there is to say
}

// A handler and a pipe rather than a descriptor of signals that stay blocked: programs started from here
// inherit the mask, but never a handler.
SignalSource::SignalSource(EventLoop& loop, int signal, std::function<void()> handler) : m_signal(signal) {
  std::array<int, 2> ends{-1, -1};
  invariant(openPipe(ends, PipeReading::returns), "no pipe for a signal");
  m_read = ends[0];
  m_write = ends[1];
  const auto index = static_cast<std::size_t>(signal);
  writeEnds.at(index) = m_write;
  if (arrived.at(index)) passOnSignal(signal);
  m_watch = loop.watch(m_read, EventLoop::Readiness::readable, [read = m_read, call = std::move(handler)] {
    std::array<char, 64> bytes{};
    while (::read(read, bytes.data(), bytes.size()) > 0) {
    }
    isAnyHeard = true;
    tellListener();
    call();
  });

  struct sigaction action {};
  action.sa_handler = noteSignal;
  action.sa_flags = SA_RESTART;
  sigemptyset(&action.sa_mask);
  invariant(::sigaction(signal, &action, nullptr) == 0, "signal handler refused");
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, signal);
  changeMask(SIG_UNBLOCK, set);
}

SignalSource::~SignalSource() {
  std::signal(m_signal, SIG_IGN);
  writeEnds.at(static_cast<std::size_t>(m_signal)) = 0;
  m_watch.reset();
  ::close(m_read);
  ::close(m_write);
}

TerminationSources::TerminationSources(EventLoop& loop, const std::function<void()>& handler) {
  for (const int signal : terminationSignals) {
    m_sources.push_back(std::make_unique<SignalSource>(loop, signal, handler));
  }
}

} // namespace vantle
