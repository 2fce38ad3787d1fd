// SPDX-License-Identifier: MIT
#include "tests/support/Spammer.h"

#include "tests/support/User.h"

#include <fcntl.h>
#include <unistd.h>

namespace vantle::test {

namespace {

void begin(uid_t user) {
  ::setsid();
  if (runsAsRoot() && !becomeUser(user)) ::_exit(1);
}

[[noreturn]] void takeTurns() {
  const int file = ::open("/proc/self/autogroup", O_RDWR);
  for (;;) (void)!::write(file, "0", 1);
}

} // namespace

Spammer::Spammer(uid_t user) : m_process([user] { begin(user); }, [] { takeTurns(); }) {}

} // namespace vantle::test
