// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Platform.h"

#include <memory>

namespace vantle {

// Ends the program when its main thread cannot: an X server that no longer answers, or a file of a file
// system that has died, can keep that thread waiting for ever. A thread of its own hears the signals that ask
// the program to end, and whatever happens, nothing stays slowed: what the main thread does not put back in
// time another process does, while the main thread is kept from changing anything more.
//
// How far the program is, is told it step by step.
class Watchdog {
 public:
  // Until the next step a signal waits.
  explicit Watchdog(std::unique_ptr<MainThread> mainThread);
  ~Watchdog();
  Watchdog(const Watchdog&) = delete;
  Watchdog& operator=(const Watchdog&) = delete;

  // What an earlier run left is put back, and nothing is slowed yet: a signal ends the program at once with
  // status 0. A start that takes too long ends with status 1, and says why.
  void recovered();
  // From here on the main loop answers signals, when it can.
  void maySlow();
  // What is put back takes its time, and goes on.
  void stillAtIt();
  // From another thread than the main one, which runs no further: what is slowed is put back.
  void putBackWithoutMain();
  // Everything is put back for good. What still wants to end in order has a moment for it.
  void putBack();

  // The argument of the process that puts back what the main thread of its parent could not.
  static constexpr const char* helperArgument = "--put-back";

 private:
  struct State;
  std::shared_ptr<State> m_state; // the thread may outlive this object
};

} // namespace vantle
