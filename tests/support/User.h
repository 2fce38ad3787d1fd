// SPDX-License-Identifier: MIT
#pragma once

#include <sys/types.h>

namespace vantle::test {

inline constexpr uid_t nobody = 65'534;       // has an account, as a bus wants it
inline constexpr uid_t ordinaryUser = 47'321; // nobody's number, and that of no process

bool runsAsRoot();

// Goes on as this user for good, in the group of the same number and in no other; for a process that root has
// started. False when that is not allowed.
bool becomeUser(uid_t user);

} // namespace vantle::test
