// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/Descriptor.h"
#include "platform/linux/files/XdgFolders.h"

#include <string>
#include <vector>

namespace vantle {

// Makes sure that one copy of Vantle runs for each user. The kernel releases the lock with the process,
// however it ends, and no child inherits it.
class SingleCopyLock {
 public:
  enum class Outcome {
    acquired,    // this is the only copy
    heldByOther, // another copy runs
    unavailable, // no folder for a lock file; nobody can tell
  };

  // The runtime folder, or the data folder where there is none.
  static SingleCopyLock acquire(const XdgFolders& folders);
  // In the first of the folders in which a lock file can be made.
  static SingleCopyLock acquire(const std::vector<std::string>& folders);

  Outcome outcome() const { return m_outcome; }

 private:
  SingleCopyLock(Outcome outcome, Descriptor file) : m_outcome(outcome), m_file(std::move(file)) {}

  Outcome m_outcome;
  Descriptor m_file; // holds the lock
};

} // namespace vantle
