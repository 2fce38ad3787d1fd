// SPDX-License-Identifier: MIT
#pragma once

#include "platform/posix/process/SignalSource.h"
#include "platform/shared/PollEventLoop.h"

#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <unistd.h>

// What every system's main thread has to do, with real signals and threads: each in a process of its own,
// which it ends with 0 when all was right.
namespace vantle {

[[noreturn]] inline void leave(bool isRight) { std::_Exit(isRight ? 0 : 1); }

template <class Thread> [[noreturn]] void seesASignalThatWaits() {
  Thread thread;
  if (thread.isAskedToEnd() || thread.isAnswering()) leave(false);
  ::kill(::getpid(), SIGTERM);
  while (!thread.isAskedToEnd()) thread.await(std::nullopt); // it is woken for that
  leave(!thread.isAnswering());
}

template <class Thread> [[noreturn]] void passesOnAnEarlySignal() {
  Thread thread;
  ::kill(::getpid(), SIGINT);
  while (!thread.isAskedToEnd()) thread.await(std::nullopt);
  PollEventLoop loop;
  bool isHeard = false;
  const TerminationSources sources(loop, [&] { isHeard = true; });
  loop.runUntil([&] { return isHeard; }, std::chrono::seconds(60));
  leave(isHeard && thread.isAnswering());
}

template <class Thread> [[noreturn]] void passesOnALateSignal() {
  Thread thread;
  PollEventLoop loop;
  bool isHeard = false;
  const TerminationSources sources(loop, [&] { isHeard = true; });
  ::kill(::getpid(), SIGHUP);
  loop.runUntil([&] { return isHeard; }, std::chrono::seconds(60));
  leave(isHeard && thread.isAskedToEnd());
}

template <class Thread> [[noreturn]] void wakesTheWatcher() {
  Thread thread;
  thread.await(std::chrono::milliseconds(1));
  thread.wakeWatcher();
  thread.await(std::nullopt);
  leave(true);
}

template <class Thread> [[noreturn]] void standsStillWhenFrozen(int signal) {
  Thread thread;
  ::kill(::getpid(), signal); // anybody's
  thread.watchFrom([&] {
    sigset_t blocked;
    ::pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
    thread.freeze();
    leave(sigismember(&blocked, SIGTERM) == 1);
  });
  for (volatile std::uint64_t count = 0;;) count = count + 1; // at work
}

} // namespace vantle
