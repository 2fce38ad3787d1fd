// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Platform.h"
#include "platform/posix/Descriptor.h"

namespace vantle {

// A signal that waits is seen through a descriptor, whatever the main thread is doing.
class LinuxMainThread final : public MainThread {
 public:
  LinuxMainThread(); // on the main thread
  ~LinuxMainThread() override;
  LinuxMainThread(const LinuxMainThread&) = delete;
  LinuxMainThread& operator=(const LinuxMainThread&) = delete;

  void watchFrom(std::function<void()> watch) override;
  void await(std::optional<std::chrono::milliseconds> limit) override;
  bool isAskedToEnd() const override;
  bool isAnswering() const override;
  void wakeWatcher() override;
  void freeze() override;
  void runProgram(const char* argument, std::chrono::milliseconds limit) override;
  void say(std::string_view line) override;

 private:
  pthread_t m_thread;
  Descriptor m_news;
  Descriptor m_signals;
};

// Whether this process was started by one of this same program.
bool isStartedByOwnProgram();

} // namespace vantle
