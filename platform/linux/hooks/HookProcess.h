// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstddef>

namespace vantle {

// What of a hook's output reaches the log, in bytes: a few hundred lines. One that writes in a loop must not
// fill the disk that holds the log.
constexpr std::size_t mostHookOutput = std::size_t{64} * 1024;

// In a child right after its fork, with every signal blocked: leads a session of its own, in which it runs
// that program and copies what it prints to this program's standard error stream. Ends with the program,
// whatever that left running, and has no more than that time, whoever watches.
[[noreturn]] void leadHook(char* const* arguments, char* const* environment, std::chrono::seconds limit);

} // namespace vantle
