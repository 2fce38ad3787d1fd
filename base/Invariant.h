// SPDX-License-Identifier: MIT
#pragma once

namespace vantle {

// Stops the program: going on after a broken invariant could slow down, or leave slowed, the wrong process.
// The journal on disk puts everything back at the next start.
[[noreturn]] void invariantBroken(const char* what);

inline void invariant(bool holds, const char* what) {
  if (!holds) invariantBroken(what);
}

} // namespace vantle
