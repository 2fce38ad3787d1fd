// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/ForkedProcess.h"

#include <chrono>
#include <optional>
#include <sys/types.h>
#include <vector>

namespace vantle::bench {

enum class OwnSession { no, yes };

// A process that keeps one processor busy until it is gone.
class BusyApp {
 public:
  explicit BusyApp(OwnSession session);

  pid_t pid() const { return m_process.pid(); }

 private:
  test::ForkedProcess m_process;
};

struct Frame {
  double millis = 0;     // from the moment it is due to the end of its work
  double waitMicros = 0; // of them able to run, but not running; not a number when the kernel does not tell
};

// What an app in front got in one measurement.
struct FrontFigures {
  std::vector<Frame> frames;
  double share = 0; // of one processor, while it wants all of it
};

// A program with a picture to draw: 60 times a second 8 ms of work, then for a while as much as it can get.
// It sleeps when it is not measured.
class FrontApp {
 public:
  static constexpr std::chrono::microseconds frame{16'667};
  static constexpr std::chrono::milliseconds work{8};

  explicit FrontApp(OwnSession session);
  ~FrontApp();
  FrontApp(const FrontApp&) = delete;
  FrontApp& operator=(const FrontApp&) = delete;

  pid_t pid() const { return m_process->pid(); }
  FrontFigures measure(std::chrono::milliseconds frames, std::chrono::milliseconds share) const;

 private:
  std::optional<test::ForkedProcess> m_process;
  int m_channel = -1;
};

} // namespace vantle::bench
