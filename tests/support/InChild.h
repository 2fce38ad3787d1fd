// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>

namespace vantle::test {

// Runs the check in a child process, where it may give up rights, change limits or mount things. The answer
// is the check's own: empty when all is well, else what is wrong; also when the child dies.
std::string inChild(const std::function<std::string()>& check);

// The same as an ordinary user; as the user who runs the tests where that is not root.
std::string asOrdinaryUser(const std::function<std::string()>& check);

// The answer of a child that cannot make the surroundings that it needs.
inline constexpr const char* notPossibleHere = "not possible here";

} // namespace vantle::test
