// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"

#include <functional>
#include <optional>

namespace vantle::test {

// A copy of this process that prepares itself as told, and then lives as told: by default it waits for its
// end. It dies with this process at the latest.
class ForkedProcess {
 public:
  // Returns when the preparing is done. Its status is 0 when its life comes to an end by itself.
  explicit ForkedProcess(const std::function<void()>& prepare = {}, const std::function<void()>& live = {});
  ~ForkedProcess();
  ForkedProcess(const ForkedProcess&) = delete;
  ForkedProcess& operator=(const ForkedProcess&) = delete;

  Pid pid() const { return m_pid; } // stays after its end
  bool isRunning();
  int waitForEnd(); // by itself; its wait status (see waitpid)
  int kill();       // SIGKILL, and the same

 private:
  bool hasEnded(int options);

  Pid m_pid;
  std::optional<int> m_status; // once it has ended
};

} // namespace vantle::test
