// SPDX-License-Identifier: MIT
#include "tests/support/User.h"

#include <grp.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace vantle::test {

bool runsAsRoot() { return ::geteuid() == 0; }

bool becomeUser(uid_t user) {
  int signal = 0; // at the parent's death: a change of user forgets it
  ::prctl(PR_GET_PDEATHSIG, &signal);
  const auto group = static_cast<gid_t>(user);
  if (::setgroups(0, nullptr) != 0 || ::setresgid(group, group, group) != 0 ||
      ::setresuid(user, user, user) != 0) {
    return false;
  }
  ::prctl(PR_SET_PDEATHSIG, signal);
  // A program that has changed its user hides from /proc otherwise, and so do those that it starts.
  return ::prctl(PR_SET_DUMPABLE, 1) == 0;
}

} // namespace vantle::test
