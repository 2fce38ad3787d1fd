// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/ForkedProcess.h"

#include <memory>
#include <sys/types.h>
#include <vector>

namespace vantle::bench {

// Apps that do nothing: each a session of its own with a tree of processes, as a desktop starts them.
class IdleApps {
 public:
  struct Size {
    int apps = 100;
    int processes = 400; // in all
    int threads = 1000;  // in all
  };

  explicit IdleApps(Size size); // returns when all of them run

  const std::vector<pid_t>& roots() const { return m_roots; }

 private:
  std::vector<std::unique_ptr<test::ForkedProcess>> m_apps;
  std::vector<pid_t> m_roots;
};

} // namespace vantle::bench
