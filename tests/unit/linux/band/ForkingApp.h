// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"

#include <string>
#include <vector>

namespace vantle::test {

// What a test process does that is to be an app which starts others without end, a letter for each kind:
//   m  has 400 MB and forks 20 times a second; its children live for a while, and some fork on
//   q  the same with little memory, 50 times a second
//   c  has 50 MB and computes between two forks
//   p  a shell that starts programs
//   T  starts threads as fast as it can
//   e  forks and ends, and its child forks and ends, for ever
int forkingApp(char letter);

// Everything of any thread in these sessions that is not as it was, in words; empty when all is well.
std::string differencesIn(const std::vector<Pid>& sessions, const std::string& before);

} // namespace vantle::test
