// SPDX-License-Identifier: MIT
#pragma once

#include "platform/posix/Descriptor.h"

#include <string>
#include <vector>

namespace vantle {

// Makes sure that one copy of Vantle runs for each user. The kernel releases the lock with the process,
// however it ends, and no child inherits it. It is a lock on a file, and on the folders themselves: a file
// that is deleted takes its lock with it, and a copy with another runtime folder shares at least the data
// folder.
class SingleCopyLock {
 public:
  enum class Outcome {
    acquired,    // this is the only copy
    heldByOther, // another copy runs
    unavailable, // no folder for a lock file; nobody can tell
  };

  // Of all these folders, with a file in the first of them in which one can be made.
  static SingleCopyLock acquire(const std::vector<std::string>& folders);

  Outcome outcome() const { return m_outcome; }

 private:
  SingleCopyLock(Outcome outcome, std::vector<Descriptor> locked)
      : m_outcome(outcome), m_locked(std::move(locked)) {}

  Outcome m_outcome;
  std::vector<Descriptor> m_locked; // the file, and the folders
};

} // namespace vantle
