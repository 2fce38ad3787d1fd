// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/ForkedProcess.h"

#include <sys/types.h>

namespace vantle::test {

// Somebody who takes every turn at a session's weight that an ordinary user can have, for nothing.
class Spammer {
 public:
  explicit Spammer(uid_t user); // when root starts it; otherwise it is the same user
  void end() { m_process.kill(); }

 private:
  ForkedProcess m_process;
};

} // namespace vantle::test
