// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"
#include "platform/Platform.h"

#include <pthread.h>
#include <string>

namespace vantle {

// What a watcher asks of the main thread and every Unix answers alike. How it hears of news and of signals,
// and how it waits for a program, is each system's own.
class PosixMainThread : public MainThread {
 public:
  void watchFrom(std::function<void()> watch) override;
  bool isAskedToEnd() const override;
  bool isAnswering() const override;
  void freeze() override;
  void say(std::string_view line) override;

 protected:
  // On the main thread. Takes over the signal by which it is frozen, and holds those that ask for the end.
  explicit PosixMainThread(int freezingSignal);

  // Asks for no memory: whoever holds the lock on that may stand still for good. 0 when it cannot be started.
  static Pid start(const char* program, std::string_view argument);

 private:
  int m_freezingSignal;
  pthread_t m_thread;
};

bool isSameFile(const std::string& left, const std::string& right);

} // namespace vantle
