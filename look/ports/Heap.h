// SPDX-License-Identifier: MIT
#pragma once

namespace vantle {

// The memory that this program has taken and no longer uses.
class Heap {
 public:
  virtual ~Heap() = default;

  // Returns it to the system, as far as the allocator can.
  virtual void trim() = 0;
};

} // namespace vantle
