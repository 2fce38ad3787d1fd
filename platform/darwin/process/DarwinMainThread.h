// SPDX-License-Identifier: MIT
#pragma once

#include "platform/posix/process/PosixMainThread.h"

#include <array>
#include <string>

namespace vantle {

// The system has no descriptor that tells of a signal while the main thread does something else: a thread of
// its own waits for those that ask the program to end, and passes them on.
class DarwinMainThread final : public PosixMainThread {
 public:
  DarwinMainThread(); // on the main thread
  ~DarwinMainThread() override;
  DarwinMainThread(const DarwinMainThread&) = delete;
  DarwinMainThread& operator=(const DarwinMainThread&) = delete;

  void await(std::optional<std::chrono::milliseconds> limit) override;
  void wakeWatcher() override;
  void runProgram(const char* argument, std::chrono::milliseconds limit) override;

 private:
  std::string m_program;             // read in time: once the main thread is frozen, memory may be locked
  std::array<int, 2> m_news{-1, -1}; // the reading and the writing end of a pipe
};

// Whether this process was started by one of this same program.
bool isStartedByOwnProgram();

} // namespace vantle
