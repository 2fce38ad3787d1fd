// SPDX-License-Identifier: MIT
#pragma once

#include "base/Registration.h"
#include "platform/shared/EventLoop.h"

#include <csignal>
#include <functional>
#include <memory>
#include <vector>

namespace vantle {

// The three signals that ask the program to end: SIGTERM, SIGINT, SIGHUP. What others end (SIGQUIT, say), as
// a fault does, the next start puts back.

// Keeps them waiting from here on, so that none of them can end the program between the first app that is
// slowed down and the moment its source exists.
void holdTerminationSignals();
sigset_t terminationSignalSet();

// What somebody beside the main loop has to know of them (what is written to the descriptor, a pipe or an
// event counter, says that there is news; -1 for nobody), and can do for it: a signal that was taken on
// another thread reaches its source this way, even one that does not exist yet.
void tellOfSignals(int descriptor);
bool hasSignalArrived();
bool isSignalHeard(); // by the main loop
void passOnSignal(int signal);

// Delivers one signal on the main loop instead of letting it end the process. A held signal that has arrived
// already is delivered too.
class SignalSource {
 public:
  SignalSource(EventLoop& loop, int signal, std::function<void()> handler);
  ~SignalSource();
  SignalSource(const SignalSource&) = delete;
  SignalSource& operator=(const SignalSource&) = delete;

 private:
  int m_signal;
  int m_read = -1;
  int m_write = -1;
  std::unique_ptr<EventLoop::Handle> m_watch;
};

// All three.
class TerminationSources final : public Registration {
 public:
  TerminationSources(EventLoop& loop, const std::function<void()>& handler);

 private:
  std::vector<std::unique_ptr<SignalSource>> m_sources;
};

} // namespace vantle
