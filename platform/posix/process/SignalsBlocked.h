// SPDX-License-Identifier: MIT
#pragma once

#include <csignal>

namespace vantle {

// Keeps every signal from the thread that makes one, and from a thread or child that it starts meanwhile:
// signals are the main thread's, and a handler of this program has no business in a child.
class SignalsBlocked {
 public:
  SignalsBlocked() {
    sigset_t all;
    sigfillset(&all);
    ::pthread_sigmask(SIG_SETMASK, &all, &m_before);
  }
  ~SignalsBlocked() { ::pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }
  SignalsBlocked(const SignalsBlocked&) = delete;
  SignalsBlocked& operator=(const SignalsBlocked&) = delete;

 private:
  sigset_t m_before{};
};

} // namespace vantle
