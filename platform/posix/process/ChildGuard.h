// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"
#include "platform/posix/Descriptor.h"

namespace vantle {

// Ends what this program has started as soon as this program is gone, even when it was killed: a small
// process of its own waits for that. (The kernel's own signal on a parent's death cannot be taken back, and
// whatever was let go is to run on.)
class ChildGuard {
 public:
  ChildGuard(); // starts that process; without one nobody is ended
  ChildGuard(const ChildGuard&) = delete;
  ChildGuard& operator=(const ChildGuard&) = delete;

  // From the child itself, before it becomes a program. Only calls that are safe between fork and exec.
  void follow(Pid child) const { tell(child); }
  // It has ended and was waited for, or is to run on by itself.
  void forget(Pid child) const { tell(-child); }

 private:
  void tell(Pid message) const;

  Descriptor m_line; // never inherited by a program: its end is the end of this one
};

} // namespace vantle
