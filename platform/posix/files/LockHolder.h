// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace vantle {

// Who has the lock on a file or a folder that somebody has.
enum class LockHolder {
  copy,     // this same program, or somebody who cannot be seen
  stranger, // another one: others have reasons to lock a folder, too
  dead,     // it was killed, and keeps its locks because one of its threads still hangs in the kernel
};

// Answered by each system for itself.
LockHolder lockHolder(const std::string& path);

} // namespace vantle
