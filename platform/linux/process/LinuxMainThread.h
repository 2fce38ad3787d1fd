// SPDX-License-Identifier: MIT
#pragma once

#include "platform/posix/Descriptor.h"
#include "platform/posix/process/PosixMainThread.h"

namespace vantle {

// A signal that waits is seen through a descriptor, whatever the main thread is doing.
class LinuxMainThread final : public PosixMainThread {
 public:
  LinuxMainThread(); // on the main thread
  ~LinuxMainThread() override;
  LinuxMainThread(const LinuxMainThread&) = delete;
  LinuxMainThread& operator=(const LinuxMainThread&) = delete;

  void await(std::optional<std::chrono::milliseconds> limit) override;
  void wakeWatcher() override;
  void runProgram(const char* argument, std::chrono::milliseconds limit) override;

 private:
  Descriptor m_news;
  Descriptor m_signals;
};

// Whether this process was started by one of this same program.
bool isStartedByOwnProgram();

} // namespace vantle
