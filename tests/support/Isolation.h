// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <functional>
#include <string>

namespace vantle::desktop {

// Runs the tests in a process-number and mount namespace of their own where that is allowed (as root), so
// that no other test's processes are in sight of the program's recovery, and numbers can be used again at
// will. Elsewhere runs them as they are. The tests' own exit status. Of what is below /tmp they can reach
// what stands beside this program, and beside the path that is kept.
int runIsolated(const std::function<int()>& tests, const std::filesystem::path& kept = {});

// Whether the numbers of this namespace may be handed out by hand.
bool canChooseNextPid();
void chooseNextPid(int pid);

} // namespace vantle::desktop

namespace vantle::test {

// Runs the check as the first process of a pid namespace with a procfs of its own; see InChild.h.
std::string inOwnPidNamespace(const std::function<std::string()>& check);

} // namespace vantle::test
